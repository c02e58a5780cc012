// Steim level 1 compression: differences of 8, 16 and 32 bits.
#pragma once

#include <cstdint>

namespace quarry {

// A Decoder (decode/sample_cursor.h). Reads at most the `nbytes` at `data`. Always stores `nsamples` values:
// a sample that the data area lacks is zero. Returns 0, or -1 with a complaint if samples are missing.
// Differences beyond `nsamples` are dropped without a message.
std::int32_t decode_steim(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

} // namespace quarry
