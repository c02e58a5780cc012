// SPDX-License-Identifier: Apache-2.0
// The lengths of data records that the headers of a volume declare, by channel and time.
#pragma once

#include "decode/data_record.h"
#include "quarry/fields.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarry {

class ChannelLengths {
public:
    // Takes a station (blockette 050), which the channels after it belong to, or a channel (052).
    void add(const Fields& blockette);

    // The declared record length, as a power of two, of the channel with these codes as a header has them (12
    // bytes: station, location, channel, network) at a time in microseconds since 1970. The last definition
    // counts.
    std::optional<int> power_at(std::string_view codes, std::int64_t time) const;

private:
    struct Epoch {
        std::int64_t start;
        std::int64_t end;
        int power;
    };
    std::string station_;
    std::string network_;
    std::map<HeaderCodes, std::vector<Epoch>> epochs_; // by codes
};

} // namespace quarry
