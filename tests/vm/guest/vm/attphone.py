# SPDX-License-Identifier: Apache-2.0
"""A phone inside a scripted controller: what the kernel sends to its radio is answered here, and bluetoothd is the
TV's alone. So the phone may take what bluetoothd as a phone does not, and stop in the middle of anything."""
import struct
import threading
import time

from . import packets
from .checks import wait_for
from .hci import Management
from .phones import SERVICES
from .scripted import COMMAND_COMPLETE, DATA, EVENT, Controller, legacy

DISCONNECTION_COMPLETE, COMMAND_STATUS, COMPLETED_PACKETS, LE_META = 0x05, 0x0F, 0x13, 0x3E
CREATE_CONNECTION, CREATE_CONNECTION_CANCEL, READ_REMOTE_FEATURES, DISCONNECT = 0x200D, 0x200E, 0x2016, 0x0406
HANDLE = 0x0040
PACKET, SCAN_RESPONSE = 0, 4
REMOTE_ENDED, LOCAL_ENDED, UNKNOWN_CONNECTION = 0x13, 0x16, 0x02
ATT = 4  # the channel of attributes

SERVICE, CHARACTERISTIC, VALUE, CONFIGURATION = 1, 2, 3, 4  # handles
PRIMARY, DECLARATION, CLIENT_CONFIGURATION = 0x2800, 0x2803, 0x2902
WRITE_AND_NOTIFY = 0x18
NOT_SUPPORTED, NOT_FOUND = 0x06, 0x0A
NO_MORE_ANSWERS = struct.pack("<BHH", 0x12, CONFIGURATION, 0)


def _uuid(text):
    return bytes.fromhex(text.replace("-", ""))[::-1]


def _named(marker):
    return [(PACKET, packets.phone(marker)), (SCAN_RESPONSE, packets.name(b"Inside", marker))]


ADVERTS = {"mirroring": _named(packets.MIRRORING), "kov": _named(packets.KOV),
           "nodlink": [(PACKET, packets.nodlink())]}


class Attributes:
    """A phone's one service, as the attribute protocol shows it.

    written: the messages that came whole
    prepared: in how many parts the last one of several came"""

    def __init__(self, service, characteristic, mtu):
        declaration = bytes([WRITE_AND_NOTIFY]) + struct.pack("<H", VALUE) + _uuid(characteristic)
        self._table = {SERVICE: (PRIMARY, _uuid(service)), CHARACTERISTIC: (DECLARATION, declaration),
                       CONFIGURATION: (CLIENT_CONFIGURATION, bytes(2))}
        self._characteristic = _uuid(characteristic)
        self.mtu = mtu
        self._parts = []
        self.written = []
        self.prepared = 0

    def answer(self, request):
        """The response to a request."""
        code, parameters = request[0], request[1:]
        answers = {0x02: self._exchange_mtu, 0x04: self._find_information, 0x08: self._read_by_type,
                   0x10: self._read_by_type, 0x12: self._write, 0x16: self._prepare, 0x18: self._execute}
        answer = answers.get(code, lambda *_: NOT_SUPPORTED)(code, parameters)
        if isinstance(answer, int):
            handle = parameters[:2].ljust(2, b"\0")
            return bytes([0x01, code, *handle, answer])
        return bytes([code + 1]) + answer

    def _exchange_mtu(self, _code, _parameters):
        return struct.pack("<H", self.mtu)

    def _find_information(self, _code, parameters):
        first, last = struct.unpack_from("<HH", parameters)
        if first <= VALUE <= last and first == VALUE:
            return b"\x02" + struct.pack("<H", VALUE) + self._characteristic
        if first <= CONFIGURATION <= last:
            return b"\x01" + struct.pack("<HH", CONFIGURATION, CLIENT_CONFIGURATION)
        return NOT_FOUND

    def _read_by_type(self, code, parameters):
        """Services come with the end of their group, others without."""
        first, last, kind = struct.unpack_from("<HHH", parameters)
        if len(parameters) != 6:
            return NOT_FOUND
        for handle, (its_kind, value) in self._table.items():
            if first <= handle <= last and its_kind == kind:
                end = struct.pack("<H", CONFIGURATION) if code == 0x10 else b""
                entry = struct.pack("<H", handle) + end + value
                return bytes([len(entry)]) + entry
        return NOT_FOUND

    def _write(self, _code, parameters):
        if struct.unpack_from("<H", parameters)[0] == VALUE:
            self.written.append(parameters[2:])
        return b""

    def _prepare(self, _code, parameters):
        self._parts.append((struct.unpack_from("<H", parameters, 2)[0], parameters[4:]))
        return parameters

    def _execute(self, _code, parameters):
        whole = b"".join(part for _, part in sorted(self._parts))
        self.prepared = len(self._parts)
        self._parts = []
        if parameters[0]:
            self.written.append(whole)
        return b""


class AttPhone(Controller):
    """The TV's adapter is this controller, and the one phone that it hears and reaches is in it too.

    answer: what it notifies when it has a message
    early: the answer is notified before the response to the write
    hangs_up: the phone ends the connection when the TV wants no more answers
    stage: what the phone does not get beyond: "connect", "discover" or "prepare"; None is nothing"""
    ADDRESS = "C0:00:00:00:0F:0F"
    PERIOD = 0.1

    def __init__(self, feature="mirroring", mtu=256):
        self.attributes = Attributes(*SERVICES[feature], mtu)
        self.answer = "Success"
        self.early = False
        self.hangs_up = False
        self.stage = None
        self._adverts = ADVERTS[feature]
        self._next_advert = 0
        self._unfinished = b""
        self.connected = threading.Event()
        self.cancelled = threading.Event()
        super().__init__()
        self.power_on()
        # The TV is to give up first. The kernel, Linux 6.1, dies of a connection that it has given up itself.
        with Management() as management:
            management.set_connect_timeout(self.index, 60000)

    def wait_until_alone(self):
        wait_for(lambda: not self.connected.is_set(), 20, "the end of the link")

    def _tick(self):
        if self.scanning.is_set() and not self.connected.is_set() and time.monotonic() > self._next_advert:
            self._next_advert = time.monotonic() + self.PERIOD
            for kind, data in self._adverts:
                self._send(legacy(self.ADDRESS, data, kind))

    def _answer(self, code, parameters):
        if code == CREATE_CONNECTION:
            self._status(code)
            if self.stage != "connect":
                self._connect(0)
        elif code == CREATE_CONNECTION_CANCEL:
            self._event(COMMAND_COMPLETE, struct.pack("<BHB", 1, code, 0))
            self.cancelled.set()
            self._connect(UNKNOWN_CONNECTION)
        elif code == READ_REMOTE_FEATURES:
            self._status(code)
            self._event(LE_META, struct.pack("<BBHQ", 0x04, 0, HANDLE, 0))
        elif code == DISCONNECT:
            self._status(code)
            self._disconnect(LOCAL_ENDED)
        else:
            super()._answer(code, parameters)

    def _connect(self, status):
        if status == 0:
            self.connected.set()
        address = bytes.fromhex(self.ADDRESS.replace(":", ""))[::-1]
        self._event(LE_META, struct.pack("<BBHBB6sHHHB", 0x01, status, HANDLE, 0, 0, address, 24, 0, 42, 0))

    def _disconnect(self, reason):
        self.connected.clear()
        self._unfinished = b""
        self._event(DISCONNECTION_COMPLETE, struct.pack("<BHB", 0, HANDLE, reason))

    def _data(self, packet):
        """A part of a frame: the first has the frame's length and channel in front."""
        self._event(COMPLETED_PACKETS, struct.pack("<BHH", 1, HANDLE, 1))
        self._unfinished += packet[4:]
        length, channel = struct.unpack_from("<HH", self._unfinished)
        if len(self._unfinished) < length + 4:
            return
        frame, self._unfinished = self._unfinished[4:], b""
        if channel == ATT:
            self._attribute_request(frame)

    def _attribute_request(self, request):
        code = request[0]
        if self.stage == "discover" and code in (0x04, 0x08, 0x10):
            return
        if self.stage == "prepare" and code == 0x16 and struct.unpack_from("<H", request, 3)[0] > 0:
            self._disconnect(REMOTE_ENDED)
            return
        if code % 2 or code & 0x40:  # no request: the TV's answers and commands
            return
        before = len(self.attributes.written)
        response = self.attributes.answer(request)
        if len(self.attributes.written) == before:
            self._send_frame(response)
            if self.hangs_up and request == NO_MORE_ANSWERS:
                self._disconnect(REMOTE_ENDED)
            return
        answer = struct.pack("<BH", 0x1B, VALUE) + self.answer.encode()
        for frame in (answer, response) if self.early else (response, answer):
            self._send_frame(frame)

    def _send_frame(self, frame):
        self._send(struct.pack("<BHHHH", DATA, HANDLE | 0x2000, len(frame) + 4, len(frame), ATT) + frame)

    def _status(self, code):
        self._event(COMMAND_STATUS, struct.pack("<BBH", 0, 1, code))

    def _event(self, code, parameters):
        self._send(bytes([EVENT, code, len(parameters)]) + parameters)
