#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
#
# Checks that the documents say what is so.
#
# usage: check_documents.py links FOLDER             every link between the documents leads somewhere
#        check_documents.py program FOLDER PROGRAM   the README shows examples/first.c and what PROGRAM prints
#        check_documents.py values FOLDER            docs/behaviour.md and the sources name the same values
import html
import re
import subprocess
import sys
import urllib.parse
import xml.etree.ElementTree
from pathlib import Path

# Neither sources nor documents.
LEFT_OUT = {".git", ".cache", "build"}


def documents(root):
    return sorted(path for path in root.rglob("*.md") if path.relative_to(root).parts[0] not in LEFT_OUT)


def without_code(text):
    text = re.sub(r"^(```|~~~).*?^\1[^\n]*$", "", text, flags=re.MULTILINE | re.DOTALL)
    return re.sub(r"`[^`\n]*`", lambda code: "`" + "x" * (len(code[0]) - 2) + "`", text)


def anchors(text):
    """The names under which a document's headings can be linked to, as the hosting sites make them."""
    found = set()
    for heading in re.findall(r"^#{1,6} +(.+?)#* *$", re.sub(r"^```.*?^```", "", text, flags=re.M | re.S), re.M):
        plain = re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", heading)
        name = re.sub(r"[^\w\- ]", "", plain.strip().lower()).replace(" ", "-")
        number = 0
        while (name if number == 0 else f"{name}-{number}") in found:
            number += 1
        found.add(name if number == 0 else f"{name}-{number}")
    return found


def broken_link(root, document, target):
    """Why a link leads nowhere, or None."""
    if re.match(r"[a-z]+:", target):
        return None
    path_text, _, anchor = html.unescape(target).partition("#")
    path = (document.parent / urllib.parse.unquote(path_text)).resolve() if path_text else document
    if not path.is_relative_to(root):
        return "outside of the project"
    if not path.exists():
        return "there is no such file"
    if anchor and anchor not in anchors(path.read_text(encoding="utf-8")):
        return "there is no such heading"
    return None


def check_links(root):
    problems, count = [], 0
    for document in documents(root):
        text = without_code(document.read_text(encoding="utf-8"))
        for target in re.findall(r"\]\(([^()\s]+)\)", text):
            count += 1
            reason = broken_link(root, document, target)
            if reason:
                problems.append(f"{document.relative_to(root)}: {target}: {reason}")
    for picture in (root / "docs").rglob("*.svg"):
        xml.etree.ElementTree.parse(picture)
    if count == 0:
        problems.append("no links found at all")
    return problems


def fenced_blocks(text):
    return re.findall(r"^```(\w*)\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)


def check_program(root, program):
    blocks = fenced_blocks((root / "README.md").read_text(encoding="utf-8"))
    shown = next((i for i, (language, _) in enumerate(blocks) if language == "c"), None)
    if shown is None or shown + 1 >= len(blocks):
        return ["README.md: there is no C program with its output behind it"]
    problems = []
    if blocks[shown][1] != (root / "examples/first.c").read_text(encoding="utf-8"):
        problems.append("README.md: the program is not examples/first.c")
    ran = subprocess.run([program], capture_output=True, text=True, timeout=60, check=False)
    if ran.returncode != 0:
        problems.append(f"{program}: exit status {ran.returncode}: {ran.stderr}")
    if blocks[shown + 1][1] != ran.stdout:
        problems.append(f"README.md: the program's output is now:\n{ran.stdout}")
    return problems


KEY = r"(?:db|memory)/[\w/.]+|com\.calyxon/[\w/.]+|/(?:opt|usr|home)/[\w/.-]+|[0-9a-f]{8}-[0-9a-f-]{27}"


def keys_of_the_core(root):
    """Settings, feature values, files and UUIDs."""
    sources = (path.read_text(encoding="utf-8") for path in (root / "core").rglob("*") if path.suffix in {".cpp", ".h"})
    return {key for text in sources for key in re.findall(f'"({KEY})"', text)}


def rows_of_the_interface(root):
    """How the table rows of the enumerators, and of the answers, have to look."""
    header = (root / "include/lyn_service.h").read_text(encoding="utf-8")
    for name, value in re.findall(r"\b(LYN_(?:ERROR|STATE)_\w+) = (\d+)", header):
        yield rf"^\| {value} \| `{name}` \|"
    for name, value in re.findall(r"\bLYN_REQUEST_INITIATING_RESULT_(\w+) = (\d+)", header):
        yield rf"^\| {value} \| [^|]+ \| `{name}` \|"
    service = (root / "core/Service/CService.cpp").read_text(encoding="utf-8")
    for answer, name in re.findall(r'\{"(\w+)", LYN_REQUEST_INITIATING_RESULT_(\w+)\}', service):
        yield rf"^\| \d+ \| `{answer}` \| `{name}` \|"


def check_values(root):
    text = (root / "docs/behaviour.md").read_text(encoding="utf-8")
    named = set(re.findall(f"`({KEY})`", text))
    keys = keys_of_the_core(root)
    rows = list(rows_of_the_interface(root))
    # Fewer would mean that the sources are written in another way, and that this finds nothing.
    if len(keys) < 15 or len(rows) < 35:
        return [f"only {len(keys)} keys and {len(rows)} enumerators and answers found in the sources"]
    return (
        [f"docs/behaviour.md: {key} is not named" for key in sorted(keys - named)]
        + [f"docs/behaviour.md: {key} is not in the sources" for key in sorted(named - keys)]
        + [f"docs/behaviour.md: no table row {row}" for row in rows if not re.search(row, text, re.MULTILINE)]
    )


def main(arguments):
    checks = {"links": (check_links, 0), "program": (check_program, 1), "values": (check_values, 0)}
    if len(arguments) < 2 or arguments[0] not in checks or len(arguments) != 2 + checks[arguments[0]][1]:
        print(f"usage: check_documents.py {'|'.join(checks)} FOLDER [PROGRAM]", file=sys.stderr)
        return 2
    check, _ = checks[arguments[0]]
    problems = check(Path(arguments[1]).resolve(), *arguments[2:])
    print("\n".join(problems) or "nothing to complain about")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
