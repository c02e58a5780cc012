#include "blockette/data_header.h"

#include "blockette/scan.h"
#include "platform/bytes.h"
#include "platform/seed_record.h"

#include <algorithm>
#include <array>

namespace quarry {

void init_dh(blk_dh_t* blk) {
    blk->stn_id[0] = blk->loc_id[0] = blk->chan_id[0] = blk->start_time[0] = '\0';
    blk->nsamps = 0;
    blk->rate_f = 0;
    blk->rate_m = 1;
    blk->activity = blk->io_flags = blk->quality = blk->blks_fol = 0;
    blk->time_cor = blk->beg_data = blk->beg_blks = 0;
}

void int2int(int* dest, const char* src, int swap) {
    std::array<char, 4> bytes;
    if (swap != 0)
        swap_four(src, bytes.data(), 1);
    else
        std::copy_n(src, bytes.size(), bytes.begin());
    *dest = load<std::int32_t>(bytes.data());
}

void short2int(int* dest, const char* src, int swap) {
    std::array<char, 2> bytes;
    if (swap != 0)
        swap_two(src, bytes.data(), 1);
    else
        std::copy_n(src, bytes.size(), bytes.begin());
    *dest = load<std::int16_t>(bytes.data());
}

void char2int(int* dest, const char* src) {
    *dest = static_cast<signed char>(*src);
}

// Offsets within the data record:
//  8 station                          text 5
// 13 location                         text 2
// 15 channel                          text 3
// 18 network                          text 2
// 20 year, day of year                2 x signed 16-bit
// 24 hour, minute, second             3 x signed 8-bit
// 27 unused
// 28 0.0001 s                         signed 16-bit
// 30 number of samples                signed 16-bit
// 32 sample rate factor, multiplier   2 x signed 16-bit
// 36 activity, I/O, quality flags     3 x signed 8-bit
// 39 number of blockettes             signed 8-bit
// 40 time correction                  signed 32-bit
// 44 beginning of data                signed 16-bit
// 46 first blockette                  signed 16-bit
void parse_dh(blk_dh_t* blk, std::string_view buff) {
    constexpr std::size_t text_start = 8;
    constexpr std::size_t header_end = 48;
    std::array<char, header_end> header{}; // what the text lacks stays 0
    std::copy_n(buff.begin(), std::min(buff.size(), header_end - text_start), header.begin() + text_start);

    scan_str(&buff, 5, blk->stn_id);
    scan_str(&buff, 2, blk->loc_id);
    scan_str(&buff, 3, blk->chan_id);
    scan_str(&buff, 2, blk->network_code);

    int host_year = 0;
    short2int(&host_year, &header[20], 0);
    blk->byteswap = host_year >= first_plausible_year && host_year <= last_plausible_year ? 0 : -1;

    const int swap = blk->byteswap;
    short2int(&blk->year, &header[20], swap);
    short2int(&blk->doy, &header[22], swap);
    char2int(&blk->hour, &header[24]);
    char2int(&blk->minutes, &header[25]);
    char2int(&blk->sec_int, &header[26]);
    short2int(&blk->sec_frac, &header[28], swap);
    short2int(&blk->nsamps, &header[30], swap);
    short2int(&blk->rate_f, &header[32], swap);
    short2int(&blk->rate_m, &header[34], swap);
    char2int(&blk->activity, &header[36]);
    char2int(&blk->io_flags, &header[37]);
    char2int(&blk->quality, &header[38]);
    char2int(&blk->blks_fol, &header[39]);
    int2int(&blk->time_cor, &header[40], swap);
    short2int(&blk->beg_data, &header[44], swap);
    short2int(&blk->beg_blks, &header[46], swap);
}

} // namespace quarry
