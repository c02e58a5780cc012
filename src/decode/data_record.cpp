#include "decode/data_record.h"

#include "platform/bytes.h"

#include <algorithm>
#include <bit>

namespace quarry {

namespace {

constexpr int first_plausible_year = 1970;
constexpr int last_plausible_year = 2030;
constexpr std::size_t year_offset = 20;
constexpr std::size_t fraction_offset = 28;
constexpr std::size_t correction_offset = 40;
constexpr std::size_t type_and_next_size = 4;
constexpr std::size_t b100_size = 8; // as far as they are read
constexpr std::size_t b1000_size = 8;
constexpr int shortest_record_power = 7;
constexpr int longest_record_power = 30;

bool holds(std::span<const char> record, std::size_t offset, std::size_t size) {
    return offset <= record.size() && size <= record.size() - offset;
}

std::uint8_t byte_at(std::span<const char> record, std::size_t offset) {
    return static_cast<std::uint8_t>(record[offset]);
}

S100 decode_b100(std::span<const char> record, const DataBlockette& at, bool swapped) {
    const auto rate = load_swapped<std::uint32_t>(&record[at.offset + 4], swapped);
    return {at.type, static_cast<int>(at.next), std::bit_cast<float>(rate)};
}

S1000 decode_b1000(std::span<const char> record, const DataBlockette& at) {
    return {at.type, static_cast<int>(at.next), byte_at(record, at.offset + 4),
            byte_at(record, at.offset + 5), byte_at(record, at.offset + 6)};
}

} // namespace

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
FixedHeader decode_fixed_header(std::span<const char> record, bool swapped) {
    const auto u16 = [&](std::size_t at) { return load_swapped<std::uint16_t>(&record[at], swapped); };
    const auto s16 = [&](std::size_t at) { return load_swapped<std::int16_t>(&record[at], swapped); };
    const auto u8 = [&](std::size_t at) { return byte_at(record, at); };
    return {u16(year_offset), u16(22),
            u8(24),           u8(25),
            u8(26),           u16(fraction_offset),
            u16(30),          s16(32),
            s16(34),          u8(36),
            u8(37),           u8(38),
            u8(39),           load_swapped<std::int32_t>(&record[correction_offset], swapped),
            u16(44),          u16(46)};
}

bool is_swapped_by_year(std::span<const char> record) {
    const auto year = load<std::int16_t>(&record[year_offset]);
    return year < first_plausible_year || year > last_plausible_year;
}

std::optional<DataBlockette> data_blockette_at(std::span<const char> record, std::size_t offset,
                                               bool swapped) {
    if (!holds(record, offset, type_and_next_size))
        return std::nullopt;
    return DataBlockette{load_swapped<std::uint16_t>(&record[offset], swapped), offset,
                         load_swapped<std::uint16_t>(&record[offset + 2], swapped)};
}

int record_bytes(int power) {
    return 1 << std::max(power, 1);
}

bool is_ok_quality(char code) {
    return code == 'D' || code == 'R' || code == 'Q' || code == 'M';
}

int parse_data_record_header(Steim* state) {
    const auto record = state->record.first(std::min(state->record.size(), record_front_size));
    if (record.size() < fixed_header_size)
        return -1;
    const bool swapped = is_swapped_by_year(record);
    const std::size_t first = decode_fixed_header(record, swapped).blockette_offset;
    int result = 0;
    for_each_data_blockette(record, first, swapped, [&](const DataBlockette& at) {
        if (at.type == 100 && holds(record, at.offset, b100_size))
            state->s100 = decode_b100(record, at, swapped);
        if (at.type != 1000 || !holds(record, at.offset, b1000_size))
            return true;
        const S1000 b1000 = decode_b1000(record, at);
        if (b1000.log2_record_length < shortest_record_power ||
            b1000.log2_record_length > longest_record_power) {
            result = -1;
        } else {
            state->s1000 = b1000;
            state->record_size = record_bytes(b1000.log2_record_length);
        }
        return false;
    });
    return result;
}

} // namespace quarry
