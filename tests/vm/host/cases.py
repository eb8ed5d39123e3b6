# SPDX-License-Identifier: Apache-2.0
"""The cases: scripts for the guest that say in their first lines what they show and what they need.

    # Shows: a phone that refuses is reported as refusing
    # Guest: bluetooth wifi        what must run; cases share guests that offer at least that
    # Guest: bluetooth, last       the same, for a case that leaves a state in which none should begin
    # Limit: 60                    seconds; 120 when it is not given
"""
import collections
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
    last: bool
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
    if not words or not set(words) <= set(NEEDS) or manner.strip() not in ("", "last"):
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


class Pool:
    """Cases for guests of one kind, which take one after the other. Not safe for several threads."""

    def __init__(self, needs, cases, most):
        self.needs = needs
        self.running = 0
        self._most = most
        self._left = collections.deque(sorted(cases, key=lambda case: (case.last, -case.limit)))

    def wants_a_guest(self):
        """To start one costs as much as some cases do: there are no more than their share of all guests."""
        return bool(self._left) and self.running < self._most

    def take(self):
        """The next case; None when there is none left."""
        return self._left.popleft() if self._left else None


def _offered(needs, cases):
    """The most that a guest for such a case must offer anyway. systemd changes all that runs in a guest, and so is
    for those alone that need it."""
    others = {case.needs for case in cases if ("systemd" in case.needs) == ("systemd" in needs)}
    return max((other for other in others if set(needs) <= set(other)), key=len)


def pools(cases, jobs):
    """The pools for so many guests at once. Small ones come first: at the last one all can work."""
    shared = {}
    for case in cases:
        shared.setdefault(_offered(case.needs, cases), []).append(case)
    return [Pool(needs, group, -(-len(group) * jobs // len(cases)))
            for needs, group in sorted(shared.items(), key=lambda pool: len(pool[1]))]
