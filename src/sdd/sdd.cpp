#include "sdd/sdd.h"

#include "blockette/blockette.h"
#include "blockette/volume.h"
#include "listing/pbrief.h"
#include "platform/message_log.h"
#include "platform/standard_output.h"
#include "seedio/count.h"
#include "seedio/rseed.h"
#include "seedio/seed.h"
#include "state.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace quarry {

namespace {

// What is run is the word "cmd", a command of the site's own, not the formatted text.
void position_tape(const char* input_name) {
    std::array<char, 1024> command;
    std::snprintf(command.data(), command.size(), "mt -f %s asf %d", input_name, File_No);
    flush_output(stdout);
    static_cast<void>(!std::system("cmd"));
    Tapefile = File_No;
}

// The dictionaries outlive the records, so they take copies.
void file_dictionary_entry(const void* record, int type) {
    if (type == 31) {
        const auto* comment = static_cast<const blk_031_t*>(record);
        Tbl_031.set(comment->comment_id, comment->comment);
    } else if (type == 33) {
        const auto* abbreviation = static_cast<const blk_033_t*>(record);
        Tbl_033.set(abbreviation->abbrev_id, abbreviation->abbrev);
    } else if (type == 34) {
        const auto* unit = static_cast<const blk_034_t*>(record);
        Tbl_034.set(unit->unit_id, unit->unit_name);
    }
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
            pbrief_blk(stdout, record, type);
        file_dictionary_entry(record, type);
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
        std::exit(EXIT_FAILURE);
    log_die(1, "Can't write standard output\n");
}

int rename_station(const char* /*net*/, const char* /*sta*/) {
    return 0;
}

int sdd(const char* input_name, int summary_only) {
    Tapefile = 0;
    Geoscope_channels = {};
    read_handle_t* handle = seed_read(input_name);
    if (File_Flag != 0 && File_No != 0)
        position_tape(input_name);
    long delivered;
    do {
        delivered = list_tape_file(handle, summary_only);
        Tapefile += 1;
    } while (delivered != 0 && File_Flag == 0);
    free_handle(handle);
    log_flush(1);
    return 0;
}

} // namespace quarry
