// SPDX-License-Identifier: Apache-2.0
// The segments of one channel while records come in any order.
//
// Records that are in order extend one segment, which is held open; nothing is looked up as long as no end of
// another segment is near. Where two segments could go on, the one that fits best does, then the longest one:
// so the same data twice become one long segment and others that lie within it.
#pragma once

#include "quarry/coverage.h"

#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace quarry {

class SegmentMerger {
public:
    explicit SegmentMerger(const Tolerance& tolerance) : tolerance_(tolerance) {}

    void add(const Segment& segment);

    // All segments, by start, the longest first where several begin. The merger is empty then.
    std::vector<Segment> take();

    // Records of segments that are not kept, because there are others of the same times.
    std::int64_t duplicates() const { return duplicates_; }

private:
    using ByStart = std::multimap<std::int64_t, Segment>;
    using Ends = std::pair<std::int64_t, std::int64_t>; // where a segment goes on, and its start

    std::int64_t tolerance_of(const Segment& segment) const;
    bool extends_open(const Segment& segment);
    void store_open();
    bool has_twin(const Segment& segment) const;
    std::optional<ByStart::iterator> segment_before(const Segment& segment) const;
    std::optional<ByStart::iterator> segment_after(const Segment& segment);
    Segment taken(ByStart::iterator place);
    void open(const Segment& segment);

    Tolerance tolerance_;
    double usual_rate_ = 0; // of the last segment, and its tolerance
    std::int64_t usual_tolerance_ = 0;
    std::optional<Segment> open_ = {};
    std::int64_t barrier_ =
        0;                  // where the next other segment begins or ends, seen from the end of the open one
    ByStart by_start_ = {}; // all but the open one
    std::multimap<Ends, ByStart::iterator> by_next_ = {};
    std::int64_t duplicates_ = 0;
};

// The segments, by start, become those of the channel with its breaks and duplicates.
void arrange(const std::vector<Segment>& segments, const Tolerance& tolerance, ChannelCoverage* channel);

} // namespace quarry
