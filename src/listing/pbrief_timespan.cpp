// SPDX-License-Identifier: Apache-2.0
#include "blockette/sdblknam.h"
#include "listing/element_lines.h"
#include "listing/pbrief.h"

#include <algorithm>

namespace quarry {

void list_070(LineBuffer& out, const blk_070_t* blk) {
    print_line<"B%03i %3i Type:%c Start:%20s End:%20s <%s>\n">(
        out, blk->type, blk->length, blk->span_flag, blk->beg_time, blk->end_time, sdblknam(blk->type));
}

void list_071(LineBuffer& out, const blk_071_t* blk) {
    print_line<
        "B%03i %d Time:%20s Id#%5i (%6.2f,%6.2f) Depth:%6.2fkm #:%i grn=%d srn=%d gregion='%s' <%s>\n">(
        out, blk->type, blk->length, blk->origin_time, blk->source_id, blk->lat, blk->lon, blk->depth,
        blk->num_mags, blk->grn, blk->srn, blk->gregion, sdblknam(blk->type));
    for (int i = 0; i < std::min(blk->num_mags, max_magnitudes); ++i)
        print_line<"\t%2d Magnitude:%6.2f Source:%2i '%s'\n">(out, i, blk->mag[i], blk->mag_source[i],
                                                              blk->mag_type[i]);
}

void list_072(LineBuffer& out, const blk_072_t* blk) {
    print_line<
        "B%03i %3i %5s Loc:%2s Chan:%3s Time:%20s Amp:%6.2f Period:%6.2f S/N:%6.2f Phase:'%s' source=%d net=%s <%s>\n">(
        out, blk->type, blk->length, blk->stn_id, blk->loc_id, blk->chan_id, blk->arr_time, blk->amp,
        blk->period, blk->snr, blk->phase, blk->source, blk->network_code, sdblknam(blk->type));
}

namespace {

// What the line of a segment says behind its number.
void print_segment(LineBuffer& out, const blk_073_t* blk, std::size_t i) {
    print_line<" of %5i Sta: %5s Loc: %2s Chan: %3s Start:%20s seq# %5i subseq# %5i <%s>\n">(
        out, blk->num_segs, blk->stn_id[i], blk->loc_id[i], blk->chan_id[i], blk->series_start_time[i],
        blk->seq_num[i], blk->sub_seq_num[i], sdblknam(blk->type));
}

} // namespace

void list_073(LineBuffer& out, const blk_073_t* blk) {
    const auto segments = static_cast<std::size_t>(std::clamp(blk->num_segs, 0, max_segments));
    const std::size_t filled = filled_elements(segments, blk->stn_id, blk->loc_id, blk->chan_id,
                                               blk->series_start_time, blk->seq_num, blk->sub_seq_num);
    LineBuffer head;
    print_line<"B%03i %3i Segment #">(head, blk->type, blk->length);
    LineBuffer segment;
    segment.set_for_terminal(out.is_for_terminal());
    for (std::size_t i = 0; i < segments; ++i) {
        if (i <= filled) { // the others are as this one
            segment.clear();
            print_segment(segment, blk, i);
        }
        out.append(head.text());
        print_line<"%5i">(out, static_cast<int>(i));
        out.append(segment.text());
    }
}

void list_074(LineBuffer& out, const blk_074_t* blk) {
    print_line<
        "B%03i %3i Net: %2s Sta: %5s Loc: %2s Chan: %3s Start:%20s seq# %5i subseq# %5i End:%20s seq# %5i subseq# %5i #repeats %5i <%s>\n">(
        out, blk->type, blk->length, blk->network_code, blk->stn_id, blk->loc_id, blk->chan_id,
        blk->series_start_time, blk->first_seq_num, blk->first_sub_seq_num, blk->series_end_time,
        blk->last_seq_num, blk->last_sub_seq_num, blk->num_repeats, sdblknam(blk->type));
    for (int i = 0; i < std::min(blk->num_repeats, max_repeats); ++i)
        print_line<"\t%3i Start:%20s seq# %5i subseq# %5i\n">(out, i, blk->rec_start_time[i],
                                                              blk->req_seq_num[i], blk->req_sub_seq_num[i]);
}

} // namespace quarry
