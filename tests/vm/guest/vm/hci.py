# SPDX-License-Identifier: Apache-2.0
"""Bluetooth sockets of the kernel: management, and what a controller hears."""
import ctypes
import os
import select
import socket
import struct
import threading
import time

from .checks import Failed

AF_BLUETOOTH = 31
BTPROTO_HCI = 1
CHANNEL_RAW, CHANNEL_CONTROL = 0, 3
NO_INDEX = 0xFFFF
SOL_HCI, HCI_FILTER = 0, 2
EVENT_PACKET, COMMAND_PACKET = 4, 1
LE_META_EVENT = 0x3E
ADVERTISING_REPORT, EXTENDED_REPORT = 0x02, 0x0D
SCAN_RESPONSE = 0x04
EXTENDED_SCAN_RESPONSE = 0x08

_libc = ctypes.CDLL(None, use_errno=True)


def _open(channel, index):
    # Python's own bind() cannot choose a channel.
    opened = socket.socket(AF_BLUETOOTH, socket.SOCK_RAW | socket.SOCK_CLOEXEC, BTPROTO_HCI)
    address = struct.pack("<HHH", AF_BLUETOOTH, index, channel)
    if _libc.bind(opened.fileno(), address, len(address)) != 0:
        number = ctypes.get_errno()
        opened.close()
        raise OSError(number, os.strerror(number))
    return opened


class Management:
    """The kernel's management of controllers. See the kernel's and BlueZ's mgmt-api."""
    READ_INDEX_LIST, READ_INFO, SET_POWERED, GET_CONNECTIONS = 0x03, 0x04, 0x05, 0x15
    READ_ADVERTISING, ADD_ADVERTISING, REMOVE_ADVERTISING = 0x3D, 0x3E, 0x3F
    SET_SYSTEM_CONFIGURATION = 0x4C
    LE_CONNECT_TIMEOUT = 0x1B

    def __init__(self):
        self._socket = _open(CHANNEL_CONTROL, NO_INDEX)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._socket.close()

    def command(self, code, index, data=b"", limit=5):
        """The parameters of the answer. Failed when there is none, or an error."""
        self._socket.send(struct.pack("<HHH", code, index, len(data)) + data)
        end = time.monotonic() + limit
        while time.monotonic() < end:
            if not select.select([self._socket], [], [], 0.2)[0]:
                continue
            packet = self._socket.recv(4096)
            event, _, _ = struct.unpack_from("<HHH", packet)
            if event in (1, 2) and struct.unpack_from("<H", packet, 6)[0] == code:
                if packet[8] != 0:
                    raise Failed("management command 0x%02x failed with status %d" % (code, packet[8]))
                return packet[9:]
        raise Failed("management command 0x%02x got no answer" % code)

    def indexes(self):
        data = self.command(self.READ_INDEX_LIST, NO_INDEX)
        count = struct.unpack_from("<H", data)[0]
        return sorted(struct.unpack_from("<%dH" % count, data, 2))

    def address(self, index):
        return self.command(self.READ_INFO, index)[5::-1].hex(":").upper()

    def powered(self, index):
        return bool(struct.unpack_from("<I", self.command(self.READ_INFO, index), 13)[0] & 1)

    def set_powered(self, index, powered):
        self.command(self.SET_POWERED, index, bytes([powered]))

    def set_connect_timeout(self, index, milliseconds):
        self.command(self.SET_SYSTEM_CONFIGURATION, index,
                     struct.pack("<HBH", self.LE_CONNECT_TIMEOUT, 2, milliseconds))

    def connections(self, index):
        return struct.unpack_from("<H", self.command(self.GET_CONNECTIONS, index))[0]

    def advertisements(self, index):
        return self.command(self.READ_ADVERTISING, index)[7]


class Report:
    """One advertising packet or scan response as a controller reports it."""

    def __init__(self, address, data, is_response, rssi):
        self.address = address
        self.data = data
        self.is_response = is_response
        self.rssi = rssi

    def __repr__(self):
        return "%s %s %s" % (self.address, "response" if self.is_response else "packet", self.data.hex(" "))


def _legacy(event):
    reports = []
    at = 2
    for _ in range(event[1]):
        kind, length = event[at], event[at + 8]
        address = event[at + 2:at + 8][::-1].hex(":").upper()
        data = event[at + 9:at + 9 + length]
        rssi = struct.unpack_from("b", event, at + 9 + length)[0]
        reports.append(Report(address, data, kind == SCAN_RESPONSE, rssi))
        at += 10 + length
    return reports


class Air:
    """What a controller hears while somebody scans with it: bluetoothd, or begin_scan() of this class."""

    def __init__(self, index):
        self._socket = _open(CHANNEL_RAW, index)
        self._socket.setsockopt(SOL_HCI, HCI_FILTER,
                                struct.pack("<IIIHxx", 1 << EVENT_PACKET, 0, 1 << (LE_META_EVENT - 32), 0))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._socket.close()

    def _command(self, code, parameters):
        self._socket.send(struct.pack("<BHB", COMMAND_PACKET, code, len(parameters)) + parameters)

    def begin_scan(self):
        """Active scanning, every report, without bluetoothd."""
        self._command(0x200B, struct.pack("<BHHBB", 1, 0x10, 0x10, 0, 0))
        self._command(0x200C, bytes([1, 0]))

    def end_scan(self):
        self._command(0x200C, bytes([0, 0]))

    def hear(self, seconds):
        """The reports of some time."""
        reports = []
        end = time.monotonic() + seconds
        while (left := end - time.monotonic()) > 0:
            if select.select([self._socket], [], [], left)[0]:
                packet = self._socket.recv(4096)
                if packet[0] == EVENT_PACKET and packet[1] == LE_META_EVENT and packet[3] == ADVERTISING_REPORT:
                    reports += _legacy(packet[3:])
        return reports


class Repeater:
    """Lets a virtual controller advertise again and again, as a real one does: btvirt tells the others of an
    advertisement only when it is switched on, or when their scan is. Rests while the controller is connected."""
    PERIOD = 0.5

    def __init__(self, index):
        self._index = index
        self._ends = threading.Event()
        self._thread = threading.Thread(target=self._repeat, daemon=True)
        self._thread.start()

    def stop(self):
        self._ends.set()
        self._thread.join()

    def _repeat(self):
        raw = _open(CHANNEL_RAW, self._index)
        with raw, Management() as management:
            while not self._ends.wait(self.PERIOD):
                if management.advertisements(self._index) and not management.connections(self._index):
                    for enable in (0, 1):
                        raw.send(struct.pack("<BHBB", COMMAND_PACKET, 0x200A, 1, enable))
