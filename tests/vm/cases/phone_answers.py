# SPDX-License-Identifier: Apache-2.0
# Shows: lyn-phone notifies, is silent, refuses and hangs up as its script says, for a TV that is not ours
# Guest: bluetooth
import time

from vm.checks import Failed, check, equal
from vm.hci import Management
from vm.phones import SERVICES, feature, scripted
from vm.tv import Link

with Management() as management:
    address = management.address(1)
    tv = management.address(0)
service, characteristic = SERVICES["mirroring"]
# The longest that bluetoothd 5.66 takes as a phone when it comes in parts: it counts their headers too.
LONG = bytes(32 + i % 90 for i in range(508))

# What bluetoothd 5.66 puts into a notification with the guest's MTU of 256. (There is room for 253 bytes.)
FULL = 251

answers = ["Success", {"hex": "00 FF 80"}, {"text": "late", "delayMs": 1500}, {"text": "twice", "repeat": 2},
           {"text": "early", "beforeCompletion": True, "delayMs": 100}, {"kind": "silent"},
           {"text": "y" * FULL}, {"kind": "writeError", "code": "0x80"}, {"kind": "disconnect", "delayMs": 300}]

with scripted(feature("mirroring", *answers)) as phone:
    with Link(address) as link:
        phone.wait("connected", peer=tv)
        check(service in link.services(), "the phone's service among %s" % link.services())
        link.use(characteristic)
        phone.wait("subscribed")

        link.write(b"one")
        equal(link.hear(1, 5), [b"Success"], "the first answer")
        written = phone.wait("written", peer=tv, characteristic=characteristic)
        equal((written["hex"], written["text"]), (b"one".hex(), "one"), "what was written")
        equal(written["mtu"], link.mtu(), "the MTU")
        phone.wait("notified", text="Success")

        link.write(LONG)
        equal(link.hear(2, 5)[1:], [b"\x00\xff\x80"], "the answer of bytes")
        equal(phone.wait("written")["hex"], LONG.hex(), "the long message as it arrived")

        begin = time.monotonic()
        link.write(b"three")
        equal(link.hear(3, 5)[2:], [b"late"], "the late answer")
        check(time.monotonic() - begin >= 1.4, "the late answer came early")

        link.write(b"four")
        equal(link.hear(5, 5)[3:], [b"twice", b"twice"], "the answer that comes twice")

        link.write(b"five")
        equal(link.hear(6, 5)[5:], [b"early"], "the answer before the write's end")

        link.write(b"six")
        equal(len(link.hear(7, 2)), 6, "values after a silent answer")

        link.write(b"seven")
        equal(link.hear(7, 5)[6:], [b"y" * FULL], "the longest answer")

        try:
            link.write(b"eight")
            raise AssertionError("the phone did not refuse the write")
        except Failed as refusal:
            print(refusal)

        link.write(b"nine")
        phone.wait("disconnected", 10, peer=tv)
        check(not link.is_up(), "the TV still has a link")
    equal([event["text"] for event in phone.all("written")][2:],
          ["three", "four", "five", "six", "seven", "eight", "nine"], "all that was written")
