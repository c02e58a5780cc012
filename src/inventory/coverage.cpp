// SPDX-License-Identifier: Apache-2.0
#include "quarry/coverage.h"

#include "decode/data_record.h"
#include "inventory/channel_codes.h"
#include "inventory/segments.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quarry {

namespace {

constexpr std::int64_t second = 1'000'000;
constexpr std::int64_t day = 86'400 * second;
constexpr double longest =
    1e15; // microseconds, some thirty years: no span of a record or tolerance is longer

std::int64_t microseconds(double count) {
    return static_cast<std::int64_t>(std::clamp(count, 0.0, longest));
}

std::int64_t rounded_microseconds(double count) {
    return microseconds(count + 0.5);
}

std::int64_t midnight_before(std::int64_t time) {
    return time - (time % day + day) % day;
}

// How many microseconds a leap second changes the time after the record. A positive one has the same times as
// the first second of the next day. For a record that ends within it, it counts in the record after it.
std::int64_t leap(const DataRecord& record, std::int64_t next) {
    if ((record.header.activity_flags & negative_leap_second) != 0)
        return second;
    if ((record.header.activity_flags & positive_leap_second) == 0)
        return 0;
    const std::int64_t midnight = midnight_before(record.start - second) + day;
    const bool ends_in_it = next >= midnight && next < midnight + second;
    return ends_in_it ? 0 : -second;
}

} // namespace

std::int64_t Tolerance::at(double rate) const {
    return microseconds(seconds ? *seconds * 1e6 : samples / rate * 1e6);
}

std::optional<Segment> segment_of(const DataRecord& record) {
    if (!(record.rate > 0) || !std::isfinite(record.rate) || record.header.samples == 0)
        return std::nullopt;
    const std::int64_t duration = rounded_microseconds(record.header.samples * 1e6 / record.rate);
    const std::int64_t next = record.start + std::max<std::int64_t>(duration, 1);
    return Segment{record.start, next + leap(record, next), record.header.samples, 1, record.rate,
                   record.rate};
}

std::int64_t last_sample(const Segment& segment) {
    return std::max(segment.start, segment.next - rounded_microseconds(1e6 / segment.last_rate));
}

bool is_same_rate(double one, double other) {
    return one == other || std::abs(one - other) < 1e-4 * std::max(one, other);
}

std::vector<TimeSpan> covered_times(const ChannelCoverage& channel, const Tolerance& tolerance) {
    std::vector<TimeSpan> times;
    for (const Segment& segment : channel.segments)
        if (!times.empty() && segment.start <= times.back().end + tolerance.at(segment.rate))
            times.back().end = std::max(times.back().end, segment.next);
        else
            times.push_back({segment.start, segment.next});
    return times;
}

// --- channels ------------------------------------------------------------------------------------------

struct Coverage::Channel {
    Channel(const Codes& its_codes, const Tolerance& tolerance) : codes(its_codes), segments(tolerance) {}
    Codes codes;
    SegmentMerger segments;
    ChannelCoverage totals = {};
    Channel* follower = nullptr; // the channel whose record followed the last one of this
};

Coverage::Coverage(Tolerance tolerance) : tolerance_(tolerance) {}
Coverage::~Coverage() = default;

std::size_t Coverage::Hash::operator()(const Codes& codes) const {
    return std::hash<std::string_view>()({codes.data(), codes.size()});
}

Coverage::Entry Coverage::entry_of(const DataRecord& record) {
    Entry entry{{}, segment_of(record), record.start, 0, record.header.samples};
    entry.end = entry.segment ? last_sample(*entry.segment) : record.start;
    char* at = entry.codes.data();
    const auto put = [&at](std::string_view code, std::size_t width) {
        for (std::size_t i = 0; i < width; ++i)
            *at++ = i < code.size() ? code[i] : '\0';
    };
    put(record.network, 2);
    put(record.station, 5);
    put(record.location, 2);
    put(record.channel, 3);
    return entry;
}

Coverage::Channel& Coverage::channel_of(const Codes& codes) {
    Channel* channel = last_ != nullptr ? last_->follower : nullptr;
    if (channel == nullptr || channel->codes != codes) {
        std::unique_ptr<Channel>& known = channels_[codes];
        if (known == nullptr)
            known = std::make_unique<Channel>(codes, tolerance_);
        channel = known.get();
        if (last_ != nullptr)
            last_->follower = channel;
    }
    last_ = channel;
    return *channel;
}

void Coverage::add(const Entry& entry) {
    Channel& channel = channel_of(entry.codes);
    ChannelCoverage& totals = channel.totals;
    totals.first = totals.records == 0 ? entry.start : std::min(totals.first, entry.start);
    totals.last = totals.records == 0 ? entry.end : std::max(totals.last, entry.end);
    ++totals.records;
    totals.samples += entry.samples;
    if (entry.segment)
        channel.segments.add(*entry.segment);
}

std::vector<ChannelCoverage> Coverage::finish() {
    std::vector<ChannelCoverage> channels;
    for (auto& [codes, channel] : std::exchange(channels_, {})) {
        ChannelCoverage& one = channels.emplace_back(std::move(channel->totals));
        const std::string_view text(codes.data(), codes.size());
        const auto code = [text](std::size_t at, std::size_t width) {
            return std::string(text.substr(at, std::min(text.find('\0', at) - at, width)));
        };
        one.network = code(0, 2);
        one.station = code(2, 5);
        one.location = code(7, 2);
        one.channel = code(9, 3);
        arrange(channel->segments.take(), tolerance_, &one);
        one.duplicates += channel->segments.duplicates();
        channel.reset();
    }
    last_ = nullptr;
    std::sort(channels.begin(), channels.end(), precedes<ChannelCoverage, ChannelCoverage>);
    return channels;
}

} // namespace quarry
