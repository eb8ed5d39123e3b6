# SPDX-License-Identifier: Apache-2.0
# Shows: a NodLink phone names its application, the TV says how to mirror it, and the phone agrees
# Guest: bluetooth wifi
import json
import os

from vm.checks import equal
from vm.hci import Management
from vm.phones import feature, scripted
from vm.tvset import request, scan, settings

with Management() as management:
    address = management.address(1)
    tv = management.address(0)

FOLDER = "files/usr/apps/com.calyxon.tv.nfc-daemon/data"
os.makedirs(FOLDER)
with open(FOLDER + "/meta_data_nodlink.json", "w", encoding="utf-8") as file:
    json.dump({"screenmirroring_fullview": ["org.example.film"], "soundmirroring": ["org.example.music"]}, file)
os.environ["LYN_FILES_DIR"] = os.path.abspath("files")
settings(channel=99)

for application, service, view, number in (("org.example.film", "screen", "full", 1),
                                           ("org.example.music", "sound", "full", 2),
                                           ("org.example.other", "screen", "multi", 0)):
    answers = [{"json": {"type": "fgApp", "packageName": application}}, {"text": "Success", "delayMs": 80}]
    with scripted(feature("nodlink", *answers), name=application) as phone:
        scan("nodlink", 2)
        status, result = request("nodlink", address, "--nodlink-version", "3.0")
        equal(status, 0, "status for %s" % application)
        first = json.loads(phone.wait("written", peer=tv)["text"])
        equal(first["type"], "nodLink3.0", "type of the first message")
        equal(phone.wait("written", peer=tv)["text"], json.dumps(
            {"BtMac": tv, "service": service, "type": "reqService", "view": view}, sort_keys=True,
            separators=(",", ":")), "the second message for %s" % application)
        print(result)
        equal(result["nodlink_type"], number, "type of the session for %s" % application)
