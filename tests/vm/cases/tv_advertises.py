# SPDX-License-Identifier: Apache-2.0
# Shows: the TV's advertisement begins and ends on the air, as hci1 hears it, when the setting is written
# Guest: bluetooth
import json
import os

from vm.checks import check, equal, wait_for
from vm.hci import Air, Management
from vm.programs import Program, run

BUILD = os.environ["LYN_VM_BUILD"]
KEY = "memory/org.nuvex.bleapp/%s_trigger"
os.environ["LYN_BT_ADAPTER"] = "hci0"

with open("advertiser.json", "w", encoding="utf-8") as file:
    json.dump({"mirroring": {"manufacturerData": {"company": 117, "data": "42 04 01 01 AA BB"}},
               "kov": {"manufacturerData": {"company": 117, "data": "42 04 01 02"}}}, file)
MIRRORING = bytes.fromhex("09ff75004204 0101aabb".replace(" ", ""))
KOV = bytes.fromhex("07ff750042040102")

with Management() as management:
    address = management.address(0)


def setting(feature, value):
    run(os.path.join(BUILD, "bin", "lynctl"), "settings", "set", KEY % feature, str(value))


def heard(seconds=1.5):
    with Air(1) as air:
        air.begin_scan()
        packets = {report.data for report in air.hear(seconds)
                   if report.address == address and not report.is_response}
        air.end_scan()
    return packets


def on_air(payload):
    return any(payload in packet for packet in heard())


with Program("advertiser.log", os.path.join(BUILD, "bin", "lyn-advertiser"), "--config",
             os.path.abspath("advertiser.json")) as advertiser:
    check(not heard(), "something is on the air before the setting is written")
    setting("mirroring", 100)
    wait_for(lambda: on_air(MIRRORING), 15, "the mirroring advertisement")
    check(not on_air(KOV), "kov is advertised without having been asked for")
    setting("mirroring", 0)
    wait_for(lambda: not heard(), 15, "the end of the mirroring advertisement")
    setting("kov", 50)
    wait_for(lambda: on_air(KOV), 15, "the kov advertisement")
    equal(advertiser.stop(), 0, "status of lyn-advertiser")
    wait_for(lambda: not heard(), 15, "the end of the advertisement with lyn-advertiser")
