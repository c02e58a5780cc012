#include "volume_builder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace quarry {

namespace {

// Appends the low bytes of a number in the given order.
void append_number(std::string* out, int value, int width, bool big_endian) {
    const auto bits = static_cast<std::uint32_t>(value);
    for (int i = 0; i < width; ++i) {
        const int shift = 8 * (big_endian ? width - 1 - i : i);
        out->push_back(static_cast<char>(bits >> shift & 0xff));
    }
}

constexpr int data_offset = 64;

std::string data_record(const DataRecord& record, int sequence) {
    const bool has_1000 = record.encoding >= 0;
    const bool big = record.big_endian;
    std::string out = digits(sequence, 6) + record.quality_indicator + ' ';
    out += padded(record.station, 5) + padded(record.location, 2) + padded(record.channel, 3) +
           padded(record.network, 2);
    append_number(&out, record.year, 2, big);
    append_number(&out, record.doy, 2, big);
    for (const int byte : {record.hour, record.minute, record.second, 0})
        append_number(&out, byte, 1, big);
    for (const int word : {record.fraction, record.samples, record.rate_factor, record.rate_multiplier})
        append_number(&out, word, 2, big);
    for (const int byte : {record.activity, record.io_flags, record.quality, has_1000 ? 1 : 0})
        append_number(&out, byte, 1, big);
    append_number(&out, record.time_correction, 4, big);
    append_number(&out, data_offset, 2, big);
    append_number(&out, has_1000 ? 48 : 0, 2, big);
    if (has_1000) {
        const int exponent = record.size_exponent != 0 ? record.size_exponent
                                                       : std::countr_zero(static_cast<unsigned>(record.size));
        append_number(&out, 1000, 2, big);
        append_number(&out, 0, 2, big);
        append_number(&out, record.encoding, 1, big);
        append_number(&out, big ? 1 : 0, 1, big);
        append_number(&out, exponent, 1, big);
        append_number(&out, 0, 1, big);
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

std::string sample_bytes(const std::vector<std::int32_t>& samples, bool big_endian) {
    std::string out;
    for (const std::int32_t sample : samples)
        append_number(&out, sample, 4, big_endian);
    return out;
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

VolumeBuilder& VolumeBuilder::data(const DataRecord& record, int sequence) {
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
