# SPDX-License-Identifier: Apache-2.0
"""The first file system of a guest: busybox, the kernel modules that reach the host's files, and a script."""
import gzip
import os
import stat
import subprocess

BUSYBOX = "/bin/busybox"
APPLETS = ("sh", "mount", "umount", "mkdir", "insmod", "switch_root", "cat", "poweroff")
MODULES = ("virtio_pci", "9pnet_virtio", "9p", "overlay", "virtio_rng")


def modules(kernel):
    """The module files that the guest needs before it has a root, in the order in which they are loaded."""
    found = []
    for name in MODULES:
        shown = subprocess.run(["/sbin/modprobe", "-S", kernel, "--show-depends", name],
                               capture_output=True, text=True, check=True).stdout
        for line in shown.splitlines():
            words = line.split()
            if words and words[0] == "insmod" and words[1] not in found:
                found.append(words[1])
    return found


class Archive:
    """A cpio archive in the form that the kernel unpacks."""

    def __init__(self):
        self._data = bytearray()
        self._entries = 0

    def add(self, name, mode, content=b""):
        self._entries += 1
        fields = (self._entries, mode, 0, 0, 1, 0, len(content), 0, 0, 0, 0, len(name) + 1, 0)
        self._data += b"070701" + b"".join(b"%08X" % field for field in fields) + name.encode() + b"\0"
        self._pad()
        self._data += content
        self._pad()

    def bytes(self):
        self.add("TRAILER!!!", 0)
        return bytes(self._data)

    def _pad(self):
        self._data += b"\0" * (-len(self._data) % 4)


def build(path, kernel, init):
    """Writes the archive. `init` is the script that the kernel starts."""
    archive = Archive()
    for folder in ("bin", "dev", "proc", "sys", "mod", "host", "own", "root"):
        archive.add(folder, stat.S_IFDIR | 0o755)
    with open(BUSYBOX, "rb") as busybox:
        archive.add("bin/busybox", stat.S_IFREG | 0o755, busybox.read())
    for applet in APPLETS:
        archive.add("bin/" + applet, stat.S_IFLNK | 0o777, b"busybox")
    order = []
    for module in modules(kernel):
        name = os.path.basename(module)
        order.append(name)
        with open(module, "rb") as content:
            archive.add("mod/" + name, stat.S_IFREG | 0o644, content.read())
    archive.add("mod/order", stat.S_IFREG | 0o644, "".join(name + "\n" for name in order).encode())
    with open(init, "rb") as script:
        archive.add("init", stat.S_IFREG | 0o755, script.read())
    with gzip.open(path, "wb", compresslevel=1) as packed:
        packed.write(archive.bytes())
