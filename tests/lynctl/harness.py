# SPDX-License-Identifier: Apache-2.0
"""Runs lynctl as its users do. The path of the program is the first argument of each test script."""

import json
import os
import signal
import subprocess
import sys
import unittest

LYNCTL = os.path.abspath(sys.argv[1])
SCENARIOS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "scenarios")
PATIENCE = 60  # seconds until something that hangs is given up; no test depends on how long a run takes


def scenario(name):
    return os.path.join(SCENARIOS, name + ".json")


def environment(**changes):
    result = {key: value for key, value in os.environ.items() if not key.startswith("LYN_")}
    result["LC_ALL"] = "C.UTF-8"
    # The address sanitizer guesses where the thread-local storage of a library begins that is opened at run
    # time, and with newer C libraries a guess can end in a crash of its leak check.
    result["ASAN_OPTIONS"] = result.get("ASAN_OPTIONS", "") + ":intercept_tls_get_addr=0"
    result.update(changes)
    return result


def lynctl(*words, program=LYNCTL, env=None, cwd=None):
    """Runs to the end; gives status, standard output and standard error."""
    done = subprocess.run([program, *words], stdin=subprocess.DEVNULL, capture_output=True, cwd=cwd,
                          env=env or environment(), timeout=PATIENCE, check=False)
    return done.returncode, done.stdout.decode("utf-8"), done.stderr.decode("utf-8")


def lynctl_json(*words):
    """Runs with --json; gives status and the objects, one of each line."""
    status, out, err = lynctl(*words, "--json")
    if err:
        raise AssertionError(err)
    return status, [json.loads(line) for line in out.splitlines()]


def lynctl_signalled(*words, until, send=signal.SIGINT):
    """Sends a signal once a line with the text `until` has come; gives status and standard output."""
    process = subprocess.Popen([LYNCTL, *words], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, env=environment())
    out = b""
    for line in process.stdout:
        out += line
        if until in line.decode("utf-8"):
            process.send_signal(send)
            break
    rest, _ = process.communicate(timeout=PATIENCE)
    return process.returncode, (out + rest).decode("utf-8")


def of_kind(objects, kind):
    return [each for each in objects if each["event"] == kind]


def main():
    unittest.main(argv=[sys.argv[0]] + sys.argv[2:], verbosity=2)
