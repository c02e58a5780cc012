#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Compares quarry coverage with a computation of its own from the data records that quarry json finds.

usage: coverage.py QUARRY

It sorts the records of a channel, drops those that are there already and walks over the others, all of which it holds.
Of leap seconds it knows the date; the flags of records only tell which channels have one and which records are in it.
"""

import collections
import datetime
import fractions
import json
import pathlib
import random
import struct
import subprocess
import sys
import tempfile

EPOCH = datetime.datetime(1970, 1, 1, tzinfo=datetime.timezone.utc)
SECOND = 1_000_000
DAY = 86400 * SECOND
NEW_YEAR_2017 = 1_483_228_800 * SECOND  # after a second that was put in

Record = collections.namedtuple("Record", "start next samples rate leaps")  # times go on through leap seconds


# --- volumes

def made(channel, start, samples, factor, multiplier=1, flags=0, rate=None, in_leap=False):
    """A data record of 256 bytes; times are microseconds, those in a second put in count on over midnight."""
    moment = EPOCH + datetime.timedelta(microseconds=start - (SECOND if in_leap else 0))
    ticks, micro = divmod(moment.microsecond, 100)
    further = b"" if rate is None else struct.pack(">HHf4x", 100, 0, rate)
    header = b"000001D STA    " + channel.encode() + b"XX" + struct.pack(
        ">HHBBBxHHhhBBBBiHH", moment.year, moment.timetuple().tm_yday, moment.hour, moment.minute,
        moment.second + in_leap, ticks, samples, factor, multiplier, flags, 0, 0, 2 + (rate is not None), 0, 128, 48)
    chain = struct.pack(">HHBBBx", 1000, 56, 3, 1, 8)
    chain += struct.pack(">HHBbxx", 1001, 64 if further else 0, 100, micro) + further
    return (header + chain).ljust(256, b"\0")


def run_of(channel, start, count, samples, factor, multiplier=1, jitter=lambda i: 0, **more):
    """Records that follow each other, each so much off."""
    rate = fractions.Fraction(factor if factor > 0 else fractions.Fraction(-1, factor)) * multiplier
    return [made(channel, start + round(i * samples * SECOND / rate) + jitter(i), samples, factor, multiplier, **more)
            for i in range(count)]


def volumes_of(dice):
    """Records by what is special about them."""
    base = 1_107_252_030 * SECOND
    day = run_of("DAY", base - base % DAY + 69_500, 240, 360, 1)
    plain = run_of("BHZ", base, 40, 100, 20)
    rates = [record for i in range(20) for record in
             run_of("RAT", base + i * 5 * SECOND, 1, 100, 20, rate=[20.0, 20.0015, 19.9988, 20.5][i // 5])]
    again = plain[:7] + plain[9:15] + plain[22:30]
    for i in range(30):
        again += run_of("BHZ", base + i * 5 * SECOND, 1, 100, 20) if dice.random() < 0.5 else []
    leap = run_of("LEP", NEW_YEAR_2017 - 40 * SECOND, 3, 100, 10)
    leap += run_of("LEP", NEW_YEAR_2017 - 10 * SECOND, 1, 200, 10, flags=16)
    leap += run_of("LEP", NEW_YEAR_2017 + 9 * SECOND, 2, 100, 10)
    short = run_of("LES", NEW_YEAR_2017 - 2 * SECOND, 4, 50, 100)
    short += run_of("LES", NEW_YEAR_2017, 2, 40, 100, flags=16, in_leap=True)
    short += run_of("LES", NEW_YEAR_2017 + 800_000, 1, 40, 100, flags=16, in_leap=True)
    short += run_of("LES", NEW_YEAR_2017 + 200_000, 4, 50, 100)
    left_out = run_of("LEN", NEW_YEAR_2017 - 10 * SECOND, 1, 90, 10, flags=32)
    left_out += run_of("LEN", NEW_YEAR_2017, 2, 90, 10)
    gaps = run_of("GAP", base, 5, 100, 20) + run_of("GAP", base + 25_030_000, 5, 100, 20)
    gaps += run_of("GAP", base + 90 * SECOND, 5, 100, 20) + run_of("GAP", base + 3 * DAY, 1, 100, 20)
    early = run_of("OVL", base, 5, 100, 20) + run_of("OVL", base + 24_970_000, 5, 100, 20)
    early += run_of("OVL", base + 42 * SECOND, 5, 77, 20) + run_of("OVL", base + 7_012_000, 3, 21, 20)
    return {
        "whole day": day, "plain": plain, "rates": rates, "again": again, "leap seconds": leap + short + left_out,
        "gaps": gaps, "overlaps": early,
        "within": run_of("JIT", base, 60, 100, 20, jitter=lambda i: dice.randrange(-12_500, 12_501)),
        "beyond": run_of("JIB", base, 60, 100, 20, jitter=lambda i: dice.randrange(-60_000, 60_001)),
        "slow": run_of("VHZ", base, 30, 60, -10) + run_of("VHZ", base + 30 * 600 * SECOND + 6 * SECOND, 3, 60, -10),
        "short": run_of("SHO", base, 60, 2, -10),
        "thirds": run_of("THR", base, 200, 7, -3, 10),
        "no rate": [made("LOG", base + i * SECOND, 100, 0) for i in range(5)],
        "no samples": plain[:2] + [made("BHZ", base + 900 * SECOND, 0, 20)] + [made("ACE", base, 0, 20)],
        "bits of one channel": dice.sample(plain, 25),
    }


# --- the computation

def microseconds(text):
    return (datetime.datetime.fromisoformat(text.replace("Z", "+00:00")) - EPOCH) // datetime.timedelta(microseconds=1)


def record_of(line, leap):
    start = microseconds(line["start"])
    in_leap = "positive_leap_second" in line.get("activity_flags", []) and start < NEW_YEAR_2017 + SECOND
    leaps = leap if start >= NEW_YEAR_2017 and not in_leap else 0
    length = fractions.Fraction(line["samples"] * SECOND) / fractions.Fraction(line["rate"])
    return Record(start + leaps, start + leaps + round(length), line["samples"], line["rate"], leaps)


def leap_of(lines):
    flags = {flag for line in lines for flag in line.get("activity_flags", [])}
    return SECOND * (("positive_leap_second" in flags) - ("negative_leap_second" in flags))


def is_same(one, other):
    return abs(one - other) < 1e-4 * max(one, other)


def walk(lines, tolerance):
    """Segments as lists of records, breaks and duplicates."""
    leap = leap_of(lines)
    records = sorted(record_of(line, leap) for line in lines if line["samples"] and line["rate"])
    once = sorted(set(records))
    segments = []
    for record in once:
        fitting = [one for one in segments if abs(record.start - one[-1].next) <= tolerance(one[-1].rate)
                   and is_same(one[-1].rate, record.rate)]
        if fitting:
            min(fitting, key=lambda one: abs(record.start - one[-1].next)).append(record)
        else:
            segments.append([record])
    breaks = []
    before = None
    for one in sorted(segments, key=lambda one: (one[0].start, -one[-1].next)):
        late = 0 if before is None else one[0].start - before.next
        if before and abs(late) > tolerance(before.rate):
            start, end = (before.next, one[0].start) if late > 0 else (one[0].start, min(before.next, one[-1].next))
            breaks.append(("gap" if late > 0 else "overlap", start, end))
        if before is None or one[-1].next > before.next:
            before = one[-1]
    return segments, breaks, len(records) - len(once)


def days_of(segments):
    """Of each day with samples the part that has them, counted sample by sample."""
    counts = collections.Counter()
    for one in segments:
        for record in one:
            for i in range(record.samples):
                counts[int(record.start + i * SECOND / record.rate) // DAY] += SECOND / record.rate
    return {day: 100 * count / DAY for day, count in counts.items()}


# --- the comparison

def lines_of(command):
    run = subprocess.run(command, stdout=subprocess.PIPE, check=True, text=True)
    return [json.loads(line) for line in run.stdout.splitlines()]


def compare(quarry, files, options, tolerance, what):
    by_channel = collections.defaultdict(list)
    for line in lines_of([quarry, "json", "--kinds", "data", *files]):
        by_channel[line["channel"]].append(line)
    found = collections.defaultdict(list)
    for line in lines_of([quarry, "coverage", "--json", "--gaps", "--days", *options, *files]):
        found[line["channel"]].append(line)
    assert set(found) == set(by_channel), what
    for channel, lines in by_channel.items():
        segments, breaks, duplicates = walk(lines, tolerance)
        kinds = collections.defaultdict(list)
        for line in found[channel]:
            kinds[line["kind"]].append(line)
        got = [(microseconds(line["start"]), line["records"], line["samples"]) for line in kinds["segment"]]
        expected = [(one[0].start, len(one), sum(record.samples for record in one)) for one in segments]
        assert sorted(got) == sorted(expected), (what, channel, got, expected)
        for one, line in zip(sorted(segments, key=lambda one: (one[0].start, -one[-1].next)), kinds["segment"]):
            last = one[-1].next - one[-1].leaps - SECOND / one[-1].rate
            assert abs(microseconds(line["end"]) - last) < 1, (what, channel, line, last)
        got = [(line["kind"], microseconds(line["start"]), microseconds(line["end"]))
               for line in found[channel] if line["kind"] in ("gap", "overlap")]
        assert got == breaks, (what, channel, got, breaks)
        summary = kinds["coverage"][0]
        assert summary["duplicates"] == duplicates, (what, channel, summary, duplicates)
        assert summary["records"] == len(lines) and summary["segments"] == len(segments), (what, channel, summary)
        if any(kind == "overlap" for kind, _, _ in breaks) or "LE" in channel or "J" in channel:
            continue  # samples there twice, or off: they do not count alike
        days = days_of(segments)
        got = {microseconds(line["day"] + "T00:00:00Z") // DAY: line["percent"] for line in kinds["day"]}
        for day in set(days) | set(got):
            assert abs(days.get(day, 0) - got.get(day, 0)) < 0.01, (what, channel, day, days, got)
    return len(by_channel)


def half_a_sample(rate):
    return SECOND / rate / 2


TOLERANCES = {(): half_a_sample, ("--tolerance", "0.02s"): lambda rate: 20_000,
              ("--tolerance", "2samples"): lambda rate: 2 * SECOND / rate}


def main():
    quarry = sys.argv[1]
    dice = random.Random(10)
    volumes = volumes_of(dice)
    compared = 0
    with tempfile.TemporaryDirectory() as folder:
        for what, records in [*volumes.items(), ("all", sum(volumes.values(), []))]:
            for turn in range(4):
                files = [str(pathlib.Path(folder, f"{i}.mseed")) for i in range(3)]
                for i, name in enumerate(files):
                    pathlib.Path(name).write_bytes(b"".join(records[i::3] if turn else records[i * len(records) // 3:
                                                            (i + 1) * len(records) // 3]) or records[0])
                for options, tolerance in TOLERANCES.items():
                    compared += compare(quarry, files, [*options, "--jobs", str(1 + turn % 3)], tolerance, (what, options))
                dice.shuffle(records)
    assert compared > 250
    print(compared, "channels compared")


if __name__ == "__main__":
    main()
