# SPDX-License-Identifier: Apache-2.0
# Shows: bluetoothd killed during scan, connect, write and wait: one result each, and all is well after its restart
# Guest: bluetooth wifi, last
# Limit: 240
import os
import signal

from vm import clean, daemons
from vm.checks import Failed, check, equal, wait_for
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


def finds_again():
    """The kernel goes on with the discovery of a bluetoothd that was killed, for ten seconds, and refuses another
    one meanwhile: so a scan may be refused too, and is begun again."""
    def found():
        try:
            return address in scan("mirroring", 3)
        except Failed as reason:
            print(reason)
            return False
    return wait_for(found, 30, "a scan that finds the phone")


with scripted(feature("mirroring", {"kind": "silent"}, {"kind": "silent", "delayMs": 8000}, "Success")) as phone:
    running = []
    try:
        with lynctl("scan", "mirroring", "--seconds", "0", name="scanning") as scanning:
            scanning.wait("found", 20)
            kill()
            check(scanning.runs(), "lynctl did not survive the end of bluetoothd")
            running.append(restart(phone))
            scanning.wait("found", 20)
            equal(scanning.stop(), 0, "status of the scan")
        check(finds_again(), "the phone is not found after the restart")

        for moment, event in (("wait", "written"), ("write", "written"), ("connect", None)):
            with lynctl("request", "mirroring", address, name=moment) as asking:
                if event is not None:
                    phone.wait(event, 30)
                else:
                    asking.wait("state", 20, state="REQUESTING")
                kill()
                equal(asking.finish(40), GATT_FAIL, "the end of a request with bluetoothd killed (%s)" % moment)
                equal(len(asking.all("result")), 1, "results")
            running.append(restart(phone))
            check(finds_again(), "the phone is not found after the restart (%s)" % moment)
        equal(request("mirroring", address)[0], 0, "status of a request after all restarts")
    finally:
        for daemon in running:
            daemon.stop(signal.SIGKILL)
