// The gain-ranged words of the CDSN stations.
#pragma once

#include <cstdint>

namespace quarry {

// A Decoder (decode/sample_cursor.h). Reads 2 * `nsamples` bytes and ignores `nbytes`: the caller makes sure
// that `data` holds them. Returns 0.
std::int32_t decode_cdsn(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

} // namespace quarry
