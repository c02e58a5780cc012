#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# The manual pages say what the program does: mandoc has nothing against them, the commands in them give the lines below
# them, and they name all options, rules, kinds of damage, messages and headers there are, and no others.
# usage: pages_test.py SOURCE-DIRECTORY QUARRY DEMO_VOLUME
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

source, quarry, demo_volume = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
pages = {page.name: page.read_text() for page in (source / "docs/man").iterdir()}
faults = []


def unescaped(text):
    for code, meaning in {r"\(aq": "'", r"\(dq": '"', r"\-": "-", r"\&": "", r"\e": "\\"}.items():
        text = text.replace(code, meaning)
    return text


def differs(what, documented, there):
    for side, names in ("not documented", there - documented), ("there is no", documented - there):
        faults.extend(f"{what}: {side}: {name}" for name in sorted(names))


def output(*command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options).stdout


def is_in(line, seen):
    return line in seen or line.endswith(" ...") and any(one.startswith(line[:-4]) for one in seen)


environment = os.environ | {"QUARRY_PARAM_PATH": str(source), "PATH": f"{quarry.parent}:{os.environ['PATH']}"}


def run(name, line, directory):
    text = output("sh", "-c", line, cwd=directory, env=environment)
    if re.search("not found|[Nn]o such file|--help explains|Usage:", text):
        faults.append(f"{name}: {line}: {text}")
    return text


# A block that begins with "$ COMMAND" is a session: what stands below, also in later blocks, is in the output. Lines may be
# folded, with six blanks or more before the rest,
# or end in " ...".
def check_sessions(name, page, directory):
    seen = None
    for block in re.findall(r"^(?:\.Bd -literal.*?|```)\n(.*?)^(?:\.Ed|```)", page, re.MULTILINE | re.DOTALL):
        for line in unescaped(re.sub(r"\n {6,}", " ", block)).splitlines():
            if line.startswith("$ "):
                text = run(name, line[2:], directory)
                seen = (seen or set()) | {" ".join(one.split()) for one in text.splitlines()}
            elif seen is not None and not is_in(" ".join(line.split()), seen):
                faults.append(f"{name}: no such line: {line}")


def options_of(page):
    return set(re.findall(r"^\.It Fl (\S+)", page, re.MULTILINE))


def check_messages(page):
    heads = "\n".join(re.findall(r"^\.It (No .*|Ar .*)", page[page.index(".Sh DIAGNOSTICS"):], re.MULTILINE))
    documented = {unescaped(text) for text in re.findall(r'"([^"]*)"', heads)}
    program = quarry.read_bytes()
    faults.extend(f"no such message: {text}" for text in sorted(documented) if text.rstrip(":").encode() not in program)
    for folder in "sdd", "seedio", "listing", "blockette", "platform":
        for file in (source / "src" / folder).glob("*.cpp"):
            for message in re.findall(r'log_(?:note|complain|die)\([^"]*((?:"(?:[^"\\]|\\.)*"\s*)+)', file.read_text()):
                text = "".join(re.findall(r'"((?:[^"\\]|\\.)*)"', message)).replace("\\n", "%d").replace("\\t", "%d")
                part = next((part for part in re.split(r"%[-.*\d]*l*[a-z]", text) if len(part) > 4), ": ")
                if not any(part.strip() in one for one in documented) and file.name != "decode.cpp":
                    faults.append(f"message not documented: {text}")


scratch = tempfile.TemporaryDirectory()
demo = f"{scratch.name}/demo.seed"
subprocess.run([demo_volume, demo], check=True)
shutil.copy(source / "docs/seedformat.sql", scratch.name)
shutil.copytree(scratch.name, f"{scratch.name}/build")
readme = """```
$ quarry build/demo.seed
$ COLUMNS=100 script -qec 'quarry info build/demo.seed' /dev/null
```
""" + re.sub("^```sh.*?^```", "", (source / "README.md").read_text(), flags=re.MULTILINE | re.DOTALL)
check_sessions("README.md", readme, scratch.name)
for name, page in sorted(pages.items()):
    # Where the pages are not installed, those that they refer to are not found.
    faults += [line for line in output("mandoc", "-T", "lint", source / "docs/man" / name).splitlines()
               if "referenced manual not found" not in line]
    check_sessions(name, page, scratch.name)

for name in "volume.seed", "dataless.seed", "archive/volume.mseed":  # of the examples in the commands' help
    (pathlib.Path(scratch.name) / name).parent.mkdir(exist_ok=True)
    shutil.copy(demo, f"{scratch.name}/{name}")
help_text = output(quarry, "--help")
differs("quarry", options_of(pages["quarry.1"]), set(re.findall(r"^  -(\w)\b", help_text, re.MULTILINE)) | {"-help", "-version"})
commands = set(re.findall(r"^  (\w+)", help_text[help_text.index("Commands:\n"):help_text.index("Examples:")], re.MULTILINE))
differs("commands", set(re.findall(r"^\.It Ic (\w+)$", pages["quarry.1"], re.MULTILINE)), commands)
for command in sorted(commands):
    help_text = output(quarry, command, "--help")
    faults.extend(f"quarry {command} --help: wide: {line}" for line in help_text.split("Examples:")[0].splitlines() if len(line) > 80)
    for example in re.findall("^  (.*)", help_text.split("Examples:")[1], re.MULTILINE):
        run(f"quarry {command} --help", example, scratch.name)
    differs(command, options_of(pages.get(f"quarry-{command}.1", "")),
            set(re.findall(r"^  (?:-h,)?-(-\w+)", help_text, re.MULTILINE)))
rules = set(re.findall(r"^([\w-]+) \((\w+), (\w+)\): (.*)", output(quarry, "check", "--rules"), re.MULTILINE))
documented = re.findall(r"^\.It Cm (\S+) No \((\w+), (\w+)\)\n((?:[^.].*\n)+)", pages["quarry-check.1"], re.MULTILINE)
differs("rules", {(*front, " ".join(sentence.split())) for *front, sentence in documented}, rules)
check_messages(pages["quarry.1"])
differs("blockettes", set(re.findall(r"^\.Ss (\d{3}) ", pages["quarry.1"], re.MULTILINE)),
        set(re.findall(r"X\(\d+, (\d{3})\)", (source / "src/blockette/types.h").read_text())))
schema = json.loads((source / "docs/quarry-json.schema.json").read_text())
terms = {(name, section): set(re.findall(r'(?:It|,) Cm ("[^"]*"|[^\s"]+)', text)) for name, page in pages.items()
         for section, text in re.findall(r"^\.Ss (.*)\n((?:(?!\.S[hs]).*\n)*)", page, re.MULTILINE)}
differs("objects", terms["quarry-json.1", "Kinds of objects"], {kind["$ref"][8:] for kind in schema["oneOf"]})
differs("damage", terms["quarry-info.1", "Damage"], set(schema["$defs"]["damage"]["properties"]["damage"]["enum"]))
for (name, section), command in {("quarry-info.1", "Stations"): ("info", "--tsv", "--stations"),
                                 ("quarry-info.1", "Channels"): ("info", "--tsv", "--channels"),
                                 ("quarry-coverage.1", "The table"): ("coverage", "--csv")}.items():
    titles = re.split("[,\t]", output(quarry, *command, demo).splitlines()[0])
    differs(f"column of {name}", {term.strip('"') for term in terms[name, section]}, set(titles) - {"file"})
differs("headers", set(re.findall(r"^\.It In quarry/(\S+)", pages["libquarry.3"], re.MULTILINE)),
        {header.name for header in (source / "include/quarry").iterdir()})
print("\n".join(faults))
sys.exit(bool(faults))
