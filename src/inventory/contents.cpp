#include "inventory/contents.h"

#include "inventory/field_values.h"

#include <algorithm>
#include <limits>
#include <tuple>
#include <unordered_map>

namespace quarry {

namespace {

// The data of each epoch by the place of its blockette.
using DataByPlace = std::unordered_map<std::int64_t, const EpochData*>;

DataByPlace data_by_place(const std::vector<ChannelData>& channels) {
    DataByPlace data;
    for (const ChannelData& channel : channels)
        for (const EpochData& epoch : channel.data)
            if (epoch.epoch_place >= 0 && epoch.records > 0)
                data[epoch.epoch_place] = &epoch;
    return data;
}

void add_epochs(const Contents& contents, std::vector<ChannelRow>* rows) {
    const DataByPlace data = data_by_place(contents.data);
    for (const Network& network : contents.inventory.networks)
        for (const Station& station : network.stations)
            for (const Channel& channel : station.channels)
                for (const ChannelEpoch& epoch : channel.epochs) {
                    const auto found = data.find(epoch.place.offset);
                    rows->push_back({network.code, station.code, channel.location, channel.code, &epoch,
                                     found != data.end() ? found->second : nullptr});
                }
}

void add_data_outside(const Contents& contents, std::vector<ChannelRow>* rows) {
    for (const ChannelData& channel : contents.data)
        if (channel.data.front().records > 0)
            rows->push_back({channel.network, channel.station, channel.location, channel.channel, nullptr,
                             &channel.data.front()});
}

} // namespace

std::vector<ChannelRow> channel_rows(const Contents& contents) {
    const auto codes = [](const ChannelRow& row) {
        return std::tie(row.network, row.station, row.location, row.channel);
    };
    std::vector<ChannelRow> rows;
    add_epochs(contents, &rows);
    add_data_outside(contents, &rows);
    std::stable_sort(rows.begin(), rows.end(), [&](const ChannelRow& one, const ChannelRow& other) {
        return codes(one) < codes(other);
    });
    return rows;
}

// A 060 refers to gains (048), too.
bool ContentsBuilder::is_needless(const Fields& fields) const {
    const int type = fields.type;
    const bool is_response =
        (type >= 41 && type <= 48) || (type >= 53 && type <= 62 && type != 59 && type != 60);
    const bool is_sensitivity =
        type == 48 || (type == 58 && integer_field(fields.fields, "stage_sequence_number") == 0);
    return responses_ == Responses::sensitivity && is_response && !is_sensitivity;
}

void ContentsBuilder::add(const ControlBlockette& blockette, const Fields& fields) {
    using Limits = std::numeric_limits<std::int64_t>;
    if (is_needless(fields))
        return;
    builder_.add(blockette, fields);
    if (is_volume_header(blockette.type) || blockette.type == 50) {
        network_ = text_value(fields.fields, "network_code");
        station_ = text_value(fields.fields, "station_call_letters");
    } else if (blockette.type == 52) {
        const ChannelEpoch& epoch = *builder_.current_channel();
        found_.expect(network_, station_, text_value(fields.fields, "location_identifier"),
                      text_value(fields.fields, "channel_identifier"),
                      epoch.start.microseconds.value_or(Limits::min()),
                      epoch.end.microseconds.value_or(Limits::max()), blockette.offset);
    }
}

Contents ContentsBuilder::finish() {
    network_.clear();
    station_.clear();
    return {builder_.finish(), std::exchange(found_, {}).take()};
}

} // namespace quarry
