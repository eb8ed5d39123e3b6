# SPDX-License-Identifier: Apache-2.0
# Shows: packets and responses of several phones that come mixed, again and again, or broken, give the right phones
# Guest: bluetooth
from vm import packets
from vm.checks import check, equal
from vm.scripted import Controller, extended, legacy, raw
from vm.tvset import lynctl

A, B, C = "C0:00:00:00:0A:0A", "C0:00:00:00:0B:0B", "C0:00:00:00:0C:0C"
RESPONSE, EXTENDED_RESPONSE = 4, 0x1B
WANTED = {A: ("Anna", "a" * 22), B: ("Bert", "b" * 22)}

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


def hear(what, events, controller):
    with lynctl("scan", "mirroring", "--seconds", "0", adapter=controller.adapter, name=what) as program:
        controller.play(events, 40, 4)
        check(program.runs(), "lynctl did not survive: " + what)
        equal(program.stop(), 0, "status of lynctl")
        phones = program.all("summary")[0]["phones"]
        found = {phone["Address"]: (phone["Name"], phone["UniqueID"]) for phone in phones}
        signals = {(event["phone"]["Address"], event["phone"]["RSSI"]) for event in program.all("found")}
        equal(found, WANTED, "phones, " + what)
        equal(signals, {(A, -40), (B, -60)}, "signals, " + what)


with Controller() as controller:
    controller.power_on()
    hear("mixed", MIXED, controller)
    hear("repeated", REPEATED, controller)
    hear("among broken ones", [event for pair in zip(MIXED * 3, BROKEN) for event in pair], controller)

with Controller(knows_extended=True) as controller:
    controller.power_on()
    hear("extended", EXTENDED, controller)
