# SPDX-License-Identifier: Apache-2.0
"""What a case has left behind, so that the next one begins as the first one did."""
import os
import time

from .hci import Management


def processes():
    """The processes that are no threads of the kernel: number to command."""
    found = {}
    for name in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open("/proc/%s/cmdline" % name, "rb") as file:
                words = file.read().replace(b"\0", b" ").decode("utf-8", "replace").strip()
        except OSError:
            continue
        if words:
            found[int(name)] = words
    return found


def _bluetooth():
    from . import bus  # only ever in a child of the agent
    left = []
    for path, adapter in bus.objects("org.bluez.Adapter1").items():
        if adapter["Discovering"]:
            left.append("%s still scans" % path)
    with Management() as management:
        for index in management.indexes():
            if not management.powered(index):
                left.append("hci%d has no power" % index)
            if management.connections(index):
                left.append("hci%d is connected" % index)
            if management.advertisements(index):
                left.append("hci%d still advertises" % index)
    return left


def forget_phones():
    """What bluetoothd remembers of the phones it has heard is its own business: the guest forgets it."""
    from gi.repository import GLib

    from . import bus
    for path, device in bus.objects("org.bluez.Device1").items():
        bus.call(bus.BLUEZ, device["Adapter"], "org.bluez.Adapter1", "RemoveDevice", GLib.Variant("(o)", (path,)))
    if left := bus.objects("org.bluez.Device1"):
        return ["bluetoothd does not forget %s" % " ".join(left)]
    return []


def bluetooth_left(seconds):
    """What is left after some time to settle: the end of a scan or of a link takes a moment."""
    end = time.monotonic() + seconds
    while True:
        left = _bluetooth()
        if not left or time.monotonic() > end:
            return left + forget_phones()
        time.sleep(0.2)
