// SPDX-License-Identifier: Apache-2.0
// The command line of a command: the options common to all, its own ones, and the names of volumes.
#pragma once

#include "commands/command.h"
#include "commands/selection.h"

#include <map>
#include <optional>
#include <stdexcept>
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
    // Of all options that the command has: absent if one is not given, empty for a flag.
    std::map<std::string, std::optional<std::string>, std::less<>> values;

    // Both throw std::logic_error for an option that the command does not have.
    bool has(std::string_view option) const { return given(option).has_value(); }
    // Values of a list given several times are joined by commas; empty if it is not given.
    std::string_view value(std::string_view option) const {
        return has(option) ? std::string_view(*given(option)) : std::string_view();
    }

private:
    const std::optional<std::string>& given(std::string_view option) const {
        const auto found = values.find(option);
        if (found == values.end())
            throw std::logic_error("no option " + std::string(option));
        return found->second;
    }
};

// Reads it. A status is returned where the command ends at once: after its help, or after wrong usage, which
// is reported on standard error.
std::optional<ExitStatus> read_command_line(const Command& command, int argc, char** argv, CommandLine* line);

// Reports on standard error, control characters shown as codes on a terminal: "quarry COMMAND: TEXT".
void report_trouble(std::string_view command, std::string_view text);

} // namespace quarry
