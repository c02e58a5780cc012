// SPDX-License-Identifier: Apache-2.0
#include "quarry/decoders.h"

#include "decode/steim_levels.h"
#include "platform/message_log.h"

namespace quarry {

std::int32_t decode_steim2(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap) {
    const std::int64_t missing =
        steim::decode_through_cursor<steim::Level2>(data, nsamples, nbytes, byteswap);
    if (missing <= 0)
        return 0;
    log_complain(0, "!!! WARNING !!! Steim2 Decompression Sample Count Error at Sample: %d\n", nsamples);
    log_complain(0, "Expected %d, found %d samples... Lost values will be Padded with Zeros\n", nsamples,
                 static_cast<int>(nsamples - missing));
    return -1;
}

} // namespace quarry
