// SPDX-License-Identifier: Apache-2.0
// The encodings of samples that can be decoded: one row for each code of blockette 1000.
//
// An encoding is added by a row here and one of the same code in volume/samples.cpp, with its decoder.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace quarry {

// Families of data formats (blockette 030, field 5).
enum FormatFamily : int {
    integer_family = 0,
    gain_ranged_family = 1,
    difference_family = 50,
    text_family = 80,
    other_text_family = 81,
};

struct SampleEncoding {
    int code;
    std::string_view name;
    std::array<FormatFamily, 2> families; // that records of the encoding may be declared to have
    bool has_plain_words = false;         // samples are whole words, whose bytes may stand in either order
};

inline constexpr auto sample_encodings = std::to_array<SampleEncoding>({
    {0, "text", {text_family, other_text_family}},
    {1, "int16", {integer_family, integer_family}, true},
    {2, "int24", {integer_family, integer_family}, true},
    {3, "int32", {integer_family, integer_family}, true},
    {4, "float32", {integer_family, gain_ranged_family}, true},
    {5, "float64", {integer_family, gain_ranged_family}, true},
    {10, "Steim1", {difference_family, difference_family}},
    {11, "Steim2", {difference_family, difference_family}},
    {12, "Geoscope24", {integer_family, gain_ranged_family}},
    {13, "Geoscope16_3", {integer_family, gain_ranged_family}},
    {14, "Geoscope16_4", {integer_family, gain_ranged_family}},
    {15, "USNSN", {difference_family, difference_family}},
    {16, "CDSN", {integer_family, gain_ranged_family}},
    {30, "SRO", {integer_family, gain_ranged_family}},
    {32, "DWWSSN", {integer_family, gain_ranged_family}},
});

// The row of a code, or null.
constexpr const SampleEncoding* find_encoding(int code) {
    const auto* const row = std::find_if(sample_encodings.begin(), sample_encodings.end(),
                                         [code](const SampleEncoding& one) { return one.code == code; });
    return row == sample_encodings.end() ? nullptr : row;
}

} // namespace quarry
