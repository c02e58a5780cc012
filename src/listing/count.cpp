#include "listing/count.h"

#include "blockette/blockette.h"
#include "blockette/sdblknam.h"
#include "listing/pbrief.h"
#include "platform/message_log.h"

#include <cerrno>
#include <cinttypes>

namespace quarry {

namespace {

Tally current{};

void print_share(std::FILE* stream, const char* label, std::int64_t bytes, std::int64_t size) {
    std::fprintf(stream, "%s: %10" PRId64 " = %6.1lf%%\n", label, bytes,
                 static_cast<double>(bytes) * 100 / static_cast<double>(size));
}

void print_counts(std::FILE* stream, const Tally& tally) {
    for (int type = 0; has_tally_entry(type); ++type) {
        const auto entry = static_cast<std::size_t>(type + 1);
        if (tally.blk_cnt[entry] != 0)
            std::fprintf(stream, "%5" PRId64 " (%03d) %10" PRId64 " %s blockettes\n", tally.blk_cnt[entry],
                         type, tally.tot_siz[entry], sdblknam(type));
    }
    std::fprintf(stream, "%5" PRId64 "       %10" PRId64 " Data blockettes\n\n", tally.blk_cnt[0],
                 tally.tot_siz[0]);
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
    std::fprintf(stream, "\nBlockette Summary -- file #%d\n", tapefile);
    print_counts(stream, tally);
    const Shares shares = shares_of(tally, size);
    print_share(stream, "Total Parameter Info  ", shares.parameter, size);
    print_share(stream, "Total Data            ", shares.data, size);
    print_share(stream, "Total Wasted          ", shares.wasted, size);
}

} // namespace quarry
