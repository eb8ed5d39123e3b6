# SPDX-License-Identifier: Apache-2.0
# Shows: a request ends with each answer that a phone can give, for each feature
# Guest: bluetooth wifi
# Limit: 240
from vm.checks import equal
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


def ask(service, text):
    """Asked at once after the last one, whose link is still on its way down."""
    status, result = request(service, address)
    equal((status, result["result"]), (status_of(text), text), "the end of a %s request" % service)


with scripted(feature("mirroring", *TEXTS, "Tomorrow"), name="mirroring"):
    scan("mirroring", 2)
    for text in TEXTS:
        ask("mirroring", text)
    ask("mirroring", "UnknownErr")

for service in ("kov", "nodlink"):
    with scripted(feature(service, "Success", "NotSupported"), name=service):
        scan(service, 2)
        ask(service, "Success")
        ask(service, "NotSupported")
