# SPDX-License-Identifier: Apache-2.0
"""A controller made of a script, on /dev/vhci: it is asked to scan as any other, and hears what the script says,
in that order, as often and as broken as it likes. It makes no connections."""
import os
import select
import struct
import threading
import time

from .checks import wait_for
from .hci import Management

COMMAND, DATA, EVENT = 1, 2, 4
COMMAND_COMPLETE = 0x0E

SCAN_ENABLE, EXTENDED_SCAN_ENABLE = 0x200C, 0x2042

# What the kernel asks before it uses a controller, and what a small LE controller says. Every other command
# succeeds without parameters.
ANSWERS = {
    0x1001: bytes([0, 9, 0, 0, 9]) + struct.pack("<HH", 0xFFFF, 0),  # version 5.0
    0x1003: bytes([0, 0, 0, 0, 0, 0x60, 0, 0, 0]),                   # features: LE and no BR/EDR
    0x1005: struct.pack("<BHBHH", 0, 192, 0, 1, 0),                  # buffers
    0x1009: bytes([0]) + bytes.fromhex("0A000109AA00"),              # address
    0x2002: struct.pack("<BHB", 0, 251, 4),                          # LE buffers
    0x2007: bytes(2),                                                # transmit power
    0x200F: bytes([0, 8]),                                           # accept list
    0x2018: bytes([0]) + bytes(range(8)),                            # random number
    0x201C: bytes([0]) + b"\xff" * 8,                                # LE states
    0x202A: bytes([0, 8]),                                           # resolving list
}
EXTENDED_ANSWERS = {
    0x203A: bytes([0, 0xFB, 0]),  # length of advertising data
    0x203B: bytes([0, 1]),        # advertising sets
}
EXTENDED_ADVERTISING_FEATURE = 1 << 12
# The commands that the kernel uses instead when the controller knows extended advertisements.
EXTENDED_COMMANDS = {37: 0x60}


def legacy(address, data, kind=0, rssi=-50, count=1):
    """An advertising report; `kind` 4 is a scan response. `count` reports are announced, one is there."""
    return _meta(bytes([0x02, count, kind, 0]) + _reversed(address) + bytes([len(data)]) + data + _signed(rssi))


def extended(address, data, kind=0x13, rssi=-50, set_id=0xFF):
    """An extended advertising report; of legacy packets: `kind` 0x13, of their scan responses 0x1b."""
    secondary = 1 if set_id != 0xFF else 0
    return _meta(struct.pack("<BBHB", 0x0D, 1, kind, 0) + _reversed(address) +
                 bytes([1, secondary, set_id, 127]) + _signed(rssi) + bytes(9) + bytes([len(data)]) + data)


def raw(parameters):
    """An LE event with any parameters, right or wrong."""
    return _meta(parameters)


def _meta(parameters):
    return bytes([EVENT, 0x3E, len(parameters)]) + parameters


def _reversed(address):
    return bytes.fromhex(address.replace(":", ""))[::-1]


def _signed(number):
    return struct.pack("b", number)


class Controller:
    """On the machine while this lives. While somebody scans, play() sends events: each call is a script."""

    def __init__(self, knows_extended=False):
        with Management() as management:
            before = management.indexes()
        self._answers = dict(ANSWERS)
        features = EXTENDED_ADVERTISING_FEATURE if knows_extended else 0
        self._answers[0x2003] = bytes([0]) + struct.pack("<Q", features)
        commands = bytearray(64)
        if knows_extended:
            self._answers.update(EXTENDED_ANSWERS)
            for octet, bits in EXTENDED_COMMANDS.items():
                commands[octet] = bits
        self._answers[0x1002] = bytes([0]) + bytes(commands)
        self._device = os.open("/dev/vhci", os.O_RDWR)
        os.write(self._device, b"\xff\x00")
        self.commands = set()
        self.scanning = threading.Event()
        self._ends = False
        self._thread = threading.Thread(target=self._serve, daemon=True)
        self._thread.start()
        self.index = wait_for(lambda: self._added(before), 15, "the scripted controller")
        self.adapter = "hci%d" % self.index

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._ends = True
        self._thread.join()
        os.close(self._device)

    @staticmethod
    def _added(before):
        with Management() as management:
            new = set(management.indexes()) - set(before)
        return new.pop() if new else None

    def power_on(self):
        """Waits until bluetoothd has found the controller and given it power."""
        def powered():
            with Management() as management:
                return management.powered(self.index)
        wait_for(powered, 20, "power for the scripted controller")

    def play(self, events, per_second, seconds):
        """Sends the events in turn, once somebody scans. Gives the number sent back."""
        if not self.scanning.wait(20):
            raise TimeoutError("nobody scans")
        begin = time.monotonic()
        sent = 0
        while (now := time.monotonic() - begin) < seconds:
            while sent < now * per_second:
                self._send(events[sent % len(events)])
                sent += 1
            time.sleep(0.002)
        return sent

    def _serve(self):
        while not self._ends:
            self._tick()
            if not select.select([self._device], [], [], 0.05)[0]:
                continue
            packet = os.read(self._device, 2048)
            if packet[0] == COMMAND:
                self._answer(struct.unpack_from("<H", packet, 1)[0], packet[4:])
            elif packet[0] == DATA:
                self._data(packet[1:])

    def _tick(self):
        """Now and then, between what the kernel asks."""

    def _data(self, packet):
        """What the kernel sends over a connection: there is none."""

    def _send(self, packet):
        os.write(self._device, packet)

    def _answer(self, code, parameters):
        self.commands.add(code)
        if code in (SCAN_ENABLE, EXTENDED_SCAN_ENABLE):
            if parameters[0]:
                self.scanning.set()
            else:
                self.scanning.clear()
        answer = bytes([1]) + struct.pack("<H", code) + self._answers.get(code, b"\0")
        self._send(bytes([EVENT, COMMAND_COMPLETE, len(answer)]) + answer)
