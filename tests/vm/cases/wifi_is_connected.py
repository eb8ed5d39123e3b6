# SPDX-License-Identifier: Apache-2.0
# Shows: the guest is associated with a real access point, and has a Wi-Fi Direct address
# Guest: wifi
import re

from vm.checks import check
from vm.programs import run

status = run("wpa_cli", "-p", "/run/wpa_supplicant", "-i", "wlan1", "status")
point = run("iw", "dev", "wlan0", "info")
check("freq=2437" in status, status)
bssid = re.search(r"^bssid=(\S+)$", status, re.MULTILINE)
check(bssid and "addr " + bssid[1] in point, "the access point is %s, and the station says\n%s" % (point, status))
check(re.search(r"^p2p_device_address=([0-9a-f]{2}:){5}[0-9a-f]{2}$", status, re.MULTILINE), status)
