# SPDX-License-Identifier: Apache-2.0
"""Brings up what a guest's cases need. Used by the agent before the first case. It calls no D-Bus library: the
agent forks, and the threads of such a library would be lost in the children."""
import os
import shutil
import subprocess
import time

from .checks import Failed, wait_for
from .hci import Management
from .programs import Program, run

BLUETOOTHD = "/usr/libexec/bluetooth/bluetoothd"
CONTROLLERS = 2
TRIES = 5

LOGS = "/run/lyn-vm"

HOSTAPD = """interface=wlan0
driver=nl80211
ssid=living room
hw_mode=g
channel=6
wpa=2
wpa_key_mgmt=WPA-PSK
rsn_pairwise=CCMP
wpa_passphrase=a long passphrase
"""

WPA_SUPPLICANT = """ctrl_interface=/run/wpa_supplicant
p2p_disabled=0
device_name=TV
network={
    ssid="living room"
    psk="a long passphrase"
    scan_freq=2437
}
"""


def _log(name):
    return os.path.join(LOGS, name + ".log")


def say(text):
    """A line for the guest's console, with the time since its start."""
    with open("/proc/uptime", encoding="utf-8") as file:
        print("[%s] %s" % (file.read().split()[0], text), flush=True)


def on_the_bus(name):
    shown = subprocess.run(["busctl", "--system", "call", "org.freedesktop.DBus", "/org/freedesktop/DBus",
                            "org.freedesktop.DBus", "NameHasOwner", "s", name], capture_output=True, text=True,
                           check=False).stdout
    return "true" in shown


def bus_up():
    if os.path.exists("/run/dbus/system_bus_socket"):
        return
    os.makedirs("/run/dbus", exist_ok=True)
    run("dbus-daemon", "--system", "--fork", "--nopidfile")
    say("the bus is up")


def controllers_up():
    """Two virtual LE controllers that hear each other. btvirt loses a controller's first command when the kernel
    sends it before btvirt has read the answer to its own first message, and the controller then stays out. As a
    real-time process it nearly always reads in time; else begin again."""
    run("modprobe", "hci_vhci")
    with Management() as management:
        for _ in range(TRIES):
            btvirt = Program(_log("btvirt"), "chrt", "--fifo", "1", "btvirt", "-L", "-l%d" % CONTROLLERS)
            end = time.monotonic() + 4
            while time.monotonic() < end:
                if len(management.indexes()) == CONTROLLERS:
                    say("controllers are up")
                    return btvirt
                time.sleep(0.05)
            btvirt.stop()
            time.sleep(0.3)
    raise Failed("the controllers do not come up")


def configure_bluetoothd():
    """An MTU as on a TV, and one channel, as between a TV and a phone that are not paired."""
    with open("/etc/bluetooth/main.conf", "a", encoding="utf-8") as file:
        file.write("\n[GATT]\nExchangeMTU = 256\nChannels = 1\n")


def bluetoothd_up(*options):
    daemon = Program(_log("bluetoothd"), BLUETOOTHD, "-n", "-d", *options)
    wait_for(lambda: on_the_bus("org.bluez"), 15, "bluetoothd")
    with Management() as management:
        wait_for(lambda: all(map(management.powered, management.indexes())), 15, "adapters with power")
    say("bluetoothd is up")
    return daemon


def bluetooth_up():
    bus_up()
    shutil.rmtree("/var/lib/bluetooth", ignore_errors=True)
    os.makedirs("/var/lib/bluetooth")
    configure_bluetoothd()
    return [controllers_up(), bluetoothd_up()]


def wifi_up():
    """An access point on wlan0, and the TV's interface wlan1 connected to it."""
    bus_up()
    run("modprobe", "mac80211_hwsim", "radios=2")
    for name, text in (("hostapd", HOSTAPD), ("wpa_supplicant", WPA_SUPPLICANT)):
        with open("/run/%s.conf" % name, "w", encoding="utf-8") as file:
            file.write(text)
    point = Program(_log("hostapd"), "hostapd", "/run/hostapd.conf")
    station = Program(_log("wpa_supplicant"), "wpa_supplicant", "-u", "-i", "wlan1", "-D", "nl80211",
                      "-c", "/run/wpa_supplicant.conf")
    wait_for(lambda: "wpa_state=COMPLETED" in run("wpa_cli", "-p", "/run/wpa_supplicant", "-i", "wlan1", "status",
                                                  status=None), 30, "the connection to the access point")
    say("connected to the access point")
    return [point, station]


def up(needs):
    """Brings up what is needed, and gives the daemons back."""
    daemons = []
    if "wifi" in needs:
        daemons += wifi_up()
    if "bluetooth" in needs:
        daemons += bluetooth_up()
    return daemons
