// The multiplexed words of the Geoscope stations: three components for each sample instant.
#pragma once

#include <cstdint>

namespace quarry {

// Decoders (decode/sample_cursor.h) that lay the components out one behind the other: component j of instant
// i goes to 3 * `nsamples` floats at the cursor, at index j * `nsamples` + i. The cursor moves on by
// `nsamples` floats only. They trust `nsamples`, whatever `nbytes` says: three units an instant are read.
// Return 0.
//   geo1  16 bits, of them 3 bits gain
//   geo2  3 bytes; the record's bytes stay as they are
//   geo3  16 bits, of them 4 bits gain
std::int32_t decode_geo1(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);
std::int32_t decode_geo2(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);
std::int32_t decode_geo3(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

// All three, by the number in their name; any other number decodes nothing and returns -1.
std::int32_t decode_geoscope(char* raw, std::int32_t nsamples, std::int32_t nbytes, int byteswap, int code);

} // namespace quarry
