#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Holds the pictures of quarry coverage --svg against its JSON Lines, and against what rsvg-convert makes of them.

usage: coverage_picture.py QUARRY DEMONSTRATION-VOLUME

Positions in a picture are read as times by the span that it states and by the frame of its rows.
"""

import collections
import csv
import datetime
import json
import pathlib
import random
import re
import struct
import subprocess
import sys
import tempfile
import xml.etree.ElementTree
import zlib

sys.dont_write_bytecode = True

import coverage  # noqa: E402
from coverage import DAY, SECOND, made, microseconds, run_of  # noqa: E402

SVG = "{http://www.w3.org/2000/svg}"
COLOURS = {"bar": (0x00, 0x72, 0xB2), "mark": (0xE6, 0x61, 0x00)}
RECTANGLE = re.compile(r"M(-?[\d.]+) (-?[\d.]+)h(-?[\d.]+)v(-?[\d.]+)h-?[\d.]+z")
BASE = 1_107_252_030 * SECOND

Box = collections.namedtuple("Box", "left top width height")


def boxes_of(element):
    path = element.get("d")
    assert RECTANGLE.sub("", path) == "", path
    return [Box(*map(float, numbers)) for numbers in RECTANGLE.findall(path)]


class Picture:
    """A page, read."""

    def __init__(self, name):
        self.name = name
        root = xml.etree.ElementTree.parse(name).getroot()
        for element in root.iter():
            assert element.tag.removeprefix(SVG) in ("svg", "title", "style", "rect", "text", "path", "g"), element.tag
            assert not {"href", "style"} & set(element.attrib), element.attrib
        self.height = float(root.get("height"))
        self.texts = {kind: [text for text in root.findall(SVG + "text") if text.get("class") == kind]
                      for kind in ("title", "span", "tick")}
        self.rows = {row.find(SVG + "text").text: row for row in root.findall(SVG + "g")}
        if self.rows:
            grid = next(path for path in root.findall(SVG + "path") if path.get("class") == "grid")
            self.frame = Box(*map(float, RECTANGLE.match(grid.get("d")).groups()))
            start, end = self.texts["span"][0].text.split(" to ")
            self.start = microseconds(start)
            self.length = microseconds(end) - self.start

    def place(self, time):
        return self.frame.left + self.frame.width * min(max((time - self.start) / self.length, 0), 1)

    def span(self, start, end):
        return self.place(start), self.place(end)

    def drawn(self, channel, kind):
        paths = [path for path in self.rows[channel].findall(SVG + "path") if path.get("class") == kind]
        places = [(box.left, box.left + box.width) for path in paths for box in boxes_of(path)]
        frame = (self.frame.left, self.frame.left + self.frame.width)
        assert all(lies_in([frame], place, 0.01) for place in places), (self.name, channel, places)
        return places

    def check_ticks(self):
        """At the times that their texts say, as many as can be read."""
        context = {}
        ticks = []
        for text in self.texts["tick"]:
            if float(text.get("y")) < self.frame.top:
                context.setdefault(text.get("x"), []).append(text.text)
        day = ""
        for place, (text, *further) in context.items():
            day = further[0] if further else day
            moment = text if not day else f"{day}-{text}" if len(day) == 4 else f"{day}T{text}"
            moment += "0000-01-01"[len(moment):] if len(moment) < 10 else ""
            ticks.append((microseconds(moment + ("+00:00" if "T" in moment else "T00:00+00:00")), float(place)))
        for time, place in ticks:
            assert abs(self.place(time) - place) < 0.02, (self.name, time, place)
        places = [place for _, place in ticks]
        assert 3 <= len(ticks) <= 11 and all(b - a > 70 for a, b in zip(places, places[1:])), (self.name, ticks)


def meets(spans, one, slack):
    return any(start - slack <= one[1] and one[0] <= end + slack for start, end in spans)


def lies_in(spans, one, slack):
    return any(start - slack <= one[0] and one[1] <= end + slack for start, end in spans)


def has_edge(edges, place):
    return any(abs(edge - place) < 1.1 for edge in edges)


def check_row(picture, channel, lines, what):
    """Everything of the table is drawn, and nothing else."""
    kinds = collections.defaultdict(list)
    for line in lines:
        if line["kind"] == "segment":
            end = microseconds(line["end"]) + SECOND / line["rate"]
            kinds["segment"].append(picture.span(microseconds(line["start"]), end))
        elif line["kind"] in ("gap", "overlap"):
            kinds[line["kind"]].append(picture.span(microseconds(line["start"]), microseconds(line["end"])))
    bars, notches, marks = (picture.drawn(channel, kind) for kind in ("bar", "gap", "mark"))
    what = (what, channel, kinds, bars, notches, marks)
    assert all(lies_in(bars, segment, 1.1) for segment in kinds["segment"]), what
    edges = [[segment[side] for segment in kinds["segment"]] for side in (0, 1)]
    assert all(has_edge(edges[side], bar[side]) for bar in bars for side in (0, 1)), what
    spaces = [(one[1], other[0]) for one, other in zip(bars, bars[1:])]
    assert all(end - start > 0.98 for start, end in spaces), what
    for gap in kinds["gap"]:
        assert meets(spaces, gap, 0) or meets(notches, gap, 0.02), what
        assert gap[1] - gap[0] < 3 or lies_in(spaces, gap, 1.1), what
    assert all(meets(kinds["gap"], notch, 1.1) for notch in notches), what
    assert all(lies_in(marks, overlap, 3) for overlap in kinds["overlap"]), what
    assert all(meets(kinds["overlap"], mark, 3) for mark in marks), what


def lines_of(command):
    by_channel = collections.defaultdict(list)
    for line in coverage.lines_of(command):
        code = ".".join(line[part] for part in ("network", "station", "location", "channel"))
        by_channel[code].append(line)
    return by_channel


def check(quarry, folder, volume, what, *options):
    """The pages of a volume's picture: together they have each channel once, in order."""
    path = folder / "volume"
    path.write_bytes(volume)
    by_channel = lines_of([quarry, "coverage", "--json", "--gaps", "--svg", folder / "page.svg", *options, path])
    pages = [Picture(folder / "page.svg")]
    while (folder / f"page-{len(pages) + 1}.svg").exists():
        pages.append(Picture(folder / f"page-{len(pages) + 1}.svg"))
    assert [channel for page in pages for channel in page.rows] == list(by_channel), what
    for page in pages:
        page.check_ticks()
        for channel in page.rows:
            check_row(page, channel, by_channel[channel], what)
    return pages


def pixels_of(png):
    """Rows of pixels of eight bits, as lists of their bytes, and the number of those."""
    width, depth = struct.unpack(">I", png[16:20])[0], {2: 3, 6: 4}[png[25]]
    data, at = b"", 8
    while at < len(png):
        size = struct.unpack(">I", png[at:at + 4])[0]
        data += png[at + 8:at + 8 + size] if png[at + 4:at + 8] == b"IDAT" else b""
        at += size + 12
    data = zlib.decompress(data)
    stride = width * depth
    rows, above = [], bytes(stride)
    for start in range(0, len(data), stride + 1):
        kind, row = data[start], bytearray(data[start + 1:start + 1 + stride])
        for i in range(stride if kind else 0):
            left, up = (row[i - depth], above[i]) if i >= depth else (0, above[i])
            corner = above[i - depth] if i >= depth else 0
            nearest = min((left, up, corner), key=lambda one: abs(left + up - corner - one))
            row[i] = (row[i] + (left, up, (left + up) // 2, nearest)[kind - 1]) & 255
        rows.append(row)
        above = row
    return rows, depth


def check_pixels(page):
    """Bars and overlaps have their colours in the middle, and wide gaps have no colour."""
    png = subprocess.run(["rsvg-convert", page.name], stdout=subprocess.PIPE, check=True).stdout
    rows, depth = pixels_of(png)
    assert len(rows) == page.height
    looked_at = collections.Counter()
    for row in page.rows.values():
        boxes = {path.get("class"): boxes_of(path) for path in row.findall(SVG + "path")}
        seen = [(kind, box) for kind in COLOURS for box in boxes.get(kind, []) if box.width > 3]
        bars = boxes.get("bar", [])
        seen += [("space", Box(one.left + one.width, one.top, other.left - one.left - one.width, one.height))
                 for one, other in zip(bars, bars[1:]) if other.left - one.left - one.width > 3]
        for kind, box in seen:
            down = 0.5 if kind == "mark" else 0.6
            across = int(box.left + box.width / 2) * depth
            pixel = tuple(rows[int(box.top + down * box.height)][across:across + 3])
            grey = max(pixel) - min(pixel) < 6 and min(pixel) > 0xC0
            is_right = grey if kind == "space" else max(abs(a - b) for a, b in zip(pixel, COLOURS[kind])) < 40
            is_covered = kind == "bar" and any(other.left < box.left + box.width / 2 + 2 and
                                               box.left + box.width / 2 - 2 < other.left + other.width
                                               for other in boxes.get("gap", []) + boxes.get("mark", []))
            assert is_right or is_covered, (page.name, kind, box, pixel)
            looked_at[kind] += 1
    assert min(looked_at[kind] for kind in ("bar", "mark", "space")) > 2, looked_at


def two_records(length):
    """At both ends of so many microseconds."""
    rate = 1000 * SECOND / length
    start = -600_000_000 * SECOND
    return b"".join(made("LHZ", start + part * length // 10, 100, 1, rate=rate) for part in (0, 9))


def many_channels(dice):
    volume = []
    for i in range(300):
        at = BASE + dice.randrange(5 * DAY)
        for _ in range(dice.randrange(1, 30)):
            count = dice.randrange(1, 20)
            volume += run_of(f"{i:03}", at, count, 3600, 1)
            at += (count * 3600 + dice.choice([30, 300, 7000, 90_000, -900])) * SECOND
    return b"".join(volume)


def check_epochs(quarry, demonstration, folder):
    """Lines are the epochs that quarry info reports; channels without data have a row."""
    table = subprocess.run([quarry, "info", "--tsv", "--channels", demonstration], stdout=subprocess.PIPE, text=True,
                           check=False).stdout
    epochs = collections.defaultdict(list)
    for row in csv.DictReader(table.splitlines(), delimiter="\t"):
        if row["start"]:
            epochs[row["channel"]].append((microseconds(row["start"]), microseconds(row["end"] or "9999-01-01T00:00Z")))
    for span in ("", "2000-01-01T00:00:00Z to 2006-01-01T00:00:00Z", "2003-04-01T00:00:00Z to 2003-05-01T00:00:00Z"):
        options = ["--from", *span.replace("to", "--to").split()] if span else []
        subprocess.run([quarry, "coverage", "--svg", folder / "demo.svg", *options, demonstration],
                       stdout=subprocess.DEVNULL, check=False)
        picture = Picture(folder / "demo.svg")
        assert span in picture.texts["span"][0].text
        assert span or set(epochs) <= set(picture.rows)
        for channel, spans in epochs.items():
            places = [picture.span(*span) for span in spans if span[1] > picture.start]
            places = [place for place in places if place[0] < picture.frame.left + picture.frame.width]
            lines = picture.drawn(channel, "line") if channel in picture.rows else []
            assert all(lies_in(lines, place, 1.1) for place in places), (channel, places, lines)
            assert all(meets(places, line, 1.1) for line in lines), (channel, places, lines)


def main():
    quarry, demonstration = sys.argv[1:]
    dice = random.Random(10)
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        for what, records in coverage.volumes_of(dice).items():
            check(quarry, folder, b"".join(records), what)
        everything = b"".join(sum(coverage.volumes_of(dice).values(), []))
        check(quarry, folder, everything, "all")
        check(quarry, folder, b"".join(run_of('<&"', BASE, 3, 100, 20)), "codes")
        check(quarry, folder, everything, "part", "--from", "2005-02-01T10:00", "--to", "2005-02-02")
        for length in [factor * 10**power for power in range(3, 16) for factor in (1, 2, 4, 7)][:-1]:
            check(quarry, folder, two_records(length), length)
        assert len(check(quarry, folder, many_channels(dice), "on a page")) == 1
        pages = check(quarry, folder, many_channels(dice), "pages", "--height", "1000")
        assert len(pages) == 5 and all(page.height <= 1000 for page in pages), [page.height for page in pages]
        check_pixels(pages[0])
        check_epochs(quarry, demonstration, folder)


main()
