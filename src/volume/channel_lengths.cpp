// SPDX-License-Identifier: Apache-2.0
#include "volume/channel_lengths.h"

#include "quarry/time.h"

#include <algorithm>
#include <limits>

namespace quarry {

namespace {

std::string_view text_of_field(const Fields& blockette, std::string_view name) {
    return text_field(blockette.fields, name).value_or("");
}

// An open or unreadable time gives `otherwise`.
std::int64_t time_of_field(const Fields& blockette, std::string_view name, std::int64_t otherwise) {
    return microseconds_of(text_of_field(blockette, name)).value_or(otherwise);
}

} // namespace

void ChannelLengths::add(const Fields& blockette) {
    if (blockette.type == 50) {
        station_ = text_of_field(blockette, "station_call_letters");
        network_ = text_of_field(blockette, "network_code");
        return;
    }
    const auto power = integer_field(blockette.fields, "data_record_length");
    if (blockette.type != 52 || !power)
        return;
    using Limits = std::numeric_limits<std::int64_t>;
    epochs_[header_codes({station_, text_of_field(blockette, "location_identifier"),
                          text_of_field(blockette, "channel_identifier"), network_})]
        .push_back({time_of_field(blockette, "start_date", Limits::min()),
                    time_of_field(blockette, "end_date", Limits::max()), static_cast<int>(*power)});
}

std::optional<int> ChannelLengths::power_at(std::string_view codes, std::int64_t time) const {
    HeaderCodes key{};
    codes = codes.substr(0, key.size());
    std::replace_copy(codes.begin(), codes.end(), key.begin(), '\0', ' ');
    const auto channel = epochs_.find(key);
    if (channel == epochs_.end())
        return std::nullopt;
    const auto& epochs = channel->second;
    const auto epoch = std::find_if(epochs.rbegin(), epochs.rend(), [time](const Epoch& one) {
        return one.start <= time && time <= one.end;
    });
    return epoch == epochs.rend() ? std::nullopt : std::optional(epoch->power);
}

} // namespace quarry
