#include "listing/fixup_dh.h"

#include "listing/seed_utl.h"
#include "platform/calendar.h"
#include "platform/message_log.h"
#include "platform/text.h"
#include "state.h"

#include <cstdio>
#include <cstring>

namespace quarry {

namespace {

constexpr int default_record_length = 4096;
constexpr int correction_applied = 0x02; // activity flag

double sample_rate(int factor, int multiplier) {
    const double f = factor;
    const double m = multiplier;
    if (factor > 0)
        return multiplier > 0 ? f * m : -f / m;
    return multiplier > 0 ? -m / f : 1 / (f * m);
}

// The row of table seedformat read last. It mostly serves the next record of the channel too, so it is kept
// for the whole run, as is the table.
struct FormatRow {
    char sta[6];
    char chan[4];
    double start;
    double end;
    char format[51];
};
FormatRow last_row{};
StorePointer format_table{};
std::int64_t format_rows = 0;

void read_format_row(std::int64_t record) {
    char start[23];
    char end[23];
    format_table.record = record;
    store_get_fields(format_table, {{"sta", last_row.sta},
                                    {"chan", last_row.chan},
                                    {"seedstart", start},
                                    {"seedend", end},
                                    {"seedformat", last_row.format}});
    seed2epoch(member_text(start), &last_row.start);
    seed2epoch(member_text(end), &last_row.end);
}

// An end before 1970 counts as open.
bool last_row_describes(const blk_dh_t& header) {
    return std::strcmp(last_row.sta, header.stn_id) == 0 && std::strcmp(last_row.chan, header.chan_id) == 0 &&
           last_row.start <= header.epoch && (header.epoch <= last_row.end || last_row.end < 0);
}

bool find_format_row(const blk_dh_t& header) {
    if (format_rows == 0) {
        format_table = store_lookup(Db, "seedformat");
        format_rows = store_query(format_table, StoreQuery::record_count);
    }
    bool found = last_row_describes(header);
    for (std::int64_t record = 0; !found && record < format_rows; ++record) {
        read_format_row(record);
        found = last_row_describes(header);
    }
    return found;
}

} // namespace

int word_comp(int value) {
    return (value & 0x8000) != 0 ? static_cast<int>(static_cast<unsigned>(value) | 0xFFFF0000U) : value;
}

void fix_dh(blk_dh_t* header, int /*long_order*/, int /*word_order*/) {
    header->rate_f = word_comp(header->rate_f);
    header->rate_m = word_comp(header->rate_m);
    if (header->rate_f == 0 || header->rate_m == 0) {
        header->rate_f = 0;
        header->rate_m = 0;
        header->samp_rate = 0.0;
    } else {
        header->samp_rate = sample_rate(header->rate_f, header->rate_m);
    }
    std::snprintf(header->start_time, sizeof header->start_time, "%04i,%03i,%02i:%02i:%02i.%04i",
                  header->year, header->doy, header->hour, header->minutes, header->sec_int,
                  header->sec_frac);
}

void fixup_dh(blk_dh_t* header, const read_handle_t* handle) {
    fix_dh(header, 0, 0);
    if ((header->activity & correction_applied) == 0)
        header->sec_frac = static_cast<int>(static_cast<unsigned>(header->sec_frac) +
                                            static_cast<unsigned>(header->time_cor));
    header->epoch = human_to_epoch(header->year, header->doy, header->hour, header->minutes,
                                   header->sec_int + header->sec_frac / 10000.0);
    header->format[0] = '\0';
    if (lookup_rec_list(handle->rec_list, header) != 0)
        return;
    header->length = default_record_length;
    if (Db == store_invalid())
        return;
    if (find_format_row(*header))
        copy_text(header->format, member_text(last_row.format));
    if (header->format[0] == '\0')
        log_complain(0, "No data format for '%s', '%s' at time %s (file #%d)\n", header->stn_id,
                     header->chan_id, header->start_time, Tapefile);
}

} // namespace quarry
