// SPDX-License-Identifier: Apache-2.0
// What a volume holds: its headers assembled, and the data found of each channel epoch.
//
//     quarry::ContentsBuilder builder(quarry::Responses::all);
//     builder.add(blockette, fields); // each control blockette with its decoded fields
//     builder.add(record);            // each data record
//     const quarry::Contents contents = builder.finish();
//     quarry::for_each_row(contents, [](const quarry::ChannelRow& row) {
//         std::cout << row.station << ' ' << row.channel << (row.epoch ? " described" : "") << '\n';
//     });
#pragma once

#include "inventory/builder.h"
#include "quarry/data_found.h"

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

namespace quarry {

struct Contents {
    Inventory inventory;
    std::vector<ChannelData> data;
};

// A channel epoch with its data, or data that begin in no epoch of the channel.
struct ChannelRow {
    std::string_view network, station, location, channel;
    const ChannelEpoch* epoch; // null for data outside all epochs
    const EpochData* data;     // null without data
};

// In order of the codes, the epochs of a channel in order of their starts, data outside them last. The rows
// are views of the contents, made one by one.
void for_each_row(const Contents& contents, const std::function<void(const ChannelRow& row)>& visit);

// Which part of the responses is kept: they are most of the headers of many volumes.
enum class Responses : std::uint8_t {
    all,
    sensitivity // gains of stage 0; the findings are those of all responses
};

class ContentsBuilder {
public:
    explicit ContentsBuilder(Responses responses) : responses_(responses) {}

    void add(const ControlBlockette& blockette, const Fields& fields);
    void add(const DataRecord& record) { found_.add(record); }

    // What was added of the headers.
    const InventoryBuilder& headers() const { return builder_; }

    // All that was added. The builder is empty afterwards.
    Contents finish();

private:
    bool is_needless(const Fields& fields) const;

    Responses responses_;
    InventoryBuilder builder_;
    DataFound found_;
};

} // namespace quarry
