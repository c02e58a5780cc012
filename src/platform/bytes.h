// SPDX-License-Identifier: Apache-2.0
// Byte helpers: numbers from unaligned bytes of either byte order, copies of raw bytes.
#pragma once

#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <span>

namespace quarry {

inline constexpr bool host_is_little_endian = std::endian::native == std::endian::little;

// The number with its bytes reversed. All reversal of bytes in the library is this function.
template <std::integral T>
constexpr T reverse_bytes(T value) {
    if constexpr (sizeof(T) == 2)
        return static_cast<T>(__builtin_bswap16(static_cast<std::uint16_t>(value)));
    else if constexpr (sizeof(T) == 4)
        return static_cast<T>(__builtin_bswap32(static_cast<std::uint32_t>(value)));
    else if constexpr (sizeof(T) == 8)
        return static_cast<T>(__builtin_bswap64(static_cast<std::uint64_t>(value)));
    else
        return value;
}

// A number in the host's byte order from unaligned bytes, and back.
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

// A number from unaligned bytes, which are reversed first where `swap` is set.
template <std::integral T>
T load_swapped(const void* source, bool swap) {
    const T value = load<T>(source);
    return swap ? reverse_bytes(value) : value;
}

// Reverse the bytes of each of `count` elements of two or four bytes from `source` to `destination`, which
// may be the same place. Both hold at least 2 * count or 4 * count bytes.
void swap_two(const char* source, char* destination, int count);
void swap_four(const char* source, char* destination, int count);

// A fresh copy of the bytes from malloc, released by the caller with free; never null for an empty span.
// Null with errno set if memory is exhausted.
char* bytes_dup(std::span<const char> bytes);

} // namespace quarry
