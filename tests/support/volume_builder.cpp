#include "volume_builder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace quarry {

namespace {

constexpr int data_offset = 64;

std::string data_record(const RecordFields& record, int sequence) {
    const bool has_1000 = record.encoding >= 0;
    const Order order = record.big_endian ? Order::big : Order::little;
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
    append(1, {record.activity, record.io_flags, record.quality, has_1000 ? 1 : 0});
    append(4, {record.time_correction});
    append(2, {data_offset, has_1000 ? 48 : 0});
    if (has_1000) {
        const int exponent = record.size_exponent != 0 ? record.size_exponent
                                                       : std::countr_zero(static_cast<unsigned>(record.size));
        append(2, {1000, 0});
        append(1, {record.encoding, record.big_endian ? 1 : 0, exponent, 0});
    }
    out.resize(data_offset);
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
    if (sequence == 0)
        sequence = ++sequence_;
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
