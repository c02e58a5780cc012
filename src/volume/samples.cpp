// SPDX-License-Identifier: Apache-2.0
#include "quarry/samples.h"

#include "decode/decode_usnsn.h"
#include "decode/encodings.h"
#include "decode/steim_levels.h"
#include "decode/word_values.h"
#include "platform/bytes.h"

#include <algorithm>
#include <array>

namespace quarry {

namespace {

// What a decoder decodes.
struct Area {
    std::span<const char> payload;
    bool swapped; // the words are not in the host's order
    std::size_t count;
};

Samples with_missing(SampleValues values, std::size_t count) {
    const std::size_t held = std::visit([](const auto& all) { return all.size(); }, values);
    return {std::move(values), count - held};
}

// Words of `size` bytes each, one for a sample: value (place, swapped).
template <class Sample, std::size_t size, auto value>
Samples decode_units(const Area& area) {
    std::vector<Sample> samples(std::min(area.count, area.payload.size() / size));
    const char* place = area.payload.data();
    for (Sample& sample : samples) {
        sample = value(place, area.swapped);
        place += size;
    }
    return with_missing(std::move(samples), area.count);
}

template <class Word, auto value>
auto value_of_word(const char* place, bool swapped) {
    return value(load_swapped<Word>(place, swapped));
}

template <class Sample, class Word, auto value>
Samples decode_words(const Area& area) {
    return decode_units<Sample, sizeof(Word), value_of_word<Word, value>>(area);
}

std::int32_t value_of_three_bytes(const char* bytes, bool swapped) {
    std::array<char, 4> word{};
    std::copy_n(bytes, 3, word.begin() + (swapped == host_is_little_endian ? 0 : 1));
    // Its three bytes are now the upper ones of a word of the given order.
    return load_swapped<std::int32_t>(word.data(), swapped) >> 8;
}

template <class Number>
constexpr Number as_number(Number number) {
    return number;
}
constexpr float as_float(std::uint32_t word) {
    return std::bit_cast<float>(word);
}
constexpr double as_double(std::uint64_t word) {
    return std::bit_cast<double>(word);
}
constexpr std::int32_t cdsn_value(std::uint16_t word) {
    const auto [mantissa, shift] = cdsn_parts(word);
    return mantissa * (1 << shift);
}

Samples decode_text(const Area& area) {
    return with_missing(std::string(area.payload.data(), std::min(area.count, area.payload.size())),
                        area.count);
}

template <class Level>
Samples decode_steim(const Area& area) {
    constexpr int difference_words = steim::frame_size / steim::word_size - 1;
    constexpr std::size_t most_in_frame = difference_words * Level::largest_count;
    const std::size_t frames = area.payload.size() / steim::frame_size;
    std::vector<std::int32_t> samples(std::min(area.count, frames * most_in_frame));
    const auto decoded = steim::decode_frames<Level>(
        area.payload.data(), static_cast<std::int32_t>(samples.size()),
        static_cast<std::int32_t>(area.payload.size()), area.swapped, samples.data());
    samples.resize(static_cast<std::size_t>(decoded.end - samples.data()));
    Samples result = with_missing(std::move(samples), area.count);
    const auto& values = std::get<std::vector<std::int32_t>>(result.values);
    if (result.missing == 0 && !values.empty())
        result.last_agrees =
            values.back() == load_swapped<std::int32_t>(
                                 area.payload.data() + std::ptrdiff_t{2} * steim::word_size, area.swapped);
    return result;
}

Samples decode_usnsn(const Area& area) {
    std::vector<std::int32_t> samples(std::clamp<std::size_t>(area.count, 1, largest_usnsn_record));
    const UsnsnRecord record = decompress_usnsn(area.payload, samples);
    const std::size_t held = area.payload.size() < 4 ? 0 : static_cast<std::size_t>(record.samples);
    samples.resize(std::min(held, area.count));
    Samples result = with_missing(std::move(samples), area.count);
    if (record.has_trailer && result.missing == 0 && area.count > 0)
        result.last_agrees = record.result != dcmprs_last_mismatch;
    return result;
}

// Of each encoding.
struct Decoder {
    int code; // in blockette 1000
    Samples (*decode)(const Area& area);
};
constexpr std::array decoders{
    Decoder{0, decode_text},
    Decoder{1, decode_words<std::int32_t, std::int16_t, as_number<std::int16_t>>},
    Decoder{2, decode_units<std::int32_t, 3, value_of_three_bytes>},
    Decoder{3, decode_words<std::int32_t, std::int32_t, as_number<std::int32_t>>},
    Decoder{4, decode_words<float, std::uint32_t, as_float>},
    Decoder{5, decode_words<double, std::uint64_t, as_double>},
    Decoder{10, decode_steim<steim::Level1>},
    Decoder{11, decode_steim<steim::Level2>},
    Decoder{12, decode_units<std::int32_t, 3, value_of_three_bytes>},
    Decoder{13, decode_words<float, std::uint16_t, geoscope_value<3>>},
    Decoder{14, decode_words<float, std::uint16_t, geoscope_value<4>>},
    Decoder{15, decode_usnsn},
    Decoder{16, decode_words<std::int32_t, std::uint16_t, cdsn_value>},
    Decoder{30, decode_words<float, std::uint16_t, sro_value>},
    Decoder{32, decode_words<std::int32_t, std::int16_t, as_number<std::int16_t>>},
};
static_assert(std::ranges::equal(decoders, sample_encodings, {}, &Decoder::code, &SampleEncoding::code),
              "the decoders are not those of the encodings, in their order");

} // namespace

bool is_known_encoding(int encoding) {
    return find_encoding(encoding) != nullptr;
}

std::string_view encoding_name(int encoding) {
    const SampleEncoding* row = find_encoding(encoding);
    return row != nullptr ? row->name : "";
}

std::optional<Samples> decode_samples(std::span<const char> payload, int encoding, std::endian word_order,
                                      std::size_t count) {
    const SampleEncoding* row = find_encoding(encoding);
    if (row == nullptr)
        return std::nullopt;
    constexpr std::size_t most_bytes = 1 << 30; // more than any record; keeps all counts within 32 bits
    payload = payload.first(std::min(payload.size(), most_bytes));
    const auto place = static_cast<std::size_t>(row - sample_encodings.data());
    return decoders[place].decode({payload, word_order != std::endian::native, count});
}

std::optional<Samples> samples_of(const DataRecord& record) {
    if (!record.format)
        return std::nullopt;
    return decode_samples(record.payload, record.format->encoding, record.format->word_order,
                          record.header.samples);
}

} // namespace quarry
