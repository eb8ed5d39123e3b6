# SPDX-License-Identifier: Apache-2.0
"""What a person sees while the cases run, and at the end."""
import resource
import sys
import threading
import time


class Table:
    """The lines of several guests. What tells of a guest may be called by any thread."""

    def __init__(self, width, cases):
        self._width = width
        self._cases = cases
        self._start = time.monotonic()
        self._terminal = sys.stdout.isatty()
        self._lock = threading.Lock()
        self._going_on = {}
        self._passed = 0
        self._failed = 0

    def heading(self, text):
        self._print(text)

    def goes_on(self, guest, text):
        """What a guest does now."""
        with self._lock:
            self._going_on[guest] = text

    def progress(self):
        """The line of what is going on; only a terminal sees it."""
        if not self._terminal:
            return
        with self._lock:
            line = "%4d s  %d of %d  %s" % (time.monotonic() - self._start, self._passed + self._failed, self._cases,
                                            ", ".join(self._going_on.values()))
            sys.stdout.write("\r\033[K" + line[:110])
            sys.stdout.flush()

    def result(self, guest, case, passed, seconds, text):
        verdict = "ok" if passed else "FAILED"
        lines = ["%-6s %6.1f s  guest %-2d  %-*s  %s" % (
            verdict, seconds, guest, self._width, case.name, case.shows)]
        self._print("\n".join(lines + ["        | " + line for line in text.splitlines()]))
        with self._lock:
            self._going_on.pop(guest, None)
            self._passed += passed
            self._failed += not passed

    def summary(self):
        """The last line, and the exit status."""
        used = resource.getrusage(resource.RUSAGE_CHILDREN)
        self._print("%d of %d cases passed, %.0f s, of which the processors worked %.0f s" % (
            self._passed, self._cases, time.monotonic() - self._start, used.ru_utime + used.ru_stime))
        return 0 if self._passed == self._cases else 1

    def _print(self, text):
        with self._lock:
            print(("\r\033[K" if self._terminal else "") + text, flush=True)
