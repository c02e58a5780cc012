// SPDX-License-Identifier: Apache-2.0
// The four codes of a channel, of any record that has them: compared, and in order.
#pragma once

#include <tuple>

namespace quarry {

// They live as long as the channel.
template <class Channel>
auto codes_of(const Channel& channel) {
    return std::tie(channel.network, channel.station, channel.location, channel.channel);
}

template <class One, class Other>
bool precedes(const One& one, const Other& other) {
    return codes_of(one) < codes_of(other);
}

} // namespace quarry
