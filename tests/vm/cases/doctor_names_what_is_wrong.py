# SPDX-License-Identifier: Apache-2.0
# Shows: lynctl doctor finds everything well, and then each thing that was broken, with the command that mends it
# Guest: bluetooth wifi, last
import glob
import json
import os
import signal
import subprocess

from vm import clean, daemons
from vm.checks import check, equal, wait_for
from vm.hci import Management
from vm.programs import run
from vm.tvset import LYNCTL, settings

CHECKS = ["system bus", "bluetoothd", "adapter", "power", "rights", "MTU", "access point", "Wi-Fi Direct",
          "settings"]
MAIN_CONF = "/etc/bluetooth/main.conf"
NOBODY = 65534
os.environ["LYN_BT_ADAPTER"] = "hci0"
settings(channel=99)


def doctor(*words, user=None, **environment):
    groups = None if user is None else []
    done = subprocess.run([LYNCTL, "doctor", *words], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                          timeout=30, check=False, user=user, group=user, extra_groups=groups,
                          env={**os.environ, **environment})
    print(done.stdout, done.stderr, flush=True)
    return done


def diagnosis(**how):
    """What is not good: name to (level, what is found, what mends it). Both ways of telling must say the same."""
    told = doctor("--json", **how)
    *lines, summary = [json.loads(line) for line in told.stdout.splitlines()]
    bad = {line["check"]: (line["level"], line["found"], line["mend"])
           for line in lines if line["level"] != "good"}
    levels = [line["level"] for line in lines]
    equal((summary["problems"], summary["notes"]), (levels.count("problem"), levels.count("note")), "the summary")
    equal(told.returncode, 1 if "problem" in levels else 0, "exit status")
    shown = doctor(**how)
    equal(shown.returncode, told.returncode, "exit status for people")
    for line in lines:
        check("%-13s %s" % (line["check"], line["found"]) in shown.stdout, "people are not told %s" % line)
        check(not line["mend"] or "\u2192 " + line["mend"] in shown.stdout, "people are not told %s" % line)
    return [line["check"] for line in lines], bad


def finds(bad, **how):
    """What is found to be wrong; for a text that another program made, its beginning."""
    found = diagnosis(**how)[1]
    equal(sorted(found), sorted(bad), "what is wrong")
    for name, (level, text, mend) in bad.items():
        equal((found[name][0], found[name][2]), (level, mend), "level and mending of " + name)
        check(found[name][1].startswith(text), "%s: %s" % (name, found[name]))


def end(command):
    for number, words in clean.processes().items():
        if words.split()[0].endswith(command):
            os.kill(number, signal.SIGTERM)
            wait_for(lambda: not os.path.exists("/proc/%d" % number) or number not in clean.processes(), 20,
                     "the end of " + command)


def configure(text):
    with open(MAIN_CONF, "w", encoding="utf-8") as file:
        file.write(text)


def block(blocked):
    """The switch that `rfkill` would turn."""
    for switch in glob.glob("/sys/class/rfkill/*"):
        with open(switch + "/type", encoding="ascii") as file:
            if file.read().strip() != "bluetooth":
                continue
        with open(switch + "/soft", "w", encoding="ascii") as file:
            file.write(str(int(blocked)))


def power():
    with Management() as management:
        return management.powered(0)


equal(diagnosis(), (CHECKS, {}), "a machine that has everything")
equal(doctor("--nonsense").returncode, 2, "status of bad arguments")

with Management() as management:
    management.set_powered(0, False)
finds({"power": ("problem", "the adapter is off", "bluetoothctl power on")})
run("bluetoothctl", "power", "on")
wait_for(power, 10, "power after the command that mends it")

block(True)
finds({"power": ("problem", "Bluetooth is blocked", "rfkill unblock bluetooth")})
block(False)
wait_for(power, 10, "power after what blocked it is gone")

NO_ACCESS_POINT = ("note", "wpa_supplicant tells of no connection",
                   "sudo systemctl start wpa_supplicant (with its D-Bus interface, -u) and connect")
SETTINGS = os.environ["LYN_STATE_DIR"]
UNPRIVILEGED = {
    "access point": NO_ACCESS_POINT,
    "rights": ("note", "without CAP_NET_RAW", "sudo setcap cap_net_raw+ep " + LYNCTL),
    "Wi-Fi Direct": ("problem", "no address, so no message can be built",
                     "start wpa_supplicant with ctrl_interface=DIR=/run/wpa_supplicant, "
                     "and join the group of that folder"),
    "settings": ("problem", os.path.dirname(SETTINGS) + " cannot be written",
                 "sudo install -d -o $USER " + SETTINGS)}
finds(UNPRIVILEGED, user=NOBODY)

configure("[General]\n")
equal(diagnosis()[1], {}, "a machine whose MTU nobody has set")
configure("[GATT]\nExchangeMTU = 64\n")
finds({"MTU": ("note", MAIN_CONF + " says ExchangeMTU = 64",
               "set ExchangeMTU = 256 in the section [GATT] and restart bluetoothd")})
configure("[GATT]\nExchangeMTU = 256\n")

NO_ADAPTER = ("problem", "LYN_BT_ADAPTER asks for hci7, which is not there", "unset LYN_BT_ADAPTER")
finds({"adapter": NO_ADAPTER}, LYN_BT_ADAPTER="hci7")

end("wpa_supplicant")
NO_WIFI = {name: UNPRIVILEGED[name] for name in ("access point", "Wi-Fi Direct")}
finds(NO_WIFI)

end("bluetoothd")
wait_for(lambda: not daemons.on_the_bus("org.bluez"), 10, "the end of bluetoothd")
NO_BLUETOOTHD = ("problem", "does not run", "sudo systemctl start bluetooth")
finds({"bluetoothd": NO_BLUETOOTHD, **NO_WIFI})

NO_BUS = ("problem", "cannot be reached", "sudo systemctl start dbus")
finds({"system bus": NO_BUS, **NO_WIFI}, DBUS_SYSTEM_BUS_ADDRESS="unix:path=/nowhere")
