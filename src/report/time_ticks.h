// SPDX-License-Identifier: Apache-2.0
// The ticks of a time axis: at round times, from microseconds to thousands of years apart.
//
//     for (const TimeTick& tick : time_ticks(span, 9))
//         std::cout << tick.text << ' ' << tick.context << '\n'; // 06:00 2010-02-27, 12:00, 18:00, 00:00
//         2010-02-28
#pragma once

#include "quarry/time.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quarry {

struct TimeTick {
    std::int64_t time;
    std::string text;
    std::string context; // the day or the year of the text, where it is another one than at the tick before
};

// Ticks in the span, all with the same kind of step: as many as possible, but about `most` at most.
std::vector<TimeTick> time_ticks(const TimeSpan& span, std::size_t most);

} // namespace quarry
