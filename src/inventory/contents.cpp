// SPDX-License-Identifier: Apache-2.0
#include "inventory/contents.h"

#include "inventory/channel_codes.h"
#include "inventory/field_values.h"
#include "inventory/response.h"

#include <algorithm>
#include <utility>

namespace quarry {

namespace {

// The data of epochs, in order of the places of their blockettes.
using DataByPlace = std::vector<const EpochData*>;

DataByPlace data_by_place(const std::vector<ChannelData>& channels) {
    DataByPlace data;
    for (const ChannelData& channel : channels)
        for (const EpochData& epoch : channel.data)
            if (epoch.epoch_place >= 0)
                data.push_back(&epoch);
    std::sort(data.begin(), data.end(), [](const EpochData* one, const EpochData* other) {
        return one->epoch_place < other->epoch_place;
    });
    return data;
}

const EpochData* find_data(const DataByPlace& data, const Place& place) {
    const auto found =
        std::lower_bound(data.begin(), data.end(), place.offset,
                         [](const EpochData* one, std::int64_t offset) { return one->epoch_place < offset; });
    return found != data.end() && (*found)->epoch_place == place.offset ? *found : nullptr;
}

std::vector<ChannelRow> data_outside(const Contents& contents) {
    std::vector<ChannelRow> rows;
    for (const ChannelData& channel : contents.data)
        for (const EpochData& data : channel.data)
            if (data.epoch_place < 0)
                rows.push_back(
                    {channel.network, channel.station, channel.location, channel.channel, nullptr, &data});
    std::stable_sort(rows.begin(), rows.end(), precedes<ChannelRow, ChannelRow>);
    return rows;
}

} // namespace

void for_each_row(const Contents& contents, const std::function<void(const ChannelRow& row)>& visit) {
    const DataByPlace data = data_by_place(contents.data);
    const std::vector<ChannelRow> outside = data_outside(contents);
    auto next = outside.begin();
    for (const Network& network : contents.inventory.networks)
        for (const Station& station : network.stations)
            for (const Channel& channel : station.channels) {
                ChannelRow row{network.code, station.code, channel.location, channel.code, nullptr, nullptr};
                while (next != outside.end() && precedes(*next, row))
                    visit(*next++);
                for (const ChannelEpoch& epoch : channel.epochs) {
                    row.epoch = &epoch;
                    row.data = find_data(data, epoch.place);
                    visit(row);
                }
            }
    std::for_each(next, outside.end(), visit);
}

// A 060 refers to gains (048), too.
bool ContentsBuilder::is_needless(const Fields& fields) const {
    const int type = fields.type;
    const bool is_sensitivity =
        type == 48 || (type == 58 && integer_field(fields.fields, "stage_sequence_number") == 0);
    return responses_ == Responses::sensitivity && (is_response(type) || is_dictionary_response(type)) &&
           !is_sensitivity;
}

void ContentsBuilder::add(const ControlBlockette& blockette, const Fields& fields) {
    builder_.add(blockette, fields, !is_needless(fields));
    if (blockette.type != 52)
        return;
    const TimeSpan span = span_of(*builder_.current_channel());
    found_.expect(builder_.network_code(), builder_.station_code(),
                  text_value(fields.fields, "location_identifier"),
                  text_value(fields.fields, "channel_identifier"), span.start, span.end, blockette.offset);
}

Contents ContentsBuilder::finish() {
    return {builder_.finish(), std::exchange(found_, {}).take()};
}

} // namespace quarry
