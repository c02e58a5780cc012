// SPDX-License-Identifier: Apache-2.0
#include "inventory/builder.h"

#include "decode/catalogue.h"
#include "inventory/dictionary.h"
#include "inventory/field_values.h"
#include "inventory/overlaps.h"
#include "inventory/response.h"
#include "inventory/station.h"

#include <algorithm>

namespace quarry {

namespace {

// The element whose key is `key`, in order of the keys; it is added if it is missing.
template <class T, class Key, class KeyOf>
T* find_or_add(std::vector<T>* sorted, const Key& key, KeyOf key_of, T added) {
    auto place = std::lower_bound(sorted->begin(), sorted->end(), key,
                                  [&](const T& one, const Key& other) { return key_of(one) < other; });
    if (place == sorted->end() || key_of(*place) != key)
        place = sorted->insert(place, std::move(added));
    return &*place;
}

// Gives back the room that lists took in advance: there are many short ones.
void shrink(ChannelEpoch* epoch) {
    epoch->stages.shrink_to_fit();
    for (Stage& stage : epoch->stages)
        stage.responses.shrink_to_fit();
}

// The shared response of a reference in the dictionary.
void resolve(const Dictionary& dictionary, StageResponse* one) {
    if (one->response != nullptr)
        return;
    const auto* found = find_definition(dictionary.responses, one->key, one->place.offset);
    if (found != nullptr)
        one->response = *found;
}

void finish_epoch(const Dictionary& dictionary, ChannelEpoch* epoch) {
    std::stable_sort(epoch->stages.begin(), epoch->stages.end(),
                     [](const Stage& one, const Stage& other) { return one.number < other.number; });
    for (Stage& stage : epoch->stages)
        for (StageResponse& one : stage.responses)
            resolve(dictionary, &one);
}

// Most are in order already, and sorting needs room for half of them.
template <class Epoch>
void sort_by_start(std::vector<Epoch>* epochs) {
    const auto precedes = [](const Epoch& one, const Epoch& other) {
        return one.start.microseconds < other.start.microseconds;
    };
    if (!std::is_sorted(epochs->begin(), epochs->end(), precedes))
        std::stable_sort(epochs->begin(), epochs->end(), precedes);
}

} // namespace

void InventoryBuilder::add(const ControlBlockette& blockette, const Fields& fields, bool keeps_response) {
    const Place place{blockette.type, blockette.offset, blockette.logical_record};
    const int type = blockette.type;
    std::shared_ptr<Response> before = last_;
    if (is_volume_header(type))
        add_volume(place, fields);
    else if (is_dictionary_response(type))
        add_definition(place, fields, keeps_response);
    else if (is_response(type))
        add_response(place, fields, keeps_response);
    else if (type == 50)
        add_station(place, fields);
    else if (type == 52)
        add_channel(place, fields);
    else if (type == 51 || type == 59)
        add_comment(place, fields);
    else if (type == 60)
        add_reference(place, fields);
    else
        add_texts(place, fields, &inventory_.dictionary);
    if (!is_dictionary_response(type) && !is_response(type))
        last_ = nullptr;
    keys_.add(place, fields, before != nullptr && before == last_);
}

void InventoryBuilder::add_volume(const Place& place, const Fields& fields) {
    end_volume();
    inventory_.volumes.push_back(read_volume_header(place, fields));
}

void InventoryBuilder::add_station(const Place& place, const Fields& fields) {
    station_code_ = text_value(fields.fields, "station_call_letters");
    network_code_ = text_value(fields.fields, "network_code");
    station_offset_ = place.offset;
    channel_ = nullptr;
    station_ = &current_station()->epochs.emplace_back(read_station(place, fields));
}

Station* InventoryBuilder::current_station() {
    Network* network = find_or_add(
        &inventory_.networks, network_code_, [](const Network& one) { return one.code; },
        Network{network_code_, {}});
    return find_or_add(
        &network->stations, station_code_, [](const Station& one) { return one.code; },
        Station{station_code_, {}, {}});
}

void InventoryBuilder::add_channel(const Place& place, const Fields& fields) {
    if (station_ == nullptr)
        report_orphan(FindingKind::no_station, place);
    if (channel_ != nullptr)
        shrink(channel_);
    const std::pair codes(text_value(fields.fields, "location_identifier"),
                          text_value(fields.fields, "channel_identifier"));
    Channel* channel = find_or_add(
        &current_station()->channels, codes,
        [](const Channel& one) { return std::pair(one.location, one.code); },
        Channel{codes.first, codes.second, {}});
    channel_ = &channel->epochs.emplace_back(read_channel(place, fields, station_offset_));
}

void InventoryBuilder::add_comment(const Place& place, const Fields& fields) {
    if (place.blockette == 59 && channel_ != nullptr)
        channel_->comments.push_back(read_comment(place, fields));
    else if (place.blockette == 51 && station_ != nullptr)
        station_->comments.push_back(read_comment(place, fields));
    else
        report_orphan(place.blockette == 59 ? FindingKind::no_channel : FindingKind::no_station, place);
}

// True if the response goes on with the one in the blockette before.
bool InventoryBuilder::continues(const Response& response, const Fields& fields) const {
    return last_ != nullptr && last_->place.blockette == fields.type && last_->key == response.key &&
           last_stage_ == integer_field(fields.fields, "stage_sequence_number") && may_continue(response) &&
           last_text_ != fields.text;
}

void InventoryBuilder::add_definition(const Place& place, const Fields& fields, bool is_kept) {
    Response response = read_response(place, fields);
    if (continues(response, fields)) {
        join(response, last_.get());
    } else {
        last_ = std::make_shared<Response>(std::move(response));
        if (is_kept)
            inventory_.dictionary.responses.push_back(last_);
    }
    last_stage_ = std::nullopt;
    last_text_ = fields.text;
}

void InventoryBuilder::add_response(const Place& place, const Fields& fields, bool is_kept) {
    if (channel_ == nullptr)
        return report_orphan(FindingKind::no_channel, place);
    Response response = read_response(place, fields);
    const Integer number = integer_field(fields.fields, "stage_sequence_number");
    if (continues(response, fields)) {
        join(response, last_.get());
    } else {
        last_ = std::make_shared<Response>(std::move(response));
        if (is_kept)
            stage(number)->responses.push_back({place, std::nullopt, last_});
    }
    last_stage_ = number;
    last_text_ = fields.text;
}

void InventoryBuilder::add_reference(const Place& place, const Fields& fields) {
    if (channel_ == nullptr)
        return report_orphan(FindingKind::no_channel, place);
    for (const auto row : rows_of(fields.fields, "number_of_stages"))
        for (const Field& field : row)
            if (field.spec->name == response_key)
                stage(integer_field(row, "stage_sequence_number"))
                    ->responses.push_back({place, integer_field(std::span(&field, 1), field.spec->name), {}});
}

Stage* InventoryBuilder::stage(Integer number) {
    auto& stages = channel_->stages;
    const auto found = std::find_if(stages.begin(), stages.end(),
                                    [number](const Stage& one) { return one.number == number; });
    return found != stages.end() ? &*found : &stages.emplace_back(Stage{number, {}});
}

void InventoryBuilder::report_orphan(FindingKind kind, const Place& place) {
    last_ = nullptr;
    inventory_.findings.push_back({kind, place, {}, {}});
}

// What follows belongs to another volume: stations and channels of this one take nothing more.
void InventoryBuilder::end_volume() {
    keys_.end_volume(&inventory_.findings);
    station_ = nullptr;
    channel_ = nullptr;
    station_offset_ = -1;
    station_code_.clear();
    network_code_.clear();
    last_ = nullptr;
}

Inventory InventoryBuilder::finish() {
    end_volume();
    sort_by_key(&inventory_.dictionary);
    for (Network& network : inventory_.networks)
        for (Station& station : network.stations) {
            sort_by_start(&station.epochs);
            for (Channel& channel : station.channels) {
                sort_by_start(&channel.epochs);
                for (ChannelEpoch& epoch : channel.epochs)
                    finish_epoch(inventory_.dictionary, &epoch);
            }
        }
    add_overlaps(&inventory_);
    std::stable_sort(
        inventory_.findings.begin(), inventory_.findings.end(),
        [](const Finding& one, const Finding& other) { return one.place.offset < other.place.offset; });
    return std::exchange(inventory_, {});
}

Inventory read_inventory(VolumeReader* reader, const std::function<void(const Item&)>& take) {
    InventoryBuilder builder;
    Fields fields;
    while (const Item* item = reader->next()) {
        if (const auto* blockette = std::get_if<ControlBlockette>(item)) {
            decode_blockette(blockette->type, blockette->text, std::endian::big, &fields);
            builder.add(*blockette, fields);
        }
        if (take)
            take(*item);
    }
    return builder.finish();
}

} // namespace quarry
