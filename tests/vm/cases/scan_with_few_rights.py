# SPDX-License-Identifier: Apache-2.0
# Shows: CAP_NET_RAW is all that a scan needs; without it the bus has to do, which finds less and says so once
# Guest: bluetooth
import os

from vm.checks import check, equal
from vm.hci import Management
from vm.phones import feature, scripted
from vm.programs import Teller
from vm.tvset import LYNCTL

NOBODY = ("setpriv", "--reuid=65534", "--regid=65534", "--clear-groups")
LISTENING = ("--inh-caps=+net_raw", "--ambient-caps=+net_raw")
with Management() as management:
    address = management.address(1)


def scan(service, *rights):
    """The phone, and how many lines of the log speak of the missing right."""
    with Teller("%s%d" % (service, len(rights)), *NOBODY, *rights, LYNCTL, "scan", service, "--seconds", "3",
                "--platform", "linux", "--json", environment={"LYN_BT_ADAPTER": "hci0"}) as program:
        equal(program.finish(), 0, "status of the %s scan" % service)
        found = {phone["Address"]: phone for phone in program.all("summary")[0]["phones"]}
        return found.get(address), sum("CAP_NET_RAW" in line for line in program.errors().splitlines())


os.environ["LYN_LOG_LEVEL"] = "warn"
with scripted(feature("mirroring"), name="mirroring-phone"):
    phone, warnings = scan("mirroring", *LISTENING)
    check(phone and phone["Name"] == "Kitchen", "found with CAP_NET_RAW: %s" % phone)
    equal(warnings, 0, "warnings with CAP_NET_RAW")

with scripted(feature("nodlink"), name="nodlink-phone"):
    phone, warnings = scan("nodlink")
    check(phone and "mobile" in phone["ExtraData"], "found without rights: %s" % phone)
    equal(warnings, 1, "warnings without rights")
