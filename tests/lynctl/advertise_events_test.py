# SPDX-License-Identifier: Apache-2.0
"""lynctl advertise and lynctl events."""

import re
import signal
import unittest

from harness import lynctl, lynctl_json, lynctl_signalled, main, of_kind, scenario


def intervals_written(log):
    return [int(number) for number in re.findall(r"Interval : (\d+)", log)]


class Advertise(unittest.TestCase):
    def test_each_interval_is_written(self):
        for service in ("mirroring", "kov"):
            for interval in ("50", "100", "150", "200", "300"):
                with self.subTest(service + interval):
                    status, out, log = lynctl("advertise", service, "--interval", interval, "--verbose")
                    self.assertEqual(status, 0)
                    self.assertEqual(intervals_written(log), [int(interval)])
                    self.assertIn(f'for "{service}" requested: its interval is set to {interval}.', out)
                    self.assertIn("stays so after lynctl has ended", out)

    def test_stopping_ends_in_zero(self):
        status, out, log = lynctl("advertise", "mirroring", "--stop", "--verbose")
        self.assertEqual(status, 0)
        self.assertEqual(intervals_written(log), [300, 0])
        self.assertIn('for "mirroring" stopped', out)

    def test_services_that_do_not_advertise_say_so(self):
        for service in ("nodlink", "dummy"):
            for words in (["--interval", "100"], ["--stop"]):
                with self.subTest(service):
                    status, out, log = lynctl("advertise", service, *words, "--verbose")
                    self.assertEqual(status, 0)
                    self.assertEqual(intervals_written(log), [])
                    self.assertIn(f'"{service}" does not advertise', out)


class Events(unittest.TestCase):
    def test_bluetooth_going_off_and_on_is_followed(self):
        status, objects = lynctl_json("events", "nodlink", "--seconds", "2", "--scenario", scenario("timeline"))
        self.assertEqual(status, 0)
        self.assertEqual([each["state"] for each in of_kind(objects, "state")], ["NOT_READY", "READY"])
        self.assertEqual([each["value"] for each in of_kind(objects, "state")], [3, 0])
        self.assertEqual((objects[-1]["event"], objects[-1]["changes"], objects[-1]["interrupted"]),
                         ("summary", 2, False))

    def test_people_see_lines(self):
        status, out, err = lynctl("events", "nodlink", "--seconds", "2", "--scenario", scenario("timeline"))
        self.assertEqual((status, err), (0, ""))
        self.assertRegex(out, r"state +NOT_READY\n.*state +READY\n2 changes\n$")

    def test_services_that_do_not_watch_say_so(self):
        _, out, _ = lynctl("events", "mirroring", "--seconds", "1", "--scenario", scenario("timeline"))
        self.assertIn('Only "nodlink" changes its state', out)
        self.assertTrue(out.endswith("\n0 changes\n"))

    def test_without_a_limit_it_ends_with_a_signal(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            status, out = lynctl_signalled("events", "nodlink", "--scenario", scenario("timeline"), until=" READY",
                                           send=number)
            self.assertEqual(status, 0)
            self.assertTrue(out.endswith("2 changes (stopped by a signal)\n"), out)


if __name__ == "__main__":
    main()
