# SPDX-License-Identifier: Apache-2.0
"""The cases: scripts for the guest that say in their first lines what they show and what they need.

    # Shows: a phone that refuses is reported as refusing
    # Guest: bluetooth wifi        what must run; cases that need the same share a guest...
    # Guest: bluetooth, alone      ...unless they leave it in a state that none should begin in
    # Limit: 60                    seconds; 120 when it is not given
"""
import dataclasses
import glob
import os
import re

NEEDS = ("bare", "bluetooth", "wifi", "systemd")
DEFAULT_LIMIT = 120


@dataclasses.dataclass(frozen=True)
class Case:
    name: str
    path: str
    shows: str
    needs: tuple
    alone: bool
    limit: int


class BadCase(Exception):
    """A case whose first lines cannot be understood."""


def _read(path):
    name = os.path.basename(path).removesuffix(".py")
    with open(path, encoding="utf-8") as file:
        head = dict(re.findall(r"^# (Shows|Guest|Limit): (.+)$", file.read(), re.MULTILINE))
    if "Shows" not in head or "Guest" not in head:
        raise BadCase("%s: needs the lines '# Shows: ...' and '# Guest: ...'" % path)
    needs, _, manner = head["Guest"].partition(",")
    words = tuple(sorted(needs.split()))
    if not words or not set(words) <= set(NEEDS) or manner.strip() not in ("", "alone"):
        raise BadCase("%s: '# Guest: %s' is not understood" % (path, head["Guest"]))
    return Case(name, path, head["Shows"], words, bool(manner), int(head.get("Limit", DEFAULT_LIMIT)))


def read_all(folder):
    return [_read(path) for path in sorted(glob.glob(os.path.join(folder, "*.py")))]


def choose(cases, wanted):
    """The cases named, all without a name. A name may be a pattern's beginning, such as "request"."""
    if not wanted:
        return cases
    for word in wanted:
        if not any(case.name.startswith(word) for case in cases):
            raise BadCase("there is no case '%s'" % word)
    return [case for case in cases if any(case.name.startswith(word) for word in wanted)]


def guests(cases, jobs):
    """The cases as they share guests, a list of lists, for so many guests at once: no list is longer than a fair
    share, and the longest come first."""
    shared = {}
    alone = []
    for case in cases:
        if case.alone:
            alone.append([case])
        else:
            shared.setdefault(case.needs, []).append(case)
    fair = max(1, -(-len(cases) // jobs))
    parts = []
    for group in shared.values():
        count = -(-len(group) // fair)
        parts += [group[first::count] for first in range(count)]
    return sorted([*parts, *alone], key=lambda group: -len(group))
