// SPDX-License-Identifier: Apache-2.0
// Decimal digits of unsigned numbers, written two at a time.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace quarry {

constexpr std::array<std::uint64_t, 20> make_powers_of_ten() {
    std::array<std::uint64_t, 20> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i)
        powers[i] = powers[i - 1] * 10;
    return powers;
}
inline constexpr auto powers_of_ten = make_powers_of_ten();

constexpr std::array<char, 200> make_digit_pairs() {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}
inline constexpr auto digit_pairs = make_digit_pairs();

// The count of decimal digits, at least 1.
inline std::size_t digit_count(std::uint64_t value) {
    value |= 1; // 0 has a digit, too; the other values keep their count
    const std::size_t guess = std::bit_width(value) * 1233 >> 12; // the count or one less
    return guess + (value >= powers_of_ten[guess] ? 1 : 0);
}

// Fills the span from its end with the last digits of the value, with zeros in front. Returns the rest.
inline std::uint64_t write_digits(std::span<char> to, std::uint64_t value) {
    std::size_t left = to.size();
    for (; left >= 2; left -= 2, value /= 100) {
        const std::size_t pair = 2 * (value % 100);
        to[left - 2] = digit_pairs[pair];
        to[left - 1] = digit_pairs[pair + 1];
    }
    if (left == 0)
        return value;
    to[0] = static_cast<char>('0' + value % 10);
    return value / 10;
}

// The count of hexadecimal digits, at least 1.
inline std::size_t hexadecimal_digit_count(std::uint64_t value) {
    return static_cast<std::size_t>(16 - std::countl_zero(value | 1) / 4);
}

// Fills the span from its end with the last hexadecimal digits of the value, with zeros in front.
inline void write_hexadecimal_digits(std::span<char> to, std::uint64_t value) {
    for (std::size_t i = to.size(); i > 0; value >>= 4)
        to[--i] = "0123456789abcdef"[value & 15];
}

} // namespace quarry
