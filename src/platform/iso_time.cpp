// SPDX-License-Identifier: Apache-2.0
#include "quarry/time.h"

#include "platform/digits.h"

#include <algorithm>
#include <chrono>

namespace quarry {

namespace {

using std::chrono::microseconds;

microseconds within_years(std::int64_t time) {
    using namespace std::chrono;
    constexpr microseconds first = sys_days(year(0) / January / 1).time_since_epoch();
    constexpr microseconds end = sys_days(year(10000) / January / 1).time_since_epoch();
    return std::clamp(microseconds(time), first, end - microseconds(1));
}

} // namespace

IsoTime::IsoTime(std::int64_t time) {
    using namespace std::chrono;
    const microseconds since_1970 = within_years(time);
    const days whole_days = floor<days>(since_1970);
    const year_month_day date{sys_days(whole_days)};
    const std::int64_t of_day = (since_1970 - whole_days).count();
    const std::int64_t seconds_of_day = of_day / 1'000'000;

    constexpr std::string_view form = "0000-00-00T00:00:00.000000Z";
    std::copy(form.begin(), form.end(), text_.begin());
    const auto write = [this](std::size_t place, std::size_t count, std::int64_t value) {
        write_digits(std::span(text_).subspan(place, count), static_cast<std::uint64_t>(value));
    };
    write(0, 4, int{date.year()});
    write(5, 2, unsigned{date.month()});
    write(8, 2, unsigned{date.day()});
    write(11, 2, seconds_of_day / 3600);
    write(14, 2, seconds_of_day / 60 % 60);
    write(17, 2, seconds_of_day % 60);
    write(20, 6, of_day % 1'000'000);
    size_ = form.size();
    if (of_day % 1'000'000 == 0) {
        text_[19] = 'Z';
        size_ = 20;
    }
}

} // namespace quarry
