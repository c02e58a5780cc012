// SPDX-License-Identifier: Apache-2.0
#include "check/time_facts.h"

#include "decode/catalogue.h"
#include "inventory/field_values.h"

#include <algorithm>
#include <limits>

namespace quarry {

namespace {

using Limits = std::numeric_limits<std::int64_t>;

// Times of headers may be those of the last sample or of the next one, and rounded.
std::int64_t tolerance_of(const DataRecord& record) {
    constexpr double millisecond = 1e3, day = 86400e6;
    const double interval = record.rate > 0 ? std::min(1e6 / record.rate, day) : 0;
    return static_cast<std::int64_t>(std::max(millisecond, 1.5 * interval));
}

Integer time_of(const Fields& fields, std::string_view name) {
    return moment_value(fields.fields, name).microseconds;
}

} // namespace

void TimeGatherer::add(const ControlBlockette& blockette, const Fields& fields) {
    if (blockette.type == 10)
        begin_volume(10, time_of(fields, "beginning_time"), time_of(fields, "end_time"));
    else if (is_volume_header(blockette.type))
        begin_volume(blockette.type, time_of(fields, "beginning_of_volume"),
                     time_of(fields, "end_of_volume"));
    else if (blockette.type == 70)
        add_span(time_of(fields, "beginning_time_of_data_span"), time_of(fields, "end_time_of_data_span"));
}

void TimeGatherer::begin_volume(int header, Integer start, Integer end) {
    for (const auto& [from, to] : spans_)
        all_spans_.push_back({from, to});
    spans_.clear();
    header_ = header;
    start_ = start;
    end_ = end;
}

// Spans that overlap or touch become one.
void TimeGatherer::add_span(Integer start, Integer end) {
    auto [from, to] = span_of(start, end);
    auto other = spans_.upper_bound(from);
    if (other != spans_.begin() && std::prev(other)->second >= from)
        --other;
    while (other != spans_.end() && other->first <= to) {
        from = std::min(from, other->first);
        to = std::max(to, other->second);
        other = spans_.erase(other);
    }
    spans_[from] = to;
}

void TimeGatherer::add(const DataRecord& record) {
    const std::int64_t tolerance = tolerance_of(record);
    const std::int64_t end = end_of(record);
    first_ = std::min(first_.value_or(Limits::max()), record.start);
    last_ = std::max(last_.value_or(Limits::min()), end);
    const auto after = spans_.upper_bound(record.start + tolerance);
    if (!spans_.empty() && after == spans_.begin())
        add_outside(record, 70, after->first, std::nullopt);
    else if (!spans_.empty() && end - tolerance > std::prev(after)->second)
        add_outside(record, 70, std::nullopt, std::prev(after)->second);
    else if (start_ && record.start + tolerance < *start_)
        add_outside(record, header_, start_, std::nullopt);
    else if (end_ && end - tolerance > *end_)
        add_outside(record, header_, std::nullopt, end_);
}

void TimeGatherer::add_outside(const DataRecord& record, int blockette, Integer least, Integer most) {
    RecordsOutside& of_channel = outside_[{std::string(record.network), std::string(record.station),
                                           std::string(record.location), std::string(record.channel)}];
    if (++of_channel.records == 1)
        of_channel = {std::string(record.network),
                      std::string(record.station),
                      std::string(record.location),
                      std::string(record.channel),
                      blockette,
                      1,
                      {0, record.offset, record.logical_record},
                      record.start,
                      end_of(record),
                      least,
                      most};
}

TimeFacts TimeGatherer::finish() && {
    begin_volume(0, {}, {});
    spans_.clear();
    for (const TimeSpan& span : all_spans_)
        add_span(span.start, span.end);
    if (spans_.empty() && first_)
        add_span(first_, last_);
    TimeFacts facts;
    for (const auto& [start, end] : spans_)
        facts.spans.push_back({start, end});
    for (auto& [codes, outside] : outside_)
        facts.outside.push_back(std::move(outside));
    return facts;
}

} // namespace quarry
