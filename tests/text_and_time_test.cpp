// Numbers in text, the calendar, and time texts.
#include "blockette/scan.h"
#include "listing/seed_utl.h"
#include "platform/calendar.h"
#include "platform/text.h"
#include "quarry/time.h"
#include "state.h"

#include <array>
#include <climits>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>

namespace quarry {
namespace {

TEST(Text, Numbers) {
    const std::tuple<const char*, long, std::size_t> integers[] = {{"007", 7, 3},
                                                                   {" +12x", 12, 4},
                                                                   {"\t-3", -3, 3},
                                                                   {"+-3", 0, 0},
                                                                   {"", 0, 0},
                                                                   {"   ", 0, 0},
                                                                   {"- 3", 0, 0},
                                                                   {"0x10", 0, 1},
                                                                   {"+", 0, 0},
                                                                   {"\v\f\r\n4", 4, 5},
                                                                   {"9999999999999999999", LONG_MAX, 19},
                                                                   {"-9999999999999999999", LONG_MIN, 20}};
    for (const auto& [text, value, length] : integers) {
        EXPECT_EQ(parse_integer(text).value, value) << text;
        EXPECT_EQ(parse_integer(text).length, length) << text;
    }
    EXPECT_EQ(integer_value("9999999999"), INT_MAX);
    EXPECT_EQ(integer_value("-9999999999"), INT_MIN);
    const double infinity = std::numeric_limits<double>::infinity();
    const std::tuple<const char*, double, std::size_t> reals[] = {{"1.5", 1.5, 3},
                                                                  {" +1.50000E+03", 1500, 13},
                                                                  {"-.5x", -0.5, 3},
                                                                  {"1e999", infinity, 5},
                                                                  {"-1e999", -infinity, 6},
                                                                  {"1e-999", 0, 6},
                                                                  {"4e-320", 4e-320, 6},
                                                                  {"inf", infinity, 3},
                                                                  {"0x1p3", 0, 1},
                                                                  {"+-1", 0, 0},
                                                                  {"abc", 0, 0},
                                                                  {"1,5", 1, 1},
                                                                  {"+", 0, 0}};
    for (const auto& [text, value, length] : reals) {
        EXPECT_EQ(parse_real(text).value, value) << text;
        EXPECT_EQ(parse_real(text).length, length) << text;
    }
    EXPECT_TRUE(std::isnan(parse_real("nan").value));
    EXPECT_TRUE(is_blank(std::string_view(" \t\0x", 4)));
    EXPECT_FALSE(is_blank(" x"));
    EXPECT_FALSE(is_white('\x0E') || is_white('\x08') || !is_white('\r') || !is_white('\t'));
}

TEST(Scan, VariableTexts) {
    const std::tuple<const char*, const char*, const char*, int> texts[] = {{" ab ~c", "ab", "c", 0},
                                                                            {"abcd", "abcd", "", 0},
                                                                            {"abcde~f", "abcd", "f", 1},
                                                                            {"abcdefgh", "abcd", "", 1},
                                                                            {"~x", "", "x", 0}};
    for (const auto& [text, field, rest, bad] : texts) {
        std::array<char, 5> destination;
        std::string_view cursor = text;
        Bad_blkflag = 0;
        testing::internal::CaptureStderr();
        EXPECT_EQ(scan_var_str(&cursor, destination) - destination.data(),
                  static_cast<std::ptrdiff_t>(std::strlen(field)));
        testing::internal::GetCapturedStderr();
        EXPECT_STREQ(destination.data(), field);
        EXPECT_EQ(cursor, rest);
        EXPECT_EQ(Bad_blkflag, bad) << text;
    }
}

TEST(Calendar, BothWays) {
    const std::pair<HumanTime, double> times[] = {{{1970, 1, 0, 0, 0}, 0},
                                                  {{2000, 60, 0, 0, 0}, 951782400},   // 29 February
                                                  {{1900, 60, 0, 0, 0}, -2203891200}, // 1 March: no leap year
                                                  {{1969, 365, 23, 59, 59.5}, -0.5},
                                                  {{2005, 32, 10, 20, 30.25}, 1107253230.25}};
    for (const auto& [human, epoch] : times) {
        SCOPED_TRACE(epoch);
        EXPECT_EQ(human_to_epoch(human.year, human.doy, human.hour, human.minutes, human.sec), epoch);
        const HumanTime back = epoch_to_human(epoch);
        EXPECT_EQ(std::tie(back.year, back.doy, back.hour, back.minutes, back.sec),
                  std::tie(human.year, human.doy, human.hour, human.minutes, human.sec));
    }
    EXPECT_EQ(human_to_epoch(0, 0, 0, 0, 0), -62167305600);
    EXPECT_EQ(human_to_epoch(1999, 366, 25, -60, 3600), human_to_epoch(2000, 2, 1, 0, 0)); // out of range
    for (std::int64_t day = -1000000; day < 1000000; day += 97) { // day by day over the centuries
        const HumanTime human = epoch_to_human(static_cast<double>(day) * 86400);
        EXPECT_EQ(human_to_epoch(human.year, human.doy, 0, 0, 0), static_cast<double>(day) * 86400);
        EXPECT_TRUE(human.doy >= 1 && human.doy <= 366);
    }
    // So little before a second, a day, a year that the double next to it is what is left.
    const HumanTime tiny = epoch_to_human(-1e-20);
    EXPECT_EQ(std::tie(tiny.year, tiny.doy, tiny.hour, tiny.sec), std::make_tuple(1970, 1, 0, 0.0));
    EXPECT_EQ(epoch_to_human(-1e300).year, INT_MIN);
    EXPECT_EQ(epoch_to_human(std::nan("")).doy, 0);
}

TEST(TimeText, FieldsByLength) {
    const std::pair<const char*, std::tuple<int, int, int, int, double>> texts[] = {
        {"", {0, 0, 0, 0, 0}},
        {"1999", {1999, 0, 0, 0, 0}},
        {"99,5", {99, 0, 0, 0, 0}},
        {"1999,5", {1999, 5, 0, 0, 0}},
        {"1999,123", {1999, 123, 0, 0, 0}},
        {"199,1,1:", {199, 1, 0, 0, 0}},
        {"1999,123,04", {1999, 123, 4, 0, 0}},
        {"1999,1,04:5", {1999, 1, 4, 0, 0}},
        {"1999,123,04:05", {1999, 123, 4, 5, 0}},
        {"1999,123,4:5:6", {1999, 123, 4, 5, 0}},
        {"1999,123,04:05:06", {1999, 123, 4, 5, 6}},
        {"1999,123,04:05:06.7890", {1999, 123, 4, 5, 6.789}},
        {"1999, 23,04;05:06", {1999, 23, 4, 0, 0}},
        {"1999.123,04:05:06", {1999, 0, 0, 0, 0}},
        {"1999,123.04:05:06", {1999, 123, 0, 0, 0}},
        {"1999,123,04:05,06", {1999, 123, 4, 5, 0}},
        {"99999999999,-99999999999,x", {INT_MAX, INT_MIN, 0, 0, 0}}};
    for (const auto& [text, fields] : texts)
        for (const auto parse : {parse_time, parse_start, parse_end}) {
            int year, doy, hour, minutes;
            double sec;
            parse(text, &year, &doy, &hour, &minutes, &sec);
            EXPECT_EQ(std::make_tuple(year, doy, hour, minutes, sec), fields) << text;
        }
}

TEST(TimeText, Epochs) {
    const auto epoch_of = [](void (*convert)(std::string_view, double*), const char* text) {
        double epoch;
        convert(text, &epoch);
        return epoch;
    };
    EXPECT_EQ(epoch_of(start_epoch, ""), -9999999999.999);
    EXPECT_EQ(epoch_of(end_epoch, ""), 9999999999.999);
    EXPECT_EQ(epoch_of(seed2epoch, ""), 9999999999.999);
    for (const auto convert : {start_epoch, end_epoch, seed2epoch}) {
        EXPECT_EQ(epoch_of(convert, " "), human_to_epoch(0, 0, 0, 0, 0));
        EXPECT_EQ(epoch_of(convert, "1999,123,04:05:06.7890"), human_to_epoch(1999, 123, 4, 5, 6.789));
    }
    const std::tuple<const char*, char, const char*> ordered[] = {
        {"1999,123,04:05:06.5", '=', "1999,123,04:05:06.5"},
        {"1999,123,04:05:06.5", '<', "1999,123,04:05:06.6"},
        {"1999,365", '<', "2000,000"},
        {"1999,123,05", '>', "1999,123,04"},
        {"1999,123,04:05", '>', "1999,123,04:04"},
        {"1999,123,04:05:07.0", '>', "1999,123,04:05:06.9"},
        {"1999,123,04:05:nan", '<', "1999,123,04:05:nan"},
        {"1999,124", '>', "1999,123"}};
    for (const auto& [first, order, second] : ordered)
        EXPECT_EQ(comp_time(first, second), order) << first << " " << second;
    std::array<char, 23> text;
    epoch2seed(human_to_epoch(1999, 123, 4, 5, 6.789), text);
    EXPECT_STREQ(text.data(), "1999,123,04:05: 6.7890");
}

TEST(TimeText, Microseconds) {
    const std::tuple<const char*, std::optional<std::int64_t>> times[] = {
        {"1970,001,00:00:00.0000", 0},
        {"2005,032,10:20:30.1234", 1107253230'123400},
        {"2005,032,10:20:30.123456789 ", 1107253230'123456},
        {"1969,365,23:59:59.5", -500000},
        {"2005,032,10:20", 1107253200'000000},
        {"2005, 32", 1107216000'000000},
        {"2500,001", 16725225600'000000},
        {"2016,366,23:59:60", 1483228800'000000},
        {"", std::nullopt},
        {"  ", std::nullopt},
        {"2005,367", std::nullopt},
        {"2005,000", std::nullopt},
        {"2005,032,24:00:00", std::nullopt},
        {"2005,032,10:20:30x", std::nullopt},
        {"2005,032,10:20:30.1x", std::nullopt},
        {"2005/032", std::nullopt}};
    for (const auto& [text, expected] : times)
        EXPECT_EQ(microseconds_of(text), expected) << text;
}

} // namespace
} // namespace quarry
