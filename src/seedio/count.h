// Counting: how many blockettes of each type an input file held, and how its bytes divide into parameter
// information, data and waste.
#pragma once

#include <cstdint>

namespace quarry {

// Starts a new count. Returns 0.
int init_count();

// Counts the record (null for an unknown type) with its size, and prints the volume line of a blockette 010
// and the station list of an 011 on standard output. Types below -1 or above 498 are complained of and
// counted in number only. Returns 0.
int count_blk(const void* record, int type);

// Prints the summary of a tape file of `size` bytes on standard output; nothing if no blockette was counted.
// Parameter information is the sum of the declared lengths of the control blockettes, data the full lengths
// of the data records, waste all else that was read. Returns 0.
int summary(int tapefile, std::int64_t size);

} // namespace quarry
