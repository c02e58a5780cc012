// SPDX-License-Identifier: Apache-2.0
#include "blockette/sdblknam.h"
#include "listing/pbrief.h"
#include "state.h"

namespace quarry {

void list_050(LineBuffer& out, const blk_050_t* blk) {
    print_line<
        "B%03i %3i %4s %2s (%10.6f,%10.6f) %6.1fm @ '%s' NetId#%5i Long:%04i Word:%02i Order  Start:%20s End:%20s Update:%c <%s>\n">(
        out, blk->type, blk->length, blk->station, blk->network_code, blk->lat, blk->lon, blk->elev,
        blk->name, blk->net_id, blk->long_order, blk->word_order, blk->start_date, blk->end_date, blk->update,
        sdblknam(blk->type));
}

void list_051(LineBuffer& out, const blk_051_t* blk) {
    print_line<"B%03i %3i Start:%20s End:%20s Id#%4i Level#%6i <%s>\n">(
        out, blk->type, blk->length, blk->beg_time, blk->end_time, blk->comment_key, blk->comment_level,
        sdblknam(blk->type));
}

namespace {

const char* dictionary_text(const List<std::string>& dictionary, int code) {
    const std::string* text = dictionary.get(code);
    return text != nullptr ? text->c_str() : "";
}

void list_052_short(LineBuffer& out, const blk_052_t* blk) {
    const char* instrument = dictionary_text(Tbl_033, blk->instr_id);
    const char* signal_units = dictionary_text(Tbl_034, blk->units_signal);
    dictionary_text(Tbl_034, blk->units_cal); // looked up like the others, not shown
    print_line<"B%03d %3s %-2s %s %s %6.2fm  (%6.2f,%6.2f) %6.2fsps  %20s to %20s '%s'\n">(
        out, blk->type, blk->chan_id, blk->loc_id, instrument, signal_units, blk->depth, blk->azimuth,
        blk->dip, blk->sample_rate, blk->start_date, blk->end_date, blk->comment);
}

} // namespace

void list_052(LineBuffer& out, const blk_052_t* blk) {
    if (Simplify != 0) {
        list_052_short(out, blk);
        return;
    }
    print_line<
        "B%03i %3i Loc:%2s Chan:%3s Sub#%4i Instr#%3i SigUnits#%3i CalUnits#%3i (%6.2f,%6.2f) %6.2fm  Depth:%6.2fm  Az:%6.2f Dip:%6.2f DataFmt#%4i RecLen:%2i Samprate:%6.2fhz  ClkDrift:%6.2fs Flags:'%s' Start:%20s End:%20s Update:%c '%s' <%s>\n">(
        out, blk->type, blk->length, blk->loc_id, blk->chan_id, blk->subchan_id, blk->instr_id,
        blk->units_signal, blk->units_cal, blk->lat, blk->lon, blk->elev, blk->depth, blk->azimuth, blk->dip,
        blk->format_id, blk->record_length, blk->sample_rate, blk->max_drift, blk->chan_flags,
        blk->start_date, blk->end_date, blk->update, blk->comment, sdblknam(blk->type));
}

} // namespace quarry
