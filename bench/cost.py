# SPDX-License-Identifier: Apache-2.0
"""What hostile inputs cost, in seconds for each MB (1,000,000 bytes), beside volumes that are not hostile."""

import collections
import os
import sqlite3

from measuring import STOPPED, mark, print_table, require

TIME_GOAL = 0.6  # seconds for each MB
MEMORY_GOAL = 16  # MiB, and twice what the volume's epochs need
LIMIT = 30  # seconds of processor time, after which a run is given up

# What one channel epoch needs: its codes, format name, times and record length.
EPOCH_BYTES = 112
# What a database's row may take above its texts.
ROW_BYTES = 64

SHAPES = ["011", "012", "030", "053", "054", "058", "061", "071", "073", "074"]
EMPTY_SHAPES = ["short 058", "unknown type"]  # blockettes of 7 bytes

Hostile = collections.namedtuple("Hostile", "label options path memory")


def blockette_inputs(bench, shape, size):
    """The listing of blockettes that convert, the summary of such that do not and are shown among the messages,
    and the listing of those."""
    good = bench.volume(f"good-{shape}", "hostile", shape=shape, bytes=size, bad=0)
    bad = bench.volume(f"bad-{shape}", "hostile", shape=shape, bytes=size, bad=1)
    return [Hostile(f"{shape}, listing", [], good, 0), Hostile(f"{shape}, one bad number each, -s", ["-s"], bad, 0),
            Hostile(f"{shape}, one bad number each, listing", [], bad, 0)]


def epoch_inputs(bench, count):
    for order in ("ascending", "descending", "random", "narrowing", "widening"):
        path = bench.volume(order, "epochs", count=count, order=order, records=200)
        yield Hostile(f"{count} {order} epochs of a channel, -s", ["-s"], path, count * EPOCH_BYTES)


def database_input(bench, rows):
    """Many rows, all of the channel of the volume's two records, of which the last one describes them."""
    path = bench.path("many-rows.db")
    connection = sqlite3.connect(path)
    connection.execute("CREATE TABLE seedformat (sta TEXT, chan TEXT, seedstart TEXT, seedend TEXT, seedformat TEXT)")
    name = "Steim Integer Compression Format"
    values = (("Q0000", "BHZ" if row % 2 == 0 else "BHN", f"{1000 + row // 1000 % 900},001,00:00:00.0000",
               f"{1000 + row // 1000 % 900},{row % 365 + 1:03d},00:00:00.0000", name) for row in range(rows - 2))
    connection.executemany("INSERT INTO seedformat VALUES (?, ?, ?, ?, ?)", values)
    connection.executemany("INSERT INTO seedformat VALUES ('Q0000', ?, '2004,001', '', ?)", [("BHZ", name), ("BHN", name)])
    connection.commit()
    connection.close()
    volume = bench.volume("two-records", "data", size=4096, records=2, channels=2, described=0)
    texts = 5 + 3 + 22 + 22 + len(name)
    return Hostile(f"database of {rows} rows, two records, -s", ["-d", path, "-s"], volume, rows * (ROW_BYTES + texts))


def inputs(bench, quick):
    data = bench.volume("normal-data", "data", size=512, records=4_096 if quick else 65_536, channels=60, described=1)
    control = bench.volume("normal-control", "control", megabytes=2 if quick else 20)
    yield Hostile("normal: data records, -s", ["-s"], data, 0)
    yield Hostile("normal: data records, listing", [], data, 0)
    yield Hostile("normal: control headers, -s", ["-s"], control, 0)
    yield Hostile("normal: control headers, listing", [], control, 0)
    for shape in SHAPES:
        yield from blockette_inputs(bench, shape, 5_000 if quick else 70_000)
    for shape in EMPTY_SHAPES:
        path = bench.volume(shape, "hostile", shape=shape, bytes=5_000 if quick else 70_000, bad=0)
        yield Hostile(f"{shape}, listing", [], path, 0)
    count = 500 if quick else 10_000
    formats = bench.volume("formats", "formats", count=count)
    yield Hostile(f"{count} data formats without their keys, -s", ["-s"], formats, 0)
    yield from epoch_inputs(bench, 2_000 if quick else 160_000)
    yield database_input(bench, 10_000 if quick else 1_000_000)


def measure_cost(bench, sizes, results):
    empty = bench.volume("empty", "hostile", shape="058", bytes=0, bad=0)
    start = min(bench.finished([bench.quarry, "-s", empty]).cpu for _ in range(5))
    rows = []
    for hostile in inputs(bench, sizes.quick):
        sample = bench.measure([bench.quarry] + hostile.options + [hostile.path], limit=LIMIT)
        require(sample.status in (0, STOPPED), f"status {sample.status}: {hostile.label}")
        size = os.path.getsize(hostile.path) / 1e6
        # The table of a database is not part of the volume: its cost is shown whole.
        is_database = "-d" in hostile.options
        rows.append({"input": hostile.label, "megabytes": size, "seconds": sample.cpu,
                     "stopped": sample.status == STOPPED, "peak": sample.peak,
                     "rate": None if is_database else max(sample.cpu - start, 0) / size,
                     "memory_goal": MEMORY_GOAL + 2 * hostile.memory / (1 << 20) if not is_database
                     else MEMORY_GOAL + hostile.memory / (1 << 20)})
    results["cost"] = rows

    def rate(row):
        return "" if row["rate"] is None else (">" if row["stopped"] else "") + f"{row['rate']:.3f}"

    print_table("Cost of hostile inputs, to nowhere; seconds a MB are above the start of the program",
                ["input", "MB", "s", "s/MB", "goal", "peak MiB", "goal", ""],
                [[row["input"], f"{row['megabytes']:.3f}", f"{row['seconds']:.3f}", rate(row),
                  TIME_GOAL if row["rate"] is not None else "", f"{row['peak']:.1f}", f"{row['memory_goal']:.0f}",
                  mark(row["rate"] or 0, TIME_GOAL) or mark(row["peak"], row["memory_goal"])] for row in rows])
