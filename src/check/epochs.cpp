// SPDX-License-Identifier: Apache-2.0
// Rules for codes, for epochs, and for the times of data.

#include "check/response.h"
#include "inventory/channel_codes.h"
#include "inventory/field_values.h"
#include "platform/text.h"
#include "quarry/time.h"

#include <set>
#include <utility>

namespace quarry {

namespace {

using Codes = std::tuple<std::string_view, std::string_view, std::string_view, std::string_view>;

// The channels that the headers describe.
std::set<Codes> described_channels(const Facts& facts) {
    std::set<Codes> codes;
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch&) { codes.insert(codes_of(row)); });
    return codes;
}

std::string time_text(Integer time, std::string_view otherwise) {
    return time ? std::string(IsoTime(*time).text()) : std::string(otherwise);
}

} // namespace

// --- codes ---------------------------------------------------------------------------------------------

namespace {

struct CodeForm {
    std::string_view name;
    std::size_t least, most; // characters
};
constexpr CodeForm network_form{"network", 1, 2};
constexpr CodeForm station_form{"station", 1, 5};
constexpr CodeForm location_form{"location", 0, 2};
constexpr CodeForm channel_form{"channel", 3, 3};

bool has_form(std::string_view code, const CodeForm& form) {
    return code.size() >= form.least && code.size() <= form.most &&
           std::all_of(code.begin(), code.end(),
                       [](char one) { return (one >= 'A' && one <= 'Z') || (one >= '0' && one <= '9'); });
}

void check_form(std::string_view code, const CodeForm& form, const Place& place, const Subject& subject,
                Findings* findings) {
    if (!has_form(code, form))
        findings->add(place, subject, "the ", form.name, " code '", code, "' is not ",
                      form.least == form.most ? "" : words(form.least, " to "), form.most,
                      " upper-case letters and digits");
}

// Blockettes have a network code from version 2.3 on.
bool has_network_codes(const Facts& facts) {
    const auto& volumes = facts.contents.inventory.volumes;
    constexpr double first_version = 2.3;
    return std::any_of(volumes.begin(), volumes.end(), [](const VolumeHeader& volume) {
        return parse_real(volume.version).value >= first_version;
    });
}

void check_codes_of_headers(const Facts& facts, Findings* findings) {
    const bool may_lack_network = !has_network_codes(facts);
    for (const Network& network : facts.contents.inventory.networks) {
        bool is_network_checked = network.code.empty() && may_lack_network;
        for (const Station& station : network.stations) {
            const Subject subject{network.code, station.code};
            if (!station.epochs.empty()) {
                const Place& place = station.epochs.front().place;
                if (!std::exchange(is_network_checked, true))
                    check_form(network.code, network_form, place, subject, findings);
                check_form(station.code, station_form, place, subject, findings);
            }
            for (const Channel& channel : station.channels) {
                const Place& place = channel.epochs.front().place;
                const Subject of_channel{network.code, station.code, channel.location, channel.code};
                check_form(channel.location, location_form, place, of_channel, findings);
                check_form(channel.code, channel_form, place, of_channel, findings);
            }
        }
    }
}

} // namespace

void check_codes(const Facts& facts, Findings* findings) {
    check_codes_of_headers(facts, findings);
    const std::set<Codes> described = described_channels(facts);
    for (const ChannelRecords& channel : facts.records)
        if (!described.contains(codes_of(channel))) {
            const Subject subject = subject_of(channel);
            check_form(channel.network, network_form, channel.first, subject, findings);
            check_form(channel.station, station_form, channel.first, subject, findings);
            check_form(channel.location, location_form, channel.first, subject, findings);
            check_form(channel.channel, channel_form, channel.first, subject, findings);
        }
}

// --- epochs --------------------------------------------------------------------------------------------

namespace {

template <class Timed>
void check_end(const Timed& timed, const Subject& subject, Findings* findings) {
    if (timed.end.microseconds && timed.end.microseconds < timed.start.microseconds)
        findings->add(timed.place, subject, "the end ", timed.end.text, " is before the start ",
                      timed.start.text);
}

template <class Epoch>
void check_ends_of(const Epoch& epoch, const Subject& subject, Findings* findings) {
    const Subject always{subject.network, subject.station, subject.location, subject.channel};
    check_end(epoch, always, findings);
    for (const Comment& comment : epoch.comments)
        check_end(comment, always, findings);
}

void add_overlaps(const Facts& facts, FindingKind kind, Findings* findings) {
    for (const Finding& finding : facts.contents.inventory.findings)
        if (finding.kind == kind) {
            const Subject subject = facts.subject_at(finding.place);
            const Subject other = facts.subject_at(finding.other);
            findings->add(finding.place, subject, "the epoch from ", time_text(subject.start, "(no start)"),
                          " to ", time_text(subject.end, "(no end)"), " overlaps the one from ",
                          time_text(other.start, "(no start)"), " to ", time_text(other.end, "(no end)"),
                          " at byte ", finding.other.offset);
        }
}

} // namespace

void check_epoch_ends(const Facts& facts, Findings* findings) {
    for_each_station_epoch(facts, [&](const Subject& subject, const StationEpoch& epoch) {
        check_ends_of(epoch, subject, findings);
    });
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        check_ends_of(epoch, subject_of(row), findings);
    });
}

void check_station_overlaps(const Facts& facts, Findings* findings) {
    add_overlaps(facts, FindingKind::station_epochs_overlap, findings);
}
void check_channel_overlaps(const Facts& facts, Findings* findings) {
    add_overlaps(facts, FindingKind::channel_epochs_overlap, findings);
}

namespace {

using Limits = std::numeric_limits<std::int64_t>;

// From the first to the last of the station's epochs.
TimeSpan span_of(const Station& station) {
    TimeSpan span{Limits::max(), Limits::min()};
    for (const StationEpoch& epoch : station.epochs) {
        span.start = std::min(span.start, span_of(epoch).start);
        span.end = std::max(span.end, span_of(epoch).end);
    }
    return span;
}

void check_within(const TimeSpan& span, const ChannelRow& row, Findings* findings) {
    const Moment& start = row.epoch->start;
    const Moment& end = row.epoch->end;
    if (start.microseconds.value_or(Limits::max()) < span.start)
        findings->add(row.epoch->place, row, "the start ", start.text, " is before that of the station, ",
                      IsoTime(span.start).text());
    if (end.microseconds.value_or(Limits::max()) > span.end)
        findings->add(row.epoch->place, row, "the end ", end.microseconds ? end.text : std::string("(none)"),
                      " is after that of the station, ", IsoTime(span.end).text());
}

void check_epochs_of(const Network& network, const Station& station, Findings* findings) {
    const TimeSpan span = span_of(station);
    for (const Channel& channel : station.channels)
        for (const ChannelEpoch& epoch : channel.epochs)
            check_within(span, {network.code, station.code, channel.location, channel.code, &epoch, nullptr},
                         findings);
}

} // namespace

void check_epochs_within_station(const Facts& facts, Findings* findings) {
    for (const Network& network : facts.contents.inventory.networks)
        for (const Station& station : network.stations)
            if (!station.epochs.empty())
                check_epochs_of(network, station, findings);
}

// --- data ----------------------------------------------------------------------------------------------

namespace {

// Visits the data that are in no epoch, of a channel that the headers describe or not.
void check_data_outside(const Facts& facts, bool is_described, std::string_view where, Findings* findings) {
    if (!facts.has_headers())
        return;
    const std::set<Codes> described = described_channels(facts);
    for_each_row(facts.contents, [&](const ChannelRow& row) {
        if (row.epoch != nullptr || described.contains(codes_of(row)) != is_described)
            return;
        Subject subject = subject_of(row);
        subject.start = row.data->first;
        subject.end = row.data->last;
        findings->add({0, row.data->offset, 0}, subject, "data from ", IsoTime(row.data->first).text(),
                      " to ", IsoTime(row.data->last).text(), where,
                      row.data->records > 1 ? words("; ", row.data->records, " such records") : "");
    });
}

// The spans are in order and do not overlap.
bool has_overlap(const ChannelEpoch& epoch, const std::vector<TimeSpan>& spans) {
    const TimeSpan time = span_of(epoch);
    const auto span =
        std::upper_bound(spans.begin(), spans.end(), time.start,
                         [](std::int64_t start, const TimeSpan& one) { return start < one.end; });
    return span != spans.end() && span->start < time.end;
}

} // namespace

void check_data_outside_epochs(const Facts& facts, Findings* findings) {
    check_data_outside(facts, true, " begin in no epoch of their channel", findings);
}
void check_data_without_channel(const Facts& facts, Findings* findings) {
    check_data_outside(facts, false, ", but no blockette 052 describes the channel", findings);
}

void check_channels_without_data(const Facts& facts, Findings* findings) {
    if (facts.has_data())
        for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
            if (row.data == nullptr && has_overlap(epoch, facts.times.spans))
                findings->add(epoch.place, row, "the volume has no data of the epoch from ",
                              time_text(epoch.start.microseconds, "(no start)"), " to ",
                              time_text(epoch.end.microseconds, "(no end)"));
        });
}

void check_data_outside_volume(const Facts& facts, Findings* findings) {
    for (const RecordsOutside& outside : facts.times.outside) {
        Subject subject = subject_of(outside);
        subject.start = outside.start;
        subject.end = outside.end;
        const bool is_early = outside.least.has_value();
        findings->add(outside.first, subject, is_early ? "data begin at " : "data end at ",
                      IsoTime(is_early ? outside.start : outside.end).text(),
                      is_early ? ", before " : ", after ", is_early ? "the start " : "the end ",
                      IsoTime(is_early ? *outside.least : *outside.most).text(),
                      outside.blockette == 70 ? " of the time span (" : " of the volume (",
                      three_digits(outside.blockette), ")",
                      outside.records > 1 ? words("; ", outside.records, " such records") : "");
    }
}

} // namespace quarry
