// SPDX-License-Identifier: Apache-2.0
// What is notable about the data records of each channel: how many have which fault, and the first of them.
//
// Memory grows with channels, not with records: of each channel the samples of one record are kept.
#pragma once

#include "decode/data_record.h"
#include "quarry/inventory.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace quarry {

enum class RecordFault : std::uint8_t {
    encoding_unknown,
    rates_differ,    // of the header and of blockette 100
    timing_quality,  // below 50 %
    quality_flags,   // are set
    correction_open, // a time correction has not been applied
    samples_missing,
    last_sample,    // differs from the one that the record states
    word_order,     // the samples are far smoother in the other one
    samples_differ, // from those that the record before has at the same times
};

struct RecordsAtFault {
    RecordFault fault;
    std::int64_t records = 0;
    Place first = {};
    std::string what = {}; // is wrong with the first one
};

// Pairs of consecutive records, whose times show the real sample rate. A pair is off if that is not the rate
// that the record states.
struct Pace {
    std::int64_t pairs = 0;
    std::int64_t off = 0;
    std::int64_t samples = 0; // of those that are off, and how long they take
    std::int64_t microseconds = 0;
    double rate = 0; // that the first pair that is off states
    Place first = {};
};

struct ChannelRecords {
    std::string network, station, location, channel;
    Place first = {};                        // of its records
    std::vector<RecordsAtFault> faults = {}; // each kind once
    Pace pace = {};
    std::optional<Place> early = {}; // of the first record that begins before the end of the data before it
};

// The record before.
struct LastRecord {
    std::int64_t start = 0;
    std::int64_t samples = 0; // 0 for none
    double rate = 0;
    std::vector<double> values = {};
    double latest = -std::numeric_limits<double>::infinity(); // end of all records so far, microseconds
};

class RecordGatherer {
public:
    // Samples are decoded, or the faults that need them are not looked for.
    explicit RecordGatherer(bool with_samples) : with_samples_(with_samples) {}

    void add(const DataRecord& record);

    // In order of the codes.
    std::vector<ChannelRecords> finish() &&;

private:
    struct Hash {
        std::size_t operator()(const HeaderCodes& codes) const;
    };

    std::size_t index_of(const DataRecord& record);

    bool with_samples_;
    std::vector<ChannelRecords> channels_ = {};
    std::vector<LastRecord> lasts_ = {}; // of each
    std::unordered_map<HeaderCodes, std::size_t, Hash> index_ = {};
    HeaderCodes last_codes_ = {};
    std::size_t last_ = 0;
};

} // namespace quarry
