# SPDX-License-Identifier: Apache-2.0
"""The system bus, and BlueZ on it."""
from gi.repository import Gio, GLib

from .checks import Failed

BLUEZ = "org.bluez"
_bus = None


def bus():
    global _bus
    if _bus is None:
        _bus = Gio.bus_get_sync(Gio.BusType.SYSTEM)
        _bus.set_exit_on_close(False)
    return _bus


def call(service, path, interface, method, arguments=None, limit=20):
    """The answer's values. `arguments` is a GLib.Variant of a tuple. Failed on an error."""
    try:
        answer = bus().call_sync(service, path, interface, method, arguments, None, Gio.DBusCallFlags.NONE,
                                 int(limit * 1000), None)
    except GLib.Error as error:
        raise Failed("%s.%s on %s: %s" % (interface, method, path, error.message)) from None
    return answer.unpack()


def owner(name):
    try:
        return call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetNameOwner",
                    GLib.Variant("(s)", (name,)))[0]
    except Failed:
        return None


def owner_with_process(number):
    """The name on the bus of this process."""
    bus_itself = ("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus")
    for name in call(*bus_itself, "ListNames")[0]:
        if name.startswith(":") and number == call(*bus_itself, "GetConnectionUnixProcessID",
                                                   GLib.Variant("(s)", (name,)))[0]:
            return name
    raise Failed("process %d is not on the bus" % number)


def get(path, interface, name, service=BLUEZ):
    return call(service, path, "org.freedesktop.DBus.Properties", "Get",
                GLib.Variant("(ss)", (interface, name)))[0]


def put(path, interface, name, value, service=BLUEZ):
    """`value` is a GLib.Variant."""
    call(service, path, "org.freedesktop.DBus.Properties", "Set",
         GLib.Variant("(ssv)", (interface, name, value)))


def objects(interface):
    """BlueZ's objects with this interface: path to properties."""
    everything = call(BLUEZ, "/", "org.freedesktop.DBus.ObjectManager", "GetManagedObjects")[0]
    return {path: interfaces[interface] for path, interfaces in everything.items() if interface in interfaces}


class Discovery:
    """bluetoothd scans while this lives."""

    def __init__(self, adapter="hci0"):
        self._path = "/org/bluez/" + adapter

    def __enter__(self):
        call(BLUEZ, self._path, "org.bluez.Adapter1", "SetDiscoveryFilter", GLib.Variant("(a{sv})", (
            {"Transport": GLib.Variant("s", "le"), "DuplicateData": GLib.Variant("b", True)},)))
        call(BLUEZ, self._path, "org.bluez.Adapter1", "StartDiscovery")
        return self

    def __exit__(self, *_):
        call(BLUEZ, self._path, "org.bluez.Adapter1", "StopDiscovery")
