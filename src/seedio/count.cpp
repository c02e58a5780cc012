#include "seedio/count.h"

#include "blockette/blockette.h"
#include "blockette/sdblknam.h"
#include "listing/pbrief.h"
#include "platform/message_log.h"

#include <array>
#include <cerrno>
#include <cinttypes>
#include <cstdio>

namespace quarry {

namespace {

// Entry type + 1 belongs to a type, so that data records (type -1) have entry 0.
constexpr int entries = 500;
std::int64_t nblks = 0;
std::array<std::int64_t, entries> blk_cnt{};
std::array<std::int64_t, entries> tot_siz{};

void print_share(const char* label, std::int64_t bytes, std::int64_t size) {
    std::printf("%s: %10" PRId64 " = %6.1lf%%\n", label, bytes,
                static_cast<double>(bytes) * 100 / static_cast<double>(size));
}

} // namespace

int init_count() {
    nblks = 0;
    blk_cnt.fill(0);
    tot_siz.fill(0);
    return 0;
}

int count_blk(const void* record, int type) {
    if (type == 10)
        summary_010(stdout, static_cast<const blk_010_t*>(record));
    else if (type == 11)
        summary_011(stdout, static_cast<const blk_011_t*>(record));

    nblks += 1;
    if (type >= -1 && type < entries - 1) {
        const auto entry = static_cast<std::size_t>(type + 1);
        blk_cnt[entry] += 1;
        tot_siz[entry] += block_size(record, type);
    } else {
        errno = 0; // nothing failed in the system
        log_complain(1, "Unknown block type = %d\n", type);
    }
    return 0;
}

int summary(int tapefile, std::int64_t size) {
    if (nblks < 1)
        return 0;
    std::printf("\nBlockette Summary -- file #%d\n", tapefile);
    std::int64_t parameter = 0;
    for (int entry = 1; entry < entries; ++entry) {
        const auto at = static_cast<std::size_t>(entry);
        parameter += tot_siz[at];
        if (blk_cnt[at] != 0)
            std::printf("%5" PRId64 " (%03d) %10" PRId64 " %s blockettes\n", blk_cnt[at], entry - 1,
                        tot_siz[at], sdblknam(entry - 1));
    }
    const std::int64_t data = tot_siz[0];
    std::printf("%5" PRId64 "       %10" PRId64 " Data blockettes\n\n", blk_cnt[0], data);
    print_share("Total Parameter Info  ", parameter, size);
    print_share("Total Data            ", data, size);
    print_share("Total Wasted          ", size - parameter - data, size);
    return 0;
}

} // namespace quarry
