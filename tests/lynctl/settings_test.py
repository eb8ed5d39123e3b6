# SPDX-License-Identifier: Apache-2.0
"""lynctl settings: get, set and watch, on folders of their own."""

import concurrent.futures
import json
import os
import re
import subprocess
import tempfile
import time
import unittest

from harness import LYNCTL, environment, main

KEY = "memory/org.nuvex.bleapp/mirroring_trigger"


class Settings(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.environment = environment(LYN_STATE_DIR=self.folder.name + "/state",
                                       LYN_RUNTIME_DIR=self.folder.name + "/run")

    def tearDown(self):
        self.folder.cleanup()

    def run_it(self, *words):
        return subprocess.run([LYNCTL, "settings", *words], env=self.environment, capture_output=True, text=True,
                              timeout=60, check=False)

    def test_what_is_set_is_read_again(self):
        self.assertEqual(self.run_it("set", KEY, "100").returncode, 0)
        got = self.run_it("get", KEY)
        self.assertEqual((got.returncode, got.stdout), (0, "100\n"))

    def test_json_tells_numbers_from_texts(self):
        self.run_it("set", KEY, "100")
        self.assertEqual(json.loads(self.run_it("get", KEY, "--json").stdout)["value"], 100)
        self.run_it("set", KEY, "100", "--text")
        self.assertEqual(json.loads(self.run_it("get", KEY, "--json").stdout)["text"], "100")

    def test_a_default_is_shown_before_anything_is_set(self):
        got = self.run_it("get", "db/menu/network/devicename/tv_name")
        self.assertEqual((got.returncode, got.stdout), (0, os.uname().nodename + "\n"))

    def test_a_key_that_holds_nothing_is_a_failure(self):
        got = self.run_it("get", KEY)
        self.assertEqual((got.returncode, got.stderr), (1, f"lynctl: {KEY} is not set\n"))
        told = self.run_it("get", KEY, "--json")
        self.assertEqual((told.returncode, json.loads(told.stdout)["set"]), (1, False))

    def test_a_bad_key_is_refused(self):
        for key in ("../etc/passwd", "other/key", "db/", "memory/a b"):
            for words in (("get", key), ("set", key, "1"), ("watch", key)):
                got = self.run_it(*words)
                self.assertEqual(got.returncode, 2, words)
                self.assertIn("a key begins with db/ or memory/", got.stderr)

    def test_a_broken_file_is_named(self):
        self.run_it("set", KEY, "100")
        with open(f"{self.folder.name}/run/{KEY}", "w", encoding="utf-8") as file:
            file.write("nonsense\n")
        got = self.run_it("get", KEY)
        self.assertEqual(got.returncode, 1)
        self.assertIn(f"{self.folder.name}/run/{KEY}: is no setting", got.stderr)

    def test_missing_and_surplus_words_are_named(self):
        for words, text in (((), "needs what to do"), (("look",), "needs what to do"), (("get",), "needs a key"),
                            (("set", KEY), "needs a value"), (("get", KEY, "x"), "unexpected argument 'x'"),
                            (("get", KEY, "--platform", "linux"), "is not for 'settings'")):
            got = self.run_it(*words)
            self.assertEqual(got.returncode, 2, words)
            self.assertIn(text, got.stderr)

    def test_watch_follows_changes_until_it_is_told_to_stop(self):
        watch = subprocess.Popen([LYNCTL, "settings", "watch", KEY, "--json"], env=self.environment,
                                 stdout=subprocess.PIPE, text=True)
        try:
            self.assertFalse(json.loads(watch.stdout.readline())["set"])
            self.run_it("set", KEY, "100")
            self.assertEqual(json.loads(watch.stdout.readline())["value"], 100)
            self.run_it("set", KEY, "0")
            self.assertEqual(json.loads(watch.stdout.readline())["value"], 0)
        finally:
            watch.terminate()
            rest = watch.communicate(timeout=60)[0]
        self.assertEqual(json.loads(rest)["changes"], 2)
        self.assertEqual(watch.returncode, 0)

    def test_writers_at_once_lose_nothing(self):
        def write(writer):
            for number in range(8):
                for key in (f"db/own/{writer}", "db/shared/of_all"):
                    self.assertEqual(self.run_it("set", key, f"{writer} {number} " + "x" * 2000).returncode, 0)

        with concurrent.futures.ThreadPoolExecutor(4) as pool:
            writers = [pool.submit(write, writer) for writer in range(4)]
            values = {f"{writer} {number} " + "x" * 2000 for writer in range(4) for number in range(8)}
            while not all(writer.done() for writer in writers):
                seen = self.run_it("get", "db/shared/of_all")
                self.assertIn(seen.stdout.rstrip("\n"), values | {""}, "a part of a value")
            for writer in writers:
                writer.result()
        for writer in range(4):
            self.assertTrue(self.run_it("get", f"db/own/{writer}").stdout.startswith(f"{writer} 7 "))
        self.assertTrue(re.match("[0-3] 7 ", self.run_it("get", "db/shared/of_all").stdout))
        files = [name for _, _, names in os.walk(self.folder.name) for name in names]
        self.assertEqual(sorted(files), ["0", "1", "2", "3", "of_all"])

    def test_watch_sees_the_last_of_many_changes(self):
        watch = subprocess.Popen([LYNCTL, "settings", "watch", KEY, "--json"], env=self.environment,
                                 stdout=subprocess.PIPE, text=True)
        try:
            self.assertFalse(json.loads(watch.stdout.readline())["set"])
            for number in range(1, 11):
                self.run_it("set", KEY, str(number))
            shown = [0]
            while shown[-1] != 10:
                shown.append(json.loads(watch.stdout.readline())["value"])
            os.remove(f"{self.folder.name}/run/{KEY}")
            self.assertFalse(json.loads(watch.stdout.readline())["set"])
        finally:
            watch.kill()
            watch.communicate(timeout=60)
        self.assertEqual(shown, sorted(set(shown)), "each change once, in its order")

    def test_a_value_of_several_lines_is_refused_and_the_old_one_kept(self):
        self.run_it("set", KEY, "100")
        got = self.run_it("set", KEY, "first\nsecond")
        self.assertEqual((got.returncode, got.stderr), (2, "lynctl: a setting is one line of text\n"))
        self.assertEqual(self.run_it("get", KEY).stdout, "100\n")

    def test_a_setting_that_cannot_be_written_is_named(self):
        with open(f"{self.folder.name}/run", "w", encoding="utf-8") as file:
            file.write("in the way")
        got = self.run_it("set", KEY, "100")
        self.assertEqual(got.returncode, 1)
        self.assertIn(f"lynctl: {self.folder.name}/run/", got.stderr)

    def test_watch_ends_after_its_seconds(self):
        begin = time.monotonic()
        got = self.run_it("watch", KEY, "--seconds", "1")
        self.assertEqual(got.returncode, 0)
        self.assertIn("(not set)", got.stdout)
        self.assertGreaterEqual(time.monotonic() - begin, 1)


if __name__ == "__main__":
    main()
