// SPDX-License-Identifier: Apache-2.0
// What the floors share: the logical records of a volume, all of one length, and the bytes of their fixed
// headers.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace floors {

constexpr std::size_t piece_size = 128 * 1024;
constexpr std::size_t logical_header_size = 8;

inline bool is_data(const char* record) {
    return std::string_view("DRQM").find(record[6]) != std::string_view::npos;
}

// Tells the compiler that the bytes are looked at, so that it makes them.
inline void use(const void* bytes) {
    asm volatile("" : : "r"(bytes) : "memory");
}

// Numbers of the headers, which the generator writes big-endian.
inline unsigned one(const char* at) {
    return static_cast<unsigned char>(*at);
}
inline std::uint16_t two(const char* at) {
    std::uint16_t value;
    std::memcpy(&value, at, sizeof value);
    return __builtin_bswap16(value);
}
inline std::uint32_t four(const char* at) {
    std::uint32_t value;
    std::memcpy(&value, at, sizeof value);
    return __builtin_bswap32(value);
}

// Digits up to the end of the text; no sign, no blanks.
inline int digits(std::string_view text) {
    int value = 0;
    for (const char digit : text)
        value = value * 10 + (digit - '0');
    return value;
}

// Reads the file in pieces and visits each whole record of it.
template <class Visit>
void for_each_record(const char* name, std::size_t record_size, Visit visit) {
    const int file = open(name, O_RDONLY);
    if (file < 0) {
        std::perror(name);
        std::exit(EXIT_FAILURE);
    }
    std::vector<char> piece(piece_size);
    std::size_t held = 0;
    ssize_t got;
    while ((got = read(file, piece.data() + held, piece_size - held)) > 0) {
        held += static_cast<std::size_t>(got);
        std::size_t at = 0;
        for (; held - at >= record_size; at += record_size)
            visit(piece.data() + at);
        held -= at;
        std::memmove(piece.data(), piece.data() + at, held);
    }
}

// The arguments of every floor: the volume and the length of its records.
inline std::size_t record_size_argument(int argc, char** argv) {
    const std::size_t size = argc == 3 ? static_cast<std::size_t>(std::atoi(argv[2])) : 0;
    if (size < 256 || size > piece_size) {
        std::fprintf(stderr, "usage: %s VOLUME RECORD_SIZE\n", argv[0]);
        std::exit(EXIT_FAILURE);
    }
    return size;
}

} // namespace floors
