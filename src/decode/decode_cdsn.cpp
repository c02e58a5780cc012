// SPDX-License-Identifier: Apache-2.0
#include "quarry/decoders.h"

#include "decode/plain_words.h"
#include "decode/word_values.h"

namespace quarry {

std::int32_t decode_cdsn(char* data, std::int32_t nsamples, std::int32_t, int byteswap) {
    return decode_words<std::uint16_t>(data, nsamples, byteswap, [](std::uint16_t word) {
        const auto [mantissa, shift] = cdsn_parts(word);
        return static_cast<float>(mantissa) * power_of_two(shift);
    });
}

} // namespace quarry
