# SPDX-License-Identifier: Apache-2.0
# Shows: packets and responses that come mixed, repeated, broken, or extended and in pieces, give the right phones
# Guest: bluetooth
from vm import packets
from vm.checks import check, equal
from vm.scripted import Controller, extended, legacy, raw
from vm.tvset import lynctl

A, B, C, D, E = ("C0:00:00:00:0%s:0%s" % (letter, letter) for letter in "ABCDE")
RESPONSE, EXTENDED_RESPONSE = 4, 0x1B
UNFINISHED, TRUNCATED = 0x20, 0x40  # bits of the kind
LEGACY_SCAN = {0x200B, 0x200C}
EXTENDED_SCAN = {0x2041, 0x2042}

PHONE_A, PHONE_B = packets.phone(unique_id=b"a" * 22), packets.phone(unique_id=b"b" * 22)
MIXED = [legacy(A, PHONE_A, rssi=-40), legacy(B, PHONE_B, rssi=-60),
         legacy(A, packets.name(b"Anna"), RESPONSE, rssi=-40),
         legacy(B, packets.name(b"Bert"), RESPONSE, rssi=-60)]
REPEATED = [event for event in MIXED for _ in range(3)]
BROKEN = [
    legacy(C, packets.phone()[:9]),                                # ends in the middle of a structure
    legacy(C, b"\x1e\xff\x75\x00\x01\x19"),                        # claims more than there is
    legacy(C, packets.phone(), count=7),                           # announces reports that do not come
    legacy(C, b""), legacy(C, b"\x00" * 31),
    raw(b"\x02"), raw(b"\x02\x01"), raw(b"\x02\x01\x00\x00"), raw(b"\x02\xff" + b"\xff" * 40),
    raw(b"\x0d\x01"), raw(b"\x0d\x01\x13\x00"), raw(b"\x7f" + b"\x00" * 20),
]
EXTENDED = [extended(A, PHONE_A, rssi=-40), extended(B, PHONE_B, rssi=-60),
            extended(A, packets.name(b"Anna"), EXTENDED_RESPONSE, rssi=-40),
            extended(B, packets.name(b"Bert"), EXTENDED_RESPONSE, rssi=-60)]


def pieces(address, data, kind, size, **more):
    """A packet that comes in several reports."""
    cuts = range(0, len(data), size)
    return [extended(address, data[at:at + size], kind | (UNFINISHED if at + size < len(data) else 0), **more)
            for at in cuts]


SCANNABLE, SCANNED = 0x0002, 0x000A
IN_PIECES = [event for pair in zip(
    [*pieces(A, PHONE_A, SCANNABLE, 11, set_id=1, rssi=-40),
     *pieces(A, packets.name(b"Anna"), SCANNED, 4, set_id=1, rssi=-40)],
    [*pieces(B, PHONE_B, SCANNABLE, 11, set_id=1, rssi=-60),
     *pieces(B, packets.name(b"Bert"), SCANNED, 4, set_id=1, rssi=-60)]) for event in pair]

LONG = packets.nodlink() + packets.structure(0x09, b"n" * 200)
MORE = packets.structure(0x09, b"m" * 250)
BEYOND_LEGACY = [
    extended(A, LONG, 0x0001, set_id=1, rssi=-40),          # connectable
    extended(B, LONG, 0x0000, set_id=2, rssi=-60),          # neither connectable nor scannable
    *pieces(C, MORE + packets.nodlink(), 0x0001, 100, set_id=3, rssi=-70),
    extended(D, packets.nodlink() + MORE[:150], 0x0001 | TRUNCATED, set_id=4, rssi=-80),
    extended(E, MORE[:100], 0x0001 | TRUNCATED, set_id=5),  # what would make it a phone was not received
    extended(E, packets.nodlink(company=118), 0x0001, set_id=5),
]

NAMED = {A: ("Anna", "a" * 22, "", -40), B: ("Bert", "b" * 22, "", -60)}
TOLD = '{"device_type":"mobile","nodlink_version":"3.0","sm_available":1}'
NAMELESS = {address: ("", "", TOLD, rssi) for address, rssi in ((A, -40), (B, -60), (C, -70), (D, -80))}


def hear(what, events, controller, service="mirroring", wanted=NAMED):
    with lynctl("scan", service, "--seconds", "0", adapter=controller.adapter, name=what) as program:
        program.wait("state", 20, state="SCANNING")
        controller.play(events, 40, 2)
        check(program.runs(), "lynctl did not survive: " + what)
        equal(program.stop(), 0, "status of lynctl")
        found = {(one["Address"], one["Name"], one["UniqueID"], one["ExtraData"], one["RSSI"])
                 for one in (event["phone"] for event in program.all("found"))}
        equal(found, {(address, *members) for address, members in wanted.items()}, "phones, " + what)


with Controller() as controller:
    controller.power_on()
    hear("mixed", MIXED, controller)
    hear("repeated", REPEATED, controller)
    hear("among broken ones", [event for pair in zip(MIXED * 3, BROKEN) for event in pair], controller)
    equal(controller.commands & (LEGACY_SCAN | EXTENDED_SCAN), LEGACY_SCAN, "how the kernel scans")

with Controller(knows_extended=True) as controller:
    controller.power_on()
    hear("extended", EXTENDED, controller)
    hear("in pieces", IN_PIECES, controller)
    hear("beyond legacy", BEYOND_LEGACY, controller, "nodlink", NAMELESS)
    equal(controller.commands & (LEGACY_SCAN | EXTENDED_SCAN), EXTENDED_SCAN, "how the kernel scans")
