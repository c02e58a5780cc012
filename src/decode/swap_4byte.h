// The bytes of a 32-bit word reversed.
#pragma once

#include "platform/bytes.h"

#include <cstdint>

namespace quarry {

constexpr std::uint32_t swap_4byte(std::uint32_t word) {
    return reverse_bytes(word);
}

} // namespace quarry
