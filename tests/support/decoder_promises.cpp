// SPDX-License-Identifier: Apache-2.0
#include "decoder_promises.h"

#include "quarry/decoders.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace quarry {

namespace {

// The same bytes in a buffer that ends with them.
std::unique_ptr<char[]> exactly(std::string_view area) {
    std::unique_ptr<char[]> buffer(new char[area.size()]);
    std::copy(area.begin(), area.end(), buffer.get());
    return buffer;
}

bool promise(bool kept, const char* what) {
    if (!kept)
        std::printf("%s broke its promise\n", what);
    return kept;
}

} // namespace

bool keeps_to_its_bytes(Decoder decoder, std::string_view area, std::int32_t nsamples, int byteswap,
                        std::int32_t room) {
    const bool usnsn = decoder == decode_usnsn;
    room = std::min(room, std::max(nsamples, usnsn ? 1 : 0));
    const std::unique_ptr<char[]> data = exactly(area);
    const std::unique_ptr<float[]> samples(new float[static_cast<std::size_t>(room)]);
    seismic_data_ptr = samples.get();
    const std::int32_t status =
        decoder(data.get(), nsamples, static_cast<std::int32_t>(area.size()), byteswap);
    const std::ptrdiff_t stored = seismic_data_ptr - samples.get();
    return usnsn ? promise(status == 0 && stored >= 0 && stored <= room, "decode_usnsn")
                 : promise(status <= 0 && stored == room, "Steim");
}

bool keeps_to_its_count(const SeedFormat& format, std::string_view area, std::int32_t nsamples,
                        int byteswap) {
    const std::unique_ptr<char[]> data = exactly(area);
    const std::int32_t count = std::max(nsamples, 0);
    const std::unique_ptr<char[]> output(
        new char[static_cast<std::size_t>(count) * static_cast<std::size_t>(format.size)]);
    seismic_data_ptr = reinterpret_cast<float*>(output.get());
    const std::int32_t status =
        format.convert(data.get(), nsamples, static_cast<std::int32_t>(area.size()), byteswap);
    const std::ptrdiff_t moved = reinterpret_cast<char*>(seismic_data_ptr) - output.get();
    const std::ptrdiff_t expected = format.size == 1 ? 0 : 4 * count;
    return promise(status == (format.size == 1 ? 1 : 0) && moved == expected, format.seed);
}

bool decodes_header(blk_dh_t dh, std::string_view area) {
    const std::unique_ptr<char[]> data = exactly(area);
    dh.data = data.get();
    char* output = nullptr;
    const char* csstype = nullptr;
    const std::int32_t status = decode_data(&dh, &output, &csstype);
    const bool kept = output != nullptr && csstype != nullptr && status >= -1 && status <= 1;
    std::free(output);
    return promise(kept, "decode_data");
}

} // namespace quarry
