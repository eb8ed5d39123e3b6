# SPDX-License-Identifier: Apache-2.0
# Shows: silence ends after 10 s, and a link lost in the middle, a wrong service and a refused write at once
# Guest: bluetooth wifi
# Limit: 180
import time

from vm.checks import check, equal
from vm.hci import Management
from vm.phones import SERVICES, feature, scripted
from vm.tvset import GATT_FAIL, request, scan, settings

with Management() as management:
    address = management.address(1)
settings(channel=99)
WRONG = {**feature("mirroring"), "services": [{"uuid": SERVICES["kov"][0], "characteristics": [
    {"uuid": SERVICES["kov"][1], "answers": ["Success"]}]}]}
DEAF = {**feature("mirroring"), "services": [{"feature": "mirroring", "notifies": False, "answers": ["Success"]}]}


def fails(what, phone, least, most):
    """Seconds are counted from the connection, as the 10 s are."""
    with scripted(phone, name=what.replace(" ", "-")) as teller:
        scan("mirroring", 2)
        before = time.monotonic()
        status, result = request("mirroring", address)
        equal(status, GATT_FAIL, "the end of a request to %s" % what)
        began = teller.wait("connected", 5)["seconds"]
        ended = teller.wait("disconnected", 30)["seconds"]
        print(what, result, time.monotonic() - before)
        check(least <= ended - began <= most, "%s: the link was up for %.1f s" % (what, ended - began))


fails("a silent phone", feature("mirroring"), 10, 20)
fails("a phone that hangs up", feature("mirroring", {"kind": "disconnect"}), 0, 9)
fails("a phone that hangs up late", feature("mirroring", {"kind": "disconnect", "delayMs": 3000}), 3, 9.9)
fails("a phone with a wrong service", WRONG, 0, 9)
fails("a phone that does not notify", DEAF, 0, 9)
fails("a phone that refuses the write", feature("mirroring", {"kind": "writeError", "code": "0x80"}), 0, 9)
