// SPDX-License-Identifier: Apache-2.0
// Assembles an inventory from control blockettes, one at a time in the order of the input.
//
//     quarry::InventoryBuilder builder;
//     builder.add(blockette, quarry::decode_blockette(blockette.type, blockette.text));
//     const quarry::Inventory inventory = builder.finish();
//
// Responses that go on in further blockettes of the same type and stage, in a row, are joined. Two
// consecutive blockettes with the same text are two responses.
#pragma once

#include "inventory/keys.h"
#include "quarry/inventory.h"

#include <string>

namespace quarry {

class InventoryBuilder {
public:
    // Takes a blockette of any type with its decoded fields. What it keeps is copied. A response need not be
    // kept: then it only counts for the findings.
    void add(const ControlBlockette& blockette, const Fields& fields, bool keeps_response = true);

    // The codes of the station that blockettes now belong to, empty without one, and the channel, null
    // without one; valid until the next call.
    const std::string& network_code() const { return network_code_; }
    const std::string& station_code() const { return station_code_; }
    const ChannelEpoch* current_channel() const { return channel_; }

    // All that was added. The builder is empty afterwards.
    Inventory finish();

private:
    void add_volume(const Place& place, const Fields& fields);
    void add_station(const Place& place, const Fields& fields);
    void add_channel(const Place& place, const Fields& fields);
    void add_comment(const Place& place, const Fields& fields);
    void add_response(const Place& place, const Fields& fields, bool is_kept);
    void add_definition(const Place& place, const Fields& fields, bool is_kept);
    void add_reference(const Place& place, const Fields& fields);
    bool continues(const Response& response, const Fields& fields) const;
    Station* current_station();
    Stage* stage(Integer number);
    void report_orphan(FindingKind kind, const Place& place);
    void end_volume();

    Inventory inventory_;
    KeyBook keys_;
    std::string network_code_;
    std::string station_code_;
    std::int64_t station_offset_ = -1;
    StationEpoch* station_ = nullptr; // the last 050
    ChannelEpoch* channel_ = nullptr; // the last 052 after it

    // The response in the blockette before this one, if that was one.
    std::shared_ptr<Response> last_;
    Integer last_stage_;
    std::string last_text_;
};

} // namespace quarry
