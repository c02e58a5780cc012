// SPDX-License-Identifier: Apache-2.0
#include "commands/selection.h"

#include "platform/calendar.h"
#include "quarry/time.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <fnmatch.h>
#include <span>

namespace quarry {

namespace {

// --- times ---------------------------------------------------------------------------------------------

// Parts of a time, each with its letter in the forms below; J is the day of the year.
struct Parts {
    int Y = 0, M = 1, D = 1, J = -1, h = 0, m = 0, s = 0;

    int* of(char letter) {
        constexpr std::array members{&Parts::Y, &Parts::M, &Parts::D, &Parts::J,
                                     &Parts::h, &Parts::m, &Parts::s};
        const std::size_t place = std::string_view("YMDJhms").find(letter);
        return place < members.size() ? &(this->*members[place]) : nullptr;
    }
};

using Forms = std::span<const std::string_view>;
constexpr std::array<std::string_view, 6> dates{"YYYY",     "YYYY-MM",  "YYYY-MM-DD",
                                                "YYYY-JJJ", "YYYYMMDD", "YYYYJJJ"};
constexpr std::array<std::string_view, 5> times{"hh", "hh:mm", "hh:mm:ss", "hhmm", "hhmmss"};
constexpr std::array<std::string_view, 3> offsets{"hh", "hh:mm", "hhmm"};

bool reads_as(std::string_view form, std::string_view text, Parts* parts) {
    if (text.size() != form.size())
        return false;
    for (std::size_t i = 0; i < form.size(); ++i) {
        int* part = parts->of(form[i]);
        const bool is_digit = text[i] >= '0' && text[i] <= '9';
        if (part != nullptr ? !is_digit : text[i] != form[i])
            return false;
        if (part != nullptr)
            *part = (i > 0 && form[i - 1] == form[i] ? *part * 10 : 0) + (text[i] - '0');
    }
    return true;
}

// Reads the text by the first form that it has; false if it has none.
bool read_parts(Forms forms, std::string_view text, Parts* parts) {
    return std::any_of(forms.begin(), forms.end(), [=](std::string_view form) {
        Parts read = *parts;
        const bool has_form = reads_as(form, text, &read);
        *parts = has_form ? read : *parts;
        return has_form;
    });
}

bool is_time_of_day(const Parts& parts) {
    return parts.h <= 23 && parts.m <= 59 && parts.s <= 60;
}

// 0 for a date that does not exist.
int day_of_year(const Parts& parts) {
    using namespace std::chrono;
    const year of(parts.Y);
    if (parts.J >= 0)
        return parts.J <= (of.is_leap() ? 366 : 365) ? parts.J : 0;
    const year_month_day date{of, month(static_cast<unsigned>(parts.M)), day(static_cast<unsigned>(parts.D))};
    return date.ok() ? static_cast<int>((sys_days(date) - sys_days(of / January / 1)).count()) + 1 : 0;
}

// Seconds that the local time is ahead: "Z", "+01:00" or nothing.
std::optional<int> offset_of(std::string_view zone) {
    Parts parts;
    if (zone.empty() || zone == "Z")
        return 0;
    if (zone.front() == 'Z' || !read_parts(offsets, zone.substr(1), &parts) || !is_time_of_day(parts))
        return std::nullopt;
    const int seconds = parts.h * 3600 + parts.m * 60;
    return zone.front() == '-' ? -seconds : seconds;
}

// Microseconds of the digits behind the point; those beyond the sixth are cut off.
std::optional<int> fraction_of(std::string_view digits) {
    int value = 0;
    if (digits.find_first_not_of("0123456789") != std::string_view::npos)
        return std::nullopt;
    for (std::size_t i = 0; i < 6; ++i)
        value = value * 10 + (i < digits.size() ? digits[i] - '0' : 0);
    return value;
}

std::string_view cut_off(std::string_view* text, std::string_view marks) {
    const std::size_t place = std::min(text->find_first_of(marks), text->size());
    const std::string_view rest = text->substr(place);
    *text = text->substr(0, place);
    return rest;
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
    if (text.find(',') != std::string_view::npos)
        return microseconds_of(text);
    Parts parts;
    std::string_view time = cut_off(&text, "T ");
    const std::optional<int> offset = offset_of(cut_off(&time, "Z+-"));
    const std::string_view fraction = cut_off(&time, ".");
    const std::optional<int> microseconds =
        fraction_of(fraction.substr(std::min<std::size_t>(1, fraction.size())));
    const bool has_time = !time.empty();
    if (!read_parts(dates, text, &parts) || (has_time && !read_parts(times, time.substr(1), &parts)))
        return std::nullopt;
    const int day = day_of_year(parts);
    const bool may_have_fraction = time.size() > std::string_view("Thh:mm").size();
    if (day == 0 || !is_time_of_day(parts) || !offset || !microseconds ||
        (!fraction.empty() && !may_have_fraction))
        return std::nullopt;
    return (seconds_since_1970(parts.Y, day, parts.h, parts.m, parts.s) - *offset) * 1'000'000 +
           *microseconds;
}

} // namespace quarry
