// SPDX-License-Identifier: Apache-2.0
#include "volume_builder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

namespace quarry {

namespace {

constexpr std::size_t header_size = 48;

// The data blockettes that the record has, each without its first four bytes, by type.
std::vector<std::pair<std::uint32_t, std::string>> data_blockettes(const RecordFields& record, Order order) {
    std::vector<std::pair<std::uint32_t, std::string>> all;
    const auto byte = [](int value) { return std::string(1, static_cast<char>(value)); };
    if (record.encoding >= 0) {
        const int exponent = record.size_exponent != 0 ? record.size_exponent
                                                       : std::countr_zero(static_cast<unsigned>(record.size));
        all.emplace_back(1000,
                         byte(record.encoding) + byte(record.big_endian ? 1 : 0) + byte(exponent) + '\0');
    }
    if (record.timing_quality >= 0)
        all.emplace_back(1001, byte(record.timing_quality) + std::string(3, '\0'));
    if (record.stated_rate != 0) {
        const auto rate = std::bit_cast<std::uint32_t>(static_cast<float>(record.stated_rate));
        all.emplace_back(100, number(rate, 4, order) + std::string(4, '\0'));
    }
    return all;
}

std::string data_record(const RecordFields& record, int sequence) {
    const Order order = record.big_endian ? Order::big : Order::little;
    std::string chain;
    const auto blockettes = data_blockettes(record, order);
    for (const auto& [type, rest] : blockettes) {
        const std::size_t next = header_size + chain.size() + 4 + rest.size();
        const bool is_last = type == blockettes.back().first;
        chain +=
            number(type, 2, order) + number(is_last ? 0 : static_cast<std::uint32_t>(next), 2, order) + rest;
    }
    const int data_offset = header_size + chain.size() > 64 ? 128 : 64;
    std::string out = digits(sequence, 6) + record.quality_indicator + ' ';
    out += padded(record.station, 5) + padded(record.location, 2) + padded(record.channel, 3) +
           padded(record.network, 2);
    const auto append = [&](int width, std::initializer_list<int> values) {
        for (const int value : values)
            out += number(static_cast<std::uint32_t>(value), width, order);
    };
    append(2, {record.year, record.doy});
    append(1, {record.hour, record.minute, record.second, 0});
    append(2, {record.fraction, record.samples, record.rate_factor, record.rate_multiplier});
    append(1, {record.activity, record.io_flags, record.quality, static_cast<int>(blockettes.size())});
    append(4, {record.time_correction});
    append(2, {data_offset, chain.empty() ? 0 : static_cast<int>(header_size)});
    out += chain;
    out.resize(static_cast<std::size_t>(data_offset));
    out += record.data;
    out.resize(static_cast<std::size_t>(record.size));
    return out;
}

} // namespace

std::string formatted(const char* format, ...) {
    std::array<char, 256> buffer;
    va_list values;
    va_start(values, format);
    std::vsnprintf(buffer.data(), buffer.size(), format, values);
    va_end(values);
    return buffer.data();
}
std::string digits(int value, int width) {
    return formatted("%0*d", width, value);
}
std::string fixed(double value, int width, int decimals) {
    return formatted("%*.*f", width, decimals, value);
}
std::string exponent(double value) {
    return formatted("%12.5E", value);
}

std::string padded(std::string_view text, int width) {
    std::string field(text);
    field.resize(static_cast<std::size_t>(width), ' ');
    return field;
}

std::string blockette(int type, std::string_view fields) {
    return digits(type, 3) + digits(static_cast<int>(fields.size()) + 7, 4) + std::string(fields);
}

std::string number(std::uint32_t value, int width, Order order) {
    std::string bytes;
    for (int i = 0; i < width; ++i)
        bytes.push_back(static_cast<char>(value >> (8 * (order == Order::big ? width - 1 - i : i)) & 0xFF));
    return bytes;
}

void VolumeBuilder::begin_record(char letter, char continuation) {
    end_record();
    letter_ = letter;
    record_start_ = volume_.size();
    volume_ += digits(++sequence_, 6) + letter + continuation;
}

void VolumeBuilder::end_record() {
    if (letter_ != '\0')
        volume_.append(room(), ' ');
    letter_ = '\0';
}

std::size_t VolumeBuilder::room() const {
    const std::size_t used = volume_.size() - record_start_;
    return used < record_size_ ? record_size_ - used : 0;
}

void VolumeBuilder::append_control(std::string_view blockette) {
    if (room() < 7)
        begin_record(letter_, '*');
    while (!blockette.empty()) {
        if (room() == 0)
            begin_record(letter_, '*');
        const std::size_t piece = std::min(room(), blockette.size());
        volume_ += blockette.substr(0, piece);
        blockette.remove_prefix(piece);
    }
}

VolumeBuilder& VolumeBuilder::control(char letter, std::string_view blockettes) {
    if (letter != letter_)
        begin_record(letter, ' ');
    while (!blockettes.empty()) {
        // A length that cannot be right is written as it is, with all that is left.
        const int declared =
            std::atoi(std::string(blockettes.substr(std::min<std::size_t>(3, blockettes.size()), 4)).c_str());
        const auto length = static_cast<std::size_t>(std::max(declared, 0));
        const bool plausible = length >= 7 && length <= blockettes.size();
        const std::string_view one = blockettes.substr(0, plausible ? length : blockettes.size());
        append_control(one);
        blockettes.remove_prefix(one.size());
    }
    return *this;
}

VolumeBuilder& VolumeBuilder::raw(std::string_view bytes) {
    volume_ += bytes;
    return *this;
}

VolumeBuilder& VolumeBuilder::data(const RecordFields& record, int sequence) {
    end_record();
    if (sequence == 0) {
        ++sequence_;
        sequence = record.sequence != 0 ? record.sequence : sequence_;
    }
    volume_ += data_record(record, sequence);
    return *this;
}

VolumeBuilder& VolumeBuilder::blank_record(char letter) {
    begin_record(letter, ' ');
    end_record();
    return *this;
}

std::string VolumeBuilder::bytes() const {
    VolumeBuilder ended = *this;
    ended.end_record();
    return ended.volume_;
}

} // namespace quarry
