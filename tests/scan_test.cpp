// Numbers from text, bare and in fields, against the C library's conversions over random texts.

#include "support.h"

#include "blockette/scan.h"
#include "platform/message_log.h"
#include "platform/text.h"
#include "state.h"

#include <bit>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <string>

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
    for (const char* text : {"9007199254740993", "123456789012345678e22", "1e23", "1e-23", "1e4294967297",
                             "1e-18446744073709551615", "0e99999", "1e00000000003"})
        expect_as_the_library(text);
    RandomTexts texts;
    for (int i = 0; i < 1000000 && !HasFailure(); ++i)
        expect_as_the_library(texts.next());
}

// Fields within a longer text, which they must not read beyond; and what is said of those that hold no
// number.
TEST(Scan, FieldsOfNumbers) {
    name_the_log();
    testing::internal::CaptureStderr();
    RandomTexts texts;
    std::string messages;
    for (int i = 0; i < 200000 && !HasFailure(); ++i) {
        const std::string text = texts.next();
        const std::string after = texts.next();
        const auto length = static_cast<int>(text.size());
        const bool blank = is_blank(text);
        char* end = nullptr;

        Bad_blkflag = 0;
        std::string expected = for_the_library(text);
        const std::string together = text + after;
        std::string_view cursor(together);
        const int found_integer = scan_int(&cursor, length);
        const auto integer = static_cast<int>(std::strtol(expected.c_str(), &end, 10));
        const bool bad_integer = end == expected.c_str() && !blank;
        if (bad_integer)
            messages += "quarry: Could not convert '" + std::string(text.c_str()) + "' to an integer\n";
        if (found_integer != integer || (Bad_blkflag != 0) != bad_integer || cursor != after)
            ADD_FAILURE() << "integer '" << text << "': " << found_integer;

        Bad_blkflag = 0;
        std::string signed_text = text.c_str();
        const std::size_t exponent = signed_text.find_first_of("eE");
        if (exponent != std::string::npos && signed_text.substr(exponent + 1).starts_with(' '))
            signed_text[exponent + 1] = '+';
        expected = for_the_library(signed_text);
        cursor = together;
        const double found_real = scan_double(&cursor, length);
        const double real = std::strtod(expected.c_str(), &end);
        const bool bad_real = end == expected.c_str() && !blank;
        if (bad_real)
            messages += "quarry: Couldn't convert '" + signed_text + "' to a real number.\n";
        if (!same(found_real, real) || (Bad_blkflag != 0) != bad_real || cursor != after)
            ADD_FAILURE() << "real '" << text << "': " << found_real;
    }
    Bad_blkflag = 0;
    log_flush(1);
    EXPECT_TRUE(testing::internal::GetCapturedStderr() == messages); // too long to be shown
}

} // namespace
} // namespace quarry
