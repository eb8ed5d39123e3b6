# SPDX-License-Identifier: Apache-2.0
"""Checks that the simulator's document shows the program that is tested, and scenarios that are accepted.

Usage: check_document.py DOCUMENT PROGRAM_SOURCE SIMULATOR_PROCESS
"""
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

PHONE = {"address": "A0:00:00:00:00:01", "advertising": ""}


def as_scenario(example):
    """A whole scenario is one; a list is one of services or, failing that, of answers."""
    if isinstance(example, dict):
        return example
    services = example if any("feature" in entry or "uuid" in entry for entry in example) else [
        {"feature": "nodlink", "answers": example}]
    return {"phones": [dict(PHONE, services=services)]}


def complaint(process, scenario):
    with tempfile.NamedTemporaryFile("w", suffix=".json") as file:
        json.dump(scenario, file)
        file.flush()
        environment = dict(os.environ, LYN_SIMULATOR_SCENARIO=file.name)
        output = subprocess.run([process], env=environment, capture_output=True, text=True, check=True).stdout
    return None if output.startswith("check 0\n") else output


def main():
    document, source = (pathlib.Path(name).read_text(encoding="utf-8") for name in sys.argv[1:3])
    program = source.partition("\n")[2]  # without the licence line
    wrong = []
    if f"```cpp\n{program}```" not in document:
        wrong.append("the document's program is not the one that is tested")
    examples = [json.loads(block) for block in re.findall(r"```json\n(.*?)```", document, re.DOTALL)]
    if len(examples) < 3:
        wrong.append("scenarios are missing in the document")
    wrong += filter(None, (complaint(sys.argv[3], as_scenario(example)) for example in examples))
    for line in wrong:
        print(line)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
