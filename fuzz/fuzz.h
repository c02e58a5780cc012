// SPDX-License-Identifier: Apache-2.0
// What the fuzz targets share. A target defines LLVMFuzzerTestOneInput for one part of the library; fuzz.cpp
// is linked into each and keeps fatal messages from ending the process.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace quarry::fuzz {

// The input as characters.
inline std::string_view text_of(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// Thrown where the program would end with this status.
struct ProcessEnd {
    int status;
};

// Runs `body` as a process of its own would run it, up to its end or to a fatal message: what it writes to
// the standard streams goes nowhere, and pending notes are written.
void run_to_its_end(void (*body)(std::string_view input), std::string_view input);

// Aborts unless what is promised was kept.
void promise(bool kept, const char* what);

// Takes an input apart. Behind its end all is zero.
class Choices {
public:
    explicit Choices(std::string_view input) : rest_(input) {}

    template <class Number>
    Number number() {
        static_assert(std::is_integral_v<Number>);
        Number value = 0;
        const std::string_view bytes = text(sizeof value);
        std::memcpy(&value, bytes.data(), bytes.size());
        return value;
    }
    std::size_t below(std::size_t limit) { return number<std::uint8_t>() % limit; }

    // The next characters, fewer at the end.
    std::string_view text(std::size_t length) {
        const std::string_view piece = rest_.substr(0, length);
        rest_.remove_prefix(piece.size());
        return piece;
    }
    std::string_view rest() const { return rest_; }
    bool at_end() const { return rest_.empty(); }

private:
    std::string_view rest_;
};

} // namespace quarry::fuzz
