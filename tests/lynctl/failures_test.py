# SPDX-License-Identifier: Apache-2.0
"""What cannot be done is told in one line, with the right status."""

import os
import shutil
import tempfile
import unittest

from harness import LYNCTL, environment, lynctl, main, scenario

BUILT = os.path.join(os.path.dirname(os.path.dirname(LYNCTL)), "lib")
PHONE = "AA:BB:CC:DD:EE:00"


class BadArguments(unittest.TestCase):
    def refuse(self, words, complaint):
        self.assertEqual(lynctl(*words), (2, "", "lynctl: " + complaint + "\n"))

    def test_no_command(self):
        self.refuse([], "no command; try 'lynctl --help'")

    def test_unknown_command(self):
        self.refuse(["find"], "unknown command 'find'; try 'lynctl --help'")

    def test_unknown_option(self):
        self.refuse(["scan", "kov", "--fast"], "unknown option '--fast'; try 'lynctl --help'")

    def test_option_of_another_command(self):
        self.refuse(["scan", "kov", "--stop"], "option '--stop' is not for 'scan'")

    def test_missing_value(self):
        self.refuse(["scan", "kov", "--seconds"], "option '--seconds' needs a value")

    def test_bad_value(self):
        self.refuse(["scan", "kov", "--seconds", "soon"],
                    "bad --seconds 'soon': a whole number from 0 to 86400")

    def test_unknown_service(self):
        self.refuse(["scan", "toast"], "unknown service 'toast': mirroring, nodlink, kov or dummy")

    def test_bad_address(self):
        self.refuse(["request", "mirroring", "phone"],
                    "bad address 'phone': six hexadecimal pairs such as AA:BB:CC:DD:EE:01")

    def test_bad_nodlink_version_never_reaches_the_library(self):
        self.refuse(["request", "nodlink", PHONE, "--nodlink-version", "4.0"],
                    "bad --nodlink-version '4.0': 2.0 or 3.0")

    def test_extra_data_that_is_no_object(self):
        self.refuse(["request", "mirroring", PHONE, "--extra", "{"], "bad --extra '{': not a JSON object")

    def test_interval_that_does_not_exist(self):
        self.refuse(["advertise", "kov", "--interval", "75"], "bad --interval '75': 50, 100, 150, 200 or 300")

    def test_scenario_for_a_platform_without(self):
        self.refuse(["scan", "kov", "--platform", "linux", "--scenario", "room.json"],
                    "--scenario is for the platform 'simulator' only")

    def test_words_that_steer_a_terminal_are_written_out(self):
        self.refuse(["scan", "\x1b[2J\n"], "unknown service '\\x1b[2J\\x0a': mirroring, nodlink, kov or dummy")


class BadScenarios(unittest.TestCase):
    def test_a_mistake_is_named_with_file_line_and_field(self):
        name = scenario("bad")
        self.assertEqual(lynctl("scan", "mirroring", "--scenario", name),
                         (2, "", f"{name}:6: phones[0].rssi: must be an integer\n"))

    def test_a_file_that_is_not_there(self):
        status, out, err = lynctl("scan", "mirroring", "--scenario", "/nowhere/room.json")
        self.assertEqual((status, out, err.count("\n")), (2, "", 1))
        self.assertTrue(err.startswith("/nowhere/room.json: "), err)


class Libraries(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def provide(self, name, source=None):
        target = os.path.join(self.folder, name)
        os.makedirs(os.path.dirname(target), exist_ok=True)
        shutil.copy(source or os.path.join(BUILT, name), target)

    def provide_platform(self):
        self.provide("lyn/simulator/liblyn_platform.so.0")

    def test_a_folder_may_be_named(self):
        self.provide_platform()
        self.provide("liblyn_service.so.0")
        status, out, err = lynctl("request", "dummy", PHONE, "--lib-dir", self.folder)
        self.assertEqual((status, err), (0, ""))
        self.assertIn("Result: Success", out)

    def test_a_relative_folder_too(self):
        self.provide_platform()
        self.provide("liblyn_service.so.0")
        status, _, err = lynctl("request", "dummy", PHONE, "--lib-dir", ".", cwd=self.folder)
        self.assertEqual((status, err), (0, ""))

    def test_a_tree_that_was_moved_finds_its_own(self):
        self.provide("lib/lyn/simulator/liblyn_platform.so.0", os.path.join(BUILT, "lyn/simulator/liblyn_platform.so.0"))
        self.provide("lib/liblyn_service.so.0", os.path.join(BUILT, "liblyn_service.so.0"))
        self.provide("bin/lynctl", LYNCTL)
        moved = os.path.join(self.folder, "bin/lynctl")
        status, _, err = lynctl("request", "dummy", PHONE, program=moved, env=environment(LD_LIBRARY_PATH="/nowhere"))
        self.assertEqual((status, err), (0, ""))
        os.remove(os.path.join(self.folder, "lib/liblyn_service.so.0"))
        status, _, err = lynctl("request", "dummy", PHONE, program=moved)
        self.assertEqual(status, 1)
        self.assertTrue(err.startswith("lynctl: cannot load " + self.folder), err)

    def test_another_platform_takes_the_place_of_the_librarys_own(self):
        self.provide("liblyn_service.so.0")
        self.provide("lyn/acme/liblyn_platform.so.0", os.path.join(BUILT, "lyn/simulator/liblyn_platform.so.0"))
        status, out, err = lynctl("request", "dummy", PHONE, "--lib-dir", self.folder, "--platform", "acme")
        self.assertEqual((status, err), (0, ""))
        self.assertIn("platform acme\n", out)

    def test_a_platform_that_is_not_there(self):
        self.provide("liblyn_service.so.0")
        file = os.path.join(self.folder, "lyn/toaster/liblyn_platform.so.0")
        self.assertEqual(lynctl("scan", "kov", "--lib-dir", self.folder, "--platform", "toaster"),
                         (1, "", f"lynctl: cannot load {file}: cannot open shared object file: "
                                 "No such file or directory\n"))

    def test_a_service_library_that_is_not_there(self):
        self.provide_platform()
        file = os.path.join(self.folder, "liblyn_service.so.0")
        self.assertEqual(lynctl("scan", "kov", "--lib-dir", self.folder),
                         (1, "", f"lynctl: cannot load {file}: cannot open shared object file: "
                                 "No such file or directory\n"))

    def test_a_file_that_is_no_library(self):
        self.provide_platform()
        self.provide("liblyn_service.so.0", __file__)
        status, out, err = lynctl("scan", "kov", "--lib-dir", self.folder)
        self.assertEqual((status, out, err.count("\n")), (1, "", 1))
        self.assertIn("invalid ELF header", err)

    def test_a_library_that_lacks_a_function(self):
        self.provide_platform()
        self.provide("liblyn_service.so.0", os.path.join(BUILT, "lyn/simulator/liblyn_platform.so.0"))
        self.assertEqual(lynctl("scan", "kov", "--lib-dir", self.folder),
                         (1, "", "lynctl: liblyn_service.so.0 lacks the function lyn_create_service\n"))


class Refusals(unittest.TestCase):
    def test_nodlink_needs_bluetooth(self):
        self.assertEqual(lynctl("scan", "nodlink", "--scenario", scenario("bluetooth_off")),
                         (1, "", "lynctl: cannot create the service 'nodlink' (is Bluetooth off, or the TV going to "
                                 "sleep?): internal failure (2)\n"))


class Help(unittest.TestCase):
    def test_every_command_has_its_own(self):
        status, overview, err = lynctl("--help")
        self.assertEqual((status, err), (0, ""))
        for command in ("scan", "request", "advertise", "events"):
            self.assertIn("\n  " + command + " SERVICE", overview)
            status, out, err = lynctl(command, "--help")
            self.assertEqual((status, err), (0, ""))
            self.assertTrue(out.startswith("Usage: lynctl " + command + " SERVICE"), out)
            self.assertIn("--platform NAME", out)

    def test_the_version_is_a_number(self):
        status, out, err = lynctl("--version")
        self.assertEqual((status, err), (0, ""))
        self.assertRegex(out, r"^lynctl \d+\.\d+\.\d+\n$")


if __name__ == "__main__":
    main()
