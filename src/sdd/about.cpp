// SPDX-License-Identifier: Apache-2.0
#include "sdd/about.h"

#include "build_info.h"
#include "platform/text.h"
#include "sdd/options.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace quarry {

namespace {

constexpr const char* front = R"(quarry reads volumes of seismological data in SEED format.

Usage:
  quarry [options] [VOLUME]            lists a volume: each blockette and data
                                       record on a line, then how its bytes
                                       divide
  quarry COMMAND [options] VOLUME...   looks at volumes in another way
  quarry --help, quarry --version

A volume is a file, a pipe or a tape; files and pipes may be compressed. Without
one, or for -, the listing reads standard input.
)";

constexpr const char* back = R"(
Examples:
  quarry volume.seed | less
  quarry -s volume.seed.gz
  quarry info --channel 'BH?' archive/*.seed

`quarry COMMAND --help` explains a command. The listing needs a parameter file
quarry.pf, which may be empty. Read on in the manual: man quarry,
man quarry-COMMAND, man quarry.pf.
)";

void print_row(const std::string& name, const char* help) {
    std::printf("  %-14s %s\n", name.c_str(), folded(help, 17).c_str());
}

void print_options() {
    std::string_view group;
    for (const ListingOption& option : listing_options) {
        if (group != option.group)
            std::printf("\n%s:\n", option.group);
        group = option.group;
        const std::string value = option.value != nullptr ? std::string(" ") + option.value : "";
        print_row(std::string("-") + option.letter + value, option.help);
    }
}

int print_help(std::span<const CommandInHelp> commands) {
    std::fputs(front, stdout);
    print_options();
    std::fputs("\nCommands:\n", stdout);
    for (const CommandInHelp& command : commands)
        print_row(command.name, command.description);
    std::fputs(back, stdout);
    return std::fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

int print_version() {
    std::printf("quarry %s, revision %s\n", quarry_release, quarry_revision);
    return std::fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int tell_about(std::string_view option, std::span<const CommandInHelp> commands) {
    if (option == "--help")
        return print_help(commands);
    return option == "--version" ? print_version() : -1;
}

} // namespace quarry
