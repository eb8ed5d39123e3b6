#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the cases that the host names, one after the other, and tells it how they went, over the second serial line.

usage: agent.py FOLDER    with plan.json; gets the logs"""
import json
import os
import runpy
import shutil
import signal
import sys
import termios
import time
import traceback
import tty

sys.path.insert(0, os.path.dirname(os.path.realpath(__file__)))

from vm import clean, daemons  # noqa: E402
from vm.checks import Failed  # noqa: E402

SETTINGS = "/run/lyn-settings"
SETTLING = 10
SHOWN_LINES = 40


class Host:
    """Both sides say one JSON object in a line."""

    def __init__(self):
        self._line = os.open("/dev/ttyS1", os.O_RDWR | os.O_NOCTTY)
        tty.setraw(self._line, termios.TCSANOW)

    def tell(self, **event):
        data = json.dumps(event).encode() + b"\n"
        while data:
            data = data[os.write(self._line, data):]

    def hear(self):
        """What the host says next. It ends the guest when it has nothing more to say."""
        data = b""
        while not data.endswith(b"\n"):
            data += os.read(self._line, 1)
        return json.loads(data)


def in_child(work, log, limit):
    """Runs `work` in a process group of its own, its output in the file `log`. Gives back why it failed."""
    child = os.fork()
    if child == 0:
        status = 1
        try:
            os.setpgid(0, 0)
            output = os.open(log, os.O_WRONLY | os.O_CREAT | os.O_APPEND)
            os.dup2(output, 1)
            os.dup2(output, 2)
            work()
            status = 0
        except Failed as reason:
            print("FAILED: %s" % reason, flush=True)
        except BaseException:
            traceback.print_exc()
        finally:
            sys.stdout.flush()
            os._exit(status)
    end = time.monotonic() + limit
    while time.monotonic() < end:
        done, status = os.waitpid(child, os.WNOHANG)
        if done:
            return None if status == 0 else "ended with status %d" % os.waitstatus_to_exitcode(status)
        time.sleep(0.02)
    os.killpg(child, signal.SIGKILL)
    os.waitpid(child, 0)
    return "took more than %d s" % limit


class Agent:
    def __init__(self, folder, host):
        self._folder = folder
        self._host = host
        with open(os.path.join(folder, "plan.json"), encoding="utf-8") as file:
            self._plan = json.load(file)
        os.environ["LYN_VM_BUILD"] = self._plan["build"]
        # Settings must be in a file system that tells of changes; the shared one does not.
        os.environ["LYN_STATE_DIR"] = os.path.join(SETTINGS, "state")
        os.environ["LYN_RUNTIME_DIR"] = os.path.join(SETTINGS, "run")
        os.environ["LYN_LOG_TARGET"] = "stderr"

    def run(self):
        daemons.say("the agent begins")
        try:
            running = daemons.up(self._plan["needs"])
        except Exception as reason:
            self._host.tell(event="broken", text=str(reason))
            return
        self._host.tell(event="ready")
        while True:
            self._case(self._host.hear(), running)

    def _case(self, case, running):
        """Tells how the case went, and whether the guest is still clean."""
        folder = os.path.join(self._folder, case["name"])
        log = os.path.join(folder, "case.log")
        os.makedirs(folder)
        shutil.rmtree(SETTINGS, ignore_errors=True)
        before = clean.processes()
        begun = time.monotonic()

        def work():
            os.chdir(folder)
            runpy.run_path(case["path"], run_name="__main__")

        failure = in_child(work, log, case["limit"])
        left = self._left(before, folder, running, case["last"])
        self._host.tell(event="end", passed=failure is None and not left, seconds=time.monotonic() - begun,
                        clean=not left, text=self._text(failure, left, log))

    def _left(self, before, folder, running, last):
        """What the case left behind. Nobody minds the state of daemons and radio after the
        guest's last case."""
        new = {} if "systemd" in self._plan["needs"] else {  # systemd starts what it likes
            number: command for number, command in clean.processes().items() if number not in before}
        left = ["process still runs: " + command for command in new.values()]
        for number in new:
            os.kill(number, signal.SIGKILL)
        if last:
            return left
        left += ["%s has ended" % daemon.log for daemon in running if not daemon.runs()]
        if "bluetooth" not in self._plan["needs"]:
            return left
        found = os.path.join(folder, "left.json")

        def look():
            with open(found, "w", encoding="utf-8") as file:
                json.dump(clean.bluetooth_left(SETTLING), file)

        failure = in_child(look, os.path.join(folder, "left.log"), SETTLING + 20)
        if failure is not None:
            return left + ["the guest cannot be looked at: " + failure]
        with open(found, encoding="utf-8") as file:
            return left + json.load(file)

    @staticmethod
    def _text(failure, left, log):
        with open(log, encoding="utf-8", errors="replace") as file:
            lines = file.read().splitlines()
        if failure is None and not left:
            return "\n".join(line.removeprefix("note: ") for line in lines if line.startswith("note: "))
        reasons = ([failure] if failure else []) + ["left behind: " + one for one in left]
        return "\n".join(lines[-SHOWN_LINES:] + reasons)


def main():
    Agent(sys.argv[1], Host()).run()


if __name__ == "__main__":
    main()
