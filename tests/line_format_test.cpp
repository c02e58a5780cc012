// SPDX-License-Identifier: Apache-2.0
// Lines from compile-time formats against the C library's, byte by byte.

#include "platform/line_format.h"

#include <array>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace quarry {
namespace {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral" // it is one, handed on

// What the C library makes of the same format and arguments.
template <FormatText format, typename... Arguments>
std::string_view printed(const Arguments&... arguments) {
    static std::array<char, 1000> text;
    const int length = std::snprintf(text.data(), text.size(), format.characters, arguments...);
    return {text.data(), static_cast<std::size_t>(length)};
}

#pragma GCC diagnostic pop

template <FormatText format, typename... Arguments>
std::string_view ours(const Arguments&... arguments) {
    LineBuffer& line = scratch_line();
    print_line<format>(line, arguments...);
    return line.text();
}

template <FormatText format, typename... Arguments>
void expect_same(const Arguments&... arguments) {
    const std::string_view expected = printed<format>(arguments...);
    const std::string_view found = ours<format>(arguments...);
    if (found != expected) // a macro for each of millions of values would take most of the time
        ADD_FAILURE() << format.text() << " gives '" << found << "' for '" << expected << "'";
}

template <FormatText... formats>
void expect_same_for_each(const auto& values) {
    for (const auto value : values)
        if ((expect_same<formats>(value), ...); testing::Test::HasFailure())
            break;
}

// Doubles that lie where rounding is hard: decimals cut to a few places, with ties of all sizes and their
// neighbours; integers; powers of two and ten; any bits at all.
std::vector<double> hard_doubles(std::size_t count) {
    std::mt19937_64 random(7);
    std::vector<double> values;
    for (int exponent = -330; exponent <= 310; ++exponent)
        values.push_back(std::pow(10.0, exponent));
    for (int exponent = -1074; exponent < 1024; ++exponent)
        values.push_back(std::ldexp(1.0, exponent));
    while (values.size() < count) {
        const auto digits = static_cast<double>(random() % (std::uint64_t{1} << random() % 54));
        const auto places = static_cast<int>(random() % 24);
        values.push_back(digits);
        values.push_back(digits / std::pow(10.0, places));
        values.push_back((digits + 0.5) / std::pow(10.0, places % 8));
        values.push_back(std::ldexp(digits, -places)); // a tie wherever its digits end in a 5
        values.push_back(digits * std::pow(10.0, places));
        values.push_back(std::bit_cast<double>(random()));
    }
    std::vector<double> all = {std::numeric_limits<double>::infinity(), std::nan(""), 0.0,
                               std::numeric_limits<double>::max(), std::numeric_limits<double>::denorm_min()};
    for (const double value : values)
        all.insert(all.end(), {value, std::nextafter(value, 0.0), std::nextafter(value, HUGE_VAL)});
    for (std::size_t i = 0; i < all.size(); i += 2)
        all[i] = -all[i];
    all.insert(all.end(), {0.0, -0.0, std::nan(""), -std::nan(""), HUGE_VAL, -HUGE_VAL});
    return all;
}

TEST(LineFormat, RealsAsTheCLibraryPrintsThem) {
    // Each format of the listing, then flags and precisions that it does not use.
    expect_same_for_each<"%6.2f", "%10.6f", "%.1f", "%6.3f", "%8.4f", "%7.4f", "%+12.5E", "%12.5e", "%6.4e",
                         "%10.6e", "%10.5g">(hard_doubles(70000));
    expect_same_for_each<"%-12.3f|", "%+015.2f", "%.17f", "%-+20.1E|", "%020.10e", "%.17e", "%+.1g",
                         "%-9.3g|", "%012.6g", "%.17g">(hard_doubles(15000));
}

TEST(LineFormat, IntegersAsTheCLibraryPrintsThem) {
    std::mt19937_64 random(11);
    std::vector<int> values = {0, INT_MAX, INT_MIN, INT_MIN + 1};
    for (int power = 1; power <= 1000000000 / 10; power *= 10)
        values.insert(values.end(), {power - 1, power, power + 1, 1 - power, -power, -power - 1});
    for (int i = 0; i < 30000; ++i)
        values.push_back(static_cast<int>(random()) >> random() % 32);
    expect_same_for_each<"%i", "%d", "%3i", "%2d", "%03i", "%05i", "%5i", "%-6i|", "%+i", "%+06d", "%-+8d|",
                         "%-05i|">(values);
    expect_same_for_each<"%x", "%0x", "%6x", "%08x", "%-9x|">(
        std::vector<unsigned>(values.begin(), values.end()));
    EXPECT_EQ((ours<"%d %20i">(INT64_MIN, INT64_MAX)), (printed<"%ld %20li">(INT64_MIN, INT64_MAX)));
    EXPECT_EQ((ours<"%d %x">(UINT64_MAX, UINT64_MAX)), "18446744073709551615 ffffffffffffffff");
}

TEST(LineFormat, Texts) {
    const char member[5] = {'A', 'N', 'M', 'O', 'X'}; // full: no NUL
    const char shorter[5] = {'B', 'H', '\0', 'X', 'X'};
    EXPECT_EQ((ours<"%s,%7s,%-7s,%2s;">(member, member, member, member)), "ANMOX,  ANMOX,ANMOX  ,ANMOX;");
    EXPECT_EQ((ours<"%4s%-3s%s">(shorter, "", std::string("x\0y", 3))), std::string("  BH   x\0y", 10));
    EXPECT_EQ((ours<"<%c%3c%-2c>">('\0', 'R', 'D')), std::string_view("<\0  RD >", 8));
    EXPECT_EQ((ours<"">()), "");
    expect_same<"B%03i %3i %4s %-50s '%20s' %c\n">(50, 12345, "STA", "name", "2005,032", 'N');

    LineBuffer line; // grows under what it holds
    std::string expected;
    for (int i = 0; i < 3000; ++i) {
        print_line<"%i:%99.2f\n">(line, i, 1e30);
        expected += printed<"%i:%99.2f\n">(i, 1e30);
    }
    EXPECT_EQ(line.text(), expected);

    std::array<char, 8> fixed;
    print_text<"%04i,%s">(fixed, 1999, "12");
    EXPECT_STREQ(fixed.data(), "1999,12");
    print_text<"%04i,%03i">(fixed, 1999, 123);
    EXPECT_STREQ(fixed.data(), "1999,12");
}

template <typename... Arguments>
constexpr bool compiles(std::string_view format) {
    return parse_format<Arguments...>(format).fits;
}

// What the C library would take wrongly, or not at all, and what this has no code for.
TEST(LineFormat, FormatsThatDoNotCompile) {
    static_assert(compiles<int, double, char[23], const char*, char, std::uint16_t>("%i%6.2f%s%s%c%x"));
    static_assert(!compiles<>("%i") && !compiles<int>("") && !compiles<int, int>("%i"));
    static_assert(!compiles<double>("%i") && !compiles<int>("%.2f") && !compiles<char>("%i"));
    static_assert(!compiles<int>("%s") && !compiles<char[3]>("%c") && !compiles<int>("%c"));
    static_assert(!compiles<int>("%x") && !compiles<bool>("%i") && !compiles<long double>("%.2f"));
    static_assert(!compiles<int>("%") && !compiles<int>("%5") && !compiles<int>("%%") && !compiles<>("%%"));
    static_assert(!compiles<double>("%f") && !compiles<double>("%.18f") && !compiles<double>("%6.2F"));
    static_assert(!compiles<int>("% i") && !compiles<int>("%*i") && !compiles<int>("%100i"));
    static_assert(!compiles<int>("%.3i") && !compiles<const char*>("%.3s") && !compiles<long>("%li"));
    static_assert(!compiles<const char*>("%05s") && !compiles<unsigned>("%+x") && !compiles<char>("%+c"));
}

} // namespace
} // namespace quarry
