// SPDX-License-Identifier: Apache-2.0
// The command line of a command: the options common to all, its own ones, and the names of volumes.
#pragma once

#include "commands/command.h"
#include "commands/selection.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarry {

struct CommandLine {
    std::string command;
    std::vector<std::string> volumes; // with those of the lists; "-" is standard input
    bool list_failed = false;         // a list could not be read, which has been reported
    Selection selection;
    int jobs = 1;
    std::map<std::string, std::string, std::less<>> values; // of given options; flags have empty ones

    bool has(std::string_view option) const { return values.find(option) != values.end(); }
    // Values of an option given several times are joined by commas; empty if it is not given.
    std::string_view value(std::string_view option) const {
        const auto found = values.find(option);
        return found != values.end() ? std::string_view(found->second) : std::string_view();
    }
};

// Reads it. A status is returned where the command ends at once: after its help, or after wrong usage, which
// is reported on standard error.
std::optional<ExitStatus> read_command_line(const Command& command, int argc, char** argv, CommandLine* line);

// Reports on standard error, control characters shown as codes on a terminal: "quarry COMMAND: TEXT".
void report_trouble(std::string_view command, std::string_view text);

} // namespace quarry
