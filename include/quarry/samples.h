// SPDX-License-Identifier: Apache-2.0
// The samples of a data record, typed as they are stored: integers stay integers, exact to the last digit.
//
//     if (const std::optional<quarry::Samples> samples = quarry::samples_of(record))
//         std::visit([](const auto& values) {
//             for (const auto value : values)
//                 std::cout << value << '\n';
//         }, samples->values);
//     else
//         std::cerr << "no known encoding\n";
//
// The bytes are not changed, and there is no state: any number of threads may decode at once.
#pragma once

#include "quarry/volume.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#pragma GCC visibility push(default)
namespace quarry {

// Integers for the encodings 1, 2, 3, 10, 11, 12, 15, 16 and 32, floats for 4, 13, 14 and 30 (whose gains may
// leave fractions, all of them exact), doubles for 5, text for 0.
using SampleValues =
    std::variant<std::vector<std::int32_t>, std::vector<float>, std::vector<double>, std::string>;

struct Samples {
    SampleValues values;
    std::size_t missing = 0; // that the record should hold and lacks, not in `values`
    // Whether the last sample is the one that the record states for a check: the reverse integration constant
    // of Steim, or the last sample in the trailer of USNSN. None for other encodings, without a trailer, and
    // if there are no samples or some are missing.
    std::optional<bool> last_agrees = {};

    bool operator==(const Samples&) const = default;
};

// True for the encodings that can be decoded: 0 to 5, 10 to 16, 30 and 32.
bool is_known_encoding(int encoding);

// A short name of such an encoding, "Steim2"; empty for another one.
std::string_view encoding_name(int encoding);

// Decodes `count` samples from the payload of a record in the encoding and word order of its blockette 1000;
// none for any other encoding. Words of USNSN always have their most significant byte first.
std::optional<Samples> decode_samples(std::span<const char> payload, int encoding, std::endian word_order,
                                      std::size_t count);

// Those of a record with a blockette 1000, as many as its header says; none without a known encoding.
std::optional<Samples> samples_of(const DataRecord& record);

} // namespace quarry
#pragma GCC visibility pop
