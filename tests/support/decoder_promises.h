// SPDX-License-Identifier: Apache-2.0
// What the decoders promise of damaged data areas. Input and output lie in buffers of their exact size, so
// that a sanitizer sees any access beyond. Each check returns whether the promise was kept, and prints which
// was not.
#pragma once

#include "blockette/data_header.h"
#include "decode/formats.h"

#include <cstdint>
#include <string_view>

namespace quarry {

// A decoder that keeps to its bytes by itself (Steim, USNSN): any count of samples. USNSN gets room for
// `room` values where that is fewer than `nsamples`.
bool keeps_to_its_bytes(Decoder decoder, std::string_view area, std::int32_t nsamples, int byteswap,
                        std::int32_t room = INT32_MAX);

// A format whose decoder trusts its count, which is no more than the bytes hold.
bool keeps_to_its_count(const SeedFormat& format, std::string_view area, std::int32_t nsamples, int byteswap);

// decode_data with any header, whose data are the area.
bool decodes_header(blk_dh_t dh, std::string_view area);

} // namespace quarry
