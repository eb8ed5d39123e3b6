# SPDX-License-Identifier: Apache-2.0
# Shows: the library's lines are in the journal with priority and place, and NodLink's steps in the kernel log
# Guest: systemd bluetooth wifi
import json
import re

from vm.checks import check, equal
from vm.hci import Management
from vm.phones import feature, scripted
from vm.programs import Program, run
from vm.tvset import LYNCTL, settings

WARN, INFO, DEBUG = "4", "6", "7"
with Management() as management:
    address = management.address(1)
settings(channel=99)


def lynctl(*words):
    """Without anything said about the log, as on any machine."""
    with Program("lynctl.out", LYNCTL, *words, "--platform", "linux", environment={
            "LYN_BT_ADAPTER": "hci0", "LYN_LOG_TARGET": "", "LYN_LOG_LEVEL": "debug"}) as program:
        status = program.status(60)
        if status != 0:
            print(run("journalctl", "-o", "short-monotonic", "-n", "60"))
        equal(status, 0, "status of lynctl %s" % words[0])
        check("LYN_SERVICE" not in program.output(), "the log is on the terminal too")
        return program.pid


run("systemctl", "start", "systemd-journald.service")
run("journalctl", "--sync")
run("dmesg", "--clear")
with scripted(feature("nodlink", "Success")) as phone:
    scanned = lynctl("scan", "nodlink", "--seconds", "3")
    asked = lynctl("request", "nodlink", address)
    text = phone.wait("written", 5)["text"]

run("journalctl", "--sync")
entries = [json.loads(line) for line in run("journalctl", "-t", "LYN_SERVICE", "-o", "json", "_PID=%d" % scanned,
                                            "_PID=%d" % asked).splitlines()]
check(entries, "there is nothing in the journal")
for entry in entries:
    equal((entry["SYSLOG_IDENTIFIER"], entry["_COMM"]), ("LYN_SERVICE", "lynctl"), "whose line it is")
    place = "%s: %s(%s) > " % tuple(entry[name] for name in ("CODE_FILE", "CODE_FUNC", "CODE_LINE"))
    check(entry["MESSAGE"].startswith(place), "the place in %s" % entry)
    check(int(entry["CODE_LINE"]) > 0 and entry["CODE_FILE"].endswith((".cpp", ".h")), "the place in %s" % entry)
equal({entry["_PID"] for entry in entries}, {str(scanned), str(asked)}, "whose lines there are")


def one(function, beginning):
    found = [entry for entry in entries if entry["CODE_FUNC"] == function
             and entry["MESSAGE"].split(" > ", 1)[1].startswith(beginning)]
    check(found, "no line of %s that begins with '%s'" % (function, beginning))
    return found[0]


equal(one("TransitState", "transit to 2 from 0")["PRIORITY"], WARN, "priority of a change of state")
found = one("NotifyDeviceFound", "name : ")
equal(found["PRIORITY"], INFO, "priority of a found phone")
check("address : %s," % address in found["MESSAGE"], "the phone in %s" % found)
check(any(entry["PRIORITY"] == DEBUG for entry in entries), "no line of the level debug")

kernel = run("dmesg", "--notime")
TIME = r"\[Current time : \w{3} \w{3} [ \d]\d \d\d:\d\d:\d\d \d{4}\]"
for step, told in (("StartScan", ""), ("StopScan", ""),
                   ("OnLeScanResult", ' address : %s, extra_data : {"device_type":"mobile"' % address),
                   ("RequestInitiating", " addres :" + address), ("OnMtuChanged", " data :" + text),
                   ("NotifyRequestResult", " result :Success")):
    check(re.search(r"^\[LYN_SERVICE\]\[%s\]%s%s" % (step, TIME, re.escape(told)), kernel, re.MULTILINE),
          "no kernel-log line of %s with '%s' in\n%s" % (step, told, kernel))
