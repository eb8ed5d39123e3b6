# SPDX-License-Identifier: Apache-2.0
"""lynctl scan, as lines and as JSON."""

import signal
import unittest

from harness import environment, lynctl, lynctl_json, lynctl_signalled, main, of_kind, scenario


def scan(service, room, *words):
    return lynctl("scan", service, "--seconds", "1", "--scenario", scenario(room), *words)


class Lines(unittest.TestCase):
    def test_phones_are_told_once_and_summed_up_in_a_table(self):
        status, out, err = scan("mirroring", "results")
        self.assertEqual((status, err), (0, ""))
        lines = out.splitlines()
        self.assertEqual(lines[0], 'Scanning for "mirroring" phones, platform simulator')
        self.assertEqual(sum("found" in line and "AA:BB:CC:DD:EE:02" in line for line in lines), 1)
        rows = [line for line in lines if line.startswith("│")]
        self.assertEqual(rows[0].split()[1::2][:3], ["NAME", "ADDRESS", "ID"])
        self.assertEqual(len(rows), 1 + 12)
        self.assertIn("│ Phone 2  │ AA:BB:CC:DD:EE:02 │ result-02-cdefghijklmn │  -42 │ ████▊  │", rows[3])
        self.assertRegex(lines[-1], r"^12 phones, \d+ advertisements in \d+\.\d s$")

    def test_a_room_without_phones_has_no_table(self):
        status, out, err = scan("mirroring", "nodlink")
        self.assertEqual((status, err), (0, ""))
        self.assertNotIn("│", out)
        self.assertRegex(out.splitlines()[-1], r"^0 phones, 0 advertisements in \d+\.\d s$")

    def test_nodlink_facts_have_columns(self):
        _, out, _ = scan("nodlink", "nodlink")
        rows = [[cell.strip() for cell in line.split("│")[1:5]] for line in out.splitlines() if line.startswith("│")]
        self.assertEqual(rows, [["ADDRESS", "TYPE", "MIRRORING", "VERSION"],
                                ["AA:BB:CC:DD:EE:41", "mobile", "yes", "3.0"],
                                ["AA:BB:CC:DD:EE:42", "mobile", "no", "2.0"],
                                ["AA:BB:CC:DD:EE:43", "av", "-", "-"]])

    def test_kov_phones_are_found_too(self):
        _, out, _ = scan("kov", "kov")
        self.assertIn("│ Kov phone ", out)

    def test_names_that_steer_a_terminal_are_written_out(self):
        for service, room in (("mirroring", "hostile"), ("kov", "kov")):
            _, out, _ = scan(service, room)
            for character in "\x1b\x07\r\x9b\u202e":
                self.assertNotIn(character, out)
            self.assertIn("\\x1b[2J", out)

    def test_without_a_unicode_locale_everything_is_ascii(self):
        status, out, _ = lynctl("scan", "mirroring", "--seconds", "1", "--scenario", scenario("hostile"),
                                env=environment(LC_ALL="C"))
        self.assertEqual(status, 0)
        self.assertTrue(out.isascii())
        self.assertIn("Zo\\u{eb}", out)
        self.assertIn("| NAME ", out)

    def test_the_librarys_log_is_there_on_demand(self):
        self.assertEqual(scan("mirroring", "results")[2], "")
        self.assertIn("lyn_start_scan", scan("mirroring", "results", "--verbose")[2])

    def test_dummy_has_its_fixed_phone(self):
        status, out, _ = lynctl("scan", "dummy", "--seconds", "1")
        self.assertEqual(status, 0)
        self.assertIn('│ myDevice │ 11:22:33:44:55:66 │ q1w2e3r4t5y6 │ {"appid":"music"} │  -48 │', out)


class Signals(unittest.TestCase):
    def test_each_ends_a_scan_without_limit_in_its_summary(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            status, out = lynctl_signalled("scan", "mirroring", "--seconds", "0", "--scenario", scenario("results"),
                                           until="Away", send=number)
            self.assertEqual(status, 0)
            self.assertRegex(out.splitlines()[-1], r"^12 phones, .* \(stopped by a signal\)$")

    def test_the_platform_is_told_to_stop(self):
        _, out = lynctl_signalled("scan", "mirroring", "--seconds", "0", "--scenario", scenario("results"), "--json",
                                  until="found")
        states = [line for line in out.splitlines() if '"event":"state"' in line]
        self.assertIn('"state":"READY"', states[-1])


class Json(unittest.TestCase):
    def test_every_advertisement_is_an_object(self):
        status, objects = lynctl_json("scan", "mirroring", "--seconds", "1", "--scenario", scenario("results"))
        self.assertEqual(status, 0)
        first = of_kind(objects, "found")[0]["phone"]
        self.assertEqual(first, {"Address": "AA:BB:CC:DD:EE:00", "ExtraData": "", "Name": "Phone 0", "RSSI": -40,
                                 "UniqueID": "result-00-cdefghijklmn"})
        self.assertEqual([each["state"] for each in of_kind(objects, "state")], ["SCANNING", "READY"])

    def test_the_last_object_sums_up(self):
        _, objects = lynctl_json("scan", "mirroring", "--seconds", "1", "--scenario", scenario("results"))
        summary = objects[-1]
        self.assertEqual((summary["event"], summary["service"], summary["interrupted"]), ("summary", "mirroring", False))
        self.assertEqual(summary["advertisements"], len(of_kind(objects, "found")))
        self.assertEqual(len(summary["phones"]), 12)
        phone = summary["phones"][2]
        self.assertEqual((phone["Address"], phone["Name"], phone["RSSI"]), ("AA:BB:CC:DD:EE:02", "Phone 2", -42))
        self.assertEqual(phone["advertisements"],
                         sum(each["phone"]["Address"] == phone["Address"] for each in of_kind(objects, "found")))

    def test_hostile_names_are_data(self):
        _, objects = lynctl_json("scan", "mirroring", "--seconds", "1", "--scenario", scenario("hostile"))
        self.assertEqual(objects[-1]["phones"][0]["Name"], "\x1b[2J\u202eZoë\r\x9b")


if __name__ == "__main__":
    main()
