#!/usr/bin/env python3
"""Validates every line that quarry json writes of volumes, sound and damaged, against the schema.

usage: json_schema.py SCHEMA QUARRY VOLUME|FOLDER...
"""

import json
import random
import subprocess
import sys
from pathlib import Path

import jsonschema


def damaged(volume, seed):
    """The volume with some of its bytes changed."""
    chance = random.Random(seed)
    content = bytearray(volume)
    for _ in range(200):
        content[chance.randrange(len(content))] = chance.randrange(256)
    return bytes(content)


def lines_of(quarry, volume, option):
    run = subprocess.run([quarry, "json", option, "-"], input=volume, stdout=subprocess.PIPE, check=False)
    if run.returncode not in (0, 1, 2):
        sys.exit(f"status {run.returncode}")
    return run.stdout.decode("utf-8").splitlines()


def not_finite(name):
    sys.exit(f"{name} is not JSON")


def main():
    schema_path, quarry, *paths = sys.argv[1:]
    with open(schema_path, encoding="utf-8") as file:
        schema = json.load(file)
    jsonschema.Draft202012Validator.check_schema(schema)
    # Each kind against its own definition: the messages of oneOf name all of them.
    validators = {kind: jsonschema.Draft202012Validator({"$ref": f"#/$defs/{kind}", "$defs": schema["$defs"]})
                  for kind in schema["properties"]["kind"]["enum"]}
    kinds = set()
    for path in [file for path in map(Path, paths) for file in (path.iterdir() if path.is_dir() else [path])]:
        volume = path.read_bytes()
        for content in [volume, *(damaged(volume, seed) for seed in range(3))]:
            for line in lines_of(quarry, content, "--samples") + lines_of(quarry, content, "--inventory"):
                if any(ord(character) < 0x20 or 0x7F <= ord(character) < 0xA0 for character in line):
                    sys.exit(f"control character: {line!r}")
                found = json.loads(line, parse_constant=not_finite)
                validators[found["kind"]].validate(found)
                kinds.add(found["kind"])
    if kinds != set(validators):
        sys.exit(f"only {kinds}")


main()
