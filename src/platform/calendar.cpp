// SPDX-License-Identifier: Apache-2.0
#include "platform/calendar.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>

namespace quarry {

namespace {

constexpr std::int64_t seconds_a_day = 86400;
constexpr std::int64_t days_in_400_years = 146097;

std::int64_t floor_div(std::int64_t value, std::int64_t by) {
    return value / by - (value % by < 0 ? 1 : 0);
}

// Days from 1970-01-01 to 1 January of the year.
std::int64_t days_to_year(std::int64_t year) {
    const std::int64_t before = year - 1;
    const std::int64_t leap_days = floor_div(before, 4) - floor_div(before, 100) + floor_div(before, 400);
    return 365 * before + leap_days - 719162;
}

} // namespace

std::int64_t seconds_since_1970(int year, int doy, int hour, int minutes, int sec) {
    const std::int64_t days = days_to_year(year) + doy - 1;
    return days * seconds_a_day + std::int64_t{hour} * 3600 + std::int64_t{minutes} * 60 + sec;
}

double human_to_epoch(int year, int doy, int hour, int minutes, double sec) {
    return static_cast<double>(seconds_since_1970(year, doy, hour, minutes, 0)) + sec;
}

HumanTime epoch_to_human(double epoch) {
    if (std::isnan(epoch))
        return {};
    const auto first = static_cast<double>(days_to_year(INT_MIN) * seconds_a_day);
    const auto last = static_cast<double>(days_to_year(INT_MAX + std::int64_t{1}) * seconds_a_day - 1);
    epoch = std::clamp(epoch, first, last);

    double whole = std::floor(epoch);
    if (epoch - whole >= 1) // so close below a whole second that the difference rounds to 1
        epoch = ++whole;
    const auto seconds = static_cast<std::int64_t>(whole);
    const std::int64_t days = floor_div(seconds, seconds_a_day);
    const std::int64_t of_day = seconds - days * seconds_a_day;

    // The mean length of a year gives the year or one beside it.
    std::int64_t year = 1970 + floor_div(days * 400, days_in_400_years);
    if (days < days_to_year(year))
        --year;
    else if (days >= days_to_year(year + 1))
        ++year;
    return {static_cast<int>(year), static_cast<int>(days - days_to_year(year)) + 1,
            static_cast<int>(of_day / 3600), static_cast<int>(of_day / 60 % 60),
            static_cast<double>(of_day % 60) + (epoch - whole)};
}

} // namespace quarry
