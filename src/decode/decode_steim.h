// Steim level 1 compression: differences of 8, 16 and 32 bits.
#pragma once

#include <cstdint>

namespace quarry {

// A Decoder (decode/sample_cursor.h). Keeps to the `nbytes` at `data`. Always stores `nsamples` values: what
// the data area lacks is zero, complained of, and gives -1; differences beyond `nsamples` are dropped
// silently.
std::int32_t decode_steim(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

} // namespace quarry
