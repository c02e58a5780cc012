#include "decode/decode_cdsn.h"

#include "decode/plain_words.h"

namespace quarry {

// bits 15 - 14  gain code: multiply by 1, 4, 16 or 128
// bits 13 - 0   mantissa plus 8191 (not 8192)
// Mantissa, multiplier and product are exact as floats.
std::int32_t decode_cdsn(char* data, std::int32_t nsamples, std::int32_t, int byteswap) {
    return decode_words<std::uint16_t>(data, nsamples, byteswap, [](std::uint16_t word) {
        const int code = word >> 14;
        const int shift = code == 3 ? 7 : 2 * code;
        const int mantissa = (word & 0x3FFF) - 8191;
        return static_cast<float>(mantissa) * power_of_two(shift);
    });
}

} // namespace quarry
