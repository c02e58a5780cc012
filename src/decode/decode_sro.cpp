// SPDX-License-Identifier: Apache-2.0
#include "quarry/decoders.h"

#include "decode/plain_words.h"
#include "decode/word_values.h"

namespace quarry {

std::int32_t decode_sro(char* data, std::int32_t nsamples, std::int32_t, int byteswap) {
    // A pointer to the function would keep the loop from taking several words at once.
    return decode_words<std::uint16_t>(data, nsamples, byteswap,
                                       [](std::uint16_t word) { return sro_value(word); });
}

} // namespace quarry
