// SPDX-License-Identifier: Apache-2.0
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <unistd.h>

namespace quarry {

std::string_view up_to_nul(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

bool is_blank(std::string_view text) {
    text = up_to_nul(text);
    return std::all_of(text.begin(), text.end(), is_white);
}

std::size_t utf8_length(std::string_view text) {
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned char first = byte(0);
    const std::size_t length = first < 0x80 ? 1 : first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (first > 0xF4 || text.size() < length)
        return 0;
    for (std::size_t at = 1; at < length; ++at)
        if ((byte(at) & 0xC0) != 0x80)
            return 0;
    const bool is_overlong = (first == 0xE0 && byte(1) < 0xA0) || (first == 0xF0 && byte(1) < 0x90);
    const bool is_surrogate = first == 0xED && byte(1) > 0x9F;
    const bool is_too_large = first == 0xF4 && byte(1) > 0x8F;
    return is_overlong || is_surrogate || is_too_large ? 0 : length;
}

std::string three_digits(int type) {
    const std::string digits = std::to_string(type);
    return std::string(digits.size() < 3 ? 3 - digits.size() : 0, '0') + digits;
}

namespace {

bool has_at(std::string_view text, std::size_t at, char wanted) {
    return at < text.size() && text[at] == wanted;
}

// Where a number may begin: behind white space and a "+", but a "+" in front of a "-" is not passed.
std::size_t number_begin(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size() && is_white(text[at]))
        ++at;
    return has_at(text, at, '+') && !has_at(text, at + 1, '-') ? at + 1 : at;
}

// Adds the digits from `at` on to the end of `value`, which holds up to 19 of them. Returns where they end.
std::size_t read_digits(std::string_view text, std::size_t at, std::uint64_t* value) {
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at)
        *value = *value * 10 + static_cast<std::uint64_t>(text[at] - '0');
    return at;
}

// The exponent at `end`, which is moved behind it; 0 if there is none. One of more than four digits is only
// large.
int read_exponent(std::string_view text, bool blank_is_plus, std::size_t* end) {
    if (!has_at(text, *end, 'e') && !has_at(text, *end, 'E'))
        return 0;
    std::size_t begin = *end + 1;
    const bool negative = has_at(text, begin, '-');
    if (negative || has_at(text, begin, '+') || (blank_is_plus && has_at(text, begin, ' ')))
        ++begin;
    std::uint64_t digits = 0;
    const std::size_t stop = read_digits(text, begin, &digits);
    if (stop == begin)
        return 0;
    *end = stop;
    const int value = stop - begin > 4 ? 9999 : static_cast<int>(digits);
    return negative ? -value : value;
}

// These powers of ten are doubles, as are integers up to 2^53: one multiplication or division of two of them
// rounds once, to the double nearest to the decimal.
constexpr std::array<double, 23> exact_powers = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                 1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr std::uint64_t exact_integers = std::uint64_t{1} << 53;

double scaled_by_ten(std::uint64_t digits, int exponent) {
    const auto value = static_cast<double>(digits);
    const double power = exact_powers[static_cast<std::size_t>(std::abs(exponent))];
    return exponent < 0 ? value / power : value * power;
}

// As parse_short_real, from where the number begins.
ParsedReal short_real(std::string_view text, std::size_t begin, bool blank_is_plus) {
    const bool negative = has_at(text, begin, '-');
    const std::size_t whole = negative ? begin + 1 : begin;
    std::uint64_t digits = 0;
    std::size_t end = read_digits(text, whole, &digits);
    std::size_t count = end - whole;
    int decimals = 0;
    if (has_at(text, end, '.')) {
        const std::size_t fraction = end + 1;
        end = read_digits(text, fraction, &digits);
        decimals = static_cast<int>(end - fraction);
        count += end - fraction;
    }
    if (count == 0 || count > 18 || digits > exact_integers)
        return {0.0, 0};
    const int exponent = read_exponent(text, blank_is_plus, &end) - decimals;
    if (std::abs(exponent) >= static_cast<int>(exact_powers.size()))
        return {0.0, 0};
    const double value = scaled_by_ten(digits, exponent);
    return {negative ? -value : value, end};
}

// What the standard library reads from `begin` on; a value out of its range by `out_of_range(its text)`.
template <typename Parsed>
Parsed parse_by_library(std::string_view text, std::size_t begin, auto out_of_range) {
    decltype(Parsed::value) value = 0;
    const char* first = text.data() + begin;
    const auto [end, error] = std::from_chars(first, text.data() + text.size(), value);
    if (error == std::errc::invalid_argument)
        return {0, 0};
    if (error == std::errc::result_out_of_range)
        value = out_of_range(std::string(first, end));
    return {value, static_cast<std::size_t>(end - text.data())};
}

long nearest_long(const std::string& number) {
    return number.starts_with('-') ? LONG_MIN : LONG_MAX;
}

// std::from_chars leaves the value alone when it is out of range; strtod tells overflow from underflow.
double out_of_range_real(const std::string& number) {
    static const locale_t c_locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return strtod_l(number.c_str(), nullptr, c_locale);
}

} // namespace

ParsedInteger parse_integer(std::string_view text) {
    constexpr std::size_t always_fits = 18;
    std::uint64_t plain = 0;
    if (read_digits(text, 0, &plain) == text.size() && !text.empty() && text.size() <= always_fits)
        return {static_cast<long>(plain), text.size()}; // most fields
    const std::size_t begin = number_begin(text);
    const bool negative = has_at(text, begin, '-');
    const std::size_t first = negative ? begin + 1 : begin;
    std::uint64_t magnitude = 0;
    const std::size_t end = read_digits(text, first, &magnitude);
    if (end == first)
        return {0, 0};
    if (end - first > always_fits)
        return parse_by_library<ParsedInteger>(text, begin, nearest_long);
    const auto value = static_cast<long>(magnitude);
    return {negative ? -value : value, end};
}

int integer_value(std::string_view text) {
    const long value = parse_integer(text).value;
    return static_cast<int>(std::clamp<long>(value, INT_MIN, INT_MAX));
}

ParsedReal parse_short_real(std::string_view text, bool blank_is_plus) {
    return short_real(text, number_begin(text), blank_is_plus);
}

ParsedReal parse_real(std::string_view text) {
    const std::size_t begin = number_begin(text);
    const ParsedReal parsed = short_real(text, begin, false);
    return parsed.length > 0 ? parsed : parse_by_library<ParsedReal>(text, begin, out_of_range_real);
}

std::string with_signed_exponent(std::string_view number) {
    std::string text(number);
    const std::size_t exponent = text.find_first_of("eE");
    if (exponent != std::string::npos && text[exponent + 1] == ' ')
        text[exponent + 1] = '+';
    return text;
}

std::string folded(std::string_view text, std::size_t indent, bool pads) {
    constexpr std::size_t width = 80;
    std::string lines;
    while (indent + text.size() > width) {
        const std::size_t end = text.rfind(' ', width - indent);
        if (end == std::string_view::npos)
            break;
        lines.append(text.substr(0, end)).append("\n").append(pads ? indent : 0, ' ');
        text.remove_prefix(end + 1);
    }
    return lines.append(text);
}

void copy_text(std::span<char> destination, std::string_view text) {
    if (destination.empty())
        return;
    text = up_to_nul(text).substr(0, destination.size() - 1);
    std::copy(text.begin(), text.end(), destination.begin());
    destination[text.size()] = '\0';
}

std::string program_path() {
    std::string path(4096, '\0');
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    path.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return path;
}

} // namespace quarry
