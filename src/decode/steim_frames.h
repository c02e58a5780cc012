// SPDX-License-Identifier: Apache-2.0
// What the two Steim levels share: the walk over the frames and the integration of the differences.
//
// A data area is a sequence of frames of 16 words of 32 bits:
//   word 0        sixteen 2-bit codes, the first in the top bits; code k says what word k holds
//   words 1 - 15  differences
// In the first frame word 1 is the forward integration constant (the first sample) and word 2 the reverse one
// (the last sample). A sound record gives them code 0; the walk does not rely on that. Bytes behind the last
// whole frame are ignored.
//
// The bytes are those of the caller: where they are not constant, the words are swapped in place as the level
// says. There is no state.
#pragma once

#include "decode/swap_in_place.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <type_traits>

namespace quarry::steim {

inline constexpr int word_size = 4;
inline constexpr int frame_size = 16 * word_size;
inline constexpr int largest_count = 7; // of differences in a word

// How a word holds its differences: `count` signed fields in its low bits, most significant first. To extract
// a field, multiply the word so that the field is at the top of 64 bits, then shift it down. A field that the
// packing lacks has multiplier 0 and comes out as 0. So every word of a level takes the same instructions.
// Branches on the packing would be slower: they follow the seismic noise, which no processor can predict.
struct Packing {
    std::array<std::uint64_t, largest_count> multipliers{};
    std::int32_t shift = 0;
    std::int32_t count = 0;

    template <class Running>
    Running field(std::uint32_t word, int k) const {
        return static_cast<Running>(
            static_cast<std::int64_t>(word * multipliers[static_cast<std::size_t>(k)]) >> shift);
    }
};

constexpr Packing packing(int count, int width) {
    Packing fields{{}, 64 - width, count};
    for (int k = 0; k < count; ++k)
        fields.multipliers[static_cast<std::size_t>(k)] = std::uint64_t{1} << (64 - width * (count - k));
    return fields;
}
inline constexpr Packing no_differences{};

// A word and its packing. `fields` has the first difference on top, `swapped` is what a decoder that swaps in
// place leaves of the word.
struct Word {
    std::uint32_t fields;
    const Packing* packing;
    std::uint32_t swapped;
};

// True if the record is big-endian.
template <bool Swap>
inline constexpr bool big_endian = Swap == host_is_little_endian;

// The word in the host's order, with the byte or the half-word that is stored first in its top bits. In a
// big-endian record first_byte_on_top serves every width.
constexpr std::uint32_t first_byte_on_top(std::uint32_t word) {
    return host_is_little_endian ? reverse_bytes(word) : word;
}
constexpr std::uint32_t first_half_on_top(std::uint32_t word) {
    return host_is_little_endian ? std::rotl(word, 16) : word;
}

// Where the decoded samples end, and how many of those wanted are missing: 0 or less if none is.
template <class Sample>
struct Decoded {
    Sample* end;
    std::int64_t missing;
};

// Stores the samples of a word as far as they are wanted, and returns what is behind the last one.
template <class Running, class Fields, class Sample>
Sample* store_wanted(const Packing& packing, Fields fields, std::int64_t wanted, Running* value,
                     Sample* next) {
    for (int k = 0; k < packing.count; ++k) {
        *value += packing.field<Running>(fields, k);
        if (k < wanted)
            *next++ = static_cast<Sample>(*value);
    }
    return next;
}

// Decodes whole frames to `next`, which has room for the samples wanted.
//
// The running value is of type Running: see decode_frames. Level::take<Swap> (raw, code) gives the word that
// is read as `raw` in the host's order, and Level::largest_count is the largest count of its packings.
template <class Level, class Running, bool Swap, class Byte, class Sample>
Decoded<Sample> walk_frames(Byte* data, std::int64_t frames, std::int64_t wanted, std::int32_t first,
                            Sample* next) {
    // The first word behind the constants: its first difference leads to the first sample.
    const char* const anchor = frames > 0 ? data + std::ptrdiff_t{3} * word_size : nullptr;
    Running value = 0;
    for (const char* const end = data + frames * frame_size; data != end; data += frame_size) {
        std::uint32_t codes = load_after_swap<std::uint32_t>(data, Swap);
        for (Byte* place = data + word_size; place != data + frame_size; place += word_size) {
            codes <<= 2;
            const Word word = Level::template take<Swap>(load<std::uint32_t>(place), codes >> 30);
            if constexpr (Swap && !std::is_const_v<Byte>)
                store(place, word.swapped);
            const Packing& packing = *word.packing;
            if (place == anchor && packing.count > 0) [[unlikely]]
                value = static_cast<Running>(first) - packing.field<Running>(word.fields, 0);
            if (wanted >= Level::largest_count) [[likely]] {
                // What is stored beyond the count is overwritten by the next word.
                for (int k = 0; k < Level::largest_count; ++k) {
                    value += packing.field<Running>(word.fields, k);
                    next[k] = static_cast<Sample>(value);
                }
                next += packing.count;
            } else {
                next = store_wanted(packing, word.fields, wanted, &value, next);
            }
            wanted -= packing.count;
        }
    }
    return {next, wanted};
}

// Decodes a data area to `samples`, which has room for `nsamples`.
//
// A series of floats is defined by sums of doubles. As long as every sum stays below 2^53 they are exact, and
// so are sums of integers, which are faster: a word adds at most 2^31 to the magnitude (its fields of fewer
// bits add less), a frame 15 * 2^31, and the start, the first sample less a difference, is at most 2^32. Sums
// of 2^18 frames, 16 megabytes, thus keep below 15 * 2^49 + 2^32 < 2^53. A series of integers wraps.
template <class Level, bool Swap, class Byte, class Sample>
Decoded<Sample> decode_frames(Byte* data, std::int32_t nsamples, std::int32_t nbytes, Sample* samples) {
    constexpr std::int64_t exact_frames = std::int64_t{1} << 18;
    std::int32_t first = 0;
    if (nbytes >= 3 * word_size) {
        first = static_cast<std::int32_t>(load_after_swap<std::uint32_t>(data + word_size, Swap));
        load_after_swap<std::uint32_t>(data + std::ptrdiff_t{2} * word_size, Swap); // only left swapped
    }
    const std::int64_t frames = std::max(nbytes / frame_size, 0);
    if (std::is_integral_v<Sample> || frames <= exact_frames)
        return walk_frames<Level, std::int64_t, Swap>(data, frames, nsamples, first, samples);
    return walk_frames<Level, double, Swap>(data, frames, nsamples, first, samples);
}

template <class Level, class Byte, class Sample>
Decoded<Sample> decode_frames(Byte* data, std::int32_t nsamples, std::int32_t nbytes, bool swap,
                              Sample* samples) {
    return swap ? decode_frames<Level, true>(data, nsamples, nbytes, samples)
                : decode_frames<Level, false>(data, nsamples, nbytes, samples);
}

} // namespace quarry::steim
