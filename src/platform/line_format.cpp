// SPDX-License-Identifier: Apache-2.0
#include "platform/line_format.h"

#include "platform/digits.h"
#include "platform/terminal_text.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <optional>
#include <string>

namespace quarry {

// Not a part of make_room, which is in every line.
void LineBuffer::grow(std::size_t count) {
    if (before_growth_ != nullptr)
        before_growth_();
    if (count > storage_.size() - size_)
        storage_.resize(std::max(2 * storage_.size(), size_ + count + 1024));
}

namespace {

// As open_field, for all fields.
std::span<char> open_any_field(LineBuffer& out, const Conversion& conversion, char sign, std::size_t length,
                               bool zeros) {
    const std::size_t signs = sign != 0 ? 1 : 0;
    const std::size_t width = std::max<std::size_t>(conversion.width, signs + length);
    const std::size_t padding = width - signs - length;
    const std::span<char> field = out.extend(width);
    const bool sign_first = conversion.left || zeros;
    if (padding > 0) {
        const std::size_t begin = conversion.left ? signs + length : zeros ? signs : 0;
        std::fill_n(field.begin() + static_cast<std::ptrdiff_t>(begin), padding,
                    zeros && !conversion.left ? '0' : ' ');
    }
    if (sign != 0)
        field[sign_first ? 0 : padding] = sign;
    return field.subspan(conversion.left ? signs : signs + padding, length);
}

// Writes the padding and the sign (0 for none) of one field and returns the room for the `length` characters
// of its body, which the caller fills.
inline std::span<char> open_field(LineBuffer& out, const Conversion& conversion, char sign,
                                  std::size_t length, bool zeros = false) {
    if (conversion.left || zeros || sign != 0)
        return open_any_field(out, conversion, sign, length, zeros);
    const std::size_t width = std::max<std::size_t>(conversion.width, length);
    return out.extend(width, width - length).subspan(width - length); // nearly every field
}

char sign_of(const Conversion& conversion, bool negative) {
    return negative ? '-' : conversion.plus ? '+' : '\0';
}

void append_hexadecimal(LineBuffer& out, const Conversion& conversion, std::uint64_t value) {
    write_hexadecimal_digits(open_field(out, conversion, 0, hexadecimal_digit_count(value), conversion.zeros),
                             value);
}

void append_decimal(LineBuffer& out, const Conversion& conversion, bool negative, std::uint64_t magnitude) {
    write_digits(
        open_field(out, conversion, sign_of(conversion, negative), digit_count(magnitude), conversion.zeros),
        magnitude);
}

// Exact decimals of a double. A double below 2^53 is m / 2^s with m below 2^53, so that its product with a
// power of ten up to 10^22 is a fraction whose numerator is below 2^127.
__extension__ using Wide = unsigned __int128;

struct Fraction {
    Wide numerator;
    int shift; // the denominator is 2^shift
};

constexpr double exact_limit = 9007199254740992.0; // 2^53
constexpr int largest_power = 22;

// The exponent as it is stored: 1023 more than that of the power of two.
int stored_exponent(double magnitude) {
    return static_cast<int>(std::bit_cast<std::uint64_t>(magnitude) >> 52);
}

// magnitude * 10^power, for a magnitude below exact_limit and a power up to largest_power. Zero and denormals
// give 10^power / 2^1023, which is as good as what they are: all of that is rounded to zero.
Fraction scaled(double magnitude, int power) {
    constexpr std::uint64_t hidden_bit = std::uint64_t{1} << 52;
    const std::uint64_t mantissa = std::bit_cast<std::uint64_t>(magnitude) % hidden_bit + hidden_bit;
    const int first = std::min(power, 19);
    return {Wide{mantissa} * powers_of_ten[static_cast<std::size_t>(first)] *
                powers_of_ten[static_cast<std::size_t>(power - first)],
            1075 - stored_exponent(magnitude)};
}

Wide rounded_down(const Fraction& value) {
    return value.shift < 128 ? value.numerator >> value.shift : 0;
}

Wide rounded_half_even(const Fraction& value) {
    if (value.shift == 0 || value.shift >= 128) // beyond, the value is below a half
        return rounded_down(value);
    const Wide whole = value.numerator >> value.shift;
    const Wide rest = value.numerator - (whole << value.shift);
    const Wide half = Wide{1} << (value.shift - 1);
    return whole + (rest > half || (rest == half && (whole & 1) != 0) ? 1 : 0);
}

// The decimal digits and exponent of scientific notation: digits / 10^precision * 10^exponent.
struct Scientific {
    std::uint64_t digits;
    int exponent;
};

// With `precision` digits after the first, 17 at most; nothing where the exact way does not reach.
std::optional<Scientific> scientific(double magnitude, int precision) {
    if (magnitude == 0.0)
        return Scientific{0, 0};
    if (!(magnitude < exact_limit))
        return std::nullopt;
    const std::uint64_t limit = powers_of_ten[static_cast<std::size_t>(precision) + 1];
    // The exponent of two times log10(2) is the exponent of ten or one less.
    int exponent = ((stored_exponent(magnitude) - 1023) * 315653) >> 20;
    for (;; ++exponent) {
        const int power = precision - exponent;
        if (power < 0 || power > largest_power)
            return std::nullopt;
        const Fraction value = scaled(magnitude, power);
        if (rounded_down(value) >= limit)
            continue;
        const auto digits = static_cast<std::uint64_t>(rounded_half_even(value));
        return digits < limit ? Scientific{digits, exponent} : Scientific{limit / 10, exponent + 1};
    }
}

// What std::to_chars writes, which is what printf writes, for all that has no quick way here.
void append_by_library(LineBuffer& out, const Conversion& conversion, double value) {
    std::array<char, 350> body; // the largest double has 309 digits before the point
    const auto style = conversion.type == 'f'   ? std::chars_format::fixed
                       : conversion.type == 'g' ? std::chars_format::general
                                                : std::chars_format::scientific;
    const auto [end, error] =
        std::to_chars(body.data(), body.data() + body.size(), std::fabs(value), style, conversion.precision);
    const std::span<char> number(body.data(), end);
    if (conversion.type == 'E')
        for (char& character : number)
            character = character >= 'a' ? static_cast<char>(character - 'a' + 'A') : character;
    const std::span<char> to = open_field(out, conversion, sign_of(conversion, std::signbit(value)),
                                          number.size(), conversion.zeros && std::isfinite(value));
    std::copy(number.begin(), number.end(), to.begin());
}

std::span<char> open_number(LineBuffer& out, const Conversion& conversion, double value, std::size_t length) {
    return open_field(out, conversion, sign_of(conversion, std::signbit(value)), length, conversion.zeros);
}

bool append_scientific(LineBuffer& out, const Conversion& conversion, double value) {
    const auto number = scientific(std::fabs(value), conversion.precision);
    if (!number)
        return false;
    const std::size_t decimals = conversion.precision;
    const std::span<char> body = open_number(out, conversion, value, 2 + decimals + 4);
    write_digits(body.first(1), write_digits(body.subspan(2, decimals), number->digits));
    body[1] = '.';
    const std::span<char> exponent = body.last(4); // of two digits, as far as the exact way reaches
    exponent[0] = conversion.type;
    exponent[1] = number->exponent < 0 ? '-' : '+';
    write_digits(exponent.last(2), static_cast<std::uint64_t>(std::abs(number->exponent)));
    return true;
}

// The digits with a point before the last `decimals` of them; no point if that is 0.
void append_digits(LineBuffer& out, const Conversion& conversion, double value, std::uint64_t digits,
                   std::size_t decimals) {
    const std::size_t whole = std::max(digit_count(digits), decimals + 1) - decimals;
    const std::size_t point = decimals > 0 ? 1 : 0;
    const std::span<char> body = open_number(out, conversion, value, whole + point + decimals);
    if (decimals > 0) {
        body[whole] = '.';
        digits = write_digits(body.last(decimals), digits);
    }
    write_digits(body.first(whole), digits);
}

bool append_fixed(LineBuffer& out, const Conversion& conversion, double value) {
    const double magnitude = std::fabs(value);
    if (!(magnitude < exact_limit))
        return false;
    const Wide digits = rounded_half_even(scaled(magnitude, conversion.precision));
    if (digits > UINT64_MAX)
        return false;
    append_digits(out, conversion, value, static_cast<std::uint64_t>(digits), conversion.precision);
    return true;
}

// Only where the shorter notation is the one without exponent; no zeros at the end of the decimals.
bool append_general(LineBuffer& out, const Conversion& conversion, double value) {
    const double limit = static_cast<double>(powers_of_ten[conversion.precision]);
    if (value >= 0 && value < limit && value == std::trunc(value) && !std::signbit(value)) { // most rates
        append_digits(out, conversion, value, static_cast<std::uint64_t>(value), 0);
        return true;
    }
    const auto number = scientific(std::fabs(value), conversion.precision - 1);
    if (!number || number->exponent < -4 || number->exponent >= conversion.precision)
        return false;
    std::uint64_t digits = number->digits;
    int decimals = conversion.precision - 1 - number->exponent;
    for (; decimals > 0 && digits % 10 == 0; --decimals)
        digits /= 10;
    append_digits(out, conversion, value, digits, static_cast<std::size_t>(decimals));
    return true;
}

} // namespace

void LineBuffer::append_lasting(std::string_view text) {
    constexpr std::size_t worth_a_write = 16384;
    if (write_ == nullptr || text.size() < worth_a_write)
        return append(text);
    write_(*this, stream_, text);
}

LineBuffer& scratch_line() {
    static thread_local LineBuffer line;
    line.clear();
    line.set_for_terminal(false);
    line.set_stream(nullptr, nullptr);
    return line;
}

void append_value(LineBuffer& out, const Conversion& conversion, std::int64_t value) {
    const auto bits = static_cast<std::uint64_t>(value);
    append_decimal(out, conversion, value < 0, value < 0 ? 0 - bits : bits);
}

void append_value(LineBuffer& out, const Conversion& conversion, std::uint64_t value) {
    if (conversion.type == 'x')
        append_hexadecimal(out, conversion, value);
    else
        append_decimal(out, conversion, false, value);
}

void append_value(LineBuffer& out, const Conversion& conversion, double value) {
    const bool done = conversion.type == 'f'   ? append_fixed(out, conversion, value)
                      : conversion.type == 'g' ? append_general(out, conversion, value)
                                               : append_scientific(out, conversion, value);
    if (!done)
        append_by_library(out, conversion, value);
}

void append_value(LineBuffer& out, const Conversion& conversion, std::string_view text) {
    if (out.is_for_terminal() && has_controls(text)) [[unlikely]] {
        const std::string shown = shown_on_terminal(text);
        out.set_for_terminal(false);
        append_value(out, conversion, std::string_view(shown));
        return out.set_for_terminal(true);
    }
    const std::span<char> body = open_field(out, conversion, 0, text.size());
    std::copy(text.begin(), text.end(), body.begin());
}

void append_value(LineBuffer& out, const Conversion& conversion, char character) {
    append_value(out, conversion, std::string_view(&character, 1));
}

} // namespace quarry
