// SPDX-License-Identifier: Apache-2.0
#include "commands/selected.h"

#include "inventory/field_values.h"

namespace quarry {

bool takes(const Selection& selection, const DataRecord& record) {
    return selection.takes_station(record.network, record.station) &&
           selection.takes_channel(record.location, record.channel) &&
           (!selection.has_span() || selection.takes_span(record.start, end_of(record)));
}

// What is about a station alone is taken whatever the channels.
bool takes(const Selection& selection, const Subject& subject) {
    const TimeSpan span = span_of(subject.start, subject.end);
    return selection.takes_station(subject.network, subject.station) &&
           (subject.channel.empty() || selection.takes_channel(subject.location, subject.channel)) &&
           selection.takes_span(span.start, span.end);
}

bool takes_span(const Selection& selection, const Moment& start, const Moment& end) {
    const TimeSpan span = span_of(start.microseconds, end.microseconds);
    return selection.takes_span(span.start, span.end);
}

void for_each_row(const Contents& contents, const Selection& selection,
                  const std::function<void(const ChannelRow& row)>& visit) {
    for_each_row(contents, [&](const ChannelRow& row) {
        if (selection.takes_station(row.network, row.station) &&
            selection.takes_channel(row.location, row.channel) &&
            (row.epoch == nullptr || takes_span(selection, row.epoch->start, row.epoch->end)))
            visit(row);
    });
}

} // namespace quarry
