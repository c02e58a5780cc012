// Times as ISO 8601.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace quarry {

// A time in microseconds since 1970 as "2010-02-27T06:50:00.069539Z", with a fraction only if there is one.
// Years are those from 0 to 9999; a time outside them is shown as the nearest one in them.
class IsoTime {
public:
    explicit IsoTime(std::int64_t time);
    std::string_view text() const { return {text_.data(), size_}; }

private:
    std::array<char, 27> text_;
    std::size_t size_;
};

} // namespace quarry
