# SPDX-License-Identifier: Apache-2.0
"""What a person sees while the cases run, and at the end."""
import resource
import sys
import time


class Table:
    def __init__(self, width):
        self._width = width
        self._start = time.monotonic()
        self._terminal = sys.stdout.isatty()

    def heading(self, text):
        self._clear()
        print(text, flush=True)

    def progress(self, text):
        """The line of what is going on; only a terminal sees it."""
        if self._terminal:
            line = "%4d s  %s" % (time.monotonic() - self._start, text)
            sys.stdout.write("\r\033[K" + line[:110])
            sys.stdout.flush()

    def result(self, name, passed, seconds, text):
        self._clear()
        verdict = "ok" if passed else "FAILED"
        print("%-6s %6.1f s  %-*s  %s" % (verdict, seconds, self._width, name, text), flush=True)

    def detail(self, text):
        for line in text.splitlines():
            print("        | " + line, flush=True)

    def summary(self, passed, failed, guests):
        self._clear()
        used = resource.getrusage(resource.RUSAGE_CHILDREN)
        print("%d of %d cases passed, %d guests, %.0f s, of which the processor worked %.0f s" % (
            passed, passed + failed, guests, time.monotonic() - self._start, used.ru_utime + used.ru_stime))

    def _clear(self):
        if self._terminal:
            sys.stdout.write("\r\033[K")
