# SPDX-License-Identifier: Apache-2.0
"""lynctl on a terminal: the table is drawn in place, and the terminal is given back as it was."""

import fcntl
import os
import pty
import re
import select
import struct
import termios
import time
import unittest

from harness import LYNCTL, PATIENCE, environment, main, scenario

CONTROL = re.compile(r"\x1b\[(\??[\d;]*)([A-Za-z])|\r|\n|[^\x1b\r\n]")


class Screen:
    """What a terminal makes of the few sequences that lynctl sends; anything else is a failure."""

    def __init__(self, text, width=110):
        self.width = width
        self.lines = [""]
        self.row = 0
        self.column = 0
        self.cursor = True
        self.colours = 0
        for found in CONTROL.finditer(text):
            if found.group(2):
                self.control(found.group(1), found.group(2))
            else:
                self.character(found.group(0))

    def control(self, number, letter):
        if letter == "A":
            self.row -= int(number)
            assert self.row >= 0
        elif letter in "KJ" and not number:
            # Behind a full line the cursor is still on its last character.
            self.lines[self.row] = self.lines[self.row][:min(self.column, self.width - 1)]
            if letter == "J":
                del self.lines[self.row + 1:]
        elif number == "?25":
            self.cursor = letter == "h"
        elif letter == "m":
            self.colours += 1
        else:
            assert number == "?7", repr((number, letter))

    def character(self, text):
        if text == "\r":
            self.column = 0
        elif text == "\n":
            self.row += 1
            self.column = 0
            if self.row == len(self.lines):
                self.lines.append("")
        else:
            line = self.lines[self.row]
            self.lines[self.row] = line[:self.column].ljust(self.column) + text + line[self.column + 1:]
            self.column += 1


def on_terminal(*words, columns=110, rows=40, press_when=None, unread=0, modes=None, **changes):
    """Runs on a terminal; presses Ctrl-C once the output holds `press_when`, and has not been read for so many
    seconds. `modes` gets the terminal's local modes after each piece of output. Gives status and output."""
    variables = environment(**{"TERM": "xterm", **changes})
    pid, terminal = pty.fork()
    if pid == 0:
        try:
            fcntl.ioctl(1, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))
            os.execve(LYNCTL, [LYNCTL, *words], variables)
        finally:
            os._exit(127)
    out = b""
    deadline = time.monotonic() + PATIENCE
    while time.monotonic() < deadline:
        if not select.select([terminal], [], [], 1)[0]:
            continue
        try:
            out += os.read(terminal, 65536)
        except OSError:  # the other end is closed
            break
        finally:
            if modes is not None:
                modes.append(termios.tcgetattr(terminal)[3])
        if press_when and press_when in out.decode("utf-8", "ignore"):
            time.sleep(unread)
            os.write(terminal, b"\x03")
            press_when = None
    else:
        os.kill(pid, 9)
    os.close(terminal)
    return os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1]), out.decode("utf-8")


class LiveTable(unittest.TestCase):
    SCAN = ("scan", "mirroring", "--seconds", "1", "--scenario", scenario("results"))

    def test_it_is_drawn_in_place(self):
        status, out = on_terminal(*self.SCAN)
        self.assertEqual(status, 0)
        self.assertGreater(out.count("NAME"), 3)
        screen = Screen(out)
        self.assertEqual(sum("NAME" in line for line in screen.lines), 1)
        self.assertEqual(sum("Phone 2" in line for line in screen.lines), 1)
        self.assertRegex(screen.lines[-2], r"^12 phones, \d+ advertisements in \d+\.\d s$")
        self.assertTrue(screen.cursor)

    def test_a_table_as_wide_as_the_terminal_keeps_its_frame(self):
        _, out = on_terminal(*self.SCAN, columns=80)
        middle = out[:out.index(" of 1 s", len(out) // 2)]
        for line in Screen(middle, width=80).lines:
            if line.startswith("│"):
                self.assertEqual((len(line), line[-1]), (80, "│"))

    def test_rows_that_do_not_fit_are_counted(self):
        _, out = on_terminal(*self.SCAN, rows=12)
        self.assertIn("and 7 more", out)
        self.assertIn("Phone 11", Screen(out).lines[-6] + Screen(out).lines[-5])

    def test_ctrl_c_ends_it_cleanly(self):
        status, out = on_terminal("scan", "mirroring", "--seconds", "0", "--scenario", scenario("results"),
                                  press_when="Away")
        self.assertEqual(status, 0)
        screen = Screen(out)
        self.assertTrue(screen.cursor)
        self.assertIn("(stopped by a signal)", screen.lines[-2])

    def test_ctrl_c_loses_nothing_that_is_on_its_way(self):
        _, out = on_terminal("scan", "mirroring", "--seconds", "0", "--scenario", scenario("results"),
                             press_when="Away", unread=0.7)
        screen = Screen(out)
        self.assertEqual(sum("NAME" in line for line in screen.lines), 1)
        self.assertIn("(stopped by a signal)", screen.lines[-2])

    def test_the_terminal_has_its_modes_back(self):
        for press_when in ("Away", None):
            modes = []
            on_terminal(*self.SCAN, press_when=press_when, modes=modes)
            self.assertTrue(any(mode & termios.NOFLSH for mode in modes))
            self.assertFalse(modes[-1] & termios.NOFLSH)

    def test_colours_are_left_out_on_demand(self):
        self.assertGreater(Screen(on_terminal(*self.SCAN)[1]).colours, 0)
        self.assertEqual(Screen(on_terminal(*self.SCAN, NO_COLOR="1")[1]).colours, 0)

    def test_hostile_names_do_not_reach_the_terminal(self):
        _, out = on_terminal("scan", "mirroring", "--seconds", "1", "--scenario", scenario("hostile"))
        self.assertNotIn("\x1b[2J", out)
        self.assertIn("\\x1b[2J", out)

    def test_a_terminal_that_can_do_nothing_gets_lines(self):
        _, out = on_terminal(*self.SCAN, TERM="dumb")
        self.assertNotIn("\x1b", out)
        self.assertIn("found", out)

    def test_the_log_is_not_mixed_into_a_live_table(self):
        _, out = on_terminal(*self.SCAN, "--verbose")
        self.assertNotIn("\x1b[?25l", out)


class Request(unittest.TestCase):
    ASK = ("request", "mirroring", "AA:BB:CC:DD:EE:00", "--scenario", scenario("results"))

    def test_a_long_message_is_continued_below_its_beginning(self):
        status, out = on_terminal(*self.ASK, columns=80)
        self.assertEqual(status, 0)
        lines = Screen(out, width=80).lines
        first = next(number for number, line in enumerate(lines) if "TV → phone" in line)
        column = lines[first].index("{")
        message = lines[first][column:]
        while not message.endswith("}"):
            first += 1
            self.assertEqual(lines[first][:column].strip(), "")
            message += lines[first][column:]
        self.assertTrue(all(len(line) <= 80 for line in lines))
        self.assertIn('"displayName":"Test TV"', message)

    def test_ctrl_c_gives_130(self):
        status, _ = on_terminal("request", "mirroring", "AA:BB:CC:DD:EE:51", "--scenario", scenario("silent"),
                                press_when="TV → phone")
        self.assertEqual(status, 130)


if __name__ == "__main__":
    main()
