// The bytes of a 32-bit word reversed.
#pragma once

#include <cstdint>

namespace quarry {

constexpr std::uint32_t swap_4byte(std::uint32_t word) {
    return __builtin_bswap32(word);
}

} // namespace quarry
