# SPDX-License-Identifier: Apache-2.0
# Shows: the nodlink service is not ready while logind suspends the machine, and ready again after the resume
# Guest: systemd bluetooth wifi
from vm import bus
from vm.checks import check, equal, wait_for
from vm.tvset import lynctl
from gi.repository import GLib

LOGIND = ("org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager")


def inhibitors():
    return [who for _, who, _, mode, _, _ in bus.call(*LOGIND, "ListInhibitors")[0] if mode == "delay"]


wait_for(lambda: bus.owner("org.freedesktop.login1"), 30, "logind")
# As far as it goes without hardware: programs are frozen, and thawed after a second.
with open("/sys/power/pm_test", "w", encoding="utf-8") as file:
    file.write("freezer")
with open("/sys/module/suspend/parameters/pm_test_delay", "w", encoding="utf-8") as file:
    file.write("1")

with lynctl("events", "nodlink", name="events") as events:
    wait_for(inhibitors, 20, "the delay that lets the application hear of the suspend")
    bus.call(*LOGIND, "Suspend", GLib.Variant("(b)", (False,)), limit=60)
    asleep = events.wait("state", 40, state="NOT_READY")
    awake = events.wait("state", 60, state="READY")
    check(awake["seconds"] > asleep["seconds"], "%s, %s" % (asleep, awake))
    check(inhibitors(), "after the resume nobody delays the next suspend")
    bus.call(*LOGIND, "Suspend", GLib.Variant("(b)", (False,)), limit=60)
    events.wait("state", 40, state="NOT_READY")
    events.wait("state", 60, state="READY")
    equal(events.stop(), 0, "status of lynctl")
