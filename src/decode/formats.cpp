// SPDX-License-Identifier: Apache-2.0
#include "decode/formats.h"

#include "decode/encodings.h"
#include "platform/bytes.h"
#include "quarry/decoders.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace quarry {

namespace {

constexpr auto formats = std::to_array<SeedFormat>({
#define QUARRY_FORMAT_ROW(NAME, ...) {__VA_ARGS__},
    QUARRY_DATA_FORMATS(QUARRY_FORMAT_ROW)
#undef QUARRY_FORMAT_ROW
});

constexpr bool has_encoding(const SeedFormat& format) {
    return format.encoding >= 0;
}

constexpr std::size_t encoding_count =
    static_cast<std::size_t>(std::count_if(formats.begin(), formats.end(), has_encoding));

constexpr std::array<Xlat, encoding_count> names_by_encoding() {
    std::array<Xlat, encoding_count> names{};
    std::size_t count = 0;
    for (const SeedFormat& format : formats)
        if (has_encoding(format))
            names[count++] = {format.seed, format.encoding};
    std::sort(names.begin(), names.end(), [](const Xlat& a, const Xlat& b) { return a.num < b.num; });
    return names;
}
constexpr auto encodings = names_by_encoding();
static_assert(std::ranges::includes(sample_encodings, encodings, {}, &SampleEncoding::code, &Xlat::num),
              "the encoding of a format is not in encodings.h");

} // namespace

const std::span<const SeedFormat> seed_format_map = formats;
const int seed_format_count = static_cast<int>(formats.size());
const std::span<const Xlat> seedname = encodings;
const int nseedname = static_cast<int>(encodings.size());

const char* translate_number(int code, std::span<const Xlat> table) {
    const auto row =
        std::find_if(table.begin(), table.end(), [code](const Xlat& entry) { return entry.num == code; });
    return row == table.end() ? nullptr : row->name;
}

std::int32_t decode_unknown(char* data, std::int32_t, std::int32_t, int) {
    seismic_data_ptr = static_cast<float*>(static_cast<void*>(data));
    return -1;
}

std::int32_t decode_ascii(char* data, std::int32_t nsamples, std::int32_t, int) {
    if (nsamples > 0)
        std::memcpy(seismic_data_ptr, data, static_cast<std::size_t>(nsamples));
    return 1;
}

std::uint16_t swap_2byte(std::uint16_t word) {
    return reverse_bytes(word);
}

std::uint32_t swap_4byte(std::uint32_t word) {
    return reverse_bytes(word);
}

} // namespace quarry
