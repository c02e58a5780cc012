// SPDX-License-Identifier: Apache-2.0
// What the rules look at: gathered while a volume is read once, from its items in their order.
//
//     FactsGatherer gatherer(false, [](const Subject&) { return true; });
//     while (const Item* item = reader.next())
//         gatherer.take(*item);
//     const Facts facts = gatherer.finish(reader);
//
// Memory grows with the headers, with channels and with segments of data, not with data records.
#pragma once

#include "check/findings.h"
#include "check/record_facts.h"
#include "check/structure_facts.h"
#include "check/time_facts.h"
#include "inventory/contents.h"
#include "quarry/coverage.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace quarry {

struct Facts {
    Totals totals;
    Contents contents; // headers with all responses, and the data found
    StructureFaults structure;
    TimeFacts times;
    std::vector<ChannelRecords> records;   // of each channel with data records
    std::vector<ChannelCoverage> coverage; // the same

    // True for a volume with data records, false for one of headers only.
    bool has_data() const { return totals.data_records > 0; }
    // True for a volume with headers of channels.
    bool has_headers() const { return !contents.inventory.networks.empty(); }

    // The station or channel that a blockette of headers belongs to: the last one that begins before it.
    Subject subject_at(const Place& place) const;

    std::vector<std::pair<std::int64_t, Subject>> subjects; // and where they begin, in this order
};

// Visits each epoch of stations.
template <class Visit>
void for_each_station_epoch(const Facts& facts, Visit visit) {
    for (const Network& network : facts.contents.inventory.networks)
        for (const Station& station : network.stations)
            for (const StationEpoch& epoch : station.epochs)
                visit(subject_of(network, station, epoch), epoch);
}

class FactsGatherer {
public:
    // With the samples of data records decoded, or not. Of faults that are counted, only those count that
    // are about subjects that `takes` accepts.
    FactsGatherer(bool with_samples, Findings::Takes takes)
        : takes_(std::move(takes)), records_(with_samples) {}

    // Of a reader that shows its framing. A data record that is not selected only counts as there.
    void take(const Item& item, bool is_selected = true);
    Facts finish(const VolumeReader& reader);

private:
    void add(const LogicalHeader& header) { structure_.add(header); }
    void add(const Padding&) {}
    void add(const Damage& damage) { structure_.add(damage); }
    void add(const ControlBlockette& blockette);
    void add(const DataRecord& record);
    void begin_subject(bool is_station);
    void add_to_volume(const DataRecord& record);

    Findings::Takes takes_;
    ContentsBuilder contents_{Responses::all};
    StructureGatherer structure_ = {};
    TimeGatherer times_ = {};
    RecordGatherer records_;
    Coverage coverage_ = Coverage();
    Fields fields_ = {};
};

} // namespace quarry
