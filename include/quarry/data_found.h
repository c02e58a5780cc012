// SPDX-License-Identifier: Apache-2.0
// What data a volume holds of each channel: totals of its data records, taken one by one in the order of the
// input. Memory grows with channels and their epochs, not with records.
//
//     quarry::DataFound found;
//     found.add(record);
//     for (const quarry::ChannelData& channel : found.channels())
//         std::cout << channel.station << ' ' << channel.channel << ' ' << channel.data[0].records << '\n';
#pragma once

#include "quarry/volume.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#pragma GCC visibility push(default)
namespace quarry {

// The records that begin in one epoch.
struct EpochData {
    // Microseconds since 1970, the end excluded; the least and the greatest number for records outside all
    // epochs.
    std::int64_t epoch_start;
    std::int64_t epoch_end;
    std::int64_t epoch_place = -1; // as given to expect(); -1 for records outside all epochs

    std::int64_t records = 0; // one at least
    std::int64_t offset = 0;  // of the first one met, in the input
    std::int64_t samples = 0;
    std::int64_t first = 0; // microseconds since 1970: the earliest first sample, the latest last one
    std::int64_t last = 0;
    // The record before says when the next sample is due. Gaps are records that begin more than half a sample
    // later, overlaps those that begin more than half a sample earlier. Records without a rate or without
    // samples are left out of this.
    std::int64_t gaps = 0;
    std::int64_t overlaps = 0;
    double rate = 0;                       // of the first record with one
    std::vector<int> encodings = {};       // in the order met; -1 for records without a blockette 1000
    std::vector<std::size_t> lengths = {}; // of records, bytes

    std::int64_t next = 0; // where the record before would go on
    bool goes_on = false;
};

struct ChannelData {
    std::string network, station, location, channel;
    std::vector<EpochData> data; // of epochs with records, in the order met
};

class DataFound {
public:
    // Keeps records of the channel that begin in the epoch apart. Where epochs overlap the last one counts.
    // The place is any number that tells the caller which epoch it is.
    void expect(std::string_view network, std::string_view station, std::string_view location,
                std::string_view channel, std::int64_t start, std::int64_t end, std::int64_t place = 0);

    void add(const DataRecord& record);

    // Those that were expected or have records, in order of first mention.
    const std::vector<ChannelData>& channels() const { return channels_; }
    std::vector<ChannelData> take() && { return std::move(channels_); }

private:
    using Codes = std::array<char, 12>; // as they stand in a record's header
    struct Hash {
        std::size_t operator()(const Codes& codes) const;
    };
    std::size_t index_of(std::string_view network, std::string_view station, std::string_view location,
                         std::string_view channel);

    // An epoch, and the index of its data, -1 before the first record.
    struct Epoch {
        std::int64_t start, end, place;
        std::ptrdiff_t data = -1;
    };
    struct Epochs {
        std::vector<Epoch> all; // of one channel in the order of expect(); the first one stands for all time
        bool is_ordered = true; // none begins before the end of the one before
    };
    static bool holds(const Epoch& epoch, std::int64_t time);
    static std::size_t index_at(const Epochs& epochs, std::int64_t time);

    std::vector<ChannelData> channels_;
    std::vector<Epochs> epochs_;                              // of each
    std::unordered_map<Codes, std::size_t, Hash> index_ = {}; // into them, by codes as headers have them
    Codes last_codes_ = {};
    std::size_t last_ = 0;
};

} // namespace quarry
#pragma GCC visibility pop
