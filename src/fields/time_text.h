// Times as control blockettes write them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quarry {

// Microseconds since 1970 of YYYY,DDD,HH:MM:SS.FFFF or of a form shortened from the right; what a fraction
// has beyond six digits is cut off. None if the text is blank or is not such a time.
std::optional<std::int64_t> microseconds_of(std::string_view time_text);

} // namespace quarry
