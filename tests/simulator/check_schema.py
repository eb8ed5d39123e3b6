# SPDX-License-Identifier: Apache-2.0
"""Checks that the published schema accepts and refuses what the simulator's reader accepts and refuses.

Usage: check_schema.py SIMULATOR_FOLDER SAMPLES_FOLDER
"""
import json
import pathlib
import sys

import jsonschema


def load(path):
    return json.loads(path.read_text(encoding="utf-8"))


def main():
    simulator, samples = map(pathlib.Path, sys.argv[1:3])
    schema = load(simulator / "scenario.schema.json")
    validator = jsonschema.validators.validator_for(schema)
    validator.check_schema(schema)
    accepts = validator(schema).is_valid

    good = {path.name: load(path) for path in sorted((simulator / "scenarios").glob("*.json"))}
    good["default_scenario.json"] = load(simulator / "default_scenario.json")
    good.update(load(samples / "valid.json"))
    # What only the reader can tell is fine with the schema, or it would not be in that file.
    good.update(load(samples / "invalid_for_the_reader.json"))
    bad = load(samples / "invalid.json")

    wrong = [f"refused: {name}" for name, scenario in good.items() if not accepts(scenario)]
    wrong += [f"accepted: {name}" for name, scenario in bad.items() if accepts(scenario)]
    for line in wrong:
        print(line)
    print(f"{len(good)} accepted, {len(bad)} refused, {len(wrong)} wrong")
    return 1 if wrong or not bad else 0


if __name__ == "__main__":
    sys.exit(main())
