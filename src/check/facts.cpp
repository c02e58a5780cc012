// SPDX-License-Identifier: Apache-2.0
#include "check/facts.h"

#include "inventory/field_values.h"

#include <algorithm>

namespace quarry {

namespace {

// Views of the contents.
std::vector<std::pair<std::int64_t, Subject>> subjects_of(const Inventory& inventory) {
    std::vector<std::pair<std::int64_t, Subject>> subjects;
    for (const Network& network : inventory.networks)
        for (const Station& station : network.stations) {
            for (const StationEpoch& epoch : station.epochs)
                subjects.emplace_back(epoch.place.offset, subject_of(network, station, epoch));
            for (const Channel& channel : station.channels)
                for (const ChannelEpoch& epoch : channel.epochs)
                    subjects.emplace_back(epoch.place.offset,
                                          subject_of({network.code, station.code, channel.location,
                                                      channel.code, &epoch, nullptr}));
        }
    std::sort(subjects.begin(), subjects.end(),
              [](const auto& one, const auto& other) { return one.first < other.first; });
    return subjects;
}

} // namespace

Subject Facts::subject_at(const Place& place) const {
    const auto after =
        std::upper_bound(subjects.begin(), subjects.end(), place.offset,
                         [](std::int64_t offset, const auto& subject) { return offset < subject.first; });
    return is_of_station(place.blockette) && after != subjects.begin() ? std::prev(after)->second : Subject{};
}

void FactsGatherer::take(const Item& item, bool is_selected) {
    structure_.faults().take_records(is_selected);
    if (is_selected)
        std::visit([this](const auto& one) { add(one); }, item);
    else if (const auto* record = std::get_if<DataRecord>(&item))
        add_to_volume(*record);
}

void FactsGatherer::add(const ControlBlockette& blockette) {
    decode_blockette(blockette.type, blockette.text, std::endian::big, &fields_);
    contents_.add(blockette, fields_);
    if (blockette.type == 50 || blockette.type == 52)
        begin_subject(blockette.type == 50);
    structure_.add(blockette, fields_);
    times_.add(blockette, fields_);
}

// As Facts::subject_at will find it for what follows the blockette.
void FactsGatherer::begin_subject(bool is_station) {
    const auto text = [this](std::string_view name) { return text_value(fields_.fields, name); };
    const auto time = [this](std::string_view name) {
        return moment_value(fields_.fields, name).microseconds;
    };
    const std::string location = text("location_identifier"), channel = text("channel_identifier");
    const Subject subject{contents_.headers().network_code(),
                          contents_.headers().station_code(),
                          location,
                          channel,
                          time(is_station ? "start_effective_date" : "start_date"),
                          time(is_station ? "end_effective_date" : "end_date")};
    structure_.faults().take_stations(name_of(subject).empty() || takes_(subject));
}

void FactsGatherer::add_to_volume(const DataRecord& record) {
    contents_.add(record);
    structure_.add(record);
}

void FactsGatherer::add(const DataRecord& record) {
    add_to_volume(record);
    times_.add(record);
    records_.add(record);
    coverage_.add(record);
}

Facts FactsGatherer::finish(const VolumeReader& reader) {
    Facts facts{reader.totals(),
                contents_.finish(),
                std::move(structure_).finish(),
                std::move(times_).finish(),
                std::move(records_).finish(),
                coverage_.finish(),
                {}};
    facts.subjects = subjects_of(facts.contents.inventory);
    return facts;
}

} // namespace quarry
