// SPDX-License-Identifier: Apache-2.0
#include "quarry/decoders.h"

namespace quarry {

std::int32_t decode_asro(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap) {
    return decode_sro(data, nsamples, nbytes, byteswap);
}

} // namespace quarry
