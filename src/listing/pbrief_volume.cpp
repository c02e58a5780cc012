#include "blockette/sdblknam.h"
#include "listing/pbrief.h"
#include "state.h"

#include <algorithm>

namespace quarry {

void pbrief_010(std::FILE* stream, const blk_010_t* blk) {
    std::fprintf(stream, "B%03i %3i Version %.1f  LogRecLen %2i  Start:%20s End:%20s <%s>\n", blk->type,
                 blk->length, blk->version, blk->rec_len, blk->beg_time, blk->end_time, sdblknam(blk->type));
}

void pbrief_011(std::FILE* stream, const blk_011_t* blk) {
    std::fprintf(stream, "B%03i %3i %i Stations  <%s>\n", blk->type, blk->length, blk->num_stn,
                 sdblknam(blk->type));
    for (std::size_t i = 0; i < blk->stn_id.size(); ++i)
        std::fprintf(stream, "\t%3i %5s %6d\n", static_cast<int>(i), blk->stn_id[i].data(), blk->seq_num[i]);
}

void pbrief_012(std::FILE* stream, const blk_012_t* blk) {
    std::fprintf(stream, "B%03i %3i #spans %4i <%s>\n", blk->type, blk->length, blk->num_span,
                 sdblknam(blk->type));
    for (int i = 0; i < std::min(blk->num_span, max_spans); ++i)
        std::fprintf(stream, "\t%5i Start:%20s End:%20s seq#%6i\n", i, blk->beg_span[i], blk->end_span[i],
                     blk->seq_num[i]);
}

void pbrief_030(std::FILE* stream, const blk_030_t* blk) {
    std::fprintf(stream, "B%03i %3i %-50s id#%4i type#%3i %5i keys <%s>\n", blk->type, blk->length, blk->name,
                 blk->format_id, blk->data_type, blk->num_keys, sdblknam(blk->type));
    for (std::size_t i = 0; i < blk->decode_key.size(); ++i)
        std::fprintf(stream, "\t%2i %20s \n", static_cast<int>(i), blk->decode_key[i].data());
}

void pbrief_031(std::FILE* stream, const blk_031_t* blk) {
    std::fprintf(stream, "B%03i %3i Id#%4i Class:%c units:%3i '%s' <%s>\n", blk->type, blk->length,
                 blk->comment_id, blk->class_code, blk->units, blk->comment, sdblknam(blk->type));
}

void pbrief_032(std::FILE* stream, const blk_032_t* blk) {
    std::fprintf(stream, "B%03i %3i Id#%2i Author:%s Catalog/Date:%s Publisher:%s <%s>\n", blk->type,
                 blk->length, blk->source_id, blk->author, blk->catalog, blk->publisher, sdblknam(blk->type));
}

void pbrief_033(std::FILE* stream, const blk_033_t* blk) {
    std::fprintf(stream, "B%03i %3i Id#%3i '%s' <%s>\n", blk->type, blk->length, blk->abbrev_id, blk->abbrev,
                 sdblknam(blk->type));
}

void pbrief_034(std::FILE* stream, const blk_034_t* blk) {
    std::fprintf(stream, "B%03i %3i Id#%3i Unit:'%s' Desc:'%s' <%s>\n", blk->type, blk->length, blk->unit_id,
                 blk->unit_name, blk->unit_desc, sdblknam(blk->type));
}

void summary_010(std::FILE* stream, const blk_010_t* blk) {
    std::fprintf(stream,
                 "File #%d: SEED Volume Version %.1f  Start:%20s End:%20s Written: %s by '%s': '%s'\n",
                 Tapefile, blk->version, blk->beg_time, blk->end_time, blk->volume_time, blk->originating_org,
                 blk->label);
}

void summary_011(std::FILE* stream, const blk_011_t* blk) {
    constexpr std::size_t stations_a_line = 12;
    std::fputs("Stations:", stream);
    for (std::size_t i = 0; i < blk->stn_id.size(); ++i)
        std::fprintf(stream, "%s%5s ", i % stations_a_line == 0 ? "\n\t" : "", blk->stn_id[i].data());
    std::fputs("\n", stream);
}

} // namespace quarry
