# SPDX-License-Identifier: Apache-2.0
"""Phones on hci1: lyn-phone."""
import json
import os

from .hci import Repeater
from .programs import Teller

BUILD = os.environ["LYN_VM_BUILD"]
ADAPTER = "hci1"

SERVICES = {
    "mirroring": ("f7608236-13bd-4a99-bbcd-9426bccb6c24", "9be85432-b1db-416c-9e1c-d6d381305337"),
    "nodlink": ("95e60810-8ad0-11e6-bdf4-4b1e122d00d0", "7909f901-904c-11e6-bdf4-9bbdfdaad9d9"),
    "kov": ("1e5ed7a3-9e92-41c1-af60-6a15643dfb34", "fc4e4003-dd1f-4896-bc77-35a759445f69"),
}


class LynPhone(Teller):
    """lyn-phone, on the air again and again."""

    def __init__(self, name, *words):
        super().__init__(name, os.path.join(BUILD, "bin", "lyn-phone"), "--adapter", ADAPTER, "--json", *words)
        self._repeater = None
        try:
            self.wait("advertising", 30)
        except BaseException:
            self.stop()
            raise
        self._repeater = Repeater(int(ADAPTER.removeprefix("hci")))

    def stop(self, *how, **limit):
        if self._repeater is not None:
            self._repeater.stop()
            self._repeater = None
        return super().stop(*how, **limit)


def lyn_phone(*words, name="phone"):
    """A phone that is on the air. To be used with `with`."""
    return LynPhone(name, *words)


def scripted(phone, name="phone"):
    """The same, made of one phone of a scenario, a dictionary."""
    scenario = os.path.abspath("%s.json" % name)
    with open(scenario, "w", encoding="utf-8") as file:
        json.dump({"phones": [{"address": "00:00:00:00:00:01", **phone}]}, file)
    return lyn_phone("--scenario", scenario, name=name)


def feature(which, *answers):
    """A phone of a feature that gives these answers, as a dictionary of a scenario."""
    packets = {"uniqueId": "0123456789abcdefghijkl", "name": "Kitchen"}
    if which == "nodlink":
        packets = {"kind": "mobile", "mirroringAvailable": True, "version": "3.0"}
    return {"advertising": {"feature": which, **packets},
            "services": [{"feature": which, "answers": list(answers)}]}
