// SPDX-License-Identifier: Apache-2.0
#include "quarry/decoders.h"

#include "decode/plain_words.h"

namespace quarry {

std::int32_t decode_dwwssn(char* data, std::int32_t nsamples, std::int32_t, int byteswap) {
    return decode_words<std::uint16_t>(data, nsamples, byteswap, [](std::uint16_t word) {
        return static_cast<float>(static_cast<std::int16_t>(word));
    });
}

} // namespace quarry
