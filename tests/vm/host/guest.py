# SPDX-License-Identifier: Apache-2.0
"""One guest: a kernel with the host's files as its root, which runs cases and tells how they went."""
import json
import os
import select
import shutil
import subprocess
import time

from . import initrd, machine

BOOT_LIMIT = 300


class Died(Exception):
    """The guest stopped, or stopped telling."""


class Guest:
    """Started by `with`, ended with it. `folder` is shared with the guest and keeps what it leaves."""

    def __init__(self, tree, folder, plan, memory, kvm):
        self._tree = tree
        self._folder = folder
        self._plan = plan
        self._memory = memory
        self._kvm = kvm
        self._process = None
        self._unread = b""

    def __enter__(self):
        here = os.path.join(self._tree, "tests", "vm", "guest")
        os.makedirs(self._folder)
        shutil.copy(os.path.join(here, "init"), self._folder)
        with open(os.path.join(self._folder, "tree"), "w") as file:
            file.write(self._tree + "\n")
        with open(os.path.join(self._folder, "plan.json"), "w") as file:
            json.dump(self._plan, file)
        image = os.path.join(self._folder, "initrd.gz")
        initrd.build(image, machine.kernel(), os.path.join(here, "initrd-init"))
        with open(os.path.join(self._folder, "qemu.log"), "wb") as log:
            self._process = subprocess.Popen(self._command(image), stdin=subprocess.PIPE,
                                             stdout=subprocess.PIPE, stderr=log)
        return self

    def __exit__(self, *_):
        self._process.kill()
        self._process.wait()
        self._process.stdin.close()
        self._process.stdout.close()
        os.remove(os.path.join(self._folder, "initrd.gz"))

    def _command(self, image):
        # An emulated timer may be late on a busy machine; without the last word the kernel would give up then.
        options = "console=ttyS0 quiet panic=-1 oops=panic mitigations=off no_timer_check"
        if "systemd" in self._plan["needs"]:
            options += " lyn.systemd"
        return [machine.QEMU, "-M", "q35,usb=off", *(machine.KVM if self._kvm else machine.EMULATION),
                "-smp", "1", "-m", str(self._memory),
                "-nodefaults", "-no-user-config", "-display", "none", "-no-reboot",
                "-kernel", "/boot/vmlinuz-" + machine.kernel(), "-initrd", image, "-append", options,
                "-serial", "file:" + os.path.join(self._folder, "console.log"), "-serial", "stdio",
                "-virtfs", "local,path=/,mount_tag=host,security_model=passthrough,readonly=on,multidevs=remap",
                "-virtfs", "local,path=%s,mount_tag=results,security_model=none" % self._folder,
                "-device", "virtio-rng-pci"]

    def begin(self, case):
        """Lets a case begin. Its end is the next event."""
        told = {"name": case.name, "path": case.path, "limit": case.limit, "last": case.last}
        try:
            os.write(self._process.stdin.fileno(), json.dumps(told).encode() + b"\n")
        except BrokenPipeError:
            raise Died(self._last_words()) from None

    def event(self, limit):
        """What the guest tells next, a dictionary."""
        end = time.monotonic() + limit
        while b"\n" not in self._unread:
            if time.monotonic() > end:
                raise Died("nothing was heard from the guest for %d s" % limit)
            if select.select([self._process.stdout], [], [], 1)[0]:
                more = os.read(self._process.stdout.fileno(), 65536)
                if not more:
                    raise Died(self._last_words())
                self._unread += more
        line, self._unread = self._unread.split(b"\n", 1)
        return json.loads(line)

    def _last_words(self):
        words = []
        for name in ("qemu.log", "console.log"):
            with open(os.path.join(self._folder, name), "rb") as log:
                words += log.read().decode("utf-8", "replace").splitlines()[-25:]
        return "the guest died:\n" + "\n".join(words)
