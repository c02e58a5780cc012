// SPDX-License-Identifier: Apache-2.0
#include "check/words.h"

#include <array>
#include <charconv>
#include <cmath>

namespace quarry {

namespace {

template <class Number>
void add_number(std::string* text, Number number) {
    std::array<char, 32> digits; // NOLINT(*-member-init): to_chars fills it
    text->append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

} // namespace

double rounded(double number) {
    if (number == 0 || !std::isfinite(number))
        return number;
    // Powers of ten are exact where they are no fractions.
    const double digits = 3 - std::floor(std::log10(std::abs(number)));
    const double scale = std::pow(10, std::abs(digits));
    return digits < 0 ? std::round(number / scale) * scale : std::round(number * scale) / scale;
}

void add_word(std::string* text, std::string_view word) {
    *text += word;
}
void add_word(std::string* text, double number) {
    add_number(text, number);
}
void add_word(std::string* text, std::int64_t number) {
    add_number(text, number);
}

} // namespace quarry
