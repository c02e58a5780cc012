# SPDX-License-Identifier: Apache-2.0
"""Measures quarry beside its floors and prints a table for each part of the benchmark.

    run.py BUILD [--quick] [--work] [--growth] [--decoders] [--commands] [--cost] [--rounds N] [--json FILE]

Without --work, --growth, --decoders, --commands or --cost: all but the last. The times are processor time, user and
system, of one process; ratios are medians of the ratios of runs next to each other. "MISS" marks what is
above its goal. The exit status is 0 if all ran and gave right results, whatever the times.
"""

import argparse
import collections
import json
import os
import re
import signal
import sqlite3
import subprocess
import sys

sys.dont_write_bytecode = True

import cost  # noqa: E402
from measuring import Bench, Insane, mark, median, print_table, require, temporary_directory  # noqa: E402

MEGABYTE = 1 << 20
MEMORY_GOAL = 8  # MiB
GROWTH_GOAL = 1.5
COMMAND_MEMORY_GOAL = 16  # MiB, and the size of the headers
RECORD_GOAL = 1.2  # microseconds
COVERAGE_GOAL = 0.4
CHECK_GOAL = 3
COVERAGE_MEMORY_GOAL = 64  # MiB
THREADS_GOAL = 1.7


class Sizes:
    """How much is measured: in full, or quickly."""

    def __init__(self, quick):
        self.quick = quick
        self.rounds = 3 if quick else 7
        self.data = (16 if quick else 512) * MEGABYTE
        self.control = 10 if quick else 210  # million bytes
        self.growth = [4, 16] if quick else [64, 512, 4096]  # MiB
        self.epochs = [100, 2_000] if quick else [100, 1_000, 10_000, 100_000]
        self.epoch_records = 2_048 if quick else 131_072
        self.coverage_records = (100_000 if quick else 10_000_000)
        self.decoder_seconds = 0.01 if quick else 0.1
        self.space = (200 if quick else 4_000) * MEGABYTE


# A row of the table of works. `less` and `floor_less`, where given, are commands whose time is taken off.
Work = collections.namedtuple("Work", "label command out floor_label floor floor_out goal less floor_less",
                              defaults=[None, None])


def make_database(path, channels, rows_a_channel):
    """Rows over the time of the generated records; the last one of a channel is open."""
    with open(os.path.join(os.path.dirname(__file__), "../docs/seedformat.sql"), encoding="utf-8") as schema:
        statements = schema.read()
    connection = sqlite3.connect(path)
    connection.executescript(statements)
    rows = []
    for row in range(rows_a_channel):
        start = f"{2004 - rows_a_channel + row + 2},001"
        end = "" if row + 1 == rows_a_channel else f"{2004 - rows_a_channel + row + 2},365,23:59:59.9999"
        rows += [(station, channel, start, end, "Steim Integer Compression Format") for station, channel in channels]
    connection.executemany("INSERT INTO seedformat VALUES (?, ?, ?, ?, ?)", rows)
    connection.commit()
    connection.close()
    return path


def data_volume(bench, name, size, records, channels=60, described=1):
    return bench.volume(name, "data", size=size, records=records, channels=channels, described=described)


def check_messages(path):
    """The one message that a volume of the benchmark calls for is that of records that are not 4096 bytes long."""
    with open(path, encoding="latin-1") as file:
        others = [line for line in file if "has a non-standard block length" not in line]
    require(not others, f"unexpected message: {others[:1]}")


def summary_counts(bench, command):
    """Number and bytes of each type by the summary: a dictionary."""
    messages = bench.path("checked.err")
    text = bench.output(command, err=messages)
    check_messages(messages)
    counts = {int(kind): (int(number), int(size))
              for number, kind, size in re.findall(r"^ *(\d+) \((\d{3})\) +(\d+) ", text, re.M)}
    data = re.search(r"^ *(\d+) +(\d+) Data blockettes$", text, re.M)
    require(data, "no summary: " + " ".join(command))
    counts["data"] = (int(data[1]), int(data[2]))
    return counts


def same_data_lines(listing, lines):
    """Whether the listing holds these lines from its first data record's on, and then the summary."""
    with open(listing, "rb") as whole, open(lines, "rb") as part:
        head = whole.read(MEGABYTE)
        whole.seek(0 if head.startswith(b"DATA ") else head.index(b"\nDATA ") + 1)
        while piece := part.read(MEGABYTE):
            if whole.read(len(piece)) != piece:
                return False
        return whole.read(20).startswith(b"\nBlockette Summary")


def check_data(bench, volume, size, records, channels):
    expected = (records, records * size)
    require(summary_counts(bench, [bench.quarry, "-s", volume])["data"] == expected, "quarry -s: wrong count")
    require(int(bench.output([bench.program("floor_copy"), volume, str(size)])) == records, "copy: wrong count")
    rows = [line.split("|") for line in bench.output([bench.program("floor_sum"), volume, str(size)]).splitlines()]
    require(len(rows) == channels and sum(int(row[1]) for row in rows) == records, "sum: wrong counts")
    samples = (size - 64) * 7 // 8
    require(sum(int(row[2]) for row in rows) == samples * records, "sum: wrong samples")
    tick_counts = {int(row[4]) - int(row[3]) for row in rows if int(row[4]) // 864_000_000 == int(row[3]) // 864_000_000}
    steps = (records // channels - 1) * (samples // 20) * 10_000
    require(all(ticks in (steps, steps + samples // 20 * 10_000) for ticks in tick_counts), "sum: wrong starts")
    bench.finished([bench.quarry, volume], out=bench.path("listing"))
    bench.finished([bench.program("floor_lines"), volume, str(size)], out=bench.path("lines"))
    require(same_data_lines(bench.path("listing"), bench.path("lines")), "lines: not those of the listing")
    bench.remove("listing", "lines")


def check_control(bench, volume):
    counts = summary_counts(bench, [bench.quarry, "-s", volume])
    floor = bench.output([bench.program("floor_assembled"), volume, "4096"])
    assembled = {int(kind): (int(number), int(size)) for kind, number, size in map(str.split, floor.splitlines())}
    require({**assembled, "data": (0, 0)} == counts, "assembled: not the counts of the summary")


def works_of_data(bench, sizes, size):
    records = sizes.data // size
    volume = data_volume(bench, f"data-{size}", size, records)
    check_data(bench, volume, size, records, 60)

    def floor(name):
        return [bench.program("floor_" + name), volume, str(size)]

    summary = f"-s, {size}-byte records ({records})"
    goal = 2.5 if size == 512 else 1.5
    return [
        Work(summary, [bench.quarry, "-s", volume], None, "copy", floor("copy"), None, None),
        Work(summary, [bench.quarry, "-s", volume], None, "sum", floor("sum"), None, goal),
        Work(f"listing to a file, {size}-byte", [bench.quarry, volume], "listing", "lines", floor("lines"), "lines",
             1.6),
    ]


def works_of_control(bench, sizes):
    volume = bench.volume("control", "control", megabytes=sizes.control)
    check_control(bench, volume)
    text = bench.path("text")
    bench.finished([bench.quarry, volume], out=text)
    kinds = f"{sizes.control} MB of control headers"
    length = os.path.getsize(text) // 1_000_000
    return [
        Work(f"-s, {kinds}", [bench.quarry, "-s", volume], None, "assembled",
             [bench.program("floor_assembled"), volume, "4096"], None, 18),
        Work(f"listing of the same to a file, {length} MB of text", [bench.quarry, volume], "listing", "cat of the text",
             ["/bin/cat", text], "lines", 10),
    ]


def work_of_database(bench, sizes):
    channels = 500
    records = sizes.data // 4096
    whole = data_volume(bench, "undescribed", 4096, records, channels, described=0)
    short = data_volume(bench, "undescribed-short", 4096, 2, channels, described=0)
    codes = subprocess.run([bench.program("floor_sum"), whole, "4096"], stdout=subprocess.PIPE, check=True, text=True)
    names = [(line[:5].strip(), line[7:10]) for line in codes.stdout.splitlines()]
    require(len(names) == channels, "wrong number of channels")
    database = make_database(bench.path("formats.db"), names, 10_000 // channels)
    with_rows = [bench.quarry, "-d", database, "-s"]
    require(summary_counts(bench, with_rows + [whole])["data"][0] == records, "quarry -d: wrong count")
    without = [bench.quarry, "-s"]
    return Work("-d with 10,000 rows, 500 channels in turn, once the table is read", with_rows + [whole], None,
                "without -d", without + [whole], None, 1.3, with_rows + [short], without + [short])


def time_of(bench, command, out, less):
    sample = bench.finished(command, out=bench.path(out) if out else "/dev/null")
    return sample.cpu - (bench.finished(less).cpu if less else 0), sample.peak


def measure_works(bench, sizes, results):
    works = works_of_data(bench, sizes, 512) + works_of_data(bench, sizes, 4096)
    works += works_of_control(bench, sizes) + [work_of_database(bench, sizes)]
    samples = [[] for _ in works]
    for _ in range(sizes.rounds):
        for work, taken in zip(works, samples):
            time, peak = time_of(bench, work.command, work.out, work.less)
            floor, _ = time_of(bench, work.floor, work.floor_out, work.floor_less)
            taken.append((time, floor, peak))
    rows = []
    for work, taken in zip(works, samples):
        ratio = median([time / floor for time, floor, _ in taken])
        rows.append({"work": work.label, "seconds": median([time for time, _, _ in taken]), "floor": work.floor_label,
                     "floor_seconds": median([floor for _, floor, _ in taken]), "ratio": ratio, "goal": work.goal,
                     "peak": max(peak for _, _, peak in taken), "rounds": taken})
    results["work"] = rows
    print_table(f"Work, {sizes.data // MEGABYTE} MB of data records, medians of {sizes.rounds} rounds",
                ["work", "quarry s", "floor", "floor s", "ratio", "goal", ""],
                [[row["work"], f"{row['seconds']:.3f}", row["floor"], f"{row['floor_seconds']:.3f}",
                  f"{row['ratio']:.2f}", row["goal"] or "", mark(row["ratio"], row["goal"])] for row in rows])
    goals = [MEMORY_GOAL if row["floor"] != "without -d" else None for row in rows]
    print_table("Peak memory of the same", ["work", "peak MiB", "goal", ""],
                [[row["work"], f"{row['peak']:.1f}", goal or "", mark(row["peak"], goal)]
                 for row, goal in zip(rows, goals) if row["floor"] != "copy"])
    bench.remove("data-512", "data-4096", "control", "text", "listing", "lines", "undescribed")


def measure_size(bench, options, size, megabytes, rounds):
    """Seconds a record and peak of the listing of a volume out of a pipe."""
    records = megabytes * MEGABYTE // size
    generator = bench.generator("data", size=size, records=records, channels=60, described=1)
    samples = [bench.measure_piped(generator, [bench.quarry] + options + ["-"]) for _ in range(rounds)]
    require(all(sample.status == 0 for sample in samples), "a listing out of a pipe failed")
    return median([sample.cpu for sample in samples]) / records, max(sample.peak for sample in samples)


def measure_growth_with_size(bench, sizes, results):
    rows = []
    for options, size in ((["-s"], 512), (["-s"], 4096), ([], 512), ([], 4096)):
        first = None
        for megabytes in sizes.growth:
            # The long runs have records enough for their time to be a mean by itself.
            rounds = sizes.rounds if megabytes == sizes.growth[0] else 1
            cost_of_record, peak = measure_size(bench, options, size, megabytes, rounds)
            first = first or cost_of_record
            rows.append({"work": f"{'-s' if options else 'listing to nowhere'}, {size}-byte", "megabytes": megabytes,
                         "microseconds": cost_of_record * 1e6, "growth": cost_of_record / first, "peak": peak})
    results["size"] = rows
    print_table("Growth with size, volumes out of a pipe",
                ["work", "MiB", "µs a record", "growth", "goal", "peak MiB", "goal", ""],
                [[row["work"], row["megabytes"], f"{row['microseconds']:.3f}", f"{row['growth']:.2f}", GROWTH_GOAL,
                  f"{row['peak']:.1f}", MEMORY_GOAL,
                  mark(row["growth"], GROWTH_GOAL) or mark(row["peak"], MEMORY_GOAL)] for row in rows])


EPOCH_LIMIT = 10  # seconds of processor time, after which a run is given up


def measure_epochs(bench, sizes, order, count):
    """Seconds for the headers above an empty run, and for the records above the headers; None beyond the limit."""
    names = ("epochs-none", "epochs-headers", "epochs-all")
    volumes = [bench.volume(names[0], "epochs", count=1, order=order, records=0),
               bench.volume(names[1], "epochs", count=count, order=order, records=0)]
    commands = [[bench.quarry, "-s", volume] for volume in volumes]
    first = bench.measure(commands[1], limit=EPOCH_LIMIT)
    if first.status != 0:
        return None
    rounds = sizes.rounds if first.cpu < 0.5 else 1
    volumes.append(bench.volume(names[2], "epochs", count=count, order=order, records=sizes.epoch_records))
    commands.append([bench.quarry, "-s", volumes[2]])
    counts = summary_counts(bench, commands[2])
    require(counts[52][0] == count and counts["data"][0] == sizes.epoch_records, "epochs: wrong counts")
    times = [[bench.finished(command).cpu for command in commands] for _ in range(rounds)]
    bench.remove(*names)
    return (median([headers - none for none, headers, _ in times]),
            median([whole - headers for _, headers, whole in times]))


def measure_growth_with_epochs(bench, sizes, results):
    rows = []
    first_record = first_header = None
    for order in ("ascending", "descending", "random"):
        for count in sizes.epochs:
            measured = measure_epochs(bench, sizes, order, count)
            row = {"order": order, "epochs": count, "header": None, "record": None, "header_growth": None,
                   "record_growth": None}
            if measured:
                header, record = measured[0] / count * 1e6, measured[1] / sizes.epoch_records * 1e6
                first_record = first_record or record
                # A few hundred epochs take too little time to be told from the start of the program.
                first_header = first_header or (header if count >= 1000 else None)
                row.update(header=header, record=record, record_growth=record / first_record,
                           header_growth=header / first_header if first_header and count >= 1000 else None)
            rows.append(row)
    results["epochs"] = rows

    def number(value):
        return "" if value is None else f"{value:.2f}"

    def verdict(row):
        if row["record"] is None:
            return f"MISS (above {EPOCH_LIMIT} s)"
        return mark(row["record_growth"], GROWTH_GOAL) or mark(row["header_growth"] or 0, GROWTH_GOAL)

    print_table(f"Growth with the epochs of a channel, then {sizes.epoch_records} data records of 4096 bytes (-s)",
                ["order", "epochs", "µs an epoch", "growth", "µs a record", "growth", "goal", ""],
                [[row["order"], row["epochs"], number(row["header"]), number(row["header_growth"]),
                  number(row["record"]), number(row["record_growth"]), GROWTH_GOAL, verdict(row)] for row in rows])


def measure_decoders(bench, sizes, results):
    command = [bench.program("decoder_bench"), "--benchmark_format=json",
               f"--benchmark_min_time={sizes.decoder_seconds}"]
    report = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True)
    formats = collections.defaultdict(dict)
    for run in json.loads(report.stdout)["benchmarks"]:
        name, what = run["name"].rsplit("/", 1)
        formats[name][what] = run["cpu_time"] / 1e3
        if what == "decode":
            formats[name]["rate"] = run["items_per_second"] / 1e6
    require(formats, "the decoders' benchmark measured nothing")
    rows = [{"format": name, **times, "ratio": times["decode"] / (times["copy"] + times["write"])}
            for name, times in formats.items()]
    results["decoders"] = rows
    print_table("Decoders, 32 MiB of records each", ["format", "million samples/s", "swap s", "decode s", "copy s",
                                                     "write s", "decode / (copy + write)"],
                [[row["format"], f"{row['rate']:.0f}"] +
                 [f"{row[what]:.4f}" for what in ("swap", "decode", "copy", "write")] + [f"{row['ratio']:.2f}"]
                 for row in rows])


def measure_growth(bench, sizes, results):
    measure_growth_with_size(bench, sizes, results)
    measure_growth_with_epochs(bench, sizes, results)


def check_info(bench, volume):
    """The totals of quarry info are those of the floor that sums the headers."""
    rows = [line.split("|") for line in bench.output([bench.program("floor_sum"), volume, "512"]).splitlines()]
    lines = bench.output([bench.quarry, "info", "--tsv", volume]).splitlines()
    titles = lines[0].split("\t")
    for title, column in (("records", 1), ("samples", 2)):
        cells = [line.split("\t")[titles.index(title)] for line in lines[1:]]
        require(sum(int(cell or 0) for cell in cells) == sum(int(row[column]) for row in rows), f"info: wrong {title}")


def measure_one_volume(bench, sizes, results):
    """quarry info beside its floor, quarry json by the record."""
    records = sizes.data // 512
    volume = data_volume(bench, "data-512", 512, records)
    check_info(bench, volume)
    commands = {"floor": [bench.program("floor_sum"), volume, "512"], "info": [bench.quarry, "info", volume],
                "json": [bench.quarry, "json", volume]}
    rounds = [{name: bench.finished(command) for name, command in commands.items()} for _ in range(sizes.rounds)]
    ratio = median([one["info"].cpu / one["floor"].cpu for one in rounds])
    cost_of_record = median([one["json"].cpu for one in rounds]) / records * 1e6
    results["commands"] = {"info_ratio": ratio, "json_record": cost_of_record}
    peaks = [max(one[name].peak for one in rounds) for name in ("info", "json")]
    headers = bench.volume("control", "control", megabytes=sizes.control)
    of_headers = bench.finished([bench.quarry, "info", headers])
    goal_of_headers = COMMAND_MEMORY_GOAL + os.path.getsize(headers) // MEGABYTE
    print_table(f"Commands, 512-byte records ({records})", ["work", "", "goal", "", "peak MiB", "goal", ""],
                [["info / sum", f"{ratio:.2f}", 3, mark(ratio, 3), f"{peaks[0]:.1f}", COMMAND_MEMORY_GOAL,
                  mark(peaks[0], COMMAND_MEMORY_GOAL)],
                 ["json, µs a record", f"{cost_of_record:.2f}", RECORD_GOAL, mark(cost_of_record, RECORD_GOAL),
                  f"{peaks[1]:.1f}", COMMAND_MEMORY_GOAL, mark(peaks[1], COMMAND_MEMORY_GOAL)],
                 [f"info, {sizes.control} MB of control headers, s", f"{of_headers.cpu:.2f}", "", "",
                  f"{of_headers.peak:.1f}", goal_of_headers, mark(of_headers.peak, goal_of_headers)]])
    bench.remove("control")


def measure_check(bench, sizes, results):
    """quarry check beside quarry info, on continuous records; the volume has faults, so its status is 1."""
    volume = bench.volume("checked", "data", size=512, records=sizes.data // 512, channels=60, described=1, samples=380)
    check = [bench.quarry, "check"]
    commands = {"info": [bench.quarry, "info", volume], "headers": check + ["--disable", "samples", volume],
                "samples": check + [volume]}
    rounds = [{name: bench.measure(command) for name, command in commands.items()} for _ in range(sizes.rounds)]
    require(all(one["info"].status == 0 and one["headers"].status == 1 and one["samples"].status == 1
                for one in rounds), "check: wrong status")
    rows = [[what, f"{median([one[name].cpu / one['info'].cpu for one in rounds]):.2f}",
             f"{max(one[name].peak for one in rounds):.1f}"]
            for what, name in (("without samples", "headers"), ("with samples", "samples"))]
    results["check"] = {what: float(ratio) for what, ratio, _ in rows}
    print_table("quarry check, 512-byte records, against quarry info", ["work", "ratio", "goal", "", "peak MiB"],
                [[rows[0][0], rows[0][1], CHECK_GOAL, mark(float(rows[0][1]), CHECK_GOAL), rows[0][2]],
                 [rows[1][0], rows[1][1], "", "", rows[1][2]]])
    bench.remove("checked")


def measure_threads(bench, sizes, results):
    """Time that passes with two volumes in one thread and in two; on a busy machine it tells nothing."""
    volumes = [data_volume(bench, name, 512, sizes.data // 512) for name in ("data-512", "second-512")]
    rows = []
    for name in ("info", "json"):
        samples = [[bench.finished([bench.quarry, name, "--jobs", str(jobs)] + volumes) for jobs in (1, 2)]
                   for _ in range(sizes.rounds)]
        gain = median([one.wall / two.wall for one, two in samples])
        rows.append({"command": name, "gain": gain, "peak": max(two.peak for _, two in samples)})
    results["threads"] = rows
    print_table("Two volumes in two threads, against one thread", ["command", "times as fast", "goal", "", "peak MiB",
                                                                   "goal", ""],
                [[row["command"], f"{row['gain']:.2f}", THREADS_GOAL, mark(THREADS_GOAL, row["gain"]),
                  f"{row['peak']:.1f}", COMMAND_MEMORY_GOAL, mark(row["peak"], COMMAND_MEMORY_GOAL)] for row in rows])
    bench.remove("data-512", "second-512")


def measure_coverage(bench, sizes, results):
    """Records of 60 channels in turn, all continuous and in order, out of a pipe."""
    records = sizes.coverage_records
    generator = bench.generator("data", size=512, records=records, channels=60, described=1, samples=380)
    out = bench.path("coverage")
    samples = [bench.measure_piped(generator, [bench.quarry, "coverage", "--csv", "-"], out=out)
               for _ in range(min(sizes.rounds, 3))]
    require(all(sample.status == 0 for sample in samples), "coverage: failed")
    with open(out, encoding="utf-8") as table:
        rows = [line.split(",") for line in table.read().splitlines()[1:]]
    require(len(rows) == 60 and all(row[3:7] == ["1", "0", "0", "0"] for row in rows), "coverage: wrong segments")
    cost_of_record = median([sample.cpu for sample in samples]) / records * 1e6
    peak = max(sample.peak for sample in samples)
    results["coverage"] = {"records": records, "record": cost_of_record, "peak": peak}
    print_table(f"quarry coverage, {records} records of 512 bytes",
                ["µs a record", "goal", "", "peak MiB", "goal", ""],
                [[f"{cost_of_record:.3f}", COVERAGE_GOAL, mark(cost_of_record, COVERAGE_GOAL), f"{peak:.1f}",
                  COVERAGE_MEMORY_GOAL, mark(peak, COVERAGE_MEMORY_GOAL)]])


def measure_commands(bench, sizes, results):
    measure_one_volume(bench, sizes, results)
    measure_coverage(bench, sizes, results)
    measure_check(bench, sizes, results)
    measure_threads(bench, sizes, results)


PARTS = {"work": measure_works, "growth": measure_growth, "decoders": measure_decoders,
         "commands": measure_commands, "cost": cost.measure_cost}


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", help="directory of the build")
    parser.add_argument("--quick", action="store_true", help="small volumes, few rounds: only shows that all works")
    parser.add_argument("--rounds", type=int, help="how often each row is measured")
    parser.add_argument("--json", metavar="FILE", help="writes all results there too")
    for part in PARTS:
        parser.add_argument("--" + part, action="store_true", help=f"measure {part}")
    return parser.parse_args()


def main():
    arguments = parse_arguments()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    sizes = Sizes(arguments.quick)
    sizes.rounds = arguments.rounds or sizes.rounds
    chosen = [part for part in PARTS if getattr(arguments, part)] or ["work", "growth", "decoders", "commands"]
    results = {}
    with temporary_directory(sizes.space) as directory:
        bench = Bench(os.path.abspath(arguments.build), directory)
        for part in chosen:
            PARTS[part](bench, sizes, results)
    if sizes.quick:
        print("\nAll ran. The volumes of --quick are too small for the goals: its marks mean nothing.")
    if arguments.json:
        with open(arguments.json, "w", encoding="utf-8") as file:
            json.dump(results, file, indent=1)


if __name__ == "__main__":
    try:
        main()
    except (Insane, subprocess.CalledProcessError) as problem:
        sys.exit(f"bench: {problem}")
