# SPDX-License-Identifier: Apache-2.0
"""Programs that a case or the guest itself starts."""
import json
import os
import select
import signal
import subprocess
import time

from .checks import Failed


def run(*words, limit=30, status=0):
    """Runs to the end and gives the output back."""
    done = subprocess.run(words, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, timeout=limit, check=False)
    if status is not None and done.returncode != status:
        raise Failed("%s ended with %d:\n%s" % (" ".join(words), done.returncode, done.stdout))
    return done.stdout


class Child:
    """A process that goes on. Ended with SIGTERM by stop(), or with `with`."""

    def __init__(self, name, process):
        self.name = name
        self._process = process

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()

    @property
    def pid(self):
        return self._process.pid

    def runs(self):
        return self._process.poll() is None

    def stop(self, how=signal.SIGTERM, limit=10):
        """Ends it, and gives its exit status back."""
        if self.runs():
            self._process.send_signal(how)
        return self.status(limit)

    def status(self, limit):
        """Waits for its end, and gives its exit status back."""
        try:
            return self._process.wait(limit)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()
            raise Failed("%s did not end within %d s" % (self.name, limit)) from None


class Program(Child):
    """A program whose output is the file LOG."""

    def __init__(self, log, *words, environment=None):
        self.log = os.path.abspath(log)
        with open(self.log, "ab") as output:
            super().__init__(words[0], subprocess.Popen(words, stdin=subprocess.DEVNULL, stdout=output, stderr=output,
                                                        env={**os.environ, **(environment or {})}))

    def output(self):
        with open(self.log, encoding="utf-8", errors="replace") as file:
            return file.read()


class Teller(Child):
    """A program that tells what happens as lines of JSON."""

    def __init__(self, name, *words, environment=None):
        self.events = []
        self._seen = 0
        self._unread = b""
        with open(name + ".err", "ab") as errors:
            super().__init__(name, subprocess.Popen(words, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                                    stderr=errors, env={**os.environ, **(environment or {})}))

    def errors(self):
        with open(self.name + ".err", encoding="utf-8", errors="replace") as file:
            return file.read()

    def wait(self, event, limit=20, **members):
        """The next event of this name, with these members, that has not been waited for; or Failed."""
        end = time.monotonic() + limit
        while True:
            while self._seen < len(self.events):
                candidate = self.events[self._seen]
                self._seen += 1
                if candidate["event"] == event and members.items() <= candidate.items():
                    return candidate
            if time.monotonic() > end:
                raise Failed("%s did not tell %s %s within %d s; it told:\n%s\n%s" % (
                    self.name, event, members or "", limit, "\n".join(map(str, self.events)), self.errors()))
            if not self._read(min(1, max(0, end - time.monotonic()))):
                raise Failed("%s ended without telling %s; it told:\n%s\n%s" % (
                    self.name, event, "\n".join(map(str, self.events)), self.errors()))

    def all(self, event):
        return [told for told in self.events if told["event"] == event]

    def finish(self, limit=60):
        """Reads to the end and gives the exit status back."""
        end = time.monotonic() + limit
        while self._read(1):
            if time.monotonic() > end:
                self.stop(signal.SIGKILL)
                raise Failed("%s did not end within %d s; it told:\n%s" % (
                    self.name, limit, "\n".join(map(str, self.events))))
        return self.status(10)

    def stop(self, how=signal.SIGTERM, limit=10):
        if self._process.stdout.closed:
            return self._process.returncode
        status = super().stop(how, limit)
        while self._read(0.1):
            pass
        self._process.stdout.close()
        return status

    def _read(self, seconds):
        """Reads what is there; False at the end of the output."""
        if not select.select([self._process.stdout], [], [], seconds)[0]:
            return True
        more = os.read(self._process.stdout.fileno(), 65536)
        *lines, self._unread = (self._unread + more).split(b"\n")
        for line in lines:
            self.events.append(json.loads(line))
            print("%s: %s" % (self.name, line.decode()), flush=True)
        return bool(more)
