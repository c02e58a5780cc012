// Signed integers of 32 bits.
#pragma once

#include <cstdint>

namespace quarry {

// A Decoder (decode/sample_cursor.h). Reads 4 * `nsamples` bytes and ignores `nbytes`: the caller makes sure
// that `data` holds them. Returns 0.
std::int32_t decode_32bit(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

} // namespace quarry
