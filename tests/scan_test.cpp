// SPDX-License-Identifier: Apache-2.0
// Numbers from text, bare and in fields, against the C library's conversions over random texts.

#include "support.h"

#include "blockette/scan.h"
#include "platform/message_log.h"
#include "platform/text.h"
#include "state.h"

#include <array>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <random>

namespace quarry {
namespace {

// Numbers as writers of volumes write them, with a few characters changed, and texts from the characters of
// numbers.
class RandomTexts {
public:
    std::string next() {
        std::string text = pick(4) == 0 ? letters("0123456789+-.eE \tinfax", pick(16)) : number();
        for (std::size_t changes = pick(3) == 0 ? pick(3) : 0; changes > 0 && !text.empty(); --changes)
            text[pick(text.size())] = one_of(std::string_view("059+-.eE \n~x\0", 13));
        return text;
    }
    std::size_t pick(std::size_t count) { return random_() % count; }

private:
    char one_of(std::string_view set) { return set[pick(set.size())]; }
    std::string letters(std::string_view set, std::size_t count) {
        std::string text;
        while (text.size() < count)
            text += one_of(set);
        return text;
    }
    std::string number() {
        const bool plain = pick(8) != 0; // else more digits than a long or a double can hold
        std::string text = letters(" ", pick(3)) + letters("+--", pick(2));
        text += letters("0123456789", pick(plain ? 7 : 24));
        if (pick(3) == 0)
            return text;
        text += "." + letters("0123456789", pick(plain ? 12 : 30));
        if (pick(2) == 0)
            text += letters("eE", 1) + letters("+--  ", pick(2)) + letters("0123", pick(plain ? 3 : 4));
        return text + letters(" ", pick(3));
    }
    std::mt19937_64 random_{17};
};

// The text as the C library is to see it: up to a NUL and, as hexadecimal is not read, up to an x.
std::string for_the_library(std::string_view text) {
    text = up_to_nul(text);
    return std::string(text.substr(0, text.find('x')));
}

bool same(double left, double right) {
    return std::bit_cast<std::uint64_t>(left) == std::bit_cast<std::uint64_t>(right);
}

void expect_as_the_library(const std::string& text) {
    const std::string expected = for_the_library(text);
    char* end = nullptr;
    const long integer = std::strtol(expected.c_str(), &end, 10);
    const ParsedInteger parsed_integer = parse_integer(text);
    if (parsed_integer.value != integer ||
        parsed_integer.length != static_cast<std::size_t>(end - expected.c_str()))
        ADD_FAILURE() << "integer '" << text << "': " << parsed_integer.value;
    const double real = std::strtod(expected.c_str(), &end);
    const ParsedReal parsed_real = parse_real(text);
    if (!same(parsed_real.value, real) ||
        parsed_real.length != static_cast<std::size_t>(end - expected.c_str()))
        ADD_FAILURE() << "real '" << text << "': " << parsed_real.value;
}

TEST(Numbers, AsTheCLibraryReadsThem) {
    for (const std::string& text : split(
             "9007199254740993|123456789012345678e22|1e23|1e-23|1e4294967297|1e-18446744073709551615|0e99999|"
             "1e00000000003|1e999|-1e999|1e-999|4e-320|inf|-infinity|+-1|+|1,5|\v\f\r\n4|0x1p3|"
             "9223372036854775807|9223372036854775808|-9223372036854775809",
             '|'))
        expect_as_the_library(text);
    RandomTexts texts;
    for (int i = 0; i < 1000000 && !HasFailure(); ++i)
        expect_as_the_library(texts.next());
}

TEST(Numbers, OtherThanInTheCLibrary) {
    EXPECT_EQ(integer_value("9999999999"), INT_MAX);
    EXPECT_EQ(integer_value("-9999999999"), INT_MIN);
    EXPECT_TRUE(std::isnan(parse_real("nan").value));
    EXPECT_TRUE(is_blank(std::string_view(" \t\0x", 4)));
    EXPECT_FALSE(is_blank(" x"));
    EXPECT_FALSE(is_white('\x0E') || is_white('\x08') || !is_white('\r') || !is_white('\t'));
}

// Fields within a longer text, which they must not read beyond; and what is reported of those that hold no
// number.
TEST(Scan, FieldsOfNumbers) {
    name_the_log();
    testing::internal::CaptureStderr();
    RandomTexts texts;
    std::string messages;
    for (int i = 0; i < 200000 && !HasFailure(); ++i) {
        const std::string text = texts.next();
        const std::string after = texts.next();
        const std::string together = text + after;
        std::string signed_text = text.c_str(); // a real number may have a blank for the sign of its exponent
        const std::size_t exponent = signed_text.find_first_of("eE");
        if (exponent != std::string::npos && signed_text.substr(exponent + 1).starts_with(' '))
            signed_text[exponent + 1] = '+';
        char* end = nullptr;
        const auto check = [&](auto scan, auto convert, const std::string& shown, const char* begin,
                               const char* rest) {
            const std::string expected = for_the_library(shown);
            Bad_blkflag = 0;
            std::string_view cursor(together);
            const double found = scan(&cursor, static_cast<int>(text.size()));
            const double value = convert(expected.c_str());
            const bool bad = end == expected.c_str() && !is_blank(text);
            messages += bad ? begin + shown + rest : "";
            if (!same(found, value) || (Bad_blkflag != 0) != bad || cursor != after)
                ADD_FAILURE() << "'" << text << "' is " << value << ", not " << found;
        };
        check(
            scan_int, [&](const char* digits) { return static_cast<int>(std::strtol(digits, &end, 10)); },
            text.c_str(), "quarry: Could not convert '", "' to an integer\n");
        check(
            scan_double, [&](const char* digits) { return std::strtod(digits, &end); }, signed_text,
            "quarry: Couldn't convert '", "' to a real number.\n");
    }
    Bad_blkflag = 0;
    log_flush(1);
    EXPECT_TRUE(testing::internal::GetCapturedStderr() == messages); // too long to be shown
}

TEST(Scan, VariableTexts) {
    name_the_log();
    std::string out;
    for (const char* text : {" ab ~c", "abcd", "abcde~f", "abcdefgh", "~x"}) {
        std::array<char, 5> field;
        std::string_view rest = text;
        Bad_blkflag = 0;
        testing::internal::CaptureStderr();
        const char* end = scan_var_str(&rest, field);
        out += formatted("'%s': '%s' of %td, then '%s', bad %d\n", text, field.data(), end - field.data(),
                         std::string(rest).c_str(), Bad_blkflag) +
               testing::internal::GetCapturedStderr();
    }
    Bad_blkflag = 0;
    expect_recorded("Scan", "VariableTexts", out);
}

} // namespace
} // namespace quarry
