// SPDX-License-Identifier: Apache-2.0
#include "platform/bytes.h"

#include <cstdlib>

namespace quarry {

void swap_two(const char* source, char* destination, int count) {
    for (int i = 0; i < count; ++i, source += 2, destination += 2)
        store(destination, reverse_bytes(load<std::uint16_t>(source)));
}

void swap_four(const char* source, char* destination, int count) {
    for (int i = 0; i < count; ++i, source += 4, destination += 4)
        store(destination, reverse_bytes(load<std::uint32_t>(source)));
}

char* bytes_dup(std::span<const char> bytes) {
    auto* copy = static_cast<char*>(std::malloc(bytes.empty() ? 1 : bytes.size()));
    if (copy != nullptr && !bytes.empty())
        std::memcpy(copy, bytes.data(), bytes.size());
    return copy;
}

} // namespace quarry
