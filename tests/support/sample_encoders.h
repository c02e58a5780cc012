// SPDX-License-Identifier: Apache-2.0
// Encoders of the compressed formats, for the demonstration volume, the tests and the benchmarks: written
// from the layouts, not from the decoders.
#pragma once

#include "volume_builder.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace quarry {

// A data area of `size` bytes with as many of the samples as it holds.
struct Encoded {
    std::string bytes;
    std::int32_t samples = 0;
};

// Steim packs the most differences that fit into each word. `size` is a multiple of 64. Neighbouring samples
// differ by no more than 32 bits (level 1) or 30 bits (level 2) hold.
Encoded encode_steim1(std::span<const std::int32_t> series, std::size_t size, Order order);
Encoded encode_steim2(std::span<const std::int32_t> series, std::size_t size, Order order);

// USNSN takes for each group the narrowest key; `size` is 4096 for a record with a trailer. Neighbouring
// samples differ by no more than 28 bits hold. The packed bytes are read in their order once each four bytes
// are swapped where the record's order is not the host's, so the big-endian record has them reversed.
Encoded encode_usnsn(std::span<const std::int32_t> series, std::size_t size, Order order);

// A walk of steps evenly spread over the whole range of signed numbers of `bits` bits, both ends included,
// that turns back before it leaves 30 bits.
std::vector<std::int32_t> random_walk(std::size_t samples, int bits, std::uint32_t seed);

// Numbers as they stand in a record.
std::string bytes_of(std::initializer_list<std::uint32_t> words, Order order);

} // namespace quarry
