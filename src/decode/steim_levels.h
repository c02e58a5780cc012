// SPDX-License-Identifier: Apache-2.0
// What the words of the two Steim levels hold.
#pragma once

#include "decode/steim_frames.h"
#include "quarry/decoders.h"

namespace quarry::steim {

// Level 1, by the code of the word:
//   0  nothing
//   1  four 8-bit differences, byte by byte in any byte order
//   2  two 16-bit differences, half-word by half-word, each with its own byte order
//   3  one 32-bit difference
struct Level1 {
    static constexpr int largest_count = 4;
    static constexpr std::array<Packing, 4> packings{no_differences, packing(4, 8), packing(2, 16),
                                                     packing(1, 32)};

    template <bool Swap>
    static Word take(std::uint32_t raw, std::uint32_t code) {
        std::uint32_t word = raw;
        if constexpr (Swap) {
            const std::uint32_t swapped = reverse_bytes(raw);
            word = code < 2 ? raw : code == 2 ? std::rotl(swapped, 16) : swapped;
        }
        const std::uint32_t fields = big_endian<Swap> || code == 1 ? first_byte_on_top(raw)
                                     : code == 2                   ? first_half_on_top(word)
                                                                   : word;
        return {fields, &packings[code], word};
    }
};

// Level 2, by the code and the two bits on top of the word:
//   0      nothing
//   1      four 8-bit differences, byte by byte in any byte order, and no bits on top
//   2  00  nothing
//      01  one 30-bit difference
//      10  two 15-bit differences
//      11  three 10-bit differences
//   3  00  five 6-bit differences
//      01  six 5-bit differences
//      10  seven 4-bit differences, two bits unused
//      11  nothing
struct Level2 {
    static constexpr int largest_count = 7;
    static constexpr std::array<Packing, 16> packings{
        no_differences, no_differences, no_differences, no_differences, //
        packing(4, 8),  packing(4, 8),  packing(4, 8),  packing(4, 8),  //
        no_differences, packing(1, 30), packing(2, 15), packing(3, 10), //
        packing(5, 6),  packing(6, 5),  packing(7, 4),  no_differences,
    };

    template <bool Swap>
    static Word take(std::uint32_t raw, std::uint32_t code) {
        const std::uint32_t word = Swap && code >= 2 ? reverse_bytes(raw) : raw;
        const std::uint32_t fields = big_endian<Swap> || code == 1 ? first_byte_on_top(raw) : word;
        return {fields, &packings[code << 2 | fields >> 30], word};
    }
};

// What the decoders of records do: decodes to floats through the cursor, swaps the words in place, and puts
// zeros for the samples that the data area lacks. Returns their number, 0 or less if it lacks none.
template <class Level>
std::int64_t decode_through_cursor(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap) {
    const auto decoded = decode_frames<Level>(data, nsamples, nbytes, byteswap != 0, seismic_data_ptr);
    seismic_data_ptr = std::fill_n(decoded.end, std::max<std::int64_t>(decoded.missing, 0), 0.0F);
    return decoded.missing;
}

} // namespace quarry::steim
