# SPDX-License-Identifier: Apache-2.0
"""A phone on hci1 that is made of BlueZ's own tools, as a person would type it: bluetoothctl keeps the services
and advertises, btmgmt advertises what needs a scan response (bluetoothctl 5.66 can put nothing but a name there).

bluetoothctl 5.66 has no command that notifies a value of one's choice: what it notifies is each value that is
written to its characteristic. So the characteristic asks a person for leave ("authorize"), which holds the TV's
message back; meanwhile somebody trusted writes the answer into bluetoothctl's object on the bus, and bluetoothctl
notifies it."""
import re

from gi.repository import GLib

from . import bus
from .checks import wait_for
from .console import Console
from .hci import Management, Repeater
from .phones import SERVICES

INDEX = 1
# bluetoothctl takes no value that is longer than the one a characteristic was registered with.
ROOM = 512


def _words(data):
    return " ".join("0x%02x" % byte for byte in data)


class BluezPhone:
    """bluetoothctl with the services of these features. To be used with `with`."""

    def __init__(self, *features):
        self._features = features
        with Management() as management:
            self.address = management.address(INDEX)
        self._repeater = Repeater(INDEX)
        self._shell = Console("bluetoothctl", "bluetoothctl")
        self._packets = None
        try:
            self._serve()
        except BaseException:
            self.__exit__()
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._repeater.stop()
        self._shell.stop()
        self.advertise_nothing()

    def _serve(self):
        self._shell.expect("Agent registered")
        self._shell.ask("select " + self.address, "Controller %s .*default" % self.address)
        for feature in self._features:
            service, characteristic = SERVICES[feature]
            self._shell.ask("gatt.register-service " + service, r"Primary \(yes/no\):")
            self._shell.say("yes")
            self._shell.ask("gatt.register-characteristic %s read,write,notify,authorize" % characteristic,
                            "Enter value:")
            self._shell.say(_words(bytes(ROOM)))
        self._shell.ask("gatt.register-application", "Application registered")

    def advertise(self, company, data):
        """Manufacturer data, in the way of bluetoothctl."""
        self._shell.say("advertise.manufacturer 0x%04x %s" % (company, _words(data)))
        self._shell.ask("advertise on", "Advertising object registered")

    def advertise_off(self):
        self._shell.ask("advertise off", "Advertising object unregistered")

    def advertise_packets(self, packet, response):
        """Packet and scan response, in the way of btmgmt. The packet's flags come from the kernel."""
        self._packets = Console("btmgmt", "btmgmt", "--index", str(INDEX))
        self._packets.ask("add-adv -c -g -d %s -s %s 1" % (packet.hex(), response.hex()), "Instance added: 1")

    def advertise_nothing(self):
        if self._packets is not None:
            self._packets.ask("rm-adv 1", "Instance removed: 1")
            self._packets.stop()
            self._packets = None

    def message(self, limit=40):
        """The message that a TV has written, which waits for leave: sender, bytes, and where it is written."""
        sender = self._shell.expect(r"WriteValue: (\S+) offset 0 link LE$", limit)[1]
        asked = self._shell.expect(r"Authorize attribute\((\S+)\) write \(yes/no\):")
        shown = asked.string[:asked.start()]
        rows = re.findall(r"^.*?\]# +((?:[0-9a-f]{2} ){1,16})", shown, re.MULTILINE)
        return sender, bytes.fromhex("".join(rows)), asked[1]

    def answer(self, tv, characteristic, text):
        """Notifies the answer, and lets the TV's write end then."""
        device = "/org/bluez/hci%d/dev_%s" % (INDEX, tv.replace(":", "_"))
        bus.put(device, "org.bluez.Device1", "Trusted", GLib.Variant("b", True))
        self._shell.expect("Device %s Trusted: yes" % tv)
        options = {"device": GLib.Variant("o", device), "link": GLib.Variant("s", "LE")}
        bus.call(bus.owner_with_process(self._shell.pid), characteristic, "org.bluez.GattCharacteristic1",
                 "WriteValue", GLib.Variant("(aya{sv})", (text.encode(), options)))
        bus.put(device, "org.bluez.Device1", "Trusted", GLib.Variant("b", False))
        self._shell.say("yes")

    def wait_until_alone(self):
        """A process that ends leaves its link to be taken down."""
        with Management() as management:
            wait_for(lambda: not management.connections(INDEX), 20, "the end of the link")
