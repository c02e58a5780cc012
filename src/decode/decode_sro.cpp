#include "quarry/decoders.h"

#include "decode/plain_words.h"
#include "decode/word_values.h"

namespace quarry {

std::int32_t decode_sro(char* data, std::int32_t nsamples, std::int32_t, int byteswap) {
    return decode_words<std::uint16_t>(data, nsamples, byteswap, sro_value);
}

} // namespace quarry
