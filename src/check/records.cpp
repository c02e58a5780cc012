// SPDX-License-Identifier: Apache-2.0
// Rules for data records: what is wrong with single ones, and how they overlap.

#include "check/rules.h"
#include "inventory/channel_codes.h"
#include "quarry/time.h"

#include <algorithm>

namespace quarry {

namespace {

void add_faults(const Facts& facts, RecordFault fault, Findings* findings) {
    for (const ChannelRecords& channel : facts.records) {
        const auto found = std::find_if(channel.faults.begin(), channel.faults.end(),
                                        [fault](const RecordsAtFault& one) { return one.fault == fault; });
        if (found != channel.faults.end())
            findings->add(found->first, subject_of(channel), found->what,
                          found->records > 1 ? words("; ", found->records, " such records") : "");
    }
}

} // namespace

void check_encoding(const Facts& facts, Findings* findings) {
    add_faults(facts, RecordFault::encoding_unknown, findings);
}
void check_stated_rate(const Facts& facts, Findings* findings) {
    add_faults(facts, RecordFault::rates_differ, findings);
}
void check_timing_quality(const Facts& facts, Findings* findings) {
    add_faults(facts, RecordFault::timing_quality, findings);
}
void check_quality_flags(const Facts& facts, Findings* findings) {
    add_faults(facts, RecordFault::quality_flags, findings);
}
void check_correction(const Facts& facts, Findings* findings) {
    add_faults(facts, RecordFault::correction_open, findings);
}
void check_missing_samples(const Facts& facts, Findings* findings) {
    add_faults(facts, RecordFault::samples_missing, findings);
}
void check_last_sample(const Facts& facts, Findings* findings) {
    add_faults(facts, RecordFault::last_sample, findings);
}
void check_word_order(const Facts& facts, Findings* findings) {
    add_faults(facts, RecordFault::word_order, findings);
}
void check_differing_samples(const Facts& facts, Findings* findings) {
    add_faults(facts, RecordFault::samples_differ, findings);
}

namespace {

auto find_records(const Facts& facts, const ChannelCoverage& channel) {
    return std::lower_bound(facts.records.begin(), facts.records.end(), channel,
                            precedes<ChannelRecords, ChannelCoverage>);
}

// Of the channel's first record that goes back in time, or of the first one.
Place place_of_overlap(const Facts& facts, const ChannelCoverage& channel) {
    const auto found = find_records(facts, channel);
    return found != facts.records.end() ? found->early.value_or(found->first) : Place{};
}

} // namespace

// --- times ---------------------------------------------------------------------------------------------

namespace {

// Data of the same times that differ are reported as that.
bool differ(const Facts& facts, const ChannelCoverage& channel) {
    const auto found = find_records(facts, channel);
    return found != facts.records.end() &&
           std::any_of(found->faults.begin(), found->faults.end(),
                       [](const RecordsAtFault& one) { return one.fault == RecordFault::samples_differ; });
}

} // namespace

void check_duplicates(const Facts& facts, Findings* findings) {
    for (const ChannelCoverage& channel : facts.coverage)
        if (channel.duplicates > 0 && !differ(facts, channel))
            findings->add(place_of_overlap(facts, channel), subject_of(channel), "the data of ",
                          channel.duplicates, " of ", channel.records, " records are there twice");
}

void check_overlaps(const Facts& facts, Findings* findings) {
    for (const ChannelCoverage& channel : facts.coverage) {
        std::int64_t overlaps = 0;
        const Break* first = nullptr;
        for (const Break& one : channel.breaks)
            if (one.kind == Break::Kind::overlap && ++overlaps == 1)
                first = &one;
        if (first != nullptr && !differ(facts, channel))
            findings->add(place_of_overlap(facts, channel), subject_of(channel), "data overlap at ",
                          IsoTime(first->start).text(), " by ", rounded(first->samples), " samples",
                          overlaps > 1 ? words(", the first of ", overlaps, " overlaps") : "");
    }
}

} // namespace quarry
