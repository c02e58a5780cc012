// SPDX-License-Identifier: Apache-2.0
// Which times the data of each channel cover: data records in any order, of any number of volumes, merged
// into segments of continuous data.
//
//     quarry::Coverage coverage;
//     coverage.add(record);
//     for (const quarry::ChannelCoverage& channel : coverage.finish())
//         for (const quarry::Segment& segment : channel.segments)
//             std::cout << channel.station << ' ' << quarry::IsoTime(segment.start).text() << ' '
//                       << segment.samples << '\n';
//
// Memory grows with segments, not with records: a record that goes on where a segment ends, or ends where one
// begins, becomes part of it.
#pragma once

#include "quarry/time.h"
#include "quarry/volume.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#pragma GCC visibility push(default)
namespace quarry {

// How far from its expected time data may begin and still continue a segment: samples, or seconds.
struct Tolerance {
    double samples = 0.5;
    std::optional<double> seconds = {}; // if set, it replaces `samples`

    // Microseconds at so many samples per second.
    std::int64_t at(double rate) const;
};

// Continuous samples. All times are microseconds since 1970.
struct Segment {
    std::int64_t start; // of the first sample
    std::int64_t next;  // where the sample after the last one is expected
    std::int64_t samples;
    std::int64_t records;
    double rate;      // samples per second: of the first record,
    double last_rate; // and of the last one
    // The least and the greatest delay of its records, in microseconds, against start + samples / rate.
    // Rounding and tolerated jitter make them other than 0.
    double least_shift = 0;
    double most_shift = 0;
};

// The record as a segment of its own; none if it has no samples or no rate, and thus covers no time. A leap
// second that its flags announce is counted.
std::optional<Segment> segment_of(const DataRecord& record);

// The time of the last sample.
std::int64_t last_sample(const Segment& segment);

// Two rates are the same if they differ by less than 0.01 %.
bool is_same_rate(double one, double other);

// Time that has no data, or data twice.
struct Break {
    enum class Kind : std::uint8_t { gap, overlap };
    Kind kind;
    std::int64_t start; // of the first sample that is missing or there again
    std::int64_t end;   // of the first one that is not
    double samples;     // that it takes at the rate of the data before, rounded
};

struct ChannelCoverage {
    std::string network, station, location, channel;
    std::vector<Segment> segments; // by start, then by end; without the duplicates
    std::vector<Break> breaks;     // by start
    std::int64_t records = 0;      // all of them
    std::int64_t samples = 0;
    // Records all of whose samples stand at times of samples that a segment has: the same data again.
    std::int64_t duplicates = 0;
    // The earliest first sample and the latest last one, of records without samples or without a rate too.
    std::int64_t first = 0;
    std::int64_t last = 0;
};

// The times that the segments cover, joined where they meet, with breaks within the tolerance closed.
std::vector<TimeSpan> covered_times(const ChannelCoverage& channel, const Tolerance& tolerance);

class Coverage {
public:
    explicit Coverage(Tolerance tolerance = {});
    Coverage(const Coverage&) = delete;
    Coverage& operator=(const Coverage&) = delete;
    ~Coverage();

    // What a record adds, which may be kept while the record is gone.
    struct Entry {
        std::array<char, 12> codes; // network, station, location, channel, filled up with zeros
        std::optional<Segment> segment;
        std::int64_t start, end; // of the record's first and last sample
        std::int64_t samples;
    };
    static Entry entry_of(const DataRecord& record);

    void add(const Entry& entry);
    void add(const DataRecord& record) { add(entry_of(record)); }

    // All that was added, in order of the codes. The object is empty then.
    std::vector<ChannelCoverage> finish();

private:
    using Codes = std::array<char, 12>;
    struct Hash {
        std::size_t operator()(const Codes& codes) const;
    };
    struct Channel;
    Channel& channel_of(const Codes& codes);

    Tolerance tolerance_;
    std::unordered_map<Codes, std::unique_ptr<Channel>, Hash> channels_;
    Channel* last_ = nullptr; // of the last record
};

} // namespace quarry
#pragma GCC visibility pop
