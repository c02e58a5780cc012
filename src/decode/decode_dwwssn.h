// Signed integers of 16 bits, as the DWWSSN stations and others record.
#pragma once

#include <cstdint>

namespace quarry {

// A Decoder (decode/sample_cursor.h). Reads 2 * `nsamples` bytes and ignores `nbytes`: the caller makes sure
// that `data` holds them. Returns 0.
std::int32_t decode_dwwssn(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

} // namespace quarry
