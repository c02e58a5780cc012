// SPDX-License-Identifier: Apache-2.0
#include "commands/command.h"
#include "commands/command_line.h"

#include <algorithm>
#include <array>
#include <exception>

namespace quarry {

extern const Command check_command;
extern const Command coverage_command;
extern const Command info_command;
extern const Command json_command;

namespace {

constexpr std::array commands{&check_command, &coverage_command, &info_command, &json_command};

} // namespace

std::span<const Command* const> all_commands() {
    return commands;
}

const Command* find_command(std::string_view name) {
    const auto* const row = std::find_if(commands.begin(), commands.end(), [name](const Command* command) {
        return std::string_view(command->name) == name;
    });
    return row != commands.end() ? *row : nullptr;
}

int run_command(const Command& command, int argc, char** argv) {
    try {
        CommandLine line;
        const std::optional<ExitStatus> ended = read_command_line(command, argc, argv, &line);
        return ended ? *ended : command.run(line);
    } catch (const std::exception& error) {
        report_trouble(command.name, error.what());
        return failed;
    }
}

} // namespace quarry
