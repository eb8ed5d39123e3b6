# SPDX-License-Identifier: Apache-2.0
"""What a case expects."""
import time


class Failed(Exception):
    """What was expected, and what came instead."""


def check(holds, what):
    if not holds:
        raise Failed(what)


def equal(found, wanted, what):
    if found != wanted:
        raise Failed("%s:\n  wanted %r\n  found  %r" % (what, wanted, found))


def wait_for(holds, seconds, what):
    """Asks until the answer is true, and gives it back."""
    end = time.monotonic() + seconds
    while True:
        answer = holds()
        if answer:
            return answer
        if time.monotonic() > end:
            raise Failed("%s: did not come within %d s" % (what, seconds))
        time.sleep(0.05)


def note(text):
    """A line for the person who runs the cases, also when everything is as it should be."""
    print("note: " + text, flush=True)
