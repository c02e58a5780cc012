// SPDX-License-Identifier: Apache-2.0
#include "listing/fixup_dh.h"

#include "decode/data_record.h"
#include "listing/format_rows.h"
#include "platform/calendar.h"
#include "platform/digits.h"
#include "platform/line_format.h"
#include "platform/message_log.h"
#include "platform/text.h"
#include "state.h"

#include <cstddef>
#include <span>

namespace quarry {

namespace {

constexpr int default_record_length = 4096;

// Whether the start time has the fields that nearly every record has: not negative, no wider than the format
// asks for.
bool has_usual_start_time(const blk_dh_t& header) {
    const auto fits = [](int value, unsigned limit) { return static_cast<unsigned>(value) < limit; };
    return fits(header.year, 10000) && fits(header.doy, 1000) && fits(header.hour, 100) &&
           fits(header.minutes, 100) && fits(header.sec_int, 100) && fits(header.sec_frac, 10000);
}

// Writes `width` digits and the character that follows them. Returns what is behind.
template <std::size_t width>
char* write_part(char* text, int value, char after) {
    write_digits(std::span<char, width>(text, width), static_cast<unsigned>(value));
    text[width] = after;
    return text + width + 1;
}

// What the format below gives for a usual start time, in a fraction of the time.
void write_usual_start_time(blk_dh_t* header) {
    static_assert(sizeof header->start_time >= sizeof "YYYY,DDD,HH:MM:SS.FFFF");
    char* text = header->start_time;
    text = write_part<4>(text, header->year, ',');
    text = write_part<3>(text, header->doy, ',');
    text = write_part<2>(text, header->hour, ':');
    text = write_part<2>(text, header->minutes, ':');
    text = write_part<2>(text, header->sec_int, '.');
    write_part<4>(text, header->sec_frac, '\0');
}

// Kept for the whole run; made when first needed, because it allocates.
FormatRows& format_rows() {
    static FormatRows rows;
    return rows;
}

} // namespace

int word_comp(int value) {
    return (value & 0x8000) != 0 ? static_cast<int>(static_cast<unsigned>(value) | 0xFFFF0000U) : value;
}

void fix_dh(blk_dh_t* header, int /*long_order*/, int /*word_order*/) {
    header->rate_f = word_comp(header->rate_f);
    header->rate_m = word_comp(header->rate_m);
    if (header->rate_f == 0 || header->rate_m == 0)
        header->rate_f = header->rate_m = 0;
    header->samp_rate = sample_rate(header->rate_f, header->rate_m);
    if (has_usual_start_time(*header))
        write_usual_start_time(header);
    else
        print_text<"%04i,%03i,%02i:%02i:%02i.%04i">(header->start_time, header->year, header->doy,
                                                    header->hour, header->minutes, header->sec_int,
                                                    header->sec_frac);
}

void complete_header(blk_dh_t* header, const SortedSet<rec_len_t>& rec_list) {
    fix_dh(header, 0, 0);
    if ((header->activity & correction_is_applied) == 0)
        header->sec_frac = static_cast<int>(static_cast<unsigned>(header->sec_frac) +
                                            static_cast<unsigned>(header->time_cor));
    header->epoch = human_to_epoch(header->year, header->doy, header->hour, header->minutes,
                                   header->sec_int + header->sec_frac / 10000.0);
    header->format[0] = '\0';
    if (lookup_rec_list(rec_list, header) != 0)
        return;
    header->length = default_record_length;
    if (Db == store_invalid())
        return;
    copy_text(header->format, format_rows().find(Db, member_text(header->stn_id),
                                                 member_text(header->chan_id), header->epoch));
    if (header->format[0] == '\0')
        log_complain(0, "No data format for '%s', '%s' at time %s (file #%d)\n", header->stn_id,
                     header->chan_id, header->start_time, Tapefile);
}

} // namespace quarry
