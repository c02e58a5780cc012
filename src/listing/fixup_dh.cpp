#include "listing/fixup_dh.h"

#include "listing/seed_utl.h"
#include "platform/calendar.h"
#include "platform/message_log.h"
#include "platform/text.h"
#include "state.h"

#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

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

// A row of table seedformat.
struct FormatRow {
    char sta[6];
    char chan[4];
    double start; // epoch seconds
    double end;
    char format[51];
};

// The rows of the table and where those of a channel stand among them, kept for the whole run.
std::vector<FormatRow> format_rows;
std::map<std::string, std::vector<std::size_t>> rows_of_channel;

// The row used last: mostly the next record of the channel needs it too.
FormatRow last_row{};

std::string channel_key(const char* sta, const char* chan) {
    return std::string(sta) + ":" + chan;
}

FormatRow read_format_row(StorePointer at) {
    FormatRow row{};
    char start[23];
    char end[23];
    store_get_fields(at, {{"sta", row.sta},
                          {"chan", row.chan},
                          {"seedstart", start},
                          {"seedend", end},
                          {"seedformat", row.format}});
    seed2epoch(member_text(start), &row.start);
    seed2epoch(member_text(end), &row.end);
    return row;
}

void read_format_table() {
    StorePointer table = store_lookup(Db, "seedformat");
    const std::int64_t count = store_query(table, StoreQuery::record_count);
    for (table.record = 0; table.record < count; ++table.record) {
        const FormatRow row = read_format_row(table);
        rows_of_channel[channel_key(row.sta, row.chan)].push_back(format_rows.size());
        format_rows.push_back(row);
    }
}

// An end before 1970 counts as open.
bool describes(const FormatRow& row, const blk_dh_t& header) {
    return std::strcmp(row.sta, header.stn_id) == 0 && std::strcmp(row.chan, header.chan_id) == 0 &&
           row.start <= header.epoch && (header.epoch <= row.end || row.end < 0);
}

// Puts the first row that describes the header into last_row; if no row does, the table's last row.
bool find_format_row(const blk_dh_t& header) {
    if (format_rows.empty())
        read_format_table();
    if (describes(last_row, header))
        return true;
    if (const auto rows = rows_of_channel.find(channel_key(header.stn_id, header.chan_id));
        rows != rows_of_channel.end())
        for (const std::size_t row : rows->second)
            if (describes(format_rows[row], header)) {
                last_row = format_rows[row];
                return true;
            }
    if (!format_rows.empty())
        last_row = format_rows.back();
    return false;
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

void complete_header(blk_dh_t* header, const SortedSet<rec_len_t>& rec_list) {
    fix_dh(header, 0, 0);
    if ((header->activity & correction_applied) == 0)
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
    if (find_format_row(*header))
        copy_text(header->format, member_text(last_row.format));
    if (header->format[0] == '\0')
        log_complain(0, "No data format for '%s', '%s' at time %s (file #%d)\n", header->stn_id,
                     header->chan_id, header->start_time, Tapefile);
}

} // namespace quarry
