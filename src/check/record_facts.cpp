// SPDX-License-Identifier: Apache-2.0
#include "check/record_facts.h"

#include "check/words.h"
#include "decode/data_record.h"
#include "decode/encodings.h"
#include "inventory/channel_codes.h"
#include "quarry/samples.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace quarry {

namespace {

constexpr double rate_tolerance = 1e-3;

Place place_of(const DataRecord& record) {
    return {0, record.offset, record.logical_record};
}

template <class... Words>
void note(ChannelRecords* channel, RecordFault fault, const DataRecord& record, const Words&... what) {
    const auto found = std::find_if(channel->faults.begin(), channel->faults.end(),
                                    [fault](const RecordsAtFault& one) { return one.fault == fault; });
    if (found != channel->faults.end())
        ++found->records;
    else
        channel->faults.push_back({fault, 1, place_of(record), words(what...)});
}

bool differ(double one, double other) {
    return std::abs(one - other) > rate_tolerance * std::max(std::abs(one), std::abs(other));
}

// --- header --------------------------------------------------------------------------------------------

void check_rate(const DataRecord& record, ChannelRecords* channel) {
    const double rate = rate_of(record.header);
    if (record.stated_rate && *record.stated_rate > 0 && differ(*record.stated_rate, rate))
        note(channel, RecordFault::rates_differ, record, "the rate of the header is ", rate,
             ", that of blockette 100 ", double{*record.stated_rate});
}

void check_time(const DataRecord& record, ChannelRecords* channel) {
    constexpr int least_quality = 50;
    if (record.timing_quality && *record.timing_quality < least_quality)
        note(channel, RecordFault::timing_quality, record, "timing_quality of blockette 1001 is ",
             *record.timing_quality, " %, below ", least_quality);
    if (record.header.time_correction != 0 && (record.header.activity_flags & correction_is_applied) == 0)
        note(channel, RecordFault::correction_open, record, "time_correction of ",
             record.header.time_correction / 1e4, " s is not applied");
}

void check_flags(const DataRecord& record, ChannelRecords* channel) {
    constexpr std::array<std::string_view, 8> names{"amplifier saturation",
                                                    "digitizer clipping",
                                                    "spikes",
                                                    "glitches",
                                                    "missing or padded data",
                                                    "telemetry synchronization error",
                                                    "digital filter charging",
                                                    "questionable time tag"};
    std::string flags;
    for (std::size_t bit = 0; bit < names.size(); ++bit)
        if ((record.header.quality_flags >> bit & 1) != 0)
            flags += words(flags.empty() ? "" : ", ", names[bit]);
    if (!flags.empty())
        note(channel, RecordFault::quality_flags, record, "quality_flags report ", flags);
}

// --- samples -------------------------------------------------------------------------------------------

// The samples as numbers; none for text.
std::vector<double> numbers_of(const Samples& samples) {
    return std::visit(
        [](const auto& values) {
            if constexpr (std::is_same_v<std::decay_t<decltype(values)>, std::string>)
                return std::vector<double>();
            else
                return std::vector<double>(values.begin(), values.end());
        },
        samples.values);
}

// How far the samples go up and down.
double roughness(const std::vector<double>& values) {
    double sum = 0;
    for (std::size_t i = 1; i < values.size(); ++i)
        sum += std::abs(values[i] - values[i - 1]);
    return std::isfinite(sum) ? sum : HUGE_VAL;
}

void check_word_order(const DataRecord& record, const std::vector<double>& values, ChannelRecords* channel) {
    constexpr std::size_t enough = 16;
    constexpr double far = 100;
    const SampleEncoding* const encoding = find_encoding(record.format->encoding);
    if (encoding == nullptr || !encoding->has_plain_words || values.size() < enough)
        return;
    const bool is_little = record.format->word_order == std::endian::little;
    const auto other = decode_samples(record.payload, encoding->code,
                                      is_little ? std::endian::big : std::endian::little, values.size());
    const double there = roughness(numbers_of(*other));
    if (there > 0 && roughness(values) > far * there)
        note(channel, RecordFault::word_order, record, "word order of blockette 1000 is ",
             is_little ? "0 (little)" : "1 (big)", ", but samples are far smoother in the other one");
}

// True if the samples begin alike, as far as both go.
bool agree(std::span<const double> one, std::span<const double> other) {
    const auto is_same = [](double a, double b) { return a == b || (a != a && b != b); };
    const std::size_t common = std::min(one.size(), other.size());
    return std::equal(one.begin(), one.begin() + static_cast<std::ptrdiff_t>(common), other.begin(), is_same);
}

// Half a sample more or less does not count as an overlap.
void add_end(const DataRecord& record, ChannelRecords* channel, LastRecord* last) {
    if (!(record.rate > 0) || record.header.samples == 0)
        return;
    const double sample = 1e6 / record.rate;
    const auto start = static_cast<double>(record.start);
    if (start + sample / 2 < last->latest && !channel->early)
        channel->early = place_of(record);
    last->latest = std::max(last->latest, start + sample * record.header.samples);
}

void add_header(const DataRecord& record, ChannelRecords* channel) {
    if (record.format && !is_known_encoding(record.format->encoding))
        note(channel, RecordFault::encoding_unknown, record, "encoding of blockette 1000 is ",
             record.format->encoding, ", which is not known");
    check_rate(record, channel);
    check_time(record, channel);
    check_flags(record, channel);
}

void add_samples(const DataRecord& record, ChannelRecords* channel, LastRecord* last) {
    const std::optional<Samples> samples = samples_of(record);
    std::vector<double> values = samples ? numbers_of(*samples) : std::vector<double>();
    if (samples && samples->missing > 0)
        note(channel, RecordFault::samples_missing, record, "samples is ", record.header.samples,
             ", but the record lacks ", samples->missing, " of them");
    if (samples && samples->last_agrees == false)
        note(channel, RecordFault::last_sample, record,
             "the last sample is another one than the record states for a check");
    if (samples)
        check_word_order(record, values, channel);
    const double behind = static_cast<double>(record.start - last->start) * record.rate / 1e6;
    const auto from = static_cast<std::size_t>(std::clamp(std::round(behind), 0.0, 1e6));
    constexpr double rounding = 0.01; // samples: nearer than that they stand at the same times
    if (record.rate > 0 && last->rate == record.rate && behind >= 0 && from < last->values.size() &&
        std::abs(behind - std::round(behind)) < rounding &&
        !agree(std::span<const double>(last->values).subspan(from), values))
        note(channel, RecordFault::samples_differ, record,
             "samples differ from those of the record before "
             "at the same times");
    last->values = std::move(values);
}

// Times of records are multiples of 0.1 ms: pairs are off by more than two of these.
void add_pair(std::int64_t took, std::int64_t samples, const DataRecord& record, Pace* pace) {
    constexpr double ticks = 200;      // microseconds
    constexpr double neighbours = 0.1; // of the time that the samples take: further off is a gap or overlap
    const double expected = static_cast<double>(samples) * 1e6 / record.rate;
    const double off = std::abs(static_cast<double>(took) - expected);
    if (off > neighbours * expected)
        return;
    ++pace->pairs;
    if (off <= ticks || off <= rate_tolerance * expected)
        return;
    if (pace->off++ == 0) {
        pace->first = place_of(record);
        pace->rate = record.rate;
    }
    pace->samples += samples;
    pace->microseconds += took;
}

} // namespace

std::size_t RecordGatherer::Hash::operator()(const HeaderCodes& codes) const {
    return std::hash<std::string_view>()({codes.data(), codes.size()});
}

// One channel, whether its codes are filled up with blanks or with NULs. Most often it is that of the record
// before, and written alike.
std::size_t RecordGatherer::index_of(const DataRecord& record) {
    HeaderCodes written;
    std::copy_n(record.bytes.begin() + codes_offset, written.size(), written.begin());
    if (written == last_codes_ && !channels_.empty())
        return last_;
    const auto [place, is_new] = index_.emplace(
        header_codes({record.station, record.location, record.channel, record.network}), channels_.size());
    if (is_new) {
        channels_.push_back({std::string(record.network), std::string(record.station),
                             std::string(record.location), std::string(record.channel), place_of(record)});
        lasts_.emplace_back();
    }
    last_codes_ = written;
    return last_ = place->second;
}

std::vector<ChannelRecords> RecordGatherer::finish() && {
    std::sort(channels_.begin(), channels_.end(), precedes<ChannelRecords, ChannelRecords>);
    return std::move(channels_);
}

void RecordGatherer::add(const DataRecord& record) {
    const std::size_t index = index_of(record);
    ChannelRecords& channel = channels_[index];
    LastRecord& last = lasts_[index];
    add_header(record, &channel);
    if (record.rate > 0 && last.samples > 0 && last.rate == record.rate)
        add_pair(record.start - last.start, last.samples, record, &channel.pace);
    add_end(record, &channel, &last);
    if (with_samples_)
        add_samples(record, &channel, &last);
    last.start = record.start;
    last.samples = record.header.samples;
    last.rate = record.rate;
}

} // namespace quarry
