// SPDX-License-Identifier: Apache-2.0
// The calendar and time texts.
#include "support.h"

#include "listing/seed_utl.h"
#include "platform/calendar.h"
#include "platform/text.h"
#include "quarry/time.h"

#include <array>
#include <climits>
#include <cmath>
#include <cstring>

namespace quarry {
namespace {

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

TEST(TimeText, Fields) {
    std::string out;
    const std::string texts =
        "|  |1999|99,5|1999,5|1999,123|199,1,1:|1999,123,04|1999,1,04:5|1999,123,04:05|1999,123,4:5:6|"
        "1999,123,04:05:06|1999,123,04:05:06.7890|1999, 23,04;05:06|1999.123,04:05:06|1999,123.04:05:06|"
        "1999,123,04:05,06|99999999999,-99999999999,x|1970,001,00:00:00.0000|2005,032,10:20:30.123456789 |"
        "1969,365,23:59:59.5|2005, 32|2500,001|2016,366,23:59:60|2005,367|2005,000|2005,032,24:00:00|"
        "2005,032,10:60:00|2005,032,10:20:61|2005,032,10:20:30x|2005,032,10:20:30.1x|2005/032";
    for (const std::string& text : split(texts, '|')) {
        out += "'" + text + "':";
        for (const auto parse : {parse_time, parse_start, parse_end}) {
            int year, doy, hour, minutes;
            double sec;
            parse(text, &year, &doy, &hour, &minutes, &sec);
            out += formatted(" %d,%d,%d:%d:%g", year, doy, hour, minutes, sec);
        }
        for (const auto convert : {start_epoch, end_epoch, seed2epoch}) {
            double epoch;
            convert(text, &epoch);
            out += formatted(" %.4f", epoch);
        }
        const std::optional<std::int64_t> microseconds = microseconds_of(text);
        out += microseconds ? " " + std::to_string(*microseconds) + "\n" : " no time\n";
    }
    expect_recorded("TimeText", "Fields", out);
}

TEST(TimeText, Epochs) {
    const std::vector<std::string> ascending =
        split("1999,123,04|1999,123,04:04|1999,123,04:05:06.5|1999,123,04:05:06.6|1999,123,04:05:06.9|"
              "1999,123,04:05:07.0|1999,123,05|1999,124|1999,365|2000,000",
              '|');
    for (const std::string& first : ascending)
        for (const std::string& second : ascending)
            EXPECT_EQ(comp_time(first, second), &first < &second   ? '<'
                                                : &first > &second ? '>'
                                                                   : '=')
                << first << " " << second;
    EXPECT_EQ(comp_time("1999,123,04:05:nan", "1999,123,04:05:nan"), '<');
    std::array<char, 23> text;
    epoch2seed(human_to_epoch(1999, 123, 4, 5, 6.789), text);
    EXPECT_STREQ(text.data(), "1999,123,04:05: 6.7890");
}

TEST(Text, LengthsOfCharacters) {
    for (const char* character : {"a", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80",
                                  "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"})
        EXPECT_EQ(utf8_length(std::string(character) + "b"), std::strlen(character)) << character;
    for (const char* bytes :
         {"\x80", "\xC3", "\xC3(", "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xE2\x82(", "\xED\xA0\x80",
          "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xF0\x90\x80"})
        EXPECT_EQ(utf8_length(bytes), 0U) << bytes;
}

TEST(Text, LinesAreFoldedAtBlanks) {
    const std::string word(90, 'x');
    EXPECT_EQ(folded(word + " y", 2, true), word + " y");
    EXPECT_EQ(folded("y " + word, 2, true), "y\n  " + word);
    EXPECT_EQ(folded(std::string(40, 'a') + " " + std::string(39, 'b') + " c", 0, false),
              std::string(40, 'a') + " " + std::string(39, 'b') + "\nc");
}

} // namespace
} // namespace quarry
