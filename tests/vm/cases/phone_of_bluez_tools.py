# SPDX-License-Identifier: Apache-2.0
# Shows: a phone made of bluetoothctl and btmgmt is found by packet and scan response, gets the message, and agrees
# Guest: bluetooth wifi
from vm import packets
from vm.bluezphone import BluezPhone
from vm.checks import equal
from vm.hci import Management
from vm.tvset import TV_NAME, control_message, lynctl, scan, settings

NODLINK = bytes.fromhex("00 0D 00 00 00 04 01 00 00 00 00 00 00 01")
with Management() as management:
    tv = management.address(0)
settings(name=TV_NAME, channel=99)


def agrees(phone, service, **members):
    with lynctl("request", service, phone.address, name=service) as asking:
        sender, written, characteristic = phone.message()
        equal(sender, tv, "who writes")
        equal(written, control_message(**members), "what is written")
        phone.answer(tv, characteristic, "Success")
        equal(asking.finish(), 0, "status of the %s request" % service)
    phone.wait_until_alone()


with BluezPhone("nodlink", "mirroring") as phone:
    phone.advertise(117, NODLINK)
    found = scan("nodlink", 2)
    equal(found[phone.address]["ExtraData"], '{"device_type":"mobile","nodlink_version":"3.0","sm_available":1}',
          "what the packet says")
    agrees(phone, "nodlink", type="nodLink", BtMac=tv)
    phone.advertise_off()

    phone.advertise_packets(packets.manufacturer(117, bytes([1, packets.MIRRORING]) + packets.UNIQUE_ID),
                            packets.name(b"Kitchen"))
    one = scan("mirroring", 2)[phone.address]
    equal((one["Name"], one["UniqueID"]), ("Kitchen", packets.UNIQUE_ID.decode()), "name and id")
    agrees(phone, "mirroring", type="mirroring")
