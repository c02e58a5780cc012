// SPDX-License-Identifier: Apache-2.0
// What quarry coverage reports about a channel, and the forms in which it writes that.
#pragma once

#include "commands/selection.h"
#include "quarry/coverage.h"
#include "report/ordered_output.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quarry {

struct CoverageOptions {
    bool gaps, days, json, csv, plot;
    std::string svg;    // the file of the picture; none if empty
    std::size_t height; // of a page of it, in pixels
    Tolerance tolerance;
    Selection selection;
};

// What headers say: the epochs of channels. Where a start or an end is missing, the span is without limit.
using ChannelCodes = std::array<std::string, 4>; // network, station, location, channel
using EpochSpans = std::set<std::pair<std::int64_t, std::int64_t>>;
using ChannelEpochs = std::map<ChannelCodes, EpochSpans>;

// A channel with what its rows and lines need. The coverage outlives it.
class ChannelReport {
public:
    ChannelReport(const ChannelCoverage& coverage, const CoverageOptions& options);

    const ChannelCoverage& data() const { return data_; }
    std::int64_t count(Break::Kind kind) const;
    std::int64_t longest_gap() const; // microseconds; 0 without a gap

    // The times of the data, joined, and the span that they are measured by. Without times there is no
    // percentage, and there are no days.
    const std::vector<TimeSpan>& times() const { return times_; }
    const TimeSpan& span() const { return span_; }
    bool has_times() const { return !times_.empty() && span_.start < span_.end; }
    double percent() const { return percent_of(span_, times_.begin(), period_); }

    // Visits the parts, so many, of a span: how much of each is covered, in percent, and whether data overlap
    // in it.
    template <class Visit>
    void for_each_part(const TimeSpan& span, std::size_t parts, Visit visit) const {
        auto time = times_.begin();
        for (std::size_t i = 0; i < parts; ++i) {
            const TimeSpan part{place_in(span, i, parts), place_in(span, i + 1, parts)};
            while (time != times_.end() && time->end <= part.start)
                ++time;
            visit(percent_of(part, time, 0), overlaps_in(part));
        }
    }

    // Visits each day of the span with the percentage of it that is covered.
    template <class Visit>
    void for_each_day(Visit visit) const {
        if (!has_times())
            return;
        auto time = times_.begin();
        for (std::int64_t start = span_.start - (span_.start % day + day) % day;
             snapped(span_.end, start, period_) > start; start += day) {
            while (time != times_.end() && time->end <= start)
                ++time;
            visit(start, percent_of({start, start + day}, time, period_));
        }
    }

private:
    using Time = std::vector<TimeSpan>::const_iterator;
    static constexpr std::int64_t day = 86'400'000'000;

    static std::int64_t snapped(std::int64_t time, std::int64_t start, std::int64_t period);
    static std::int64_t place_in(const TimeSpan& span, std::size_t part, std::size_t parts);
    double percent_of(const TimeSpan& span, Time one, std::int64_t period) const;
    bool overlaps_in(const TimeSpan& part) const;

    const ChannelCoverage& data_;
    std::vector<TimeSpan> times_;
    TimeSpan span_ = {};
    std::int64_t period_ = 0; // of a sample
};

// Parts of the texts: network, station, location, channel with points between; the time; the day of it.
std::string code_text(const ChannelCoverage& channel);
std::string time_text(std::int64_t time);
std::string day_text(std::int64_t time);
std::string_view name_of(Break::Kind kind);

// Shows 100 only if all is covered, and 0 only if nothing is.
std::string percent_text(double percent);

// The forms.
using Channels = std::vector<ChannelCoverage>;
void write_tables(const Channels& channels, const CoverageOptions& options, OrderedOutput::Part* out);
void write_json(const Channels& channels, const CoverageOptions& options, OrderedOutput::Part* out);
void write_plot(const Channels& channels, const CoverageOptions& options, OrderedOutput::Part* out);

// Writes the picture in its file, and further pages in files beside it. Throws if one cannot be written.
void write_picture(const Channels& channels, const ChannelEpochs& epochs, const CoverageOptions& options);

} // namespace quarry
