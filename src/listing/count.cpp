// SPDX-License-Identifier: Apache-2.0
#include "listing/count.h"

#include "blockette/blockette.h"
#include "blockette/sdblknam.h"
#include "listing/pbrief.h"
#include "platform/message_log.h"
#include "platform/standard_output.h"

#include <cerrno>

namespace quarry {

namespace {

Tally current{};

void print_share(LineBuffer& out, std::string_view label, std::int64_t bytes, std::int64_t size) {
    print_line<"%s: %10i = %6.1f">(out, label, bytes,
                                   static_cast<double>(bytes) * 100 / static_cast<double>(size));
    out.append("%\n");
}

void print_counts(LineBuffer& out, const Tally& tally) {
    for (int type = 0; has_tally_entry(type); ++type) {
        const auto entry = static_cast<std::size_t>(type + 1);
        if (tally.blk_cnt[entry] != 0)
            print_line<"%5i (%03i) %10i %s blockettes\n">(out, tally.blk_cnt[entry], type,
                                                          tally.tot_siz[entry], sdblknam(type));
    }
    print_line<"%5i       %10i Data blockettes\n\n">(out, tally.blk_cnt[0], tally.tot_siz[0]);
}

} // namespace

int init_count() {
    current = {};
    return 0;
}

int count_blk(const void* record, int type) {
    if (type == 10)
        summary_010(stdout, static_cast<const blk_010_t*>(record));
    else if (type == 11)
        summary_011(stdout, static_cast<const blk_011_t*>(record));

    current.nblks += 1;
    if (has_tally_entry(type)) {
        tally_blockette(&current, type, block_size(record, type));
    } else {
        errno = 0; // nothing failed in the system
        log_complain(1, "Unknown block type = %d\n", type);
    }
    return 0;
}

int summary(int tapefile, std::int64_t size) {
    print_summary(stdout, current, tapefile, size);
    return 0;
}

void print_summary(std::FILE* stream, const Tally& tally, int tapefile, std::int64_t size) {
    if (tally.nblks < 1)
        return;
    LineBuffer& out = line_for(stream);
    print_line<"\nBlockette Summary -- file #%i\n">(out, tapefile);
    print_counts(out, tally);
    const Shares shares = shares_of(tally, size);
    print_share(out, "Total Parameter Info  ", shares.parameter, size);
    print_share(out, "Total Data            ", shares.data, size);
    print_share(out, "Total Wasted          ", shares.wasted, size);
    write_line(stream, out);
}

} // namespace quarry
