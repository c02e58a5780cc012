// SPDX-License-Identifier: Apache-2.0
// The catalogue: name and smallest length of every blockette type that is known by name; kinds of types.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

namespace quarry {

struct CatalogueRow {
    int type;           // -1 for data records
    int smallest;       // length in bytes
    const char* name;   // some end in a blank, which shows in the listing
    bool listed = true; // false: the listing does not know the type
};

// In order of type.
inline constexpr auto catalogue = std::to_array<CatalogueRow>({
    {-1, 48, "Data"},
    {5, 14, "Field Volume Identifier "},
    {8, 27, "Telemetry Volume Identifier "},
    {10, 15, "Volume Identifier "},
    {11, 21, "Volume Station Header Index "},
    {12, 19, "Volume Time Span Index"},
    {30, 18, "Data Format Dictionary "},
    {31, 16, "Comment Description "},
    {32, 12, "Cited Source Dictionary"},
    {33, 11, "Generic Abbreviation"},
    {34, 11, "Units Abbreviation"},
    {35, 33, "Beam Configuration "},
    {41, 23, "FIR Dictionary"},
    {42, 84, "Response (Polynomial) Dictionary", false},
    {43, 49, "Response (Poles and Zeros) Dictionary"},
    {44, 27, "Response (Coefficients) Dictionary"},
    {45, 22, "Response List Dictionary"},
    {46, 22, "Generic Response Dictionary"},
    {47, 53, "Decimation Dictionary Blockette"},
    {48, 38, "Channel Sensitivity/Gain Dictionary"},
    {50, 61, "Station Identifier"},
    {51, 19, "Station Comment"},
    {52, 100, "Channel Identifier"},
    {53, 46, "Response (Poles and Zeros)"},
    {54, 24, "Response (Coefficients) "},
    {55, 19, "Response List"},
    {56, 19, "Generic Response"},
    {57, 51, "Decimation"},
    {58, 35, "Channel Sensitivity/Gain"},
    {59, 18, "Channel Comment"},
    {60, 17, "Response Reference"},
    {61, 21, "FIR Response"},
    {62, 81, "Response (Polynomial)", false},
    {70, 10, "Time Span Identifier"},
    {71, 40, "Hypocenter Information"},
    {72, 49, "Event Phases"},
    {73, 30, "Time Span Data Start Index"},
    {74, 47, "Time Series Index"},
    {100, 12, "Sample Rate"},
    {200, 28, "Generic Event Detection"},
    {201, 36, "Murdock Event Detection"},
    {202, 0, "Log-Z Event Detection"},
    {300, 32, "Step Calibration"},
    {310, 32, "Sine Calibration "},
    {320, 28, "Pseudo-random Calibration "},
    {390, 28, "Generic Calibration"},
    {395, 16, "Calibration Abort "},
    {400, 16, "Beam "},
    {405, 6, "Beam Delay"},
    {500, 200, "Timing", false},
    {1000, 8, "Data Only SEED"},
    {1001, 8, "Data Extension", false},
    {2000, 15, "Opaque Data", false},
});

// The row of a type, or none.
constexpr std::optional<CatalogueRow> catalogue_row(int type) {
    const auto row = std::find_if(catalogue.begin(), catalogue.end(),
                                  [type](const CatalogueRow& entry) { return entry.type == type; });
    return row == catalogue.end() ? std::nullopt : std::optional(*row);
}

// True for the blockettes that begin a volume. They state its record length, a power of two, in two
// characters at this place.
constexpr bool is_volume_header(int type) {
    return type == 5 || type == 8 || type == 10;
}
inline constexpr std::size_t record_power_offset = 11;
inline constexpr std::size_t record_power_size = 2;

// True for the blockettes of a station and its channels.
constexpr bool is_of_station(int type) {
    return type >= 50 && type < 70;
}

// Smaller types are those of control blockettes, which begin with their type and length.
inline constexpr int first_data_blockette = 100;
inline constexpr std::size_t blockette_head_size = 7;

} // namespace quarry
