// SPDX-License-Identifier: Apache-2.0
// The front of a data record: its fixed header, the data blockettes that follow it, and the byte order of
// both. The one place that knows where these fields stand.
#pragma once

#include "platform/bytes.h"
#include "quarry/fixed_header.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace quarry {

// The length that a blockette 1000 may state is two to such a power; those who read records set closer
// limits.
inline constexpr int shortest_record_power = 7;
inline constexpr int longest_record_power = 30;

// Sizes in bytes: the fixed header; the shortest data record; what the reader has in hand of a record before
// it knows the record's length.
inline constexpr std::size_t fixed_header_size = 48;
inline constexpr std::size_t shortest_record_size = 1U << shortest_record_power;
inline constexpr std::size_t record_front_size = 136;

// Size of what begins every logical record: sequence number (6 digits), type letter, continuation character.
inline constexpr std::size_t logical_header_size = 8;

// The codes of a record that holds at least fixed_header_size bytes, untrimmed. They follow one another.
struct RecordCodes {
    std::string_view station, location, channel, network;
};
inline constexpr std::size_t codes_offset = 8;
inline constexpr std::size_t codes_size = 12;
inline RecordCodes codes_in(std::span<const char> record) {
    return {{&record[8], 5}, {&record[13], 2}, {&record[15], 3}, {&record[18], 2}};
}

// The codes as a record has them, filled up with blanks; what is too long is cut off.
using HeaderCodes = std::array<char, codes_size>;
HeaderCodes header_codes(const RecordCodes& codes);

// The binary fields of a record that holds at least fixed_header_size bytes, reversed where `swapped` is set.
// Inline, so that a caller pays for those that it uses.
//
// Offsets within the data record:
// 20 year, day of year                unsigned 16-bit each
// 24 hour, minute, second             8-bit each
// 27 unused
// 28 0.0001 s                         unsigned 16-bit
// 30 number of samples                unsigned 16-bit
// 32 sample rate factor, multiplier   signed 16-bit each
// 36 activity, I/O, quality flags     8-bit each
// 39 number of blockettes             8-bit
// 40 time correction                  signed 32-bit
// 44 beginning of data                unsigned 16-bit
// 46 first blockette                  unsigned 16-bit
inline FixedHeader decode_fixed_header(std::span<const char> record, bool swapped) {
    const auto u16 = [&](std::size_t at) { return load_swapped<std::uint16_t>(&record[at], swapped); };
    const auto s16 = [&](std::size_t at) { return load_swapped<std::int16_t>(&record[at], swapped); };
    const auto u8 = [&](std::size_t at) { return load<std::uint8_t>(&record[at]); };
    return {
        u16(20), u16(22), u8(24), u8(25), u8(26), u16(28), u16(30),
        s16(32), s16(34), u8(36), u8(37), u8(38), u8(39),  load_swapped<std::int32_t>(&record[40], swapped),
        u16(44), u16(46)};
}

// Bits of the activity flags.
inline constexpr int correction_is_applied = 1 << 1;
inline constexpr int positive_leap_second = 1 << 4;
inline constexpr int negative_leap_second = 1 << 5;

// The unit of the fraction and of the time correction, in microseconds.
inline constexpr int fraction_unit = 100;

// Samples per second by the header, 0 for none. A negative factor or multiplier divides.
inline double sample_rate(int factor, int multiplier) {
    if (factor == 0 || multiplier == 0)
        return 0;
    const double f = factor;
    const double m = multiplier;
    if (factor > 0)
        return multiplier > 0 ? f * m : -f / m;
    return multiplier > 0 ? -m / f : 1 / (f * m);
}

// True if the year of the record, at least fixed_header_size bytes, is not plausible (1970 to 2030) in the
// host's byte order.
bool is_swapped_by_year(std::span<const char> record);

// A data blockette: its type, its place in the record and the place of the next one (0 at the last).
struct DataBlockette {
    int type;
    std::size_t offset;
    std::size_t next;
};

// The data blockette at `offset`, or none if its type and next offset do not fit into the record.
std::optional<DataBlockette> data_blockette_at(std::span<const char> record, std::size_t offset,
                                               bool swapped);

// Calls visit (blockette) for each data blockette from `offset` on until it returns false. The chain ends
// where it leaves the record, or does not lead further into it.
template <class Visit>
void for_each_data_blockette(std::span<const char> record, std::size_t offset, bool swapped, Visit visit) {
    for (std::size_t previous = fixed_header_size - 1; offset > previous;) {
        const std::optional<DataBlockette> blockette = data_blockette_at(record, offset, swapped);
        if (!blockette || !visit(*blockette))
            return;
        previous = offset;
        offset = blockette->next;
    }
}

// Blockette 100, Sample Rate: the actual sample rate, samples per second (field 3).
struct S100 {
    int type;
    int next_blockette_offset;
    float sample_rate;
};

// Blockette 1000, Data Only SEED: encoding format (field 3), word order (field 4: 0 little, 1 big endian),
// record length as a power of two (field 5).
struct S1000 {
    int type;
    int next_blockette_offset;
    int dataformat;
    int sparc_order;
    int log2_record_length;
};

// Blockette 1001, Data Extension: timing quality in percent (field 3), microseconds (field 4).
struct S1001 {
    std::uint8_t timing_quality;
    std::int8_t microseconds;
};

// Their fields. The record holds at least rate_and_format_size bytes at the place.
inline constexpr std::size_t rate_and_format_size = 8;
S100 decode_b100(std::span<const char> record, const DataBlockette& at, bool swapped);
S1000 decode_b1000(std::span<const char> record, const DataBlockette& at);
S1001 decode_b1001(std::span<const char> record, const DataBlockette& at);

// Decoder state: the record image in hand and what its data blockettes say. Both blockettes are all zero
// where the record has none.
struct Steim {
    std::span<const char> record;
    int record_size;
    S100 s100;
    S1000 s1000;
};

// Length in bytes of a record whose length is given as a power of two; at least 2. The power is at most 30.
int record_bytes(int power);

// True for the record type letters of data records (D, R, Q, M).
bool is_ok_quality(char code);

// Walks the data blockettes of `state->record` (from its sequence number on) in the byte order that the
// year of the header shows, up to the first blockette 1000, and fills in the blockettes 100 and 1000 and,
// from the latter, `record_size` in bytes. Reads nothing beyond record_front_size or the record's end.
// Returns 0, or -1 for a record without a whole fixed header or with a blockette 1000 whose length exponent
// is not in 7 to 30.
int parse_data_record_header(Steim* state);

} // namespace quarry
