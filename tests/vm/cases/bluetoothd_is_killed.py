# SPDX-License-Identifier: Apache-2.0
# Shows: bluetoothd killed during scan, connect, write and wait: one result each, and all is well after its restart
# Guest: bluetooth wifi, alone
# Limit: 240
import os
import signal

from vm import clean, daemons
from vm.checks import check, equal, wait_for
from vm.hci import Management
from vm.phones import feature, scripted
from vm.tvset import GATT_FAIL, lynctl, request, scan, settings

with Management() as management:
    address = management.address(1)
settings(channel=99)


def kill():
    for number, command in clean.processes().items():
        if command.startswith(daemons.BLUETOOTHD):
            os.kill(number, signal.SIGKILL)
    wait_for(lambda: not daemons.on_the_bus("org.bluez"), 10, "the end of bluetoothd")


def restart(phone):
    daemon = daemons.bluetoothd_up()
    phone.wait("advertising", 30)
    return daemon


with scripted(feature("mirroring", {"kind": "silent"}, {"kind": "silent", "delayMs": 8000}, "Success")) as phone:
    running = []
    try:
        with lynctl("scan", "mirroring", "--seconds", "0", name="scanning") as scanning:
            scanning.wait("found", 20)
            kill()
            check(scanning.runs(), "lynctl did not survive the end of bluetoothd")
            running.append(restart(phone))
            found = len(scanning.all("found"))
            try:
                scanning.wait("found", 10)
                print("the scan goes on after the restart")
            except Exception:
                print("the scan does not go on after the restart")
            equal(scanning.stop(), 0, "status of the scan")
        check(address in scan("mirroring", 3), "the phone is not found after the restart")

        for moment, event in (("wait", "written"), ("write", "written"), ("connect", None)):
            with lynctl("request", "mirroring", address, name=moment) as asking:
                if event is not None:
                    phone.wait(event, 30)
                else:
                    asking.wait("state", 20, state="REQUESTING")
                kill()
                equal(asking.finish(40), GATT_FAIL, "the end of a request while bluetoothd is killed (%s)" % moment)
                equal(len(asking.all("result")), 1, "results")
            running.append(restart(phone))
            check(address in scan("mirroring", 3), "the phone is not found after the restart (%s)" % moment)
        equal(request("mirroring", address)[0], 0, "status of a request after all restarts")
    finally:
        for daemon in running:
            daemon.stop(signal.SIGKILL)
