// SPDX-License-Identifier: Apache-2.0
// Every blockette type by its number: parsing, release, size. The types are listed in blockette/types.h.
//
// A record is a plain pointer with its type number, -1 for the fixed header of a data record. The caller of
// parse_blk owns the record and releases it with free_blk.
#pragma once

#include <memory>
#include <string_view>

namespace quarry {

// A new record of the type, filled from its text (from the blockette's type field on; for type -1 from byte 8
// of the data record on). Clears Bad_blkflag first. An unknown type is reported and gives null.
void* parse_blk(std::string_view text, int blk_type);

// Releases a record of the type; an unknown type is reported and nothing is released.
void free_blk(void* blk, int blk_type);

// Size of the blockette in bytes as it stood in the volume: its declared length, for a data record its full
// record length. An unknown type is reported and gives 0; its record is not read.
int block_size(const void* blk, int blk_type);

// Owns a record.
struct BlocketteRelease {
    int type;
    void operator()(void* blk) const { free_blk(blk, type); }
};
using BlockettePointer = std::unique_ptr<void, BlocketteRelease>;

} // namespace quarry
