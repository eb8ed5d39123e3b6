# SPDX-License-Identifier: Apache-2.0
# Shows: the C program of the README finds and asks a phone, on a platform that it was not built for
# Guest: bluetooth wifi
import os

from vm.checks import equal
from vm.hci import Management
from vm.phones import BUILD, feature, scripted
from vm.programs import Program
from vm.tvset import settings

with Management() as management:
    address = management.address(1)
settings(channel=99)

with scripted(feature("mirroring", "Success")) as phone:
    with Program("first.out", os.path.join(BUILD, "bin", "example_first"), environment={
            "LD_LIBRARY_PATH": os.path.join(BUILD, "lib", "lyn", "linux"), "LYN_BT_ADAPTER": "hci0",
            "LYN_LOG_LEVEL": "none"}) as program:
        equal(program.status(60), 0, "status of the program")
        wanted = "found Kitchen at %s\nthe phone says: Success\n" % address
        equal(program.output(), wanted, "what the program prints")
    phone.wait("written", 5)
