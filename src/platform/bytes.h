// Byte helpers: reversed and unaligned numbers with value semantics, copies of raw bytes.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <span>

namespace quarry {

inline constexpr bool host_is_little_endian = std::endian::native == std::endian::little;

// A number of the host's order from unaligned bytes, and back.
template <class T>
T load(const void* source) {
    T value;
    std::memcpy(&value, source, sizeof value);
    return value;
}
template <class T>
void store(void* destination, T value) {
    std::memcpy(destination, &value, sizeof value);
}

// Reverse the bytes of each of `count` elements of two or four bytes from `source` to `destination`, which
// may be the same place. Both hold at least 2 * count or 4 * count bytes.
void swap_two(const char* source, char* destination, int count);
void swap_four(const char* source, char* destination, int count);

// A fresh copy of the bytes from malloc, released by the caller with free; never null for an empty span.
// Null with errno set if memory is exhausted.
char* bytes_dup(std::span<const char> bytes);

} // namespace quarry
