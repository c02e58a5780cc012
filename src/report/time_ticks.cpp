// SPDX-License-Identifier: Apache-2.0
#include "report/time_ticks.h"

#include <array>
#include <chrono>

namespace quarry {

namespace {

using namespace std::chrono;

constexpr std::int64_t ms = 1'000;
constexpr std::int64_t s = 1'000 * ms;
constexpr std::int64_t minute = 60 * s;
constexpr std::int64_t hour = 60 * minute;
constexpr std::int64_t day_length = 24 * hour;

// Steps of a unit, and what is shown at them: parts of 2010-02-27T06:50:00.069539.
struct Unit {
    std::int64_t length; // microseconds
    std::size_t text_at, text_size;
    std::size_t context_size; // from the beginning; 0 for none
    std::array<int, 9> counts;
};
constexpr std::array units{
    Unit{1, 11, 15, 10, {1, 2, 5, 10, 20, 50, 100, 200, 500}},
    Unit{ms, 11, 12, 10, {1, 2, 5, 10, 20, 50, 100, 200, 500}},
    Unit{s, 11, 8, 10, {1, 2, 5, 10, 15, 30}},
    Unit{minute, 11, 5, 10, {1, 2, 5, 10, 15, 30}},
    Unit{hour, 11, 5, 10, {1, 2, 3, 6, 12}},
    Unit{day_length, 5, 5, 4, {1, 2, 5, 10, 15}},
    Unit{30 * day_length, 0, 7, 0, {1, 2, 3, 6}},
    Unit{365 * day_length, 0, 4, 0, {1, 2, 5, 10, 20, 50, 100, 200, 500}},
};
constexpr const Unit& days_unit = units[5];
constexpr const Unit& months_unit = units[6];

struct Step {
    const Unit* unit;
    int count;
};

Step step_of(std::int64_t length, std::size_t most) {
    for (const Unit& unit : units)
        for (const int count : unit.counts)
            if (count > 0 && length / (unit.length * count) < static_cast<std::int64_t>(most))
                return {&unit, count};
    return {&units.back(), 1000};
}

std::int64_t time_of(const year_month_day& date) {
    return microseconds(sys_days(date).time_since_epoch()).count();
}

year_month_day date_of(std::int64_t time) {
    return year_month_day(floor<days>(sys_time<microseconds>(microseconds(time))));
}

// Days of a step from the first of the month on, but for the last one if the next first is near.
std::int64_t day_after(const year_month_day& date, int count) {
    const year_month month = date.year() / date.month();
    const auto number = [](day of_month) { return static_cast<int>(unsigned{of_month}); };
    const int next = (number(date.day()) - 1) / count * count + count + 1;
    const bool is_near_end = next - 1 + count / 2 >= number((month / std::chrono::last).day());
    return time_of(is_near_end ? (month + months(1)) / day(1) : month / day(static_cast<unsigned>(next)));
}

// The first time of the steps after that one.
std::int64_t time_after(std::int64_t time, const Step& step) {
    const std::int64_t length = step.unit->length * step.count;
    if (step.unit < &days_unit)
        return time - (time % length + length) % length + length;
    const year_month_day date = date_of(time);
    if (step.unit == &days_unit)
        return day_after(date, step.count);
    if (step.unit == &months_unit) {
        const int month = static_cast<int>(unsigned{date.month()}) - 1;
        return time_of((date.year() / 1 + months(month / step.count * step.count + step.count)) / day(1));
    }
    const int of_step = (int{date.year()} % step.count + step.count) % step.count;
    return time_of((date.year() + years(step.count - of_step)) / 1 / day(1));
}

// Always with a fraction.
std::string text_of(std::int64_t time) {
    std::string text(IsoTime(time).text());
    return text.size() > 20 ? text : text.replace(19, 1, ".000000");
}

} // namespace

std::vector<TimeTick> time_ticks(const TimeSpan& span, std::size_t most) {
    std::vector<TimeTick> ticks;
    const Step step = step_of(span.end - span.start, most);
    const Unit& unit = *step.unit;
    std::string before;
    for (std::int64_t time = time_after(span.start - 1, step); time <= span.end;
         time = time_after(time, step)) {
        const std::string text = text_of(time);
        const std::string context = text.substr(0, unit.context_size);
        ticks.push_back({time, text.substr(unit.text_at, unit.text_size), context != before ? context : ""});
        before = context;
    }
    return ticks;
}

} // namespace quarry
