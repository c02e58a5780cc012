// SPDX-License-Identifier: Apache-2.0
#include "quarry/decoders.h"

#include "decode/plain_words.h"
#include "decode/word_values.h"

#include <array>

namespace quarry {

namespace {

constexpr int components = 3;

// Writes value (place) for each unit of `unit_size` bytes.
template <class Value>
std::int32_t demultiplex(char* raw, std::int32_t nsamples, int unit_size, Value value) {
    const std::int64_t count = std::max(nsamples, 0);
    float* const samples = seismic_data_ptr;
    for (std::int64_t i = 0; i < count; ++i)
        for (int j = 0; j < components; ++j, raw += unit_size)
            samples[j * count + i] = value(raw);
    seismic_data_ptr = samples + count;
    return 0;
}

template <int GainBits>
std::int32_t demultiplex_gain_ranged(char* raw, std::int32_t nsamples, int byteswap) {
    const bool swap = byteswap != 0;
    return demultiplex(raw, nsamples, 2, [swap](char* place) {
        return geoscope_value<GainBits>(load_after_swap<std::uint16_t>(place, swap));
    });
}

// The three bytes b0 b1 b2 of a sample in a word of four bytes, read in the host's order:
//
//   record in the host's order:   0 b0 b1 b2       swapped:   0 b2 b1 b0
//
// From a word above 0x7FFFFF, 0x1000000 is subtracted once; other words are taken as they are.
float value_of_three_bytes(const char* bytes, bool swap) {
    const std::array<char, 4> placed{0, bytes[swap ? 2 : 0], bytes[1], bytes[swap ? 0 : 2]};
    const auto word = load<std::int32_t>(placed.data());
    return static_cast<float>(word > 0x7FFFFF ? word - 0x1000000 : word);
}

} // namespace

std::int32_t decode_geo1(char* data, std::int32_t nsamples, std::int32_t, int byteswap) {
    return demultiplex_gain_ranged<3>(data, nsamples, byteswap);
}

std::int32_t decode_geo2(char* data, std::int32_t nsamples, std::int32_t, int byteswap) {
    const bool swap = byteswap != 0;
    return demultiplex(data, nsamples, 3,
                       [swap](const char* place) { return value_of_three_bytes(place, swap); });
}

std::int32_t decode_geo3(char* data, std::int32_t nsamples, std::int32_t, int byteswap) {
    return demultiplex_gain_ranged<4>(data, nsamples, byteswap);
}

std::int32_t decode_geoscope(char* raw, std::int32_t nsamples, std::int32_t nbytes, int byteswap, int code) {
    constexpr std::array decoders{decode_geo1, decode_geo2, decode_geo3};
    if (code < 1 || code > static_cast<int>(decoders.size()))
        return -1;
    return decoders[static_cast<std::size_t>(code - 1)](raw, nsamples, nbytes, byteswap);
}

} // namespace quarry
