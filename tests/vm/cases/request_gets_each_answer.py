# SPDX-License-Identifier: Apache-2.0
# Shows: a request ends with each answer that a phone can give, for each feature
# Guest: bluetooth wifi
# Limit: 240
from vm.attphone import AttPhone
from vm.checks import check, equal
from vm.hci import Management
from vm.phones import feature, scripted
from vm.tvset import request, scan

with Management() as management:
    address = management.address(1)

ANSWERS = ["Success", "GattFail", "NotRegisteredDevice", "UnknownErr", "CommandErr", "NotSupported", "Connected",
           None, "NotTap", "NotStartedKov", "NotStartedMirroring", "GattDisconnected"]
TEXTS = [text for text in ANSWERS if text]


def status_of(text):
    return 0 if text == "Success" else 10 + ANSWERS.index(text)


def ends(service, phone, text, adapter="hci0"):
    """Asked at once after the last one, whose link is still on its way down."""
    status, result = request(service, phone, adapter=adapter)
    equal((status, result["result"]), (status_of(text), text), "the end of a %s request" % service)


with scripted(feature("mirroring", *TEXTS, "Tomorrow")):
    scan("mirroring", 2)
    for text in [*TEXTS, "UnknownErr"]:
        ends("mirroring", address, text)

# With phones that hang up when they can: bluetoothd takes two seconds to do it.
for service in ("kov", "nodlink"):
    with AttPhone(service) as phone:
        check(phone.ADDRESS in scan(service, 1, adapter=phone.adapter), "the %s phone is not found" % service)
        phone.hangs_up = True
        for text in [*TEXTS, "Tomorrow"]:
            phone.answer = text
            ends(service, phone.ADDRESS, text if text in TEXTS else "UnknownErr", phone.adapter)
