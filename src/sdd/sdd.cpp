// SPDX-License-Identifier: Apache-2.0
#include "sdd/sdd.h"

#include "blockette/blockette.h"
#include "blockette/timespan.h"
#include "listing/count.h"
#include "listing/pbrief.h"
#include "platform/end_process.h"
#include "platform/message_log.h"
#include "platform/standard_output.h"
#include "seedio/rseed.h"
#include "seedio/seed.h"
#include "state.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace quarry {

namespace {

// The command run is literally `cmd`, which a site provides. The interface asks for the mt command too, but
// nothing runs it.
void position_tape(const char* input_name) {
    std::array<char, 1024> command;
    std::snprintf(command.data(), command.size(), "mt -f %s asf %d", input_name, File_No);
    flush_output(stdout);
    static_cast<void>(std::system("cmd") == 0); // NOLINT(cert-env33-c): a command of the site
    Tapefile = File_No;
}

void announce_logical_record(int seq_num) {
    LineBuffer& line = line_for(stdout);
    print_line<"\nSeed Block Sequence #%i\n">(line, seq_num);
    write_line(stdout, line);
}

// A volume with an index that cannot be held is not listed further.
void list_bad_blockette(const void* record, int type, std::string_view text) {
    if (type == 73 && has_too_many_segments(*static_cast<const blk_073_t*>(record))) {
        log_complain(0, "ERROR(parse_073) - num_segs is too large: %i\n",
                     static_cast<const blk_073_t*>(record)->num_segs);
        end_process(EXIT_FAILURE);
    }
    report_bad_blockette(record, type, text);
    pbrief_blk(stderr, record, type);
}

void list_on_standard_output(const void* record, int type) {
    LineBuffer& lines = line_for(stdout);
    list_blk(lines, record, type);
    write_line(stdout, lines);
}

// One tape file. Returns the number of blockettes that it delivered.
long list_tape_file(read_handle_t* handle, int summary_only) {
    long nblks = 0;
    init_count();
    clrSeedInput(handle->logical);
    void* record = nullptr;
    int type = 0;
    while (read_blk(handle, &record, &type) != 0) {
        const BlockettePointer owner(record, {type});
        if (summary_only == 0)
            list_on_standard_output(record, type);
        count_blk(record, type);
        nblks += 1;
        check_standard_output();
    }
    summary(Tapefile, handle->logical->totbytes);
    return nblks;
}

} // namespace

void check_standard_output() {
    if (output_error() == 0)
        return;
    errno = output_error();
    if (errno == EPIPE)
        end_process(EXIT_FAILURE);
    log_die(1, "Can't write standard output\n");
}

int rename_station(const char* /*net*/, const char* /*sta*/) {
    return 0;
}

void list_volume(read_handle_t* handle, int summary_only) {
    handle->bad_blockette = list_bad_blockette;
    handle->logical->announce = Verbose_Flag > 1 ? announce_logical_record : nullptr;
    handle->logical->before_read = [] { flush_output(stdout); };
    long delivered;
    do {
        delivered = list_tape_file(handle, summary_only);
        Tapefile += 1;
    } while (delivered != 0 && File_Flag == 0);
    log_flush(1);
}

int sdd(const char* input_name, int summary_only) {
    // If a line cannot be written, the listing ends there: messages about later blockettes do not appear.
    gather_output(summary_only == 0 ? check_standard_output : nullptr);
    Tapefile = 0;
    Geoscope_channels = {};
    read_handle_t* handle = seed_read(input_name);
    if (File_Flag != 0 && File_No != 0)
        position_tape(input_name);
    list_volume(handle, summary_only);
    free_handle(handle);
    return 0;
}

} // namespace quarry
