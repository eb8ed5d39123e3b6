# SPDX-License-Identifier: Apache-2.0
# Shows: 512 bytes arrive whole and are answered, 513 are not sent; a phone that stops at any step ends the request
# Guest: bluetooth wifi
# Limit: 180
import time

from vm.attphone import AttPhone
from vm.checks import check, equal
from vm.tvset import GATT_FAIL, SUCCESS, TV_NAME, control_message, request, scan, settings

settings(name=TV_NAME, channel=99)
LIMIT = 40  # seconds in which every request must have its result, whatever the phone does


def padding(size):
    """Extra data that make the whole message this long."""
    text = "x" * (size - len(control_message(type="mirroring", pad="")))
    return text, ("--extra", '{"pad":"%s"}' % text)


def ask(phone, wanted, what, *words):
    begun = time.monotonic()
    status, result = request("mirroring", phone.ADDRESS, *words, adapter=phone.adapter, limit=LIMIT)
    equal(status, wanted, "the end of a request: " + what)
    print("%s: %s after %.1f s" % (what, result["result"], time.monotonic() - begun), flush=True)
    phone.wait_until_alone()


def gets_512_bytes(phone, mtu):
    phone.attributes.mtu = mtu
    text, words = padding(512)
    ask(phone, SUCCESS, "512 bytes with an MTU of %d" % mtu, *words)
    written = phone.attributes.written.pop()
    equal((len(written), written), (512, control_message(type="mirroring", pad=text)), "the longest message")
    check(phone.attributes.prepared > 1, "the message did not come in parts")


def gets_nothing(phone, what, *words, stage=None):
    phone.stage = stage
    ask(phone, GATT_FAIL, what, *words)
    equal(phone.attributes.written, [], "what was written: " + what)


with AttPhone() as phone:
    check(phone.ADDRESS in scan("mirroring", 2, adapter=phone.adapter), "the phone is not found")
    gets_512_bytes(phone, 256)
    gets_512_bytes(phone, 23)
    phone.attributes.mtu = 256

    phone.early = True
    ask(phone, SUCCESS, "an answer before the write's end")
    equal(phone.attributes.written, [control_message(type="mirroring")], "the message")
    phone.attributes.written.clear()
    phone.early = False

    gets_nothing(phone, "513 bytes", *padding(513)[1])
    gets_nothing(phone, "a link lost between the parts of a message", *padding(512)[1], stage="prepare")
    gets_nothing(phone, "services that are never told", stage="discover")
    phone.stage = None
    ask(phone, SUCCESS, "after all that")

    phone.attributes.written.clear()
    gets_nothing(phone, "a connection that never comes", stage="connect")
    check(phone.cancelled.is_set(), "nobody cancelled the connection that never comes")
