# SPDX-License-Identifier: Apache-2.0
"""The TV of this project on hci0: lynctl with the platform "linux"."""
import json
import os
import re

from .checks import equal
from .programs import Teller, run

BUILD = os.environ["LYN_VM_BUILD"]
LYNCTL = os.path.join(BUILD, "bin", "lynctl")
TV_NAME = "Guest TV"

SUCCESS, GATT_FAIL, COMMAND_ERROR = 0, 11, 14


def settings(**values):
    """Writes settings; the names are short for the keys."""
    keys = {"name": "db/menu/network/devicename/tv_name",
            "channel": "memory/menu/network/screenmirroring/p2p_listen_channel"}
    for name, value in values.items():
        run(LYNCTL, "settings", "set", keys[name], str(value))


def lynctl(*words, adapter="hci0", name="lynctl"):
    """lynctl, which goes on until it ends or is stopped. To be used with `with`."""
    return Teller(name, LYNCTL, *words, "--platform", "linux", "--json", environment={"LYN_BT_ADAPTER": adapter})


def scan(service, seconds=4, adapter="hci0"):
    """The phones found: address to what is known of it."""
    with lynctl("scan", service, "--seconds", str(seconds), adapter=adapter, name="scan") as program:
        equal(program.finish(seconds + 30), 0, "status of the scan")
        return {phone["Address"]: phone for phone in program.all("summary")[0]["phones"]}


def request(service, address, *words, limit=60, adapter="hci0"):
    """Asks a phone. The exit status, and the result's line."""
    with lynctl("request", service, address, *words, adapter=adapter, name="request") as program:
        status = program.finish(limit)
        return status, (program.all("result") or [None])[0]


def control_message(**members):
    """The bytes that a phone must get from this TV, in the guest with Wi-Fi, and with TV_NAME as its name."""
    status = run("wpa_cli", "-p", "/run/wpa_supplicant", "-i", "wlan1", "status")
    direct = re.search(r"^p2p_device_address=(\S+)$", status, re.MULTILINE)[1]
    equal(re.search(r"^freq=(\d+)$", status, re.MULTILINE)[1], "2437", "the access point's frequency")
    common = {"P2PChannel": "6", "P2PMac": direct, "deviceIcon": "1", "deviceType": "12", "displayName": TV_NAME}
    return json.dumps({**common, **members}, sort_keys=True, separators=(",", ":")).encode()
