#include "quarry/time.h"

#include <algorithm>
#include <chrono>
#include <cstddef>

namespace quarry {

namespace {

using std::chrono::microseconds;

void write_digits(std::int64_t value, char* place, int count) {
    for (char* digit = place + count; digit-- != place; value /= 10)
        *digit = static_cast<char>('0' + value % 10);
}

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
    write_digits(int{date.year()}, text_.data(), 4);
    write_digits(unsigned{date.month()}, &text_[5], 2);
    write_digits(unsigned{date.day()}, &text_[8], 2);
    write_digits(seconds_of_day / 3600, &text_[11], 2);
    write_digits(seconds_of_day / 60 % 60, &text_[14], 2);
    write_digits(seconds_of_day % 60, &text_[17], 2);
    write_digits(of_day % 1'000'000, &text_[20], 6);
    size_ = form.size();
    if (of_day % 1'000'000 == 0) {
        text_[19] = 'Z';
        size_ = 20;
    }
}

} // namespace quarry
