# SPDX-License-Identifier: Apache-2.0
"""lynctl request: states, what goes over the air, results and statuses."""

import json
import signal
import unittest

from harness import lynctl, lynctl_json, lynctl_signalled, main, of_kind, scenario

RESULTS = {0: "Success", 1: "GattFail", 2: "NotRegisteredDevice", 3: "UnknownErr", 4: "CommandErr", 5: "NotSupported",
           6: "Connected", 8: "NotTap", 9: "NotStartedKov", 10: "NotStartedMirroring", 11: "GattDisconnected"}
NODLINK = ("--scenario", scenario("nodlink"))


def ask(service, address, room, *words):
    return lynctl("request", service, address, "--scenario", scenario(room), *words)


class Results(unittest.TestCase):
    def test_each_has_its_name_and_status(self):
        for value, name in RESULTS.items():
            with self.subTest(name):
                status, out, err = ask("mirroring", f"AA:BB:CC:DD:EE:{value:02X}", "results")
                self.assertEqual((status, err), (10 + value if value else 0, ""))
                self.assertIn(f"\nResult: {name} (", out)

    def test_each_has_its_object(self):
        for value, name in RESULTS.items():
            with self.subTest(name):
                status, objects = lynctl_json("request", "mirroring", f"AA:BB:CC:DD:EE:{value:02X}", "--scenario",
                                              scenario("results"))
                self.assertEqual(status, 10 + value if value else 0)
                last = objects[-1]
                self.assertEqual((last["event"], last["result"], last["value"]), ("result", name, value))
                self.assertNotIn("nodlink_type", last)

    def test_a_phone_that_cannot_be_reached_is_a_gatt_failure(self):
        status, objects = lynctl_json("request", "mirroring", "AA:BB:CC:DD:EE:F0", "--scenario", scenario("results"))
        self.assertEqual((status, objects[-1]["result"]), (11, "GattFail"))
        self.assertEqual(len(of_kind(objects, "connect_failed")), 1)
        self.assertEqual(of_kind(objects, "connected"), [])

    def test_dummy_always_agrees(self):
        status, out, err = lynctl("request", "dummy", "00:00:00:00:00:00")
        self.assertEqual((status, err), (0, ""))
        self.assertIn("Result: Success", out)


class Air(unittest.TestCase):
    def test_everything_is_shown_in_order(self):
        _, objects = lynctl_json("request", "mirroring", "AA:BB:CC:DD:EE:00", "--scenario", scenario("results"))
        self.assertEqual([each.get("state", each["event"]) for each in objects if each["event"] != "disconnected"],
                         ["READY", "REQUESTING", "connected", "written", "answered", "READY", "result"])
        self.assertEqual(len(of_kind(objects, "disconnected")), 1)
        self.assertEqual({each["address"] for each in objects if "address" in each}, {"AA:BB:CC:DD:EE:00"})

    def test_the_message_is_the_one_that_the_phone_got(self):
        _, objects = lynctl_json("request", "mirroring", "AA:BB:CC:DD:EE:00", "--scenario", scenario("results"))
        written = of_kind(objects, "written")[0]["text"]
        message = json.loads(written)
        self.assertEqual((message["type"], message["displayName"]), ("mirroring", "Test TV"))
        self.assertEqual(of_kind(objects, "answered")[0]["text"], "Success")
        _, out, _ = ask("mirroring", "AA:BB:CC:DD:EE:00", "results")
        self.assertRegex(out, r"state +REQUESTING\n")
        self.assertIn("TV → phone   " + written + "\n", out)
        self.assertIn("phone → TV   Success\n", out)

    def test_a_link_that_goes_down_behind_the_result_is_awaited_but_not_for_long(self):
        for address, seen in (("AA:BB:CC:DD:EE:71", 1), ("AA:BB:CC:DD:EE:72", 0)):
            status, objects = lynctl_json("request", "mirroring", address, "--scenario", scenario("farewell"))
            self.assertEqual((status, objects[-1]["result"]), (0, "Success"))
            self.assertEqual(len(of_kind(objects, "disconnected")), seen)

    def test_extra_data_is_in_the_message(self):
        _, objects = lynctl_json("request", "mirroring", "AA:BB:CC:DD:EE:00", "--scenario", scenario("results"),
                                 "--extra", '{"appid": "music", "displayName": "Mine"}')
        message = json.loads(of_kind(objects, "written")[0]["text"])
        self.assertEqual((message["appid"], message["displayName"]), ("music", "Mine"))

    def test_an_address_may_be_given_in_lower_case(self):
        self.assertEqual(ask("mirroring", "aa:bb:cc:dd:ee:00", "results")[0], 0)

    def test_kov_is_asked_as_kov(self):
        status, objects = lynctl_json("request", "kov", "AA:BB:CC:DD:EE:21", "--scenario", scenario("kov"))
        self.assertEqual(status, 0)
        self.assertEqual(json.loads(of_kind(objects, "written")[0]["text"])["type"], "kov")

    def test_an_answer_that_steers_a_terminal_is_written_out(self):
        status, out, _ = ask("mirroring", "AA:BB:CC:DD:EE:31", "hostile")
        self.assertEqual(status, 13)
        self.assertNotIn("\x1b", out)
        self.assertIn("phone → TV   \\x1b]0;x\\x07\\xff\\x0aOK\n", out)
        _, objects = lynctl_json("request", "mirroring", "AA:BB:CC:DD:EE:31", "--scenario", scenario("hostile"))
        self.assertEqual(of_kind(objects, "answered")[0]["hex"], "1b5d303b7807ff0a4f4b")


class NodLink(unittest.TestCase):
    def request(self, address, *words):
        status, objects = lynctl_json("request", "nodlink", address, *NODLINK, *words)
        return status, objects, [json.loads(each["text"]) for each in of_kind(objects, "written")]

    def test_both_messages_and_the_mode_are_shown(self):
        status, objects, messages = self.request("AA:BB:CC:DD:EE:41", "--nodlink-version", "3.0")
        self.assertEqual(status, 0)
        self.assertEqual(messages[0]["type"], "nodLink3.0")
        self.assertEqual(messages[1], {"type": "reqService", "service": "screen", "view": "full",
                                       "BtMac": "10:20:30:40:50:60"})
        self.assertEqual((objects[-1]["nodlink_type"], objects[-1]["nodlink_mode"]), (1, "full view"))

    def test_sound_is_another_mode(self):
        _, objects, messages = self.request("AA:BB:CC:DD:EE:42", "--nodlink-version", "2.0")
        self.assertEqual((messages[0]["type"], messages[1]["service"]), ("nodLink", "sound"))
        self.assertEqual((objects[-1]["nodlink_type"], objects[-1]["nodlink_mode"]), (2, "sound"))

    def test_people_see_the_mode_of_a_success(self):
        _, out, _ = lynctl("request", "nodlink", "AA:BB:CC:DD:EE:41", *NODLINK)
        self.assertTrue(out.endswith("Result: Success (the phone starts the session)\nMode:   full view\n"), out)
        self.assertEqual(out.count("TV → phone"), 2)

    def test_a_refusal_has_no_mode_worth_telling(self):
        status, out, _ = lynctl("request", "nodlink", "AA:BB:CC:DD:EE:43", *NODLINK)
        self.assertEqual(status, 15)
        self.assertNotIn("Mode:", out)


class Signals(unittest.TestCase):
    def test_each_ends_a_request_with_its_status(self):
        for number, status in ((signal.SIGINT, 130), (signal.SIGTERM, 143)):
            with self.subTest(number):
                ended, out = lynctl_signalled("request", "mirroring", "AA:BB:CC:DD:EE:51", "--scenario",
                                              scenario("silent"), until="TV → phone", send=number)
                self.assertEqual(ended, status)
                self.assertTrue(out.endswith("Interrupted before the result.\n"), out)

    def test_programs_are_told_too(self):
        ended, out = lynctl_signalled("request", "mirroring", "AA:BB:CC:DD:EE:51", "--scenario", scenario("silent"),
                                      "--json", until="written")
        self.assertEqual(ended, 130)
        self.assertEqual(json.loads(out.splitlines()[-1])["event"], "interrupted")


if __name__ == "__main__":
    main()
