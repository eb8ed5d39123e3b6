# SPDX-License-Identifier: Apache-2.0
"""./run shows the main job, and says so when the room does not do as its scenario says."""

import os
import subprocess
import tempfile
import unittest

from harness import LYNCTL, PATIENCE, environment, main, scenario

RUN = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "run")


def run(*words, **variables):
    done = subprocess.run([RUN, *words], stdin=subprocess.DEVNULL, capture_output=True, env=environment(**variables),
                          timeout=PATIENCE, check=False)
    return done.returncode, done.stdout.decode("utf-8"), done.stderr.decode("utf-8")


class Run(unittest.TestCase):
    def test_the_default_room_is_as_it_should_be(self):
        # Whatever the user's environment says about scenarios is not for this room.
        status, out, err = run("--program", LYNCTL, LYN_SIMULATOR_SCENARIO="/nowhere")
        self.assertEqual((status, err), (0, ""))
        for text in ("│ Kitchen phone ", 'TV → phone   {"P2PChannel":"6"', "phone → TV   Success\n", "Result: Success",
                     "Result: NotSupported", "Everything came out as the scenario says."):
            self.assertIn(text, out)

    def test_another_room_is_noticed(self):
        with tempfile.TemporaryDirectory() as folder:
            program = os.path.join(folder, "lynctl")
            with open(program, "w", encoding="utf-8") as file:
                file.write(f'#!/bin/sh\nexec "{LYNCTL}" "$@" --scenario "{scenario("hostile")}"\n')
            os.chmod(program, 0o755)
            status, out, _ = run("--program", program)
        self.assertEqual(status, 1)
        self.assertIn("This is not what the scenario says:", out)
        self.assertIn("phones found: expected 'A0:00:00:00:00:01,", out)
        self.assertIn("result of the request to A0:00:00:00:00:01: expected 'Success', found 'GattFail'", out)
        self.assertIn("status of the request to A0:00:00:00:00:03: expected '15', found '11'", out)

    def test_bad_arguments_are_told(self):
        self.assertEqual(run("--fast"), (2, "", "run: unknown argument '--fast'; see ./run --help\n"))
        self.assertEqual(run("--program"), (2, "", "run: --program needs the name of a file; see ./run --help\n"))
        self.assertEqual(run("--program", "/nowhere"), (2, "", "run: there is no program '/nowhere'; see ./run --help\n"))

    def test_help_is_there(self):
        status, out, err = run("--help")
        self.assertEqual((status, err), (0, ""))
        self.assertTrue(out.startswith("usage: ./run "), out)


if __name__ == "__main__":
    main()
