// SPDX-License-Identifier: Apache-2.0
// The fixed header of a data record, as far as it is binary.
//
//     const quarry::FixedHeader& header = record.header; // of a quarry::DataRecord
//     const bool begins_an_event = (header.activity_flags & 0x04) != 0;
#pragma once

#include <cstdint>

#pragma GCC visibility push(default)
namespace quarry {

// The binary fields of the fixed header (fields 8 to 18 in the SEED manual), as numbers of the host's order.
struct FixedHeader {
    std::uint16_t year;
    std::uint16_t day_of_year;
    std::uint8_t hour;
    std::uint8_t minute;
    std::uint8_t second;
    std::uint16_t fraction; // 0.0001 s
    std::uint16_t samples;
    std::int16_t rate_factor;
    std::int16_t rate_multiplier;
    std::uint8_t activity_flags;
    std::uint8_t io_flags;
    std::uint8_t quality_flags;
    std::uint8_t blockettes;      // that follow
    std::int32_t time_correction; // 0.0001 s
    std::uint16_t data_offset;    // of the first sample in the record
    std::uint16_t blockette_offset;
};

} // namespace quarry
#pragma GCC visibility pop
