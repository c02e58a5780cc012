# SPDX-License-Identifier: Apache-2.0
"""What the parts of the benchmark share: runs of a program, volumes, tables."""

import collections
import os
import shutil
import statistics
import subprocess
import sys
import tempfile

Sample = collections.namedtuple("Sample", "status cpu wall peak")  # seconds, seconds, MiB

STOPPED = 128 + 9  # status of a program that reached its limit of processor time


class Insane(Exception):
    """A program of the benchmark gave another result than it should."""


def require(condition, message):
    if not condition:
        raise Insane(message)


class Bench:
    """The programs of one build, and a directory for volumes and outputs."""

    def __init__(self, build, directory):
        self.quarry = os.path.join(build, "quarry")
        self.programs = os.path.join(build, "bench")
        self.directory = directory
        open(self.path("quarry.pf"), "w").close()
        os.environ["QUARRY_PARAM_PATH"] = directory

    def path(self, name):
        return os.path.join(self.directory, name)

    def program(self, name):
        return os.path.join(self.programs, name)

    def generator(self, kind, **arguments):
        return [self.program("generate_volume"), kind] + [f"{name}={value}" for name, value in arguments.items()]

    def volume(self, name, kind, **arguments):
        path = self.path(name)
        with open(path, "wb") as file:
            subprocess.run(self.generator(kind, **arguments), stdout=file, check=True)
        return path

    def remove(self, *names):
        for name in names:
            if os.path.exists(self.path(name)):
                os.remove(self.path(name))

    def measure(self, command, out="/dev/null", err="/dev/null", limit=600, stdin=subprocess.DEVNULL):
        """Runs a command. Output files are new, so that each run pays alike for their pages."""
        for name in (out, err):
            if name != "/dev/null" and os.path.exists(name):
                os.remove(name)
        arguments = [self.program("measure"), str(limit), out, err] + command
        report = subprocess.run(arguments, stdin=stdin, stdout=subprocess.PIPE, check=True, text=True).stdout
        status, cpu, wall, peak = report.split()
        return Sample(int(status), float(cpu), float(wall), int(peak) / 1024)

    def measure_piped(self, generator, command, **options):
        """The same with a generated volume as standard input."""
        with subprocess.Popen(generator, stdout=subprocess.PIPE) as source:
            sample = self.measure(command, stdin=source.stdout, **options)
            source.stdout.close()
        return sample

    def finished(self, command, **options):
        """A run that has to end by itself with status 0."""
        sample = self.measure(command, **options)
        require(sample.status == 0, f"status {sample.status}: {' '.join(command)}")
        return sample

    def output(self, command, err="/dev/null"):
        """The text that a command prints."""
        out = self.path("checked.out")
        self.finished(command, out=out, err=err)
        with open(out, encoding="latin-1") as file:
            return file.read()


def temporary_directory(needed):
    """In memory where there is room, so that no disk takes part; removed at the end."""
    place = os.environ.get("TMPDIR")
    if place is None and os.path.isdir("/dev/shm") and shutil.disk_usage("/dev/shm").free > needed:
        place = "/dev/shm"
    return tempfile.TemporaryDirectory(prefix="quarry-bench-", dir=place)


def median(values):
    return statistics.median(values)


def mark(value, goal):
    """The mark that a table has for a value above its goal; empty for a value without a goal."""
    return "MISS" if goal is not None and value > goal else ""


def print_table(title, head, rows):
    lines = [[str(cell) for cell in row] for row in rows]
    widths = [max(len(row[i]) for row in [head] + lines) for i in range(len(head))]
    print(f"\n{title}\n")
    for row in [head, ["-" * width for width in widths]] + lines:
        print("| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |")
    sys.stdout.flush()
