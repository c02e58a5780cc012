// SPDX-License-Identifier: Apache-2.0
// Which data are outside the times that the volume states for itself (005, 008, 010) and for its time spans
// (070). Memory grows with time spans and with channels that have such data.
#pragma once

#include "quarry/coverage.h"
#include "quarry/inventory.h"

#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace quarry {

// The records of a channel that are outside, the first one of them, and the times that it leaves.
struct RecordsOutside {
    std::string network, station, location, channel;
    int blockette = 0; // that states the times
    std::int64_t records = 0;
    Place first = {};
    std::int64_t start = 0, end = 0; // of the first and the last sample of that record
    Integer least = {}, most = {};   // that the times allow
};

struct TimeFacts {
    std::vector<RecordsOutside> outside;
    // All time spans, else the time that the data take. They are in order and do not overlap.
    std::vector<TimeSpan> spans;
};

class TimeGatherer {
public:
    void add(const ControlBlockette& blockette, const Fields& fields);
    void add(const DataRecord& record);

    TimeFacts finish() &&;

private:
    using Codes = std::tuple<std::string, std::string, std::string, std::string>;

    void begin_volume(int header, Integer start, Integer end);
    void add_span(Integer start, Integer end);
    void add_outside(const DataRecord& record, int blockette, Integer least, Integer most);

    int header_ = 0;                                  // of the volume: 5, 8 or 10
    Integer start_ = {}, end_ = {};                   // of the volume
    std::map<std::int64_t, std::int64_t> spans_ = {}; // of the volume: start and end, without overlaps
    std::vector<TimeSpan> all_spans_ = {};
    Integer first_ = {}, last_ = {}; // of all data
    std::map<Codes, RecordsOutside> outside_ = {};
};

} // namespace quarry
