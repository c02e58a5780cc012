// quarry: lists SEED volumes. Options, parameter file and database are read here; the work is sdd's.

#include "platform/memory.h"
#include "platform/message_log.h"
#include "platform/standard_output.h"
#include "sdd/banner.h"
#include "sdd/sdd.h"
#include "state.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <new>
#include <unistd.h>

namespace quarry {

namespace {

// A standard descriptor that is closed would be given to the next file that is opened, and the listing
// written into it. One that only fails takes its place.
void occupy_standard_descriptors() {
    for (const auto& [descriptor, mode] :
         {std::pair{STDIN_FILENO, O_WRONLY}, std::pair{STDOUT_FILENO, O_RDONLY},
          std::pair{STDERR_FILENO, O_WRONLY}})
        if (fcntl(descriptor, F_GETFD) < 0 && open("/dev/null", mode) < 0)
            std::_Exit(EXIT_FAILURE);
}

// Whatever it was started with: a reader that goes away and a request to end do end the program at once, the
// end of a decompressor can be waited for, and a listing that outgrows a limit is a failed write like any
// other. An interrupt that is ignored stays so: shells start background jobs that way.
void restore_signals() {
    std::signal(SIGPIPE, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    std::signal(SIGCHLD, SIG_DFL);
    std::signal(SIGXFSZ, SIG_IGN);
    sigset_t ending;
    sigemptyset(&ending);
    for (const int signal : {SIGPIPE, SIGTERM, SIGINT})
        sigaddset(&ending, signal);
    sigprocmask(SIG_UNBLOCK, &ending, nullptr);
}

[[noreturn]] void usage() {
    std::fprintf(stderr, "\nUsage: %s [[-f n] [-sS] [-d database] [seed]\n", Program_Name.c_str());
    banner("", "");
    std::exit(EXIT_FAILURE);
}

void open_database(const char* name) {
    if (store_open(name, "r+", &Db) != 0)
        log_die(1, "Can't open database %s\n", name);
}

int run(int argc, char** argv) {
    Program_Name = argc > 0 ? argv[0] : "";
    log_init(argc, argv);
    if (param_read("quarry", &Parameters) != 0)
        log_die(0, "Couldn't read parameter file quarry.pf.\n");
    Db = store_invalid();

    int summary_only = 0;
    int option;
    while ((option = getopt(argc, argv, "+f:sSd:vVH")) != -1) {
        switch (option) {
        case 'f':
            File_No = std::atoi(optarg);
            File_Flag = 1;
            break;
        case 's':
            summary_only = 1;
            break;
        case 'S':
            Simplify += 1;
            break;
        case 'd':
            open_database(optarg);
            break;
        case 'v':
            Verbose_Flag += 1;
            break;
        case 'V':
            banner("", "");
            return EXIT_SUCCESS;
        default: // -H, deliberately, among the unknown ones
            usage();
        }
    }
    if (argc - optind > 1)
        usage();
    const int status = sdd(optind < argc ? argv[optind] : "-", summary_only);
    flush_output(stdout);
    check_standard_output();
    return status;
}

} // namespace

} // namespace quarry

int main(int argc, char** argv) {
    quarry::occupy_standard_descriptors();
    quarry::restore_signals();
    try {
        return quarry::run(argc, argv);
    } catch (const std::bad_alloc&) {
        quarry::out_of_memory(QUARRY_SITE("main"), 1, "working storage");
    }
}
