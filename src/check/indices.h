// SPDX-License-Identifier: Apache-2.0
// The indices of a volume (011, 012, 073, 074): each says which logical record holds what. Those of headers
// are compared at the end of the volume, those of data as the data records arrive.
#pragma once

#include "check/structure_faults.h"

#include <map>
#include <set>
#include <tuple>

namespace quarry {

class VolumeIndices {
public:
    // `begins_record`: no other blockette stands before it in its logical record.
    void add(const ControlBlockette& blockette, const Fields& fields, bool begins_record);
    void add(const DataRecord& record, StructureFaults* faults) {
        if (!data_.empty())
            compare(record, faults);
    }

    // Reports what has not been found in the volume that ends here.
    void end_volume(StructureFaults* faults);

private:
    struct StationPointer {
        Place place;
        std::string station;
        std::int64_t sequence;
    };
    struct SpanPointer {
        Place place;
        std::tuple<std::int64_t, std::int64_t, std::int64_t> span; // sequence number, start, end
    };
    struct DataPointer {
        Place place;
        std::string_view field, time_field; // their names
        std::string station, location, channel;
        Integer time;
        bool is_end = false; // the time is that of the record's end
    };

    void add_station_pointers(const ControlBlockette& blockette, const Fields& fields);
    void add_span_pointers(const ControlBlockette& blockette, const Fields& fields);
    void add_data_pointers(const ControlBlockette& blockette, const Fields& fields);
    void add_data_pointer(const ControlBlockette& blockette, std::span<const Field> fields,
                          std::string_view sequence, std::string_view time, DataPointer pointer);
    void compare(const DataRecord& record, StructureFaults* faults);
    static void compare(const DataRecord& record, const DataPointer& pointer, StructureFaults* faults);
    void check_stations(StructureFaults* faults) const;
    void check_spans(StructureFaults* faults) const;
    void check_count(StructureFaults* faults) const;

    std::vector<StationPointer> station_pointers_ = {};
    std::vector<SpanPointer> span_pointers_ = {};
    std::map<std::int64_t, std::vector<DataPointer>> data_ = {}; // not yet met, by sequence number
    Place station_index_ = {};                                   // the first 011
    std::int64_t indexed_stations_ = 0;
    std::int64_t station_headers_ = 0;
    std::set<std::string> codes_ = {};                             // of stations
    std::set<std::pair<std::string, std::int64_t>> stations_ = {}; // and the records that they begin
    std::set<std::tuple<std::int64_t, std::int64_t, std::int64_t>> spans_ = {};
};

} // namespace quarry
