// SPDX-License-Identifier: Apache-2.0
// Times: microseconds since 1970 from the text of a control blockette, and to ISO 8601.
//
//     const std::optional<std::int64_t> time = quarry::microseconds_of("2010,058,06:50:00.0695");
//     if (time)
//         std::cout << quarry::IsoTime(*time).text() << '\n'; // 2010-02-27T06:50:00.069500Z
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#pragma GCC visibility push(default)
namespace quarry {

// Microseconds since 1970 of YYYY,DDD,HH:MM:SS.FFFF or of a form shortened from the right; what a fraction
// has beyond six digits is cut off. None if the text is blank or is not such a time.
std::optional<std::int64_t> microseconds_of(std::string_view time_text);

// A time in microseconds since 1970 as "2010-02-27T06:50:00.069539Z", with a fraction only if there is one.
// Years are those from 0 to 9999; a time outside them is shown as the nearest one in them. The text lives as
// long as the object.
class IsoTime {
public:
    explicit IsoTime(std::int64_t time);
    std::string_view text() const { return {text_.data(), size_}; }

private:
    std::array<char, 27> text_;
    std::size_t size_;
};

// A span of time that ends before `end`; both are microseconds since 1970.
struct TimeSpan {
    std::int64_t start;
    std::int64_t end;
    bool operator==(const TimeSpan&) const = default;
};

} // namespace quarry
#pragma GCC visibility pop
