# SPDX-License-Identifier: Apache-2.0
# Shows: phones of all three features are found with the right name, id and extra data; others are not
# Guest: bluetooth wifi
import json

from vm.checks import check, equal
from vm.hci import Management
from vm.phones import feature, scripted
from vm.tvset import scan

with Management() as management:
    address = management.address(1)

UNIQUE_ID = "0123456789abcdefghijkl"
AV = {"advertising": {"feature": "nodlink", "kind": "av"}}
OLD = {"advertising": {"feature": "nodlink", "kind": "mobile", "mirroringAvailable": False, "version": "2.0"}}

WANTED = [
    ("mirroring", feature("mirroring"), "Kitchen", UNIQUE_ID, ""),
    ("kov", feature("kov"), "Kitchen", UNIQUE_ID, ""),
    ("nodlink", feature("nodlink"), None, "",
     {"device_type": "mobile", "nodlink_version": "3.0", "sm_available": 1}),
    ("nodlink", OLD, None, "", {"device_type": "mobile", "nodlink_version": "2.0", "sm_available": 0}),
    ("nodlink", AV, None, "", {"device_type": "av"}),
]

for service, phone, name, unique_id, extra in WANTED:
    with scripted(phone, name="phone"):
        found = scan(service)
        check(address in found, "the %s phone is not among %s" % (service, found))
        one = found[address]
        print(one)
        equal(one.get("Name") or None, name, "its name")
        equal(one.get("UniqueID", one.get("UniqueId", "")), unique_id, "its id")
        told = one.get("ExtraData") or ""
        equal(json.loads(told) if isinstance(told, str) and told else told, extra, "its extra data")

with scripted(feature("kov"), name="other"):
    equal(scan("mirroring"), {}, "mirroring phones where there is only a kov phone")
