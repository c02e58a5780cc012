// SPDX-License-Identifier: Apache-2.0
// Changes files; where one is gzip and its data are sound, its trailer becomes right again, so that changes
// of the data reach beyond the checksum.

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>
#include <zlib.h>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t largest);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t largest,
                                               unsigned int seed);

namespace {

constexpr std::size_t header_size = 10; // without a name or other optional parts
constexpr std::size_t trailer_size = 8;

// Decompresses the data behind the header. Returns their length, or 0 if they are not sound.
std::size_t inflate_all(const std::uint8_t* data, std::size_t size, std::uint32_t* checksum,
                        std::uint32_t* length) {
    z_stream stream{};
    stream.next_in = const_cast<Bytef*>(data);
    stream.avail_in = static_cast<unsigned int>(size);
    std::vector<Bytef> out(std::size_t{1} << 16);
    int result = inflateInit2(&stream, -MAX_WBITS);
    while (result == Z_OK && stream.total_out < (1U << 20)) {
        stream.next_out = out.data();
        stream.avail_out = static_cast<unsigned int>(out.size());
        result = inflate(&stream, Z_NO_FLUSH);
        const auto written = static_cast<unsigned int>(out.size()) - stream.avail_out;
        *checksum = static_cast<std::uint32_t>(crc32(*checksum, out.data(), written));
        *length += written;
    }
    inflateEnd(&stream);
    return result == Z_STREAM_END ? stream.total_in : 0;
}

void put(std::uint8_t* place, std::uint32_t value) {
    for (int i = 0; i < 4; ++i)
        place[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

void repair_trailer(std::uint8_t* data, std::size_t size) {
    if (size < header_size + trailer_size || data[0] != 0x1f || data[1] != 0x8b || data[3] != 0)
        return;
    std::uint32_t checksum = 0;
    std::uint32_t length = 0;
    const std::size_t end =
        header_size + inflate_all(data + header_size, size - header_size, &checksum, &length);
    if (end == header_size || end + trailer_size > size)
        return;
    put(data + end, checksum);
    put(data + end + 4, length);
}

} // namespace

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t largest,
                                    unsigned int seed) {
    const std::size_t changed = LLVMFuzzerMutate(data, size, largest);
    if (std::minstd_rand(seed)() % 4 != 0)
        repair_trailer(data, changed);
    return changed;
}
