# SPDX-License-Identifier: Apache-2.0
"""Programs that talk to a person at a terminal, driven by a case."""
import os
import pty
import re
import select
import signal
import subprocess
import time

from .checks import Failed
from .programs import Child

_STEERING = re.compile(r"\x1b\[[0-9;?]*[A-Za-z]|\x1b[=>]|[\x01\x02\r]")


class Console(Child):
    """A program at a terminal of its own. What it shows is also the file NAME.out."""

    def __init__(self, name, *words):
        self._shown = ""
        self._seen = 0
        self._log = open(name + ".out", "w", encoding="utf-8")
        self._terminal, its_end = pty.openpty()
        super().__init__(name, subprocess.Popen(words, stdin=its_end, stdout=its_end, stderr=its_end,
                                                start_new_session=True))
        os.close(its_end)

    def say(self, line):
        os.write(self._terminal, line.encode() + b"\n")

    def expect(self, pattern, limit=20):
        """Waits until this regular expression is shown, behind what was expected before. Gives the match back."""
        end = time.monotonic() + limit
        while True:
            found = re.search(pattern, self._shown[self._seen:], re.MULTILINE)
            if found:
                self._seen += found.end()
                return found
            if time.monotonic() > end or not self._read(0.2):
                raise Failed("%s did not show '%s'; it showed:\n%s" % (
                    self.name, pattern, self._shown[self._seen:]))

    def ask(self, line, pattern, limit=20):
        self.say(line)
        return self.expect(pattern, limit)

    def shown(self):
        """All that it has shown, without what steers the terminal."""
        while select.select([self._terminal], [], [], 0)[0] and self._read(0):
            pass
        return self._shown

    def stop(self, how=signal.SIGTERM, limit=10):
        if self._log.closed:
            return self._process.returncode
        try:
            return super().stop(how, limit)
        finally:
            self._log.close()
            os.close(self._terminal)

    def _read(self, seconds):
        """Reads what is there; False when the program has closed its terminal."""
        if not select.select([self._terminal], [], [], seconds)[0]:
            return True
        try:
            more = os.read(self._terminal, 65536)
        except OSError:
            return False
        text = _STEERING.sub("", more.decode("utf-8", "replace"))
        self._log.write(text)
        self._log.flush()
        self._shown += text
        return bool(more)
