#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes a program of the examples in documents and in the opening comments of headers, each a function.

usage: snippets.py OUTPUT DOCUMENT HEADER...

They may use what the program declares in front of them; tests/examples_test.cpp runs it.
"""

import pathlib
import re
import sys

FRONT = """
// The first data record of volume.seed, and the bytes of its data for the decoders.
quarry::VolumeReader first_reader = quarry::VolumeReader::of_path("volume.seed");
const quarry::DataRecord& first_record() {
    for (;;)
        if (const auto* found = std::get_if<quarry::DataRecord>(first_reader.next()))
            return *found;
}
const quarry::DataRecord& record = first_record();
std::string copied(record.payload.begin(), record.payload.end());
char* const data = copied.data();
const auto bytes_of_data = static_cast<std::int32_t>(copied.size());
const bool is_swapped = record.format->word_order != std::endian::native;
"""


def of_document(text):
    return re.findall(r"^```cpp\n(.*?)^```", text, re.M | re.S)


def of_header(text):
    comment = text[:text.index("#pragma once")]
    return ["\n".join(line[7:] for line in re.findall(r"^//     .*|^//$", comment, re.M)) + "\n"]


def main():
    output, document, *headers = sys.argv[1:]
    names = [f"<quarry/{pathlib.Path(header).name}>" for header in headers]
    snippets = [("document", text) for text in of_document(pathlib.Path(document).read_text(encoding="utf-8"))]
    for header in headers:
        found = of_header(pathlib.Path(header).read_text(encoding="utf-8"))
        if not found[0].strip():
            sys.exit(f"{header} begins without an example")
        snippets += [(pathlib.Path(header).name, text) for text in found]
    program = "".join(f"#include {name}\n" for name in [*names, "<iostream>"]) + FRONT
    for number, (_, text) in enumerate(snippets):
        program += f"\nvoid snippet_{number}() {{\n{text}}}\n"
    program += "\nint main() {\n"
    for number, (name, _) in enumerate(snippets):
        program += f'    std::cout << "--- {name}\\n";\n    snippet_{number}();\n'
    pathlib.Path(output).write_text(program + "}\n", encoding="utf-8")


main()
