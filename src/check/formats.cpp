// SPDX-License-Identifier: Apache-2.0
// Rules for data formats, record lengths and sample rates: what headers say against what records have.

#include "check/response.h"
#include "decode/encodings.h"
#include "inventory/field_values.h"
#include "platform/text.h"
#include "quarry/samples.h"

namespace quarry {

namespace {

// Visits the epochs that have data.
template <class Visit>
void for_each_epoch_with_data(const Facts& facts, Visit visit) {
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        if (row.data != nullptr)
            visit(row, epoch, *row.data);
    });
}

// True where nothing is known that speaks against it.
bool may_be(int encoding, std::int64_t family) {
    const SampleEncoding* const row = find_encoding(encoding);
    return row == nullptr || row->families[0] == family || row->families[1] == family;
}

} // namespace

void check_format(const Facts& facts, Findings* findings) {
    const Dictionary& dictionary = facts.contents.inventory.dictionary;
    for_each_epoch_with_data(
        facts, [&](const ChannelRow& row, const ChannelEpoch& epoch, const EpochData& data) {
            const DataFormat* format = find_definition(dictionary.formats, epoch.format, epoch.place.offset);
            if (format == nullptr || !format->family)
                return;
            for (const int encoding : data.encodings)
                if (!may_be(encoding, *format->family))
                    findings->add(epoch.place, row, "data_format_identifier_code leads to ", format->name,
                                  " of family ", *format->family, ", but records have encoding ", encoding,
                                  " (", encoding_name(encoding), ")");
        });
}

void check_record_length(const Facts& facts, Findings* findings) {
    const auto check = [&](const ChannelRow& row, const ChannelEpoch& epoch, const EpochData& data) {
        const std::int64_t power = epoch.record_length.value_or(0);
        const Integer bytes = bytes_of_power(power);
        for (const std::size_t length : data.lengths)
            if (power > 0 && bytes && static_cast<std::int64_t>(length) != *bytes)
                findings->add(epoch.place, row, "data_record_length is ", power, ", ", *bytes,
                              " bytes, but records have ", length);
    };
    for_each_epoch_with_data(facts, check);
}

void check_channel_rate(const Facts& facts, Findings* findings) {
    constexpr double tolerance = 1e-3;
    for_each_epoch_with_data(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch,
                                        const EpochData& data) {
        if (epoch.rate && data.rate > 0 && !are_close(*epoch.rate, data.rate, tolerance))
            findings->add(epoch.place, row, "sample_rate is ", *epoch.rate, ", but records have ", data.rate);
    });
}

// Most pairs of records have to say so: one that is off may be a gap.
void check_pace(const Facts& facts, Findings* findings) {
    constexpr std::int64_t enough = 3;
    for (const ChannelRecords& channel : facts.records) {
        const Pace& pace = channel.pace;
        if (pace.off >= enough && pace.off > pace.pairs / 2)
            findings->add(
                pace.first, subject_of(channel), "the sample rate of records is ", pace.rate,
                ", but their times, ", pace.off, " of ", pace.pairs, " pairs, make it ",
                rounded(static_cast<double>(pace.samples) * 1e6 / static_cast<double>(pace.microseconds)));
    }
}

} // namespace quarry
