#include "commands/selection.h"

#include "quarry/time.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <fnmatch.h>

namespace quarry {

namespace {

// A number of that many digits at the place; -1 if it is not there.
int digits_at(std::string_view text, std::size_t at, std::size_t count) {
    int value = -1;
    if (text.size() < at + count)
        return value;
    const auto result = std::from_chars(text.data() + at, text.data() + at + count, value);
    return result.ptr == text.data() + at + count && value >= 0 ? value : -1;
}

// Year, month and day of ISO 8601 as the day of the year that SEED counts by: "2010-02-27" is "2010,058". A
// missing month or day is the first.
std::optional<std::string> seed_day(std::string_view date) {
    using namespace std::chrono;
    const bool has_month = date.size() >= 7 && date[4] == '-';
    const bool has_day = date.size() == 10 && date[7] == '-';
    if (date.size() != 4 && !(date.size() == 7 && has_month) && !(has_month && has_day))
        return std::nullopt;
    const int year_number = digits_at(date, 0, 4);
    const int month_number = has_month ? digits_at(date, 5, 2) : 1;
    const int day_number = has_day ? digits_at(date, 8, 2) : 1;
    if (year_number < 0 || month_number < 0 || day_number < 0)
        return std::nullopt;
    const year_month_day day_of_month{year(year_number), month(static_cast<unsigned>(month_number)),
                                      day(static_cast<unsigned>(day_number))};
    if (!day_of_month.ok())
        return std::nullopt;
    const auto of_year = sys_days(day_of_month) - sys_days(year(year_number) / January / 1) + days(1);
    return std::string(date.substr(0, 4)) + "," + std::to_string(of_year.count());
}

} // namespace

Codes::Codes(std::string_view list) {
    while (!list.empty()) {
        const std::size_t comma = std::min(list.find(','), list.size());
        const std::string_view code = list.substr(0, comma);
        globs_.emplace_back(code == "--" ? std::string_view() : code);
        list.remove_prefix(std::min(comma + 1, list.size()));
    }
}

bool Codes::is_matched(std::string_view code) const {
    return std::any_of(globs_.begin(), globs_.end(), [code](const std::string& glob) {
        return fnmatch(glob.c_str(), std::string(code).c_str(), 0) == 0;
    });
}

std::optional<std::int64_t> time_argument(std::string_view text) {
    if (text.empty())
        return std::nullopt;
    if (text.find(',') != std::string_view::npos)
        return microseconds_of(text);
    if (text.ends_with('Z'))
        text.remove_suffix(1);
    const std::size_t separator = std::min(text.find_first_of("T "), text.size());
    const std::optional<std::string> day = seed_day(text.substr(0, separator));
    if (!day)
        return std::nullopt;
    const std::string_view time = text.substr(std::min(separator + 1, text.size()));
    return microseconds_of(time.empty() ? *day : *day + "," + std::string(time));
}

} // namespace quarry
