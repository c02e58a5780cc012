// SPDX-License-Identifier: Apache-2.0
// USNSN compression without the state of the public functions (quarry/decoders.h).
#pragma once

#include <cstdint>
#include <span>

namespace quarry {

inline constexpr std::int32_t largest_usnsn_record = 1 + 0xFFFF; // in samples

// What a record of USNSN holds.
struct UsnsnRecord {
    std::int32_t result = 0;  // as dcmprs returns it
    std::int64_t samples = 0; // in it: those after its end or after an overflow do not count
    bool has_trailer = false;
};

// Decompresses the record, most significant byte first, to `samples`, which have room for at least one, up to
// the end of the record or of the room. Bytes beyond the record count as zero. Prints nothing.
UsnsnRecord decompress_usnsn(std::span<const char> record, std::span<std::int32_t> samples);

} // namespace quarry
