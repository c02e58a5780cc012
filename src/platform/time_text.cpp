// SPDX-License-Identifier: Apache-2.0
#include "quarry/time.h"

#include "platform/calendar.h"

#include <array>
#include <cstddef>

namespace quarry {

namespace {

constexpr std::int64_t microseconds_a_second = 1'000'000;

bool is_digit(char character) {
    return character >= '0' && character <= '9';
}

// A part of the time: what stands before it, and its least and largest value.
struct Part {
    char before; // '\0': nothing
    int least;
    int largest;
};
constexpr std::array<Part, 5> parts{
    {{'\0', 0, 9999}, {',', 1, 366}, {',', 0, 23}, {':', 0, 59}, {':', 0, 60}}};

// Takes the part from the front of `text`, blanks before its digits included; -1 if it is not there.
int take(std::string_view* text, const Part& part) {
    constexpr std::size_t most_digits = 4;
    std::size_t at = part.before != '\0' && text->starts_with(part.before) ? 1 : 0;
    if (part.before != '\0' && at == 0)
        return -1;
    while (at < text->size() && (*text)[at] == ' ')
        ++at;
    const std::size_t begin = at;
    int value = 0;
    for (; at < text->size() && at < begin + most_digits && is_digit((*text)[at]); ++at)
        value = value * 10 + ((*text)[at] - '0');
    if (at == begin || value < part.least || value > part.largest)
        return -1;
    text->remove_prefix(at);
    return value;
}

// The digits behind the point, those beyond the sixth ignored; -1 if another character follows.
std::int64_t fraction_of(std::string_view text) {
    std::int64_t value = 0;
    std::int64_t unit = microseconds_a_second;
    for (std::size_t i = text.starts_with('.') ? 1 : 0; i < text.size(); ++i) {
        if (!is_digit(text[i]))
            return -1;
        unit /= 10;
        value += unit * (text[i] - '0');
    }
    return value;
}

std::string_view trimmed(std::string_view text) {
    while (text.ends_with(' ') || text.ends_with('\0'))
        text.remove_suffix(1);
    return text;
}

} // namespace

std::optional<std::int64_t> microseconds_of(std::string_view time_text) {
    std::string_view rest = trimmed(time_text);
    std::array<int, parts.size()> values{0, 1, 0, 0, 0};
    for (std::size_t i = 0; i < parts.size() && (i == 0 || !rest.empty()); ++i)
        if ((values[i] = take(&rest, parts[i])) < 0)
            return std::nullopt;
    const std::int64_t fraction = rest.empty() ? 0 : rest.starts_with('.') ? fraction_of(rest) : -1;
    if (fraction < 0)
        return std::nullopt;
    return seconds_since_1970(values[0], values[1], values[2], values[3], values[4]) * microseconds_a_second +
           fraction;
}

} // namespace quarry
