// SPDX-License-Identifier: Apache-2.0
#include "quarry/decoders.h"

#include "decode/plain_words.h"

namespace quarry {

std::int32_t decode_ieeefloat(char* data, std::int32_t nsamples, std::int32_t, int byteswap) {
    return decode_words<std::uint32_t>(data, nsamples, byteswap, [](std::uint32_t word) { return word; });
}

} // namespace quarry
