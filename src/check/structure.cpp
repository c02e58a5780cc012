// SPDX-License-Identifier: Apache-2.0
// Rules for the structure of a volume: its logical records, its indices, and the counts of what it has.

#include "check/rules.h"

#include <map>

namespace quarry {

namespace {

void add_faults(const Facts& facts, StructureFault kind, Findings* findings) {
    const StructureFaults::OfAKind& faults = facts.structure.of(kind);
    for (const StructureFaults::Fault& fault : faults.first)
        findings->add(fault.place, fault.station.empty() ? facts.subject_at(fault.place) : subject_of(fault),
                      fault.text);
    findings->count_more(faults.count - faults.first.size());
}

} // namespace

void check_damage(const Facts& facts, Findings* findings) {
    add_faults(facts, StructureFault::damage, findings);
}
void check_fields(const Facts& facts, Findings* findings) {
    add_faults(facts, StructureFault::field, findings);
}
void check_texts(const Facts& facts, Findings* findings) {
    add_faults(facts, StructureFault::text, findings);
}
void check_declared_length(const Facts& facts, Findings* findings) {
    add_faults(facts, StructureFault::declared_length, findings);
}
void check_blockette_length(const Facts& facts, Findings* findings) {
    add_faults(facts, StructureFault::blockette_length, findings);
}
void check_sequence(const Facts& facts, Findings* findings) {
    add_faults(facts, StructureFault::sequence, findings);
}
void check_order(const Facts& facts, Findings* findings) {
    add_faults(facts, StructureFault::order, findings);
}
void check_volume_header(const Facts& facts, Findings* findings) {
    add_faults(facts, StructureFault::volume_header, findings);
}
void check_station_index(const Facts& facts, Findings* findings) {
    add_faults(facts, StructureFault::station_index, findings);
}
void check_span_index(const Facts& facts, Findings* findings) {
    add_faults(facts, StructureFault::span_index, findings);
}
void check_data_index(const Facts& facts, Findings* findings) {
    add_faults(facts, StructureFault::data_index, findings);
}
void check_station_count(const Facts& facts, Findings* findings) {
    add_faults(facts, StructureFault::station_count, findings);
}

// --- counts --------------------------------------------------------------------------------------------

namespace {

struct ChannelCount {
    std::int64_t channels = 0;
    std::int64_t epochs = 0;
};

// Of the channels behind each 050, by its offset.
std::map<std::int64_t, ChannelCount> channels_of(const Station& station) {
    std::map<std::int64_t, ChannelCount> counts;
    for (const Channel& channel : station.channels) {
        std::map<std::int64_t, std::int64_t> epochs;
        for (const ChannelEpoch& epoch : channel.epochs)
            ++epochs[epoch.station];
        for (const auto& [offset, count] : epochs) {
            ++counts[offset].channels;
            counts[offset].epochs += count;
        }
    }
    return counts;
}

} // namespace

// Writers count channels, or their epochs, each of which has a blockette 052.
void check_channel_count(const Facts& facts, Findings* findings) {
    for (const Network& network : facts.contents.inventory.networks)
        for (const Station& station : network.stations) {
            const std::map<std::int64_t, ChannelCount> counts = channels_of(station);
            for (const StationEpoch& epoch : station.epochs) {
                const auto found = counts.find(epoch.place.offset);
                const ChannelCount count = found != counts.end() ? found->second : ChannelCount{};
                if (epoch.channel_count && epoch.channel_count != count.channels &&
                    epoch.channel_count != count.epochs)
                    findings->add(epoch.place, subject_of(network, station, epoch), "number_of_channels is ",
                                  *epoch.channel_count, ", but ", count.epochs, " blockettes 052 of ",
                                  count.channels, " channels follow");
            }
        }
}

void check_comment_count(const Facts& facts, Findings* findings) {
    const auto check = [&](const auto& epoch, const Subject& subject, std::string_view field, int type) {
        const auto count = static_cast<std::int64_t>(epoch.comments.size());
        if (epoch.comment_count && epoch.comment_count != count)
            findings->add(epoch.place, subject, field, " is ", *epoch.comment_count,
                          ", but the number of blockettes 0", type, " is ", count);
    };
    for_each_station_epoch(facts, [&](const Subject& subject, const StationEpoch& epoch) {
        check(epoch, subject, "number_of_station_comments", 51);
    });
    for_each_row(facts.contents, [&](const ChannelRow& row) {
        if (row.epoch != nullptr)
            check(*row.epoch, subject_of(row), "number_of_comments", 59);
    });
}

} // namespace quarry
