#include "decode/decode_steim2.h"

#include "decode/steim_frames.h"
#include "platform/message_log.h"

namespace quarry {

namespace {

using steim::no_differences;
using steim::packing;

// What a word holds, by its code and the two bits on its top:
//   0      nothing
//   1      four 8-bit differences, byte by byte in any byte order, and no bits on top
//   2  00  nothing
//      01  one 30-bit difference
//      10  two 15-bit differences
//      11  three 10-bit differences
//   3  00  five 6-bit differences
//      01  six 5-bit differences
//      10  seven 4-bit differences, two bits unused
//      11  nothing
constexpr std::array<steim::Packing, 16> packings{
    no_differences, no_differences, no_differences, no_differences, //
    packing(4, 8),  packing(4, 8),  packing(4, 8),  packing(4, 8),  //
    no_differences, packing(1, 30), packing(2, 15), packing(3, 10), //
    packing(5, 6),  packing(6, 5),  packing(7, 4),  no_differences,
};

struct Level2 {
    static constexpr int largest_count = 7;

    template <bool Swap>
    static steim::Word take(char* place, std::uint32_t code) {
        const auto raw = load<std::uint32_t>(place);
        std::uint32_t word = raw;
        if constexpr (Swap) {
            word = code < 2 ? raw : reverse_bytes(raw);
            store(place, word);
        }
        const std::uint32_t fields =
            steim::big_endian<Swap> || code == 1 ? steim::first_byte_on_top(raw) : word;
        return {fields, &packings[code << 2 | fields >> 30]};
    }
};

} // namespace

std::int32_t decode_steim2(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap) {
    const std::int64_t missing = steim::decode_frames<Level2>(data, nsamples, nbytes, byteswap);
    if (missing <= 0)
        return 0;
    log_complain(0, "!!! WARNING !!! Steim2 Decompression Sample Count Error at Sample: %d\n", nsamples);
    log_complain(0, "Expected %d, found %d samples... Lost values will be Padded with Zeros\n", nsamples,
                 static_cast<int>(nsamples - missing));
    return -1;
}

} // namespace quarry
