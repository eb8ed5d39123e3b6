# SPDX-License-Identifier: Apache-2.0
# Shows: a C program scans, asks, stops, makes each mistake, destroys in mid-request, and sees what the header says
# Guest: bluetooth wifi
import os
import signal

from vm.checks import equal
from vm.hci import Management
from vm.phones import BUILD, feature, scripted
from vm.programs import Program
from vm.tvset import settings

NOBODY = "C0:00:00:00:DE:AD"
WANTED = """create what there is not: 5
create: 0
create a second one: 7
scan without a service: 4
scan with another's handle: 5
ask nobody: 5
advertise too often: 5
a function of NodLink: 8
  state READY for the first
stop what does not run: 0
  state SCANNING for the first
scan: 0
scan once more: 3
  found Kitchen, 0123456789abcdefghijkl for the scan
  state READY for the first
  state REQUESTING for the first
ask: 0
scan while asking: 3
stop the scan while asking: 0
ask while asking: 3
  state READY for the first
  result 0 Success for ask while asking
  state READY for the first
  state REQUESTING for the first
ask a silent phone: 0
destroy while asking: 0
destroy once more: 4
scan with what was destroyed: 5
create again: 0
  state READY for the second
  state REQUESTING for the second
ask at once: 0
  state READY for the second
  result 8 NotTap for ask at once
  state READY for the second
  state REQUESTING for the second
ask a phone that is not there: 0
  state READY for the second
  result 1 GattFail for ask a phone that is not there
destroy: 0
"""

with Management() as management:
    address = management.address(1)
settings(channel=99)

with scripted(feature("mirroring", "Success", {"kind": "silent"}, "NotTap")) as phone:
    with Program("stages.out", os.path.join(BUILD, "bin", "vm_stages"), "mirroring", NOBODY, environment={
            "LD_LIBRARY_PATH": os.path.join(BUILD, "lib", "lyn", "linux"), "LYN_BT_ADAPTER": "hci0",
            "LYN_LOG_LEVEL": "none"}) as program:
        phone.wait("written", 40)
        phone.wait("written", 40)
        os.kill(program.pid, signal.SIGUSR1)
        phone.wait("written", 40)
        equal(program.status(60), 0, "status of the program")
        equal(program.output().splitlines(), WANTED.splitlines(), "what the program sees")
