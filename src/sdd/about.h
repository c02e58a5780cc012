// SPDX-License-Identifier: Apache-2.0
// What quarry says of itself when it is asked for nothing else: `quarry --help` and `quarry --version`.
#pragma once

#include <span>
#include <string_view>

namespace quarry {

// A command in the help.
struct CommandInHelp {
    const char* name;
    const char* description;
};

// Writes the text of the option to standard output, if it is one of the two. Returns the exit status, or -1.
int tell_about(std::string_view option, std::span<const CommandInHelp> commands);

} // namespace quarry
