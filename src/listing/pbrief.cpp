// SPDX-License-Identifier: Apache-2.0
#include "listing/pbrief.h"

#include "platform/standard_output.h"

namespace quarry {

void list_blk(LineBuffer& out, const void* blk, int blk_type) {
    switch (blk_type) {
#define QUARRY_PRINT_CASE(TYPE, NAME)                                                                        \
    case TYPE:                                                                                               \
        list_##NAME(out, static_cast<const blk_##NAME##_t*>(blk));                                           \
        break;
        QUARRY_BLOCKETTE_TYPES(QUARRY_PRINT_CASE)
#undef QUARRY_PRINT_CASE
    default:
        print_line<"Unknown blockette: %5i\n">(out, blk_type);
    }
}

void pbrief_blk(std::FILE* stream, const void* blk, int blk_type) {
    LineBuffer& out = line_for(stream);
    list_blk(out, blk, blk_type);
    write_line(stream, out);
    flush_output(stream);
}

#define QUARRY_DEFINE_PRINTER(TYPE, NAME)                                                                    \
    void pbrief_##NAME(std::FILE* stream, const blk_##NAME##_t* blk) {                                       \
        LineBuffer& out = line_for(stream);                                                                  \
        list_##NAME(out, blk);                                                                               \
        write_line(stream, out);                                                                             \
    }
QUARRY_BLOCKETTE_TYPES(QUARRY_DEFINE_PRINTER)
#undef QUARRY_DEFINE_PRINTER

void summary_010(std::FILE* stream, const blk_010_t* blk) {
    LineBuffer& out = line_for(stream);
    list_summary_010(out, blk);
    write_line(stream, out);
}

void summary_011(std::FILE* stream, const blk_011_t* blk) {
    LineBuffer& out = line_for(stream);
    list_summary_011(out, blk);
    write_line(stream, out);
}

void list_dh(LineBuffer& out, const blk_dh_t* blk) {
    print_line<
        "DATA Net: %2s Sta: %5s Loc: %2s Chan: %4s Start:%20s #samples: %5i sample rate factor: %5i multiplier: %5i Sample_rate: %10.5g Activity: %0x I/O: %0x Quality: %0x #blks after: %5i time correction: %5i first data byte: %5i first blockette: %5i <data blockette>\n">(
        out, blk->network_code, blk->stn_id, blk->loc_id, blk->chan_id, blk->start_time, blk->nsamps,
        blk->rate_f, blk->rate_m, blk->samp_rate, static_cast<unsigned>(blk->activity),
        static_cast<unsigned>(blk->io_flags), static_cast<unsigned>(blk->quality), blk->blks_fol,
        blk->time_cor, blk->beg_data, blk->beg_blks);
}

} // namespace quarry
