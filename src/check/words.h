// SPDX-License-Identifier: Apache-2.0
// Texts put together from words and numbers: words("rate ", 0.1, " is not ", 20) is "rate 0.1 is not 20".
#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>

namespace quarry {

// The number rounded to four significant digits.
double rounded(double number);

// Numbers are in the shortest text that reads back to the same one.
void add_word(std::string* text, std::string_view word);
void add_word(std::string* text, double number);
void add_word(std::string* text, std::int64_t number);

template <std::integral Number>
void add_word(std::string* text, Number number) {
    add_word(text, static_cast<std::int64_t>(number));
}

template <class... Words>
std::string words(const Words&... parts) {
    std::string text;
    (add_word(&text, parts), ...);
    return text;
}

} // namespace quarry
