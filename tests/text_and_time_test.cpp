// Numbers in text, the calendar, and time texts.
#include "listing/seed_utl.h"
#include "platform/calendar.h"
#include "platform/text.h"

#include <array>
#include <climits>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace quarry {
namespace {

TEST(Text, Numbers) {
    struct {
        const char* text;
        long value;
        std::size_t length;
    } const integers[] = {{"007", 7, 3},
                          {" +12x", 12, 4},
                          {"\t-3", -3, 3},
                          {"+-3", 0, 0},
                          {"", 0, 0},
                          {"   ", 0, 0},
                          {"- 3", 0, 0},
                          {"0x10", 0, 1},
                          {"9999999999999999999", LONG_MAX, 19},
                          {"-9999999999999999999", LONG_MIN, 20}};
    for (const auto& c : integers) {
        EXPECT_EQ(parse_integer(c.text).value, c.value) << c.text;
        EXPECT_EQ(parse_integer(c.text).length, c.length) << c.text;
    }
    const double infinity = std::numeric_limits<double>::infinity();
    struct {
        const char* text;
        double value;
        std::size_t length;
    } const reals[] = {{"1.5", 1.5, 3},
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
                       {"1,5", 1, 1}};
    for (const auto& c : reals) {
        EXPECT_EQ(parse_real(c.text).value, c.value) << c.text;
        EXPECT_EQ(parse_real(c.text).length, c.length) << c.text;
    }
    EXPECT_TRUE(std::isnan(parse_real("nan").value));
    EXPECT_TRUE(is_blank(std::string_view(" \t\0x", 4)));
    EXPECT_FALSE(is_blank(" x"));
}

TEST(Calendar, BothWays) {
    struct {
        int year, doy, hour, minutes;
        double sec, epoch;
    } const cases[] = {{1970, 1, 0, 0, 0, 0},
                       {2000, 60, 0, 0, 0, 951782400},   // 29 February
                       {1900, 60, 0, 0, 0, -2203891200}, // 1 March: no leap year
                       {1969, 365, 23, 59, 59.5, -0.5},
                       {0, 0, 0, 0, 0, -62167305600},
                       {2005, 32, 10, 20, 30.25, 1107253230.25}};
    for (const auto& c : cases) {
        EXPECT_EQ(human_to_epoch(c.year, c.doy, c.hour, c.minutes, c.sec), c.epoch) << c.year;
        const HumanTime back = epoch_to_human(c.epoch);
        if (c.doy == 0)
            continue;
        EXPECT_EQ(back.year, c.year);
        EXPECT_EQ(back.doy, c.doy) << c.year;
        EXPECT_EQ(back.hour, c.hour);
        EXPECT_EQ(back.minutes, c.minutes);
        EXPECT_EQ(back.sec, c.sec);
    }
    EXPECT_EQ(human_to_epoch(1999, 366, 25, -60, 3600), human_to_epoch(2000, 2, 1, 0, 0)); // out of range
    for (std::int64_t day = -1000000; day < 1000000; day += 97) { // day by day over the centuries
        const HumanTime human = epoch_to_human(static_cast<double>(day) * 86400);
        EXPECT_EQ(human_to_epoch(human.year, human.doy, 0, 0, 0), static_cast<double>(day) * 86400);
        EXPECT_TRUE(human.doy >= 1 && human.doy <= 366);
    }
    for (const double wild : {1e300, -1e300, std::nan(""), static_cast<double>(INFINITY)})
        epoch_to_human(wild);
}

TEST(TimeText, FieldsByLength) {
    struct {
        const char* text;
        int year, doy, hour, minutes;
        double sec;
    } const cases[] = {{"", 0, 0, 0, 0, 0},
                       {"1999", 1999, 0, 0, 0, 0},
                       {"99,5", 99, 0, 0, 0, 0},
                       {"1999,5", 1999, 5, 0, 0, 0},
                       {"1999,123", 1999, 123, 0, 0, 0},
                       {"1999,123,04", 1999, 123, 4, 0, 0},
                       {"1999,123,04:05", 1999, 123, 4, 5, 0},
                       {"1999,123,04:05:06", 1999, 123, 4, 5, 6},
                       {"1999,123,04:05:06.7890", 1999, 123, 4, 5, 6.789},
                       {"1999, 23,04;05:06", 1999, 23, 4, 0, 0}};
    for (const auto& c : cases) {
        int year, doy, hour, minutes;
        double sec;
        parse_time(c.text, &year, &doy, &hour, &minutes, &sec);
        EXPECT_EQ(std::make_tuple(year, doy, hour, minutes, sec),
                  std::make_tuple(c.year, c.doy, c.hour, c.minutes, c.sec))
            << c.text;
    }
    double epoch;
    start_epoch("", &epoch);
    EXPECT_EQ(epoch, -9999999999.999);
    end_epoch("", &epoch);
    EXPECT_EQ(epoch, 9999999999.999);
    seed2epoch("", &epoch);
    EXPECT_EQ(epoch, 9999999999.999);
    start_epoch(" ", &epoch);
    EXPECT_EQ(epoch, human_to_epoch(0, 0, 0, 0, 0));
    EXPECT_EQ(comp_time("1999,123,04:05:06.5", "1999,123,04:05:06.5"), '=');
    EXPECT_EQ(comp_time("1999,123,04:05:06.5", "1999,123,04:05:06.6"), '<');
    EXPECT_EQ(comp_time("1999,365", "2000,000"), '<');
    EXPECT_EQ(comp_time("1999,123,05", "1999,123,04"), '>');
    EXPECT_EQ(comp_time("1999,123,04:05", "1999,123,04:04"), '>');
    EXPECT_EQ(comp_time("1999,123,04:05:07.0", "1999,123,04:05:06.9"), '>');
    EXPECT_EQ(comp_time("1999,123,04:05:nan", "1999,123,04:05:nan"), '<');
    std::array<char, 23> text;
    epoch2seed(human_to_epoch(1999, 123, 4, 5, 6.789), text);
    EXPECT_STREQ(text.data(), "1999,123,04:05: 6.7890");
}

} // namespace
} // namespace quarry
