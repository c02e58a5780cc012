#include "decode/decode_steim.h"

#include "decode/steim_frames.h"
#include "platform/message_log.h"

namespace quarry {

namespace {

// What a word holds, by its code:
//   0  nothing
//   1  four 8-bit differences, byte by byte in any byte order
//   2  two 16-bit differences, half-word by half-word, each with its own byte order
//   3  one 32-bit difference
constexpr std::array<steim::Packing, 4> packings{steim::no_differences, steim::packing(4, 8),
                                                 steim::packing(2, 16), steim::packing(1, 32)};

struct Level1 {
    static constexpr int largest_count = 4;

    template <bool Swap>
    static steim::Word take(char* place, std::uint32_t code) {
        const auto raw = load<std::uint32_t>(place);
        std::uint32_t word = raw;
        if constexpr (Swap) {
            const std::uint32_t swapped = reverse_bytes(raw);
            word = code < 2 ? raw : code == 2 ? std::rotl(swapped, 16) : swapped;
            store(place, word);
        }
        const std::uint32_t fields = steim::big_endian<Swap> || code == 1 ? steim::first_byte_on_top(raw)
                                     : code == 2                          ? steim::first_half_on_top(word)
                                                                          : word;
        return {fields, &packings[code]};
    }
};

} // namespace

std::int32_t decode_steim(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap) {
    const std::int64_t missing = steim::decode_frames<Level1>(data, nsamples, nbytes, byteswap);
    if (missing <= 0)
        return 0;
    log_complain(0, "Steim Decompression Sample Count Error at Sample: %d\n", nsamples);
    log_complain(0, "Expected %d, found %d samples... lost values replaced with zeros\n", nsamples,
                 static_cast<int>(nsamples - missing));
    return -1;
}

} // namespace quarry
