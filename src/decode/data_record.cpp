// SPDX-License-Identifier: Apache-2.0
#include "decode/data_record.h"

#include "platform/bytes.h"

#include <algorithm>
#include <bit>

namespace quarry {

namespace {

constexpr int first_plausible_year = 1970;
constexpr int last_plausible_year = 2030;
constexpr std::size_t type_and_next_size = 4;

bool holds(std::span<const char> record, std::size_t offset, std::size_t size) {
    return offset <= record.size() && size <= record.size() - offset;
}

std::uint8_t byte_at(std::span<const char> record, std::size_t offset) {
    return static_cast<std::uint8_t>(record[offset]);
}

} // namespace

S100 decode_b100(std::span<const char> record, const DataBlockette& at, bool swapped) {
    const auto rate = load_swapped<std::uint32_t>(&record[at.offset + 4], swapped);
    return {at.type, static_cast<int>(at.next), std::bit_cast<float>(rate)};
}

S1000 decode_b1000(std::span<const char> record, const DataBlockette& at) {
    return {at.type, static_cast<int>(at.next), byte_at(record, at.offset + 4),
            byte_at(record, at.offset + 5), byte_at(record, at.offset + 6)};
}

S1001 decode_b1001(std::span<const char> record, const DataBlockette& at) {
    return {byte_at(record, at.offset + 4), static_cast<std::int8_t>(record[at.offset + 5])};
}

HeaderCodes header_codes(const RecordCodes& codes) {
    HeaderCodes all;
    all.fill(' ');
    char* place = all.data();
    const auto put = [&place](std::string_view code, std::size_t width) {
        std::copy_n(code.begin(), std::min(code.size(), width), place);
        place += width;
    };
    put(codes.station, 5);
    put(codes.location, 2);
    put(codes.channel, 3);
    put(codes.network, 2);
    return all;
}

bool is_swapped_by_year(std::span<const char> record) {
    const auto year = load<std::int16_t>(&record[20]);
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
        if (at.type == 100 && holds(record, at.offset, rate_and_format_size))
            state->s100 = decode_b100(record, at, swapped);
        if (at.type != 1000 || !holds(record, at.offset, rate_and_format_size))
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
