// SPDX-License-Identifier: Apache-2.0
// Faults of a volume's structure: of each kind the first ones, and how many there are. Those of stations and
// data records that nobody asks for are not counted.
#pragma once

#include "check/words.h"
#include "decode/catalogue.h"
#include "quarry/inventory.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quarry {

enum class StructureFault : std::uint8_t {
    damage,
    field,
    text,
    declared_length,
    blockette_length,
    sequence,
    order,
    volume_header,
    station_index,
    span_index,
    data_index,
    station_count,
};
inline constexpr std::size_t structure_faults = static_cast<std::size_t>(StructureFault::station_count) + 1;

class StructureFaults {
public:
    struct Fault {
        Place place;
        std::string text;
        std::string network = {}, station = {}, location = {}, channel = {}; // of a data record
    };
    struct OfAKind {
        std::vector<Fault> first = {};
        std::size_t count = 0;
    };

    // From now on faults in headers of stations, or in data records, are taken or not.
    void take_stations(bool takes) { takes_stations_ = takes; }
    void take_records(bool takes) { takes_records_ = takes; }

    template <class... Words>
    void add(StructureFault kind, const Place& place, const Words&... text) {
        if ((takes_stations_ || !is_of_station(place.blockette)) && has_room(kind))
            keep(kind, {place, words(text...)});
    }
    template <class... Words>
    void add(StructureFault kind, const Place& place, const DataRecord& record, const Words&... text) {
        if (takes_records_ && has_room(kind))
            keep(kind, {place, words(text...), std::string(record.network), std::string(record.station),
                        std::string(record.location), std::string(record.channel)});
    }

    const OfAKind& of(StructureFault kind) const { return kinds_[static_cast<std::size_t>(kind)]; }

private:
    static constexpr std::size_t most = 1000;

    // Counts one more, which is kept if there is room.
    bool has_room(StructureFault kind) { return ++kinds_[static_cast<std::size_t>(kind)].count <= most; }
    void keep(StructureFault kind, Fault fault) {
        kinds_[static_cast<std::size_t>(kind)].first.push_back(std::move(fault));
    }

    bool takes_stations_ = true;
    bool takes_records_ = true;
    std::array<OfAKind, structure_faults> kinds_ = {};
};

} // namespace quarry
