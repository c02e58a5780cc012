// SPDX-License-Identifier: Apache-2.0
// How the logical records of a volume stand to each other, what is damaged in them, and where its indices
// point. Memory grows with the headers, not with data records.
#pragma once

#include "check/indices.h"
#include "check/structure_faults.h"

namespace quarry {

class StructureGatherer {
public:
    void add(const LogicalHeader& header);
    void add(const Damage& damage);
    void add(const ControlBlockette& blockette, const Fields& fields);
    void add(const DataRecord& record);

    StructureFaults& faults() { return faults_; }
    StructureFaults finish() &&;

private:
    // Where a record stands in a volume: its letter, and data behind all of them.
    enum class Part : std::uint8_t { none, volume, abbreviations, stations, time_spans, data };
    static Part part_of(char letter);

    void begin_volume();
    bool goes_on(int sequence) const;
    void check_sequence(const LogicalHeader& header, bool begins_volume);
    void check_sequence(const DataRecord& record);
    void check_order(const Place& place, Part part);
    bool may_follow(Part part) const;
    void add_problems(const Fields& fields, const Place& place, const ControlBlockette* blockette,
                      const DataRecord* record);
    void add_data_blockettes(const DataRecord& record);

    StructureFaults faults_ = {};
    VolumeIndices indices_ = {};
    Fields fields_ = {};
    std::int64_t record_offset_ = -1; // of the last logical header
    int sequence_ = -1;               // of the record before; -1 if the next one may have any
    Part part_ = Part::none;          // of the record before
    Place first_blockette_ = {};      // of the volume
    bool has_volume_header_ = false;
    bool is_in_any_order_ = false; // a volume of a field station or of telemetry
    bool has_time_spans_ = false;

    // Data records of the volume whose sequence numbers do not go on.
    std::int64_t jumps_ = 0;
    Place first_jump_ = {};
    std::string jump_ = {};
};

} // namespace quarry
