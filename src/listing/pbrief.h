// SPDX-License-Identifier: Apache-2.0
// The listing: one line, sometimes with indented detail lines, for every blockette and data record, and the
// volume and station lines of the summary.
//
// Other programs read these lines, so their formats never change, not even by a blank. A printer `list_NAME`
// appends the lines of its record to a buffer and changes nothing else; `pbrief_NAME` writes them to a
// stream.
#pragma once

#include "blockette/data_header.h"
#include "blockette/response.h"
#include "blockette/station.h"
#include "blockette/timespan.h"
#include "blockette/types.h"
#include "blockette/volume.h"

#include "platform/line_format.h"

#include <cstdio>

namespace quarry {

// Lists the record of the given type. For a type without a printer the line says so, and the record is not
// read. pbrief_blk also flushes its stream.
void list_blk(LineBuffer& out, const void* blk, int blk_type);
void pbrief_blk(std::FILE* stream, const void* blk, int blk_type);

#define QUARRY_DECLARE_PRINTER(TYPE, NAME)                                                                   \
    void list_##NAME(LineBuffer& out, const blk_##NAME##_t* blk);                                            \
    void pbrief_##NAME(std::FILE* stream, const blk_##NAME##_t* blk);
QUARRY_BLOCKETTE_TYPES(QUARRY_DECLARE_PRINTER)
#undef QUARRY_DECLARE_PRINTER

// The volume line (with the number of the tape file) and the station list of the summary.
void list_summary_010(LineBuffer& out, const blk_010_t* blk);
void list_summary_011(LineBuffer& out, const blk_011_t* blk);
void summary_010(std::FILE* stream, const blk_010_t* blk);
void summary_011(std::FILE* stream, const blk_011_t* blk);

} // namespace quarry
