// SPDX-License-Identifier: Apache-2.0
// quarry: lists SEED volumes, or runs the command whose name the first argument is.

#include "commands/command.h"
#include "sdd/about.h"
#include "sdd/command.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>
#include <utility>
#include <vector>

namespace quarry {

namespace {

// The library for command lines makes its tables before main; the memory may be exhausted even then.
[[gnu::constructor(101)]] void report_exhausted_memory_from_the_start() {
    report_exhausted_memory();
}

// If a standard descriptor is closed, the next file to be opened gets its number, and the listing could be
// written into that file. So a descriptor on which reading or writing fails takes its place.
void occupy_standard_descriptors() {
    for (const auto& [descriptor, mode] :
         {std::pair{STDIN_FILENO, O_WRONLY}, std::pair{STDOUT_FILENO, O_RDONLY},
          std::pair{STDERR_FILENO, O_WRONLY}})
        if (fcntl(descriptor, F_GETFD) < 0 && open("/dev/null", mode) < 0)
            std::_Exit(EXIT_FAILURE);
}

// The program that started this one may have changed them. SIGPIPE ends the program when its reader goes
// away, SIGTERM and SIGINT end it on request, SIGXFSZ is ignored so that a listing beyond a size limit is a
// failed write. A SIGINT that is ignored stays so: shells start background jobs that way.
void restore_signals() {
    std::signal(SIGPIPE, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    std::signal(SIGXFSZ, SIG_IGN);
    sigset_t ending;
    sigemptyset(&ending);
    for (const int signal : {SIGPIPE, SIGTERM, SIGINT})
        sigaddset(&ending, signal);
    sigprocmask(SIG_UNBLOCK, &ending, nullptr);
}

// A name alone is a volume's: `quarry json` lists the volume "json".
const Command* command_of(int argc, char** argv) {
    return argc > 2 ? find_command(argv[1]) : nullptr;
}

// The status of what is asked for as the sole argument; -1 if that is something else.
int tell_about_quarry(int argc, char** argv) {
    if (argc != 2 || std::string_view(argv[1]).substr(0, 2) != "--")
        return -1;
    std::vector<CommandInHelp> commands;
    for (const Command* command : all_commands())
        commands.push_back({command->name, command->description});
    return tell_about(argv[1], commands);
}

} // namespace

} // namespace quarry

int main(int argc, char** argv) {
    quarry::occupy_standard_descriptors();
    quarry::restore_signals();
    if (const int status = quarry::tell_about_quarry(argc, argv); status >= 0)
        return status;
    const quarry::Command* command = quarry::command_of(argc, argv);
    return command != nullptr ? quarry::run_command(*command, argc - 1, argv + 1)
                              : quarry::listing_command(argc, argv);
}
