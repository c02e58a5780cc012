// SPDX-License-Identifier: Apache-2.0
// The values of gain-ranged words of 16 bits. All of them, and the steps to them, are exact as floats.
#pragma once

#include <bit>
#include <cstdint>

namespace quarry {

// 2 to the power of `exponent`, -126 to 127.
constexpr float power_of_two(int exponent) {
    return std::bit_cast<float>(static_cast<std::uint32_t>(exponent + 127) << 23);
}

// CDSN
//   bits 15 - 14  gain code: multiply by 1, 4, 16 or 128
//   bits 13 - 0   mantissa plus 8191 (not 8192)
struct ShiftedMantissa {
    int mantissa;
    int shift; // multiplies by its power of two
};
constexpr ShiftedMantissa cdsn_parts(std::uint16_t word) {
    const int code = word >> 14;
    return {(word & 0x3FFF) - 8191, code == 3 ? 7 : 2 * code};
}

// SRO
//   bits 15 - 12  gain, which divides by its power of two
//   bits 11 - 0   mantissa, two's complement, in units of 2^10
constexpr float sro_value(std::uint16_t word) {
    const int gain = word >> 12;
    const int mantissa = ((word & 0xFFF) ^ 0x800) - 0x800;
    return static_cast<float>(mantissa) * power_of_two(10 - gain);
}

// Geoscope
//   4-bit gain:   15 14 13 12 | 11 ... 0       3-bit gain:   15 | 14 13 12 | 11 ... 0
//                 gain        | mantissa              unused | gain     | mantissa
// The value is (mantissa - 2048) / 2^gain.
template <int GainBits>
constexpr float geoscope_value(std::uint16_t word) {
    const int gain = word >> 12 & ((1 << GainBits) - 1);
    const int mantissa = (word & 0xFFF) - 2048;
    return static_cast<float>(mantissa) * power_of_two(-gain);
}

} // namespace quarry
