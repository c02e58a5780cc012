// The bytes of a 16-bit word exchanged.
#pragma once

#include <cstdint>

namespace quarry {

constexpr std::uint16_t swap_2byte(std::uint16_t word) {
    return __builtin_bswap16(word);
}

} // namespace quarry
