# SPDX-License-Identifier: Apache-2.0
"""What this machine can start a guest with."""
import os
import re
import shutil
import subprocess

QEMU = "qemu-system-x86_64"
KVM = ("-accel", "kvm", "-cpu", "host")
# Five levels of page tables cost time, and serve nobody here.
EMULATION = ("-accel", "tcg", "-cpu", "max,-la57")
NEEDED = (QEMU, "modprobe", "btvirt", "hostapd", "wpa_supplicant", "iw", "dbus-daemon", "busctl")


class Unusable(Exception):
    """Why no guest can be started here."""


def _has(program):
    return shutil.which(program, path=os.environ.get("PATH", "") + ":/usr/local/sbin:/usr/sbin:/sbin") is not None


def check():
    """Raises Unusable when something is missing."""
    if os.uname().machine != "x86_64":
        raise Unusable("the guests are for x86_64 machines")
    missing = [program for program in NEEDED if not _has(program)]
    if not os.access("/bin/busybox", os.R_OK):
        missing.append("busybox (static)")
    if missing:
        raise Unusable("missing: %s; try scripts/install-packages test vm" % ", ".join(missing))
    kernel()


def kernel():
    """The release of the newest kernel that is here with its modules."""
    releases = [name.removeprefix("vmlinuz-") for name in os.listdir("/boot") if name.startswith("vmlinuz-")]
    usable = [release for release in releases if os.path.isdir("/lib/modules/" + release)]
    if not usable:
        raise Unusable("no kernel with its modules in /boot; the package is linux-image-amd64")
    return max(usable, key=lambda release: [int(number) for number in re.findall(r"\d+", release)])


def kvm_works():
    """A device that is there may still not work, inside another guest for example. So a kernel is started with it:
    one that has nothing to do ends with a panic."""
    if not os.access("/dev/kvm", os.R_OK | os.W_OK):
        return False
    command = [QEMU, "-M", "q35,usb=off", *KVM, "-m", "128", "-nodefaults", "-no-user-config", "-display", "none",
               "-no-reboot", "-kernel", "/boot/vmlinuz-" + kernel(), "-append", "console=ttyS0 panic=-1",
               "-serial", "stdio"]
    try:
        done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                              timeout=20, check=False)
    except subprocess.TimeoutExpired:
        return False
    return b"Kernel panic - not syncing" in done.stdout
