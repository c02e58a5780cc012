// SPDX-License-Identifier: Apache-2.0
// Which part of a volume a command looks at: channels by their codes, and a span of time.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarry {

// A list of codes or globs ("IU,G?"); an empty one takes every code.
class Codes {
public:
    Codes() = default;
    // Separated by commas; "--" stands for a blank code.
    explicit Codes(std::string_view list);

    bool takes(std::string_view code) const { return globs_.empty() || is_matched(code); }

private:
    bool is_matched(std::string_view code) const;

    std::vector<std::string> globs_;
};

struct Selection {
    using Limits = std::numeric_limits<std::int64_t>;

    Codes networks = {};
    Codes stations = {};
    Codes locations = {};
    Codes channels = {};
    std::int64_t from = Limits::min(); // microseconds since 1970
    std::int64_t to = Limits::max();   // the first that is not taken

    bool takes_station(std::string_view network, std::string_view station) const {
        return networks.takes(network) && stations.takes(station);
    }
    bool takes_channel(std::string_view location, std::string_view channel) const {
        return locations.takes(location) && channels.takes(channel);
    }
    bool has_span() const { return from > Limits::min() || to < Limits::max(); }
    // True if what goes from the first to the last microsecond lies in the span or reaches into it.
    bool takes_span(std::int64_t first, std::int64_t last) const { return last >= from && first < to; }
};

// Microseconds since 1970 of a time as a user writes it: ISO 8601 (2010-02-27T06:50:00.5Z,
// 2010-058T07:50+01:00, 20100227T065000), as SEED writes it (2010,058,06:50:00.5), or either shortened from
// the right; none for another text. Without an offset it is UTC.
std::optional<std::int64_t> time_argument(std::string_view text);

} // namespace quarry
