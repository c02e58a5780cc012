// SPDX-License-Identifier: Apache-2.0
#include "blockette/data_header.h"

#include "decode/data_record.h"
#include "platform/bytes.h"
#include "platform/text.h"

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
    *dest = load_swapped<std::int32_t>(src, swap != 0);
}

void short2int(int* dest, const char* src, int swap) {
    *dest = load_swapped<std::int16_t>(src, swap != 0);
}

void char2int(int* dest, const char* src) {
    *dest = load<signed char>(src); // NOLINT(bugprone-signed-char-misuse,cert-str34-c): its sign counts
}

namespace {

// The record's members are signed, the flag bytes too.
int widened(std::uint16_t value) {
    return static_cast<std::int16_t>(value);
}
int widened(std::uint8_t value) {
    return static_cast<std::int8_t>(value);
}

// A code of the header without the white space around it. (What scan_str gives; each record has four.)
template <std::size_t capacity>
void set_code(char (&member)[capacity], std::string_view code) {
    const char* begin = code.data();
    const char* end = std::find(begin, begin + code.size(), '\0');
    while (begin != end && is_white(*begin))
        ++begin;
    while (begin != end && is_white(end[-1]))
        --end;
    const auto length = std::min(static_cast<std::size_t>(end - begin), capacity - 1);
    std::copy_n(begin, length, member);
    member[length] = '\0';
}

void set_binary_fields(blk_dh_t* blk, const FixedHeader& header) {
    blk->year = widened(header.year);
    blk->doy = widened(header.day_of_year);
    blk->hour = widened(header.hour);
    blk->minutes = widened(header.minute);
    blk->sec_int = widened(header.second);
    blk->sec_frac = widened(header.fraction);
    blk->nsamps = widened(header.samples);
    blk->rate_f = header.rate_factor;
    blk->rate_m = header.rate_multiplier;
    blk->activity = widened(header.activity_flags);
    blk->io_flags = widened(header.io_flags);
    blk->quality = widened(header.quality_flags);
    blk->blks_fol = widened(header.blockettes);
    blk->time_cor = header.time_correction;
    blk->beg_data = widened(header.data_offset);
    blk->beg_blks = widened(header.blockette_offset);
}

} // namespace

void parse_dh(blk_dh_t* blk, std::string_view buff) {
    std::array<char, fixed_header_size> header{}; // what the text lacks stays 0
    std::copy_n(buff.begin(), std::min(buff.size(), header.size() - logical_header_size),
                header.begin() + logical_header_size);
    const RecordCodes codes = codes_in(header);
    set_code(blk->stn_id, codes.station);
    set_code(blk->loc_id, codes.location);
    set_code(blk->chan_id, codes.channel);
    set_code(blk->network_code, codes.network);
    const bool swapped = is_swapped_by_year(header);
    blk->byteswap = swapped ? -1 : 0;
    set_binary_fields(blk, decode_fixed_header(header, swapped));
}

} // namespace quarry
