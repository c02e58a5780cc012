// The listing: one line, sometimes with indented detail lines, for every blockette and data record, and the
// volume and station lines of the summary.
//
// Other programs read these lines, so their formats never change, not even by a blank. Every printer writes
// its record to the caller's stream and changes nothing.
#pragma once

#include "blockette/data_header.h"
#include "blockette/response.h"
#include "blockette/station.h"
#include "blockette/timespan.h"
#include "blockette/types.h"
#include "blockette/volume.h"

#include <cstdio>

namespace quarry {

// Lists the record of the given type and flushes the stream. For a type without a printer it prints a line
// that says so and does not read the record.
void pbrief_blk(std::FILE* stream, const void* blk, int blk_type);

#define QUARRY_DECLARE_PRINTER(TYPE, NAME) void pbrief_##NAME(std::FILE* stream, const blk_##NAME##_t* blk);
QUARRY_BLOCKETTE_TYPES(QUARRY_DECLARE_PRINTER)
#undef QUARRY_DECLARE_PRINTER

// The volume line (with the number of the tape file) and the station list of the summary.
void summary_010(std::FILE* stream, const blk_010_t* blk);
void summary_011(std::FILE* stream, const blk_011_t* blk);

} // namespace quarry
