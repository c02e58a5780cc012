#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Compares the data records that quarry json finds with those of a walk of its own, and its counts of bytes with the
length of the volume.

usage: walk.py QUARRY FOLDER...     (and the folder in QUARRY_VOLUMES, if it is set)

The walk knows no more than the layout: a logical record begins with six digits (or blanks) and a type letter; a data
record's length is that of its blockette 1000, else the distance to the next place where a record begins.
"""

import gzip
import json
import os
import pathlib
import re
import struct
import subprocess
import sys

CONTROL = re.compile(rb"[0-9 ]{5}[0-9][VAST ][ *]")
DATA = re.compile(rb"[0-9 ]{5}[0-9][DRQM][ \0]")


def order_of(volume, at):
    """The byte order in which the start time makes sense; none for bytes that are no data record's header."""
    if not DATA.match(volume, at) or at + 48 > len(volume):
        return None
    for order in "><":
        year, day, hour, minute, second = struct.unpack_from(order + "HHBBB", volume, at + 20)
        if 1900 <= year <= 2100 and 1 <= day <= 366 and hour < 24 and minute < 60 and second <= 60:
            return order
    return None


def length_by_1000(volume, at, order):
    """The length that the record's blockette 1000 says, or none."""
    place = struct.unpack_from(order + "H", volume, at + 46)[0]
    last = 0
    while last < place <= 4096 and at + place + 8 <= len(volume):
        kind, following = struct.unpack_from(order + "HH", volume, at + place)
        if kind == 1000 and 7 <= volume[at + place + 6] <= 20:
            return 1 << volume[at + place + 6]
        last, place = place, following
    return None


def begins(volume, at):
    return at >= len(volume) or order_of(volume, at) or CONTROL.match(volume, at)


def length_to_next(volume, at):
    for power in range(7, 17):
        if begins(volume, at + (1 << power)):
            return 1 << power
    return len(volume) - at


def walk(volume):
    """Offsets and lengths of the data records."""
    found = []
    at = 0
    while at < len(volume):
        order = order_of(volume, at)
        if not order:
            at += 64
            continue
        length = length_by_1000(volume, at, order) or length_to_next(volume, at)
        found.append((at, length))
        at += length
    return found


def by_quarry(quarry, content):
    """Offsets and lengths of the data records, and the number of bytes of all kinds."""
    command = [quarry, "json", "--kinds", "data,summary", "-"]
    run = subprocess.run(command, input=content, stdout=subprocess.PIPE, check=False)
    *records, summary = [json.loads(line) for line in run.stdout.decode("utf-8").splitlines()]
    parts = ("header_bytes", "blockette_bytes", "padding_bytes", "data_bytes", "damaged_bytes")
    return [(record["offset"], record["record_length"]) for record in records], sum(summary[part] for part in parts)


def main():
    quarry, *folders = sys.argv[1:]
    if "QUARRY_VOLUMES" in os.environ:
        folders.append(os.environ["QUARRY_VOLUMES"])
    volumes = records = failures = 0
    for path in sorted(path for folder in folders for path in pathlib.Path(folder).iterdir()):
        content = path.read_bytes()
        plain = gzip.decompress(content) if content[:2] == b"\x1f\x8b" else content
        found, size = by_quarry(quarry, content)
        if size != len(plain):
            failures += 1
            print(f"{path}: {size} of {len(plain)} bytes")
        if path.name.startswith(("damaged", "README")):
            continue
        expected = walk(plain)
        volumes += 1
        records += len(expected)
        if expected != found:
            failures += 1
            print(f"{path}: walk {sorted(set(expected) - set(found))[:5]}, quarry {sorted(set(found) - set(expected))[:5]}")
    print(f"{records} data records in {volumes} volumes, {failures} volumes differ")
    sys.exit(1 if failures or not records else 0)


main()
