# SPDX-License-Identifier: Apache-2.0
"""A TV that was not built here: BlueZ's own D-Bus interface, used as any program would use it."""
import time

from gi.repository import Gio, GLib

from . import bus
from .checks import Failed, wait_for

DEVICE = "org.bluez.Device1"
CHARACTERISTIC = "org.bluez.GattCharacteristic1"
GATT_SERVICE = "org.bluez.GattService1"


class Link:
    """A connection to a phone, and one characteristic of it."""

    def __init__(self, address, adapter="hci0"):
        self.path = "/org/bluez/%s/dev_%s" % (adapter, address.replace(":", "_"))
        self._characteristic = None
        self._context = GLib.MainContext.default()
        self.values = []
        with bus.Discovery(adapter):
            wait_for(lambda: self.path in bus.objects(DEVICE), 15, "the phone %s" % address)
        bus.call(bus.BLUEZ, self.path, DEVICE, "Connect", limit=30)
        wait_for(lambda: bus.get(self.path, DEVICE, "ServicesResolved"), 20, "the phone's services")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.is_up():
            bus.call(bus.BLUEZ, self.path, DEVICE, "Disconnect")

    def is_up(self):
        return bus.get(self.path, DEVICE, "Connected")

    def services(self):
        return sorted(service["UUID"] for path, service in bus.objects(GATT_SERVICE).items()
                      if path.startswith(self.path + "/"))

    def use(self, uuid):
        """Takes the characteristic and switches its notifications on."""
        found = [path for path, one in bus.objects(CHARACTERISTIC).items()
                 if path.startswith(self.path + "/") and one["UUID"] == uuid]
        if len(found) != 1:
            raise Failed("characteristics %s: %s" % (uuid, found))
        self._characteristic = found[0]
        bus.bus().signal_subscribe(bus.BLUEZ, "org.freedesktop.DBus.Properties", "PropertiesChanged",
                                   self._characteristic, CHARACTERISTIC, Gio.DBusSignalFlags.NONE, self._changed)
        bus.call(bus.BLUEZ, self._characteristic, CHARACTERISTIC, "StartNotify")

    def write(self, data):
        bus.call(bus.BLUEZ, self._characteristic, CHARACTERISTIC, "WriteValue",
                 GLib.Variant("(aya{sv})", (data, {"type": GLib.Variant("s", "request")})))

    def mtu(self):
        return bus.get(self._characteristic, CHARACTERISTIC, "MTU")

    def hear(self, count, seconds):
        """The values notified until there are `count`, or until the time is over."""
        end = time.monotonic() + seconds
        while len(self.values) < count and time.monotonic() < end:
            self._context.iteration(False)
            time.sleep(0.01)
        return self.values

    def _changed(self, _bus, _sender, _path, _interface, _signal, arguments):
        changed = arguments.unpack()[1]
        if "Value" in changed:
            self.values.append(bytes(changed["Value"]))
