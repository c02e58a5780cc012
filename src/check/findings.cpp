// SPDX-License-Identifier: Apache-2.0
#include "check/findings.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace quarry {

std::string_view name_of(Severity severity) {
    constexpr std::array<std::string_view, 3> names{"note", "warning", "error"};
    return names[static_cast<std::size_t>(severity)];
}

Subject subject_of(const ChannelRow& row) {
    Subject subject{row.network, row.station, row.location, row.channel};
    if (row.epoch != nullptr) {
        subject.start = row.epoch->start.microseconds;
        subject.end = row.epoch->end.microseconds;
    }
    return subject;
}

Subject subject_of(const Network& network, const Station& station, const StationEpoch& epoch) {
    return {network.code, station.code, {}, {}, epoch.start.microseconds, epoch.end.microseconds};
}

std::string name_of(const Subject& subject) {
    if (subject.station.empty() && subject.channel.empty())
        return "";
    const std::string station = words(subject.network, ".", subject.station);
    return subject.channel.empty() ? station : words(station, ".", subject.location, ".", subject.channel);
}

void Findings::begin(const Rule& rule) {
    end_rule();
    rule_ = &rule;
    of_rule_ = 0;
}

bool Findings::is_taken(const Subject& subject) const {
    return name_of(subject).empty() || takes_(subject);
}

void Findings::keep(const Place& place, const Subject& subject, std::string text) {
    if (++of_rule_ > most_of_a_rule)
        return;
    if (place.blockette > 0)
        text = words("blockette ", three_digits(place.blockette), ": ", text);
    const std::string name = name_of(subject);
    if (!name.empty())
        text = words(name, place.blockette > 0 ? ", " : ": ", text);
    all_.push_back({rule_, place, name, std::move(text), 1});
    last_ = place;
}

// Those that were only counted are reported at the place of the last one that was kept.
void Findings::end_rule() {
    if (of_rule_ <= most_of_a_rule)
        return;
    const auto more = static_cast<std::int64_t>(of_rule_ - most_of_a_rule);
    all_.push_back({rule_, last_, "", words(more, " more of these are not shown"), more});
}

std::vector<CheckFinding> Findings::take() {
    end_rule();
    of_rule_ = 0;
    std::stable_sort(all_.begin(), all_.end(), [](const CheckFinding& one, const CheckFinding& other) {
        return one.place.offset < other.place.offset;
    });
    return std::exchange(all_, {});
}

} // namespace quarry
