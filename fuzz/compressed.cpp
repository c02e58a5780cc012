// SPDX-License-Identifier: Apache-2.0
// Compressed and plain input, read in large pieces and in small ones: both give the same bytes and the same
// faults. The input is a file as it stands; its last byte also chooses the size of the small pieces.

#include "fuzz.h"

#include "platform/byte_source.h"

#include <string>
#include <vector>

namespace quarry {

namespace {

constexpr std::size_t enough = std::size_t{4} << 20; // of what a small file may become

struct Delivered {
    std::string bytes = {};
    std::vector<std::string> faults = {};
    std::string compression = {};
};

Delivered drain(std::string_view input, std::size_t piece_size) {
    ByteSource source = ByteSource::of_memory(input);
    Delivered delivered;
    std::vector<char> piece(piece_size);
    bool ended = false;
    while (!ended && delivered.bytes.size() < enough) {
        const ssize_t count = source.read(piece);
        fuzz::promise(count <= static_cast<ssize_t>(piece_size), "no more bytes than there is room");
        if (count > 0)
            delivered.bytes.append(piece.data(), static_cast<std::size_t>(count));
        else if (count < 0)
            delivered.faults.push_back(describe(source.error()));
        fuzz::promise(count >= 0 || (source.error().kind != ByteError::Kind::none &&
                                     source.error().kind != ByteError::Kind::system),
                      "a fault is one of the data");
        fuzz::promise(delivered.faults.size() <= 1, "one fault");
        ended = count == 0;
    }
    fuzz::promise(!ended || source.read(piece) == 0, "the end stays the end");
    delivered.compression = source.compression() != nullptr ? source.compression() : "";
    delivered.bytes.resize(std::min(delivered.bytes.size(), enough));
    return delivered;
}

// How far the size of the pieces may shift the end of damaged data: the libraries of these formats do not say
// how much they wrote before they met the damage, or meet it sooner in one piece than in another.
std::size_t lost_at_most(const Delivered& delivered) {
    const std::string& format = delivered.compression;
    const bool shifts = format == "bzip2" || format == "xz" || format == "lzip";
    return shifts && !delivered.faults.empty() ? 4096 : 0;
}

void read(std::string_view input) {
    const std::size_t small =
        input.empty() ? 1 : 1 + static_cast<unsigned char>(input.back()) % std::size_t{64};
    const Delivered large_pieces = drain(input, 65536);
    const Delivered small_pieces =
        drain(input, large_pieces.bytes.size() < enough / 256 ? small : 4096 + small);
    const std::size_t unlike = large_pieces.bytes.size() > small_pieces.bytes.size()
                                   ? large_pieces.bytes.size() - small_pieces.bytes.size()
                                   : small_pieces.bytes.size() - large_pieces.bytes.size();
    fuzz::promise(unlike <= lost_at_most(large_pieces), "only what damage hides is lost");
    const std::size_t alike = std::min(large_pieces.bytes.size(), small_pieces.bytes.size());
    fuzz::promise(large_pieces.bytes.compare(0, alike, small_pieces.bytes, 0, alike) == 0 &&
                      large_pieces.compression == small_pieces.compression &&
                      (large_pieces.bytes.size() == enough || large_pieces.faults == small_pieces.faults),
                  "the size of the pieces changes nothing");
    fuzz::promise(!large_pieces.compression.empty() || large_pieces.bytes == input.substr(0, enough),
                  "plain input is delivered as it is");
}

} // namespace

} // namespace quarry

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quarry::fuzz::run_to_its_end(quarry::read, quarry::fuzz::text_of(data, size));
    return 0;
}
