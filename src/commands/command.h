// SPDX-License-Identifier: Apache-2.0
// The commands: what follows `quarry` on the command line, and the table of all of them.
//
// To add a command: a file with its `const Command`, and its row in commands.cpp.
#pragma once

#include <span>
#include <string_view>

namespace quarry {

struct CommandLine;

// An option that a command has besides those common to all (command_line.cpp).
struct OptionRow {
    const char* name;  // "--kinds"
    const char* value; // what stands for its value in the help; null for a flag. CODES, RULES and LIST stand
                       // for lists, whose parts may be given one by one.
    const char* help;
    bool needs_no_volume = false;
};

enum ExitStatus : int {
    all_sound = 0,
    some_damaged = 1, // but read as far as possible
    failed = 2,       // wrong usage, or a volume that could not be read or holds no SEED
};

struct Command {
    const char* name;
    const char* description;
    std::span<const OptionRow> options;
    const char* examples;
    ExitStatus (*run)(const CommandLine& line);
};

// All of them, by name.
std::span<const Command* const> all_commands();

// The command of that name, or null.
const Command* find_command(std::string_view name);

// Runs the command with its arguments, the first of which is its name. Returns the exit status.
int run_command(const Command& command, int argc, char** argv);

} // namespace quarry
