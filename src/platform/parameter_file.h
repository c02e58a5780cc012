// SPDX-License-Identifier: Apache-2.0
// Parameter files: the settings of a tool, read from NAME.pf, a TOML file.
//
// The file is looked for in each directory of the environment variable QUARRY_PARAM_PATH (separated by
// colons; empty ones are passed over) where that is set and not empty, otherwise in the current directory;
// then in the configuration directory of an installed program. The first that exists is read; a loop of
// symbolic links counts as one that cannot be read.
#pragma once

#include "platform/containers.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace quarry {

// A value as found: its text, absent if it is not a text, and its line.
struct ParameterValue {
    std::optional<std::string> text;
    unsigned line = 0;
};

// A parsed parameter file: its path, its top-level tables by name, and the lines of its other top-level
// entries.
struct ParameterFile {
    std::string path;
    std::map<std::string, std::map<std::string, ParameterValue>, std::less<>> tables;
    std::map<std::string, unsigned, std::less<>> others;
};

// Reads the parameter file of the given name ("quarry" reads quarry.pf). Returns 0, or -1 when it is missing,
// cannot be read, is not a regular file, is larger than a megabyte, or is not TOML (or nests deeper than
// toml_depth_limit). Except for a missing file, a note gives the reason; for a fault in the file, its line
// and column too. An empty file is a valid one.
int param_read(const char* name, ParameterFile* parameters);

// Parses the content of a parameter file; `path` is for messages. Returns 0, or -1 with a note that gives
// the reason and the place.
int param_parse(std::string_view content, const std::string& path, ParameterFile* parameters);

// The table of texts under the key, or none. An entry that is not a text is reported (file, line, key) and
// left out; a key that is not a table is reported and gives an empty one.
std::optional<Map<std::string>> param_get_map(const ParameterFile& parameters, const char* key);

} // namespace quarry
