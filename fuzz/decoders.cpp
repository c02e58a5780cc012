// SPDX-License-Identifier: Apache-2.0
// Data areas through the decoders, directly and through decode_data. The input: how to decode, the word
// order, the count of samples, and then the data area.

#include "fuzz.h"

#include "decoder_promises.h"

#include <algorithm>

namespace quarry {

namespace {

// Mostly as many as a record has.
std::int32_t count_of_samples(fuzz::Choices* choices) {
    constexpr std::int32_t most = 100000;
    const auto wide = choices->number<std::int32_t>();
    return wide % 8 != 0 ? (wide & 0xFFF) : std::clamp(wide, INT32_MIN, most);
}

blk_dh_t header(std::int32_t type, int byteswap, std::int32_t nsamples, std::int32_t area_size) {
    blk_dh_t dh{};
    dh.type = type - 1;
    dh.byteswap = -byteswap;
    dh.nsamps = nsamples;
    dh.beg_data = nsamples % 300;
    dh.length = std::max(dh.beg_data, 0) + area_size;
    return dh;
}

void decode(std::string_view input) {
    fuzz::Choices choices(input);
    const auto how = static_cast<std::int32_t>(choices.number<std::uint8_t>());
    const int byteswap = choices.number<std::uint8_t>() & 1;
    const std::int32_t nsamples = count_of_samples(&choices);
    const std::string_view area = choices.rest();
    const auto area_size = static_cast<std::int32_t>(area.size());
    const std::int32_t type = how / 4 % (seed_format_count + 2);
    const SeedFormat& format = seed_format_map[static_cast<std::size_t>(type % seed_format_count)];
    bool kept = true;
    if (how % 2 == 0)
        kept = decodes_header(header(type, byteswap, nsamples, area_size), area);
    else if (format.raw_size > 0)
        kept = keeps_to_its_count(format, area, std::min(nsamples, area_size / format.raw_size), byteswap);
    else if (format.convert != decode_unknown)
        kept = keeps_to_its_bytes(format.convert, area, nsamples, byteswap);
    fuzz::promise(kept, format.seed);
}

} // namespace

} // namespace quarry

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quarry::fuzz::run_to_its_end(quarry::decode, quarry::fuzz::text_of(data, size));
    return 0;
}
