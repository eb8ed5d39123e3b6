# SPDX-License-Identifier: Apache-2.0
# Shows: the platform keeps its contract with a real bluetoothd, wpa_supplicant and phone
# Guest: bluetooth wifi
# Limit: 240
import os
import re

from vm.attphone import AttPhone
from vm.checks import check, equal
from vm.hci import Management
from vm.phones import BUILD, SERVICES, feature, scripted
from vm.programs import Program

SERVICE, CHARACTERISTIC = SERVICES["mirroring"]
LONGEST = "ExchangeTest.AMessageOf512BytesIsWritten"  # bluetoothd as a phone takes 508
with Management() as management:
    address = management.address(1)


def keeps(what, tests, phone, adapter):
    with Program(what + ".out", os.path.join(BUILD, "bin", "platform_contract_test"), "--gtest_color=no",
                 "--gtest_filter=" + tests, environment={
                     "LD_LIBRARY_PATH": os.path.join(BUILD, "lib", "lyn", "linux"), "LYN_BT_ADAPTER": adapter,
                     "LYN_CONTRACT_PHONE": phone, "LYN_CONTRACT_ABSENT_PHONE": "C0:00:00:00:DE:AD",
                     "LYN_CONTRACT_SERVICE": SERVICE, "LYN_CONTRACT_CHARACTERISTIC": CHARACTERISTIC,
                     "LYN_CONTRACT_QUIET_MS": "300", "LYN_LOG_LEVEL": "none"}) as program:
        status = program.status(200)
        output = program.output()
        print(output)
        equal(status, 0, "status of the contract test, " + what)
        check("SKIPPED" not in output, "something was left out")
        return int(re.search(r"^\[  PASSED  \] (\d+) test", output, re.MULTILINE)[1])


with scripted(feature("mirroring", "Success")):
    check(keeps("outside", "-" + LONGEST, address, "hci0") > 1, "nothing was tested")
with AttPhone() as phone:
    equal(keeps("inside", LONGEST, phone.ADDRESS, phone.adapter), 1, "tests")
