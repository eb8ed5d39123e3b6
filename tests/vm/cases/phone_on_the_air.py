# SPDX-License-Identifier: Apache-2.0
# Shows: what lyn-phone advertises comes through the air byte by byte, for each feature, and ends with it
# Guest: bluetooth
from vm.checks import check, equal
from vm.hci import Air, Management
from vm.phones import feature, lyn_phone, scripted

with Management() as management:
    address = management.address(1)


def heard(air):
    air.begin_scan()
    reports = [report for report in air.hear(1.5) if report.address == address]
    air.end_scan()
    packets = {report.data for report in reports if not report.is_response}
    responses = {report.data for report in reports if report.is_response}
    return packets, responses


def marked(marker, text):
    value = b"\x75\x00\x01" + bytes([marker]) + text
    return bytes([len(value) + 1, 0xFF]) + value


UNIQUE_ID = b"0123456789abcdefghijkl"
NODLINK = bytes.fromhex("0201061 1ff7500000d00000004010000000000 0001".replace(" ", ""))
WANTED = {
    "mirroring": (b"\x02\x01\x06" + marked(25, UNIQUE_ID), marked(25, b"Kitchen")),
    "kov": (b"\x02\x01\x06" + marked(23, UNIQUE_ID), marked(23, b"Kitchen")),
    "nodlink": (NODLINK, b""),
}

with Air(0) as air:
    for which, (packet, response) in WANTED.items():
        with scripted(feature(which), name=which) as phone:
            packets, responses = heard(air)
            equal(packets, {packet}, "packets of the %s phone" % which)
            check(responses <= {response, b""} and (not response or response in responses),
                  "scan responses of the %s phone: %r" % (which, responses))
            equal(phone.stop(), 0, "status of lyn-phone")
        equal(heard(air), (set(), set()), "on the air after the %s phone" % which)

    with lyn_phone("--feature", "kov", "--name", "Hall", "--id", "abcdefghijklmnopqrstuv", name="quick") as phone:
        packets, responses = heard(air)
        equal(packets, {b"\x02\x01\x06" + marked(23, b"abcdefghijklmnopqrstuv")}, "packets of the quick phone")
        equal(responses, {marked(23, b"Hall")}, "scan responses of the quick phone")
