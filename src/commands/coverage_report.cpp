// SPDX-License-Identifier: Apache-2.0
#include "commands/coverage_report.h"

#include "quarry/time.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace quarry {

ChannelReport::ChannelReport(const ChannelCoverage& coverage, const CoverageOptions& options)
    : data_(coverage), times_(covered_times(coverage, options.tolerance)) {
    if (times_.empty())
        return;
    period_ = Tolerance{.samples = 1}.at(coverage.segments.front().rate);
    span_ = {times_.front().start, times_.back().end};
    if (options.selection.from > Selection::Limits::min())
        span_.start = options.selection.from;
    if (options.selection.to < Selection::Limits::max())
        span_.end = options.selection.to;
}

std::int64_t ChannelReport::count(Break::Kind kind) const {
    return std::count_if(data_.breaks.begin(), data_.breaks.end(),
                         [kind](const Break& one) { return one.kind == kind; });
}

std::int64_t ChannelReport::longest_gap() const {
    std::int64_t longest = 0;
    for (const Break& one : data_.breaks)
        if (one.kind == Break::Kind::gap)
            longest = std::max(longest, one.end - one.start);
    return longest;
}

// A start or end less than one sample after the start of a span counts as that start: no sample lies between.
std::int64_t ChannelReport::snapped(std::int64_t time, std::int64_t start, std::int64_t period) {
    return time > start && time < start + period ? start : time;
}

// How much of the span the times from `one` on cover, in percent.
double ChannelReport::percent_of(const TimeSpan& span, Time one, std::int64_t period) const {
    std::int64_t covered = 0;
    if (span.end <= span.start)
        return 0;
    for (; one != times_.end() && one->start < span.end; ++one) {
        const std::int64_t start = std::max(snapped(one->start, span.start, period), span.start);
        const std::int64_t end = std::min(snapped(one->end, span.start, period), span.end);
        covered += std::max<std::int64_t>(0, end - start);
    }
    return 100 * static_cast<double>(covered) / static_cast<double>(span.end - span.start);
}

std::int64_t ChannelReport::place_in(const TimeSpan& span, std::size_t part, std::size_t parts) {
    return span.start + static_cast<std::int64_t>(static_cast<double>(span.end - span.start) *
                                                  static_cast<double>(part) / static_cast<double>(parts));
}

bool ChannelReport::overlaps_in(const TimeSpan& part) const {
    return std::any_of(data_.breaks.begin(), data_.breaks.end(), [&part](const Break& one) {
        return one.kind == Break::Kind::overlap && one.start < part.end && one.end > part.start;
    });
}

// --- texts ---------------------------------------------------------------------------------------------

std::string code_text(const ChannelCoverage& channel) {
    return channel.network + "." + channel.station + "." + channel.location + "." + channel.channel;
}

std::string time_text(std::int64_t time) {
    return std::string(IsoTime(time).text());
}

std::string day_text(std::int64_t time) {
    return time_text(time).substr(0, 10);
}

std::string_view name_of(Break::Kind kind) {
    return kind == Break::Kind::gap ? "gap" : "overlap";
}

std::string percent_text(double percent) {
    const double shown = percent > 0 && percent < 100 ? std::clamp(percent, 0.01, 99.99) : percent;
    std::array<char, 32> digits;
    return {
        digits.data(),
        std::to_chars(digits.data(), digits.data() + digits.size(), shown, std::chars_format::fixed, 2).ptr};
}

} // namespace quarry
