// SPDX-License-Identifier: Apache-2.0
#include "inventory/segments.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <tuple>

namespace quarry {

namespace {

using Times = std::numeric_limits<std::int64_t>;

constexpr double second = 1e6; // microseconds

// At most this many segments are compared where several could go on; hostile volumes have any number of them.
constexpr int most_candidates = 64;

// The second segment goes on after the first one: their samples together.
Segment joined(const Segment& first, const Segment& then) {
    const double expected = static_cast<double>(first.samples) / first.rate * second;
    const double shift = static_cast<double>(then.start - first.start) - expected;
    Segment both = first;
    both.next = then.next;
    both.samples += then.samples;
    both.records += then.records;
    both.last_rate = then.last_rate;
    both.least_shift = std::min(first.least_shift, shift + then.least_shift);
    both.most_shift = std::max(first.most_shift, shift + then.most_shift);
    return both;
}

bool is_near(std::int64_t one, std::int64_t other, std::int64_t tolerance) {
    return std::abs(one - other) <= tolerance;
}

// True if its samples stand at times of samples of the other segment. If the times of the other segment
// jitter, the times compared may differ by as much.
bool is_duplicate(const Segment& segment, const Segment& of, std::int64_t tolerance) {
    constexpr double rounding = 1.5; // microseconds, of two starts
    if (segment.start < of.start || segment.next > of.next + tolerance ||
        !is_same_rate(segment.rate, of.rate))
        return false;
    const double period = second / of.rate;
    const double offset = static_cast<double>(segment.start - of.start) - of.least_shift + rounding;
    return offset - std::floor(offset / period) * period <= of.most_shift - of.least_shift + 2 * rounding;
}

} // namespace

// --- merging -------------------------------------------------------------------------------------------

// Half a sample at most, so that nothing that is still to come fits in between. `arrange` handles the rest.
std::int64_t SegmentMerger::tolerance_of(const Segment& segment) const {
    return std::min(tolerance_.at(segment.rate), Tolerance{}.at(segment.rate));
}

bool SegmentMerger::extends_open(const Segment& segment) {
    if (segment.rate != usual_rate_) {
        usual_rate_ = segment.rate;
        usual_tolerance_ = tolerance_of(segment);
    }
    return open_ && is_near(segment.start, open_->next, usual_tolerance_) &&
           segment.next < barrier_ - 3 * usual_tolerance_ && is_same_rate(open_->last_rate, segment.rate);
}

void SegmentMerger::add(const Segment& segment) {
    if (extends_open(segment)) {
        open_ = joined(*open_, segment);
        return;
    }
    store_open();
    Segment whole = segment;
    if (const auto before = segment_before(whole))
        whole = joined(taken(*before), whole);
    if (const auto after = segment_after(whole))
        whole = joined(whole, taken(*after));
    open(whole);
}

void SegmentMerger::store_open() {
    if (open_ && has_twin(*open_))
        duplicates_ += open_->records;
    else if (open_)
        by_next_.emplace(Ends{open_->next, open_->start}, by_start_.emplace(open_->start, *open_));
    open_.reset();
}

bool SegmentMerger::has_twin(const Segment& segment) const {
    auto at = by_next_.lower_bound({segment.next, segment.start});
    for (int i = 0; i < most_candidates && at != by_next_.end(); ++i, ++at) {
        const Segment& other = at->second->second;
        if (other.next != segment.next || other.start != segment.start)
            return false;
        if (other.samples == segment.samples && is_same_rate(other.rate, segment.rate))
            return true;
    }
    return false;
}

// The best one of those that end where the segment begins.
std::optional<SegmentMerger::ByStart::iterator> SegmentMerger::segment_before(const Segment& segment) const {
    const std::int64_t tolerance = tolerance_of(segment);
    std::optional<ByStart::iterator> best;
    const auto merit = [&](const Segment& one) {
        return std::tuple(std::abs(one.next - segment.start), one.start);
    };
    auto at = by_next_.lower_bound({segment.start - tolerance, Times::min()});
    const auto end = by_next_.upper_bound({segment.start + tolerance, Times::max()});
    for (int i = 0; i < most_candidates && at != end; ++i, ++at)
        if (is_same_rate(at->second->second.last_rate, segment.rate) &&
            (!best || merit(at->second->second) < merit((*best)->second)))
            best = at->second;
    return best;
}

// The best one of those that begin where the segment ends.
std::optional<SegmentMerger::ByStart::iterator> SegmentMerger::segment_after(const Segment& segment) {
    const std::int64_t tolerance = tolerance_of(segment);
    std::optional<ByStart::iterator> best;
    const auto merit = [&](const Segment& one) {
        return std::tuple(std::abs(one.start - segment.next), -one.next);
    };
    auto at = by_start_.lower_bound(segment.next - tolerance);
    const auto end = by_start_.upper_bound(segment.next + tolerance);
    for (int i = 0; i < most_candidates && at != end; ++i, ++at)
        if (is_same_rate(segment.last_rate, at->second.rate) &&
            (!best || merit(at->second) < merit((*best)->second)))
            best = at;
    return best;
}

Segment SegmentMerger::taken(ByStart::iterator place) {
    const Segment segment = place->second;
    auto end = by_next_.lower_bound({segment.next, segment.start});
    while (end->second != place)
        ++end;
    by_next_.erase(end);
    by_start_.erase(place);
    return segment;
}

void SegmentMerger::open(const Segment& segment) {
    open_ = segment;
    const std::int64_t from = segment.next - 3 * tolerance_of(segment);
    const auto start = by_start_.lower_bound(from);
    const auto next = by_next_.lower_bound({from, Times::min()});
    barrier_ = Times::max();
    if (start != by_start_.end())
        barrier_ = start->first;
    if (next != by_next_.end())
        barrier_ = std::min(barrier_, next->first.first);
}

std::vector<Segment> SegmentMerger::take() {
    store_open();
    by_next_.clear();
    std::vector<Segment> segments;
    segments.reserve(by_start_.size());
    while (!by_start_.empty())
        segments.push_back(by_start_.extract(by_start_.begin()).mapped());
    std::sort(segments.begin(), segments.end(), [](const Segment& one, const Segment& other) {
        return std::tuple(one.start, -one.next, one.rate) < std::tuple(other.start, -other.next, other.rate);
    });
    return segments;
}

// --- the order of the segments -------------------------------------------------------------------------

namespace {

// Adds segments, in order of their starts, to a channel. Those that later data can still meet stay at hand.
class Arrangement {
public:
    Arrangement(const Tolerance& tolerance, ChannelCoverage* channel)
        : tolerance_(tolerance), channel_(*channel) {}

    void add(const Segment& segment) {
        forget_before(segment);
        if (is_known(segment))
            channel_.duplicates += segment.records;
        else if (Segment* before = segment_before(segment))
            *before = joined(*before, segment);
        else
            begin(segment);
    }

private:
    static constexpr std::size_t most_at_hand = 64; // at one time; hostile volumes have any number of them

    Segment& at(std::size_t index) { return channel_.segments[index]; }
    std::int64_t end_of(std::size_t index) { return at(index).next + tolerance_.at(at(index).last_rate); }

    void forget_before(const Segment& segment) {
        std::erase_if(at_hand_, [&](std::size_t index) { return end_of(index) < segment.start; });
        if (at_hand_.size() > most_at_hand)
            at_hand_.erase(at_hand_.begin());
    }

    bool is_known(const Segment& segment) {
        const std::int64_t tolerance = std::min(tolerance_.at(segment.rate), Tolerance{}.at(segment.rate));
        return std::any_of(at_hand_.begin(), at_hand_.end(),
                           [&](std::size_t index) { return is_duplicate(segment, at(index), tolerance); });
    }

    // The one that goes on with the segment: the nearest, then the longest.
    Segment* segment_before(const Segment& segment) {
        Segment* best = nullptr;
        const auto distance = [&](const Segment& one) { return std::abs(one.next - segment.start); };
        for (const std::size_t index : at_hand_) {
            Segment& one = at(index);
            if (distance(one) <= tolerance_.at(one.last_rate) && is_same_rate(one.last_rate, segment.rate) &&
                segment.next > one.next && (best == nullptr || distance(one) < distance(*best)))
                best = &one;
        }
        return best;
    }

    void begin(const Segment& segment) {
        at_hand_.push_back(channel_.segments.size());
        channel_.segments.push_back(segment);
    }

    const Tolerance& tolerance_;
    ChannelCoverage& channel_;
    std::vector<std::size_t> at_hand_ = {}; // indices of segments
};

// What lies between the data so far, which `reach` farthest, and a segment.
void add_break(const Segment& reach, const Segment& segment, const Tolerance& tolerance,
               std::vector<Break>* breaks) {
    const std::int64_t late = segment.start - reach.next;
    if (std::abs(late) <= tolerance.at(reach.last_rate))
        return;
    const bool is_gap = late > 0;
    const std::int64_t start = is_gap ? reach.next : segment.start;
    const std::int64_t end = is_gap ? segment.start : std::min(reach.next, segment.next);
    constexpr double most = 1e18; // that fit into an integer
    const double samples =
        std::min(std::round(static_cast<double>(end - start) * reach.last_rate / second), most);
    breaks->push_back({is_gap ? Break::Kind::gap : Break::Kind::overlap, start, end, samples});
}

} // namespace

void arrange(const std::vector<Segment>& segments, const Tolerance& tolerance, ChannelCoverage* channel) {
    Arrangement arrangement(tolerance, channel);
    for (const Segment& segment : segments)
        arrangement.add(segment);
    const Segment* reach = nullptr;
    for (const Segment& segment : channel->segments) {
        if (reach != nullptr)
            add_break(*reach, segment, tolerance, &channel->breaks);
        if (reach == nullptr || segment.next > reach->next)
            reach = &segment;
    }
}

} // namespace quarry
