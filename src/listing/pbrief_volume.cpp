// SPDX-License-Identifier: Apache-2.0
#include "blockette/sdblknam.h"
#include "listing/element_lines.h"
#include "listing/pbrief.h"
#include "state.h"

#include <algorithm>

namespace quarry {

void list_010(LineBuffer& out, const blk_010_t* blk) {
    print_line<"B%03i %3i Version %.1f  LogRecLen %2i  Start:%20s End:%20s <%s>\n">(
        out, blk->type, blk->length, blk->version, blk->rec_len, blk->beg_time, blk->end_time,
        sdblknam(blk->type));
}

void list_011(LineBuffer& out, const blk_011_t* blk) {
    print_line<"B%03i %3i %i Stations  <%s>\n">(out, blk->type, blk->length, blk->num_stn,
                                                sdblknam(blk->type));
    const std::size_t filled = filled_elements(blk->stn_id.size(), blk->stn_id, blk->seq_num);
    for (std::size_t i = 0; i < filled; ++i)
        print_line<"\t%3i %5s %6d\n">(out, static_cast<int>(i), blk->stn_id[i].data(), blk->seq_num[i]);
    print_numbered<"\t%3i %5s %6d\n", 1000>(out, filled, blk->stn_id.size(), "", 0);
}

void list_012(LineBuffer& out, const blk_012_t* blk) {
    print_line<"B%03i %3i #spans %4i <%s>\n">(out, blk->type, blk->length, blk->num_span,
                                              sdblknam(blk->type));
    const auto spans = static_cast<std::size_t>(std::clamp(blk->num_span, 0, max_spans));
    const std::size_t filled = filled_elements(spans, blk->beg_span, blk->end_span, blk->seq_num);
    for (std::size_t i = 0; i < filled; ++i)
        print_line<"\t%5i Start:%20s End:%20s seq#%6i\n">(out, static_cast<int>(i), blk->beg_span[i],
                                                          blk->end_span[i], blk->seq_num[i]);
    print_numbered<"\t%5i Start:%20s End:%20s seq#%6i\n", max_spans>(out, filled, spans, "", "", 0);
}

void list_030(LineBuffer& out, const blk_030_t* blk) {
    print_line<"B%03i %3i %-50s id#%4i type#%3i %5i keys <%s>\n">(out, blk->type, blk->length, blk->name,
                                                                  blk->format_id, blk->data_type,
                                                                  blk->num_keys, sdblknam(blk->type));
    std::size_t filled = blk->decode_key.size();
    while (filled > 0 && blk->decode_key[filled - 1].front() == '\0')
        --filled;
    for (std::size_t i = 0; i < filled; ++i)
        print_line<"\t%2i %20s \n">(out, static_cast<int>(i), blk->decode_key[i].data());
    print_numbered<"\t%2i %20s \n", 100>(out, filled, blk->decode_key.size(), "");
}

void list_031(LineBuffer& out, const blk_031_t* blk) {
    print_line<"B%03i %3i Id#%4i Class:%c units:%3i '%s' <%s>\n">(
        out, blk->type, blk->length, blk->comment_id, blk->class_code, blk->units, blk->comment,
        sdblknam(blk->type));
}

void list_032(LineBuffer& out, const blk_032_t* blk) {
    print_line<"B%03i %3i Id#%2i Author:%s Catalog/Date:%s Publisher:%s <%s>\n">(
        out, blk->type, blk->length, blk->source_id, blk->author, blk->catalog, blk->publisher,
        sdblknam(blk->type));
}

void list_033(LineBuffer& out, const blk_033_t* blk) {
    print_line<"B%03i %3i Id#%3i '%s' <%s>\n">(out, blk->type, blk->length, blk->abbrev_id, blk->abbrev,
                                               sdblknam(blk->type));
}

void list_034(LineBuffer& out, const blk_034_t* blk) {
    print_line<"B%03i %3i Id#%3i Unit:'%s' Desc:'%s' <%s>\n">(
        out, blk->type, blk->length, blk->unit_id, blk->unit_name, blk->unit_desc, sdblknam(blk->type));
}

void list_summary_010(LineBuffer& out, const blk_010_t* blk) {
    print_line<"File #%d: SEED Volume Version %.1f  Start:%20s End:%20s Written: %s by '%s': '%s'\n">(
        out, Tapefile, blk->version, blk->beg_time, blk->end_time, blk->volume_time, blk->originating_org,
        blk->label);
}

void list_summary_011(LineBuffer& out, const blk_011_t* blk) {
    constexpr std::size_t stations_a_line = 12;
    out.append("Stations:");
    const std::size_t filled = filled_elements(blk->stn_id.size(), blk->stn_id);
    for (std::size_t i = 0; i < blk->stn_id.size(); ++i) {
        out.append(i % stations_a_line == 0 ? "\n\t" : "");
        if (i < filled)
            print_line<"%5s ">(out, blk->stn_id[i].data());
        else
            out.append("      ");
    }
    out.append("\n");
}

} // namespace quarry
