# SPDX-License-Identifier: Apache-2.0
# Shows: 1,000 adverts in a second for 20 s: the phones among them are found, and memory does not grow
# Guest: bluetooth, last
import os
import time

from vm import clean, daemons, packets
from vm.checks import check, note
from vm.scripted import Controller, legacy
from vm.tvset import lynctl

SECONDS = 20
PER_SECOND = 1000
RESPONSE = 4
TICKS = os.sysconf("SC_CLK_TCK")
MOST_GROWTH = 4096  # KiB

FOREIGN = packets.FLAGS + packets.manufacturer(76, bytes(20))
foreign = [legacy("D0:00:00:00:%02X:%02X" % divmod(number, 100), FOREIGN) for number in range(196)]
ours = [event for number in (1, 2) for event in (
    legacy("C0:00:00:00:00:%02X" % number, packets.phone()),
    legacy("C0:00:00:00:00:%02X" % number, packets.name(b"Phone %d" % number), RESPONSE))]


def processor(pid):
    """Seconds that a process has worked."""
    with open("/proc/%d/stat" % pid, encoding="utf-8") as file:
        fields = file.read().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / TICKS


def memory(pid):
    """KiB in memory."""
    with open("/proc/%d/status" % pid, encoding="utf-8") as file:
        return next(int(line.split()[1]) for line in file if line.startswith("VmRSS"))


running = clean.processes()
bluetoothd = next(pid for pid, command in running.items() if command.startswith(daemons.BLUETOOTHD))
with Controller() as controller:
    controller.power_on()
    with lynctl("scan", "mirroring", "--seconds", "0", adapter=controller.adapter, name="scan") as program:
        controller.play(foreign + ours, PER_SECOND, 3)
        begin, before = time.monotonic(), memory(program.pid)
        worked, others = processor(program.pid), processor(bluetoothd)
        sent = controller.play(foreign + ours, PER_SECOND, SECONDS)
        elapsed = time.monotonic() - begin
        check(program.runs(), "lynctl did not survive")
        worked, others = processor(program.pid) - worked, processor(bluetoothd) - others
        after = memory(program.pid)
        note("%d adverts in %.1f s; lynctl worked %.2f s and has %d KiB (%+d); bluetoothd worked %.2f s" % (
            sent, elapsed, worked, after, after - before, others))
        program.stop()
        names = {phone["Name"] for phone in program.all("summary")[0]["phones"]}
        check(names == {"Phone 1", "Phone 2"}, "found: %s" % names)
        check(sent >= 0.9 * PER_SECOND * SECONDS, "only %d adverts could be sent" % sent)
        check(after - before <= MOST_GROWTH, "memory grew by %d KiB" % (after - before))
