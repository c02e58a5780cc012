// SPDX-License-Identifier: Apache-2.0
// Text helpers: numbers from bounded text, blankness, fixed-capacity members, the program's own path.
// Nothing here depends on the locale.
#pragma once

#include <cstddef>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

namespace quarry {

// The six characters of white space.
inline bool is_white(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

// True if the text is empty or only white space. The text ends at its first NUL.
bool is_blank(std::string_view text);

// The text without the characters on both sides that are padding.
template <class IsPadding>
constexpr std::string_view trimmed(std::string_view text, IsPadding is_padding) {
    while (!text.empty() && is_padding(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && is_padding(text.back()))
        text.remove_suffix(1);
    return text;
}

// The bytes of the character of UTF-8 that the text, which is not empty, begins with; 0 if it begins with
// none.
std::size_t utf8_length(std::string_view text);

// A blockette's type as it is written: with zeros in front.
std::string three_digits(int type);

// The text up to its first NUL.
std::string_view up_to_nul(std::string_view text);

// A converted number and the count of characters it took; `length` is 0 if nothing was converted (then
// `value` is 0).
struct ParsedInteger {
    long value;
    std::size_t length;
};
struct ParsedReal {
    double value;
    std::size_t length;
};

// A base-10 integer at the start of the text: leading white space and a sign are accepted, conversion stops
// at the first other character; a value out of range becomes the nearest long.
ParsedInteger parse_integer(std::string_view text);

// The same without the length and as an int: what a fixed field holds, 0 if it holds no number.
int integer_value(std::string_view text);

// A real number at the start of the text: what std::from_chars takes (so inf and nan, no hexadecimal), after
// optional white space and "+". Out of range gives what strtod gives in the C locale.
ParsedReal parse_real(std::string_view text);

// The quick part of it: a decimal of at most 18 digits, at most 2^53 without its point, times a power of ten
// within 10^-22 and 10^22 gives what parse_real gives; `length` is 0 for any other text. With
// `blank_is_plus` a blank stands for the "+" of the exponent.
ParsedReal parse_short_real(std::string_view text, bool blank_is_plus = false);

// The number with a "+" where some writers leave a blank for the sign of its exponent ("1.5E 03").
std::string with_signed_exponent(std::string_view number);

// The text in lines of at most 80 characters, broken at blanks, where it begins in the column `indent`,
// counted from 0. The further lines begin with so many blanks, if `pads`.
std::string folded(std::string_view text, std::size_t indent, bool pads = true);

// Copies as much of `text` as fits into `destination` and ends it with a NUL.
void copy_text(std::span<char> destination, std::string_view text);

// The text of a fixed-capacity member.
template <std::size_t N>
std::string_view member_text(const char (&member)[N]) {
    if constexpr (N > 8) {
        return {member, strnlen(member, N)};
    } else {
        std::size_t length = 0; // of a code: a data record has many
        while (length < N && member[length] != '\0')
            ++length;
        return {member, length};
    }
}

// Path of the running executable, empty if it is unknown.
std::string program_path();

} // namespace quarry
