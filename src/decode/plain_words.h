// SPDX-License-Identifier: Apache-2.0
// The loop of the formats that give each sample a word of its own.
#pragma once

#include "decode/swap_in_place.h"
#include "quarry/decoders.h"

#include <algorithm>
#include <cstdint>

namespace quarry {

// Writes value (word) for each of `nsamples` words through the cursor. Value gives the four bytes that are
// stored. Trusts `nsamples`; returns 0.
template <class Word, class Value>
std::int32_t decode_words(char* data, std::int32_t nsamples, int byteswap, Value value) {
    const std::int64_t count = std::max(nsamples, 0);
    float* const samples = seismic_data_ptr;
    const auto decode = [=](bool swap) {
        for (std::int64_t i = 0; i < count; ++i)
            store(samples + i, value(load_after_swap<Word>(data + i * std::int64_t{sizeof(Word)}, swap)));
    };
    byteswap != 0 ? decode(true) : decode(false);
    seismic_data_ptr = samples + count;
    return 0;
}

} // namespace quarry
