// SPDX-License-Identifier: Apache-2.0
#include "sdd/command.h"

#include "platform/memory.h"
#include "platform/message_log.h"
#include "platform/standard_output.h"
#include "sdd/banner.h"
#include "sdd/options.h"
#include "sdd/sdd.h"
#include "state.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <malloc.h>
#include <new>
#include <unistd.h>

namespace quarry {

namespace {

// A blockette's lists are released when it is listed, and the next one's are as large. Memory that went back
// to the system in between would have to be cleared page by page again.
void keep_released_memory() {
    mallopt(M_TRIM_THRESHOLD, 1 << 20);
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

// Takes an option of the command line. Returns false for the one that ends the command.
bool take_option(int option, int* summary_only) {
    switch (option) {
    case 'f':
        File_No = std::atoi(optarg); // NOLINT(cert-err34-c): what is not a number is 0
        File_Flag = 1;
        break;
    case 's':
        *summary_only = 1;
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
        return false;
    default:
        usage();
    }
    return true;
}

int run(int argc, char** argv) {
    Program_Name = argc > 0 ? argv[0] : "";
    log_init(argc, argv);
    if (param_read("quarry", &Parameters) != 0)
        log_die(0, "Couldn't read parameter file quarry.pf.\n");
    Db = store_invalid();

    int summary_only = 0;
    int option;
    const std::string letters = listing_option_letters();
    while ((option = getopt(argc, argv, letters.c_str())) != -1)
        if (!take_option(option, &summary_only))
            return EXIT_SUCCESS;
    if (argc - optind > 1)
        usage();
    const int status = sdd(optind < argc ? argv[optind] : "-", summary_only);
    flush_output(stdout);
    check_standard_output();
    return status;
}

} // namespace

void report_exhausted_memory() {
    std::set_terminate([] { out_of_memory(QUARRY_SITE("main"), 1, "working storage"); });
}

int listing_command(int argc, char** argv) {
    keep_released_memory();
    try {
        return run(argc, argv);
    } catch (const std::bad_alloc&) {
        out_of_memory(QUARRY_SITE("main"), 1, "working storage");
    }
}

} // namespace quarry
