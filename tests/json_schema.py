#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Validates every line that commands write as JSON of volumes, sound and damaged, against their schemas.

usage: json_schema.py FOLDER-OF-SCHEMAS QUARRY VOLUME|FOLDER...
"""

import json
import random
import subprocess
import sys
from pathlib import Path

import jsonschema


# The schema, and the commands whose lines it describes.
COMMANDS = {
    "quarry-json": [["json", "--samples"], ["json", "--inventory"]],
    "quarry-check": [["check", "--json"]],
    "quarry-coverage": [["coverage", "--json", "--gaps", "--days"]],
}


def damaged(volume, seed):
    """The volume with some of its bytes changed."""
    chance = random.Random(seed)
    content = bytearray(volume)
    for _ in range(200):
        content[chance.randrange(len(content))] = chance.randrange(256)
    return bytes(content)


def lines_of(quarry, volume, command):
    run = subprocess.run([quarry, *command, "-"], input=volume, stdout=subprocess.PIPE, check=False)
    if run.returncode not in (0, 1, 2):
        sys.exit(f"status {run.returncode}")
    return run.stdout.decode("utf-8").splitlines()


def not_finite(name):
    sys.exit(f"{name} is not JSON")


def validate(schema, quarry, commands, volumes):
    jsonschema.Draft202012Validator.check_schema(schema)
    # Each kind against its own definition: the messages of oneOf name all of them.
    validators = {kind: jsonschema.Draft202012Validator({"$ref": f"#/$defs/{kind}", "$defs": schema["$defs"]})
                  for kind in schema["properties"]["kind"]["enum"]}
    kinds = set()
    for volume in volumes:
        for line in [line for command in commands for line in lines_of(quarry, volume, command)]:
            if any(ord(character) < 0x20 or 0x7F <= ord(character) < 0xA0 for character in line):
                sys.exit(f"control character: {line!r}")
            found = json.loads(line, parse_constant=not_finite)
            validators[found["kind"]].validate(found)
            kinds.add(found["kind"])
    if kinds != set(validators):
        sys.exit(f"only {kinds}")


def main():
    folder, quarry, *paths = sys.argv[1:]
    files = [file for path in map(Path, paths) for file in (path.iterdir() if path.is_dir() else [path])]
    whole = [file.read_bytes() for file in files]
    volumes = [content for volume in whole for content in [volume, *(damaged(volume, seed) for seed in range(3))]]
    for name, commands in COMMANDS.items():
        schema = json.loads(Path(folder, name + ".schema.json").read_text(encoding="utf-8"))
        validate(schema, quarry, commands, volumes)


main()
