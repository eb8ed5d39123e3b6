# SPDX-License-Identifier: Apache-2.0
# Shows: an adapter powered off while scanning ends nothing but the scan; after power-on a new scan finds the phone
# Guest: bluetooth wifi
from vm import bus
from vm.checks import check, equal, wait_for
from vm.hci import Management
from vm.phones import feature, scripted
from vm.tvset import lynctl, scan
from gi.repository import GLib

TV = "/org/bluez/hci0"


def power(on):
    bus.put(TV, "org.bluez.Adapter1", "Powered", GLib.Variant("b", on))
    wait_for(lambda: bus.get(TV, "org.bluez.Adapter1", "Powered") == on, 10, "power %s" % on)


with Management() as management:
    address = management.address(1)

with scripted(feature("mirroring")):
    with lynctl("scan", "mirroring", "--seconds", "0", name="scan") as scanning:
        scanning.wait("found", 20)
        power(False)
        wait_for(lambda: not bus.get(TV, "org.bluez.Adapter1", "Discovering"), 10, "the end of the discovery")
        check(scanning.runs(), "lynctl has ended")
        power(True)
        check(scanning.runs(), "lynctl has ended")
        equal(scanning.stop(), 0, "status of the scan that lost its adapter")
    check(address in scan("mirroring"), "the phone is not found after the adapter is back")

with lynctl("events", "nodlink", name="events") as events:
    with lynctl("scan", "nodlink", "--seconds", "0", name="nodlink"):
        wait_for(lambda: bus.get(TV, "org.bluez.Adapter1", "Discovering"), 20, "the nodlink scan")
        power(False)
        events.wait("state", 20, state="NOT_READY")
        power(True)
        events.wait("state", 20, state="READY")
