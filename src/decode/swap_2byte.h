// The bytes of a 16-bit word exchanged.
#pragma once

#include "platform/bytes.h"

#include <cstdint>

namespace quarry {

constexpr std::uint16_t swap_2byte(std::uint16_t word) {
    return reverse_bytes(word);
}

} // namespace quarry
