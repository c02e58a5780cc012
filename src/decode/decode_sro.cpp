#include "decode/decode_sro.h"

#include "decode/plain_words.h"

namespace quarry {

// bits 15 - 12  gain, which divides by its power of two
// bits 11 - 0   mantissa, two's complement, in units of 2^10
// Mantissa and power of two are exact as floats, and so is their product.
std::int32_t decode_sro(char* data, std::int32_t nsamples, std::int32_t, int byteswap) {
    return decode_words<std::uint16_t>(data, nsamples, byteswap, [](std::uint16_t word) {
        const int gain = word >> 12;
        const int mantissa = ((word & 0xFFF) ^ 0x800) - 0x800;
        return static_cast<float>(mantissa) * power_of_two(10 - gain);
    });
}

} // namespace quarry
