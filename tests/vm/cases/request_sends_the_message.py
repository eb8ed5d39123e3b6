# SPDX-License-Identifier: Apache-2.0
# Shows: the phone receives each byte of the message, with the access point's channel and the real addresses
# Guest: bluetooth wifi
import os

from vm.checks import equal
from vm.hci import Management
from vm.phones import feature, scripted
from vm.tvset import TV_NAME, control_message, request, scan, settings

with Management() as management:
    address = management.address(1)
    tv = management.address(0)
settings(name=TV_NAME, channel=99)


def received(service, *words):
    with scripted(feature(service, "Success"), name=service) as phone:
        scan(service, 2)
        equal(request(service, address, *words)[0], 0, "status of the %s request" % service)
        return bytes.fromhex(phone.wait("written", peer=tv)["hex"])


equal(received("mirroring"), control_message(type="mirroring"), "the mirroring message")
equal(received("mirroring", "--extra", '{"key":"valu\\u00e9","displayName":"Mine"}'),
      control_message(type="mirroring", key="valu\u00e9", displayName="Mine"), "the message with extra data")
equal(received("kov"), control_message(type="kov"), "the kov message")
equal(received("nodlink"), control_message(type="nodLink", BtMac=tv), "the nodlink message")
equal(received("nodlink", "--nodlink-version", "3.0"), control_message(type="nodLink3.0", BtMac=tv),
      "the message of nodlink 3.0")

settings(channel=0)
equal(received("kov"), control_message(type="kov", P2PChannel="1"), "the message on the social channel")

os.makedirs("files/opt/etc")
with open("files/opt/etc/.lyn_appid", "w", encoding="utf-8") as file:
    file.write("org.example.guest more\n")
os.environ["LYN_FILES_DIR"] = os.path.abspath("files")
equal(received("mirroring"), control_message(type="mirroring", P2PChannel="1", appLaunch="org.example.guest"),
      "the message that names an application")
