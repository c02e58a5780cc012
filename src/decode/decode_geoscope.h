// The multiplexed words of the Geoscope stations: three components for each sample instant.
#pragma once

#include <cstdint>

namespace quarry {

// Decoders (decode/sample_cursor.h). They write all samples of the first component, then those of the second
// and the third: component j of instant i goes to index j * `nsamples` + i. The cursor moves on by `nsamples`
// floats only. They read three units for each instant and ignore `nbytes`: the caller makes sure that the
// data hold them. Return 0.
//   geo1  16 bits, of them 3 bits gain
//   geo2  3 bytes; the record's bytes stay as they are
//   geo3  16 bits, of them 4 bits gain
std::int32_t decode_geo1(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);
std::int32_t decode_geo2(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);
std::int32_t decode_geo3(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

// One of the three, by the number in its name. Any other number returns -1 and writes nothing.
std::int32_t decode_geoscope(char* raw, std::int32_t nsamples, std::int32_t nbytes, int byteswap, int code);

} // namespace quarry
