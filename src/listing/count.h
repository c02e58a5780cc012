// SPDX-License-Identifier: Apache-2.0
// Counting for the listing: the tally of the current input file, and its summary.
#pragma once

#include "blockette/tally.h"

#include <cstdint>
#include <cstdio>

namespace quarry {

// Starts the tally of the current file anew. Returns 0.
int init_count();

// Counts the record (null for an unknown type) with its size in the tally of the current file, and prints the
// volume line of a blockette 010 and the station list of an 011 on standard output. A type without an entry
// of its own is reported and counted in number only. Returns 0.
int count_blk(const void* record, int type);

// Prints the summary of the current file, of `size` bytes, on standard output. Returns 0.
int summary(int tapefile, std::int64_t size);

// Prints the summary of a tape file of `size` bytes; nothing if the tally holds no blockette.
void print_summary(std::FILE* stream, const Tally& tally, int tapefile, std::int64_t size);

} // namespace quarry
