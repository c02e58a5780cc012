// SPDX-License-Identifier: Apache-2.0
// Data records: their lengths, and what their headers say.
#include "decode/data_record.h"
#include "platform/calendar.h"
#include "platform/text.h"
#include "volume/reading.h"

#include <algorithm>
#include <cmath>

namespace quarry {

using framing::signed_size;

namespace {

constexpr std::size_t usual_front = 256;       // holds the data blockettes of nearly every record
constexpr std::size_t largest_front = 1 << 16; // all that their offsets reach

bool is_length_power(int power) {
    return power >= framing::smallest_power && power <= framing::largest_power;
}

std::optional<std::size_t> length_of_power(std::optional<int> power) {
    return power && is_length_power(*power) ? std::optional(std::size_t{1} << *power) : std::nullopt;
}

bool is_swapped(std::endian order) {
    return order != std::endian::native;
}

RecordFormat format_in(std::string_view record, const DataBlockette& at) {
    const S1000 b1000 = decode_b1000(record, at);
    return {b1000.dataformat, b1000.sparc_order == 0 ? std::endian::little : std::endian::big,
            b1000.log2_record_length};
}

// The start by the header alone.
std::int64_t header_time(const FixedHeader& header) {
    const std::int64_t seconds =
        seconds_since_1970(header.year, header.day_of_year, header.hour, header.minute, header.second);
    return seconds * 1'000'000 + std::int64_t{header.fraction} * fraction_unit;
}

std::int64_t corrected_time(const DataRecord& record) {
    const bool is_applied = (record.header.activity_flags & correction_is_applied) != 0;
    return header_time(record.header) + record.microseconds.value_or(0) +
           (is_applied ? 0 : std::int64_t{record.header.time_correction} * fraction_unit);
}

std::string_view trimmed_code(std::string_view code) {
    return trimmed(code, [](char byte) { return byte == ' ' || byte == '\0'; });
}

void take_codes(std::string_view bytes, DataRecord* record) {
    const RecordCodes codes = codes_in(bytes);
    record->station = trimmed_code(codes.station);
    record->location = trimmed_code(codes.location);
    record->channel = trimmed_code(codes.channel);
    record->network = trimmed_code(codes.network);
}

// What the first of its type says wins.
void take_blockette(std::string_view bytes, const DataBlocketteExtent& blockette, DataRecord* record) {
    if (bytes.size() - blockette.offset < rate_and_format_size)
        return;
    const DataBlockette at{blockette.type, blockette.offset, 0};
    if (at.type == 1000 && !record->format)
        record->format = format_in(bytes, at);
    if (at.type == 100 && !record->stated_rate)
        record->stated_rate = decode_b100(bytes, at, is_swapped(record->header_order)).sample_rate;
    if (at.type == 1001 && !record->timing_quality) {
        const S1001 b1001 = decode_b1001(bytes, at);
        record->timing_quality = b1001.timing_quality;
        record->microseconds = b1001.microseconds;
    }
}

// Where the last data blockette ends: at the data, or at the end of the record.
std::size_t end_of_blockettes(const DataRecord& record, std::size_t last) {
    const std::size_t data = record.header.data_offset;
    return data > last && data <= record.bytes.size() ? data : record.bytes.size();
}

} // namespace

// What the blockette 1000 of the record at the place says, if it has one.
std::optional<RecordFormat> VolumeReader::Reading::format_at(std::int64_t place, std::endian order) {
    for (const std::size_t size : {usual_front, largest_front}) {
        const std::string_view bytes = window_.at(place, size);
        const bool swapped = is_swapped(order);
        const std::size_t first = decode_fixed_header(bytes, swapped).blockette_offset;
        std::optional<RecordFormat> format;
        std::size_t reached = first;
        for_each_data_blockette(bytes, first, swapped, [&](const DataBlockette& at) {
            if (at.type == 1000 && at.offset + rate_and_format_size <= bytes.size())
                format = format_in(bytes, at);
            reached = std::max(reached, at.type == 1000 ? at.offset : at.next);
            return at.type != 1000;
        });
        if (format || reached + rate_and_format_size <= size)
            return format;
    }
    return std::nullopt;
}

std::optional<std::size_t> VolumeReader::Reading::length_by_1000(std::int64_t place) {
    const auto order = framing::header_order(window_.at(place, fixed_header_size));
    const auto format = order ? format_at(place, *order) : std::nullopt;
    return format ? length_of_power(format->power) : std::nullopt;
}

std::optional<std::size_t> VolumeReader::Reading::length_by_channel(std::int64_t place) {
    const std::string_view front = window_.at(place, fixed_header_size);
    const auto order = framing::header_order(front);
    if (!order)
        return std::nullopt;
    const FixedHeader header = decode_fixed_header(front, is_swapped(*order));
    return length_of_power(channels_.power_at(front.substr(codes_offset, codes_size), header_time(header)));
}

VolumeReader::Reading::Length VolumeReader::Reading::declared_length() {
    if (const auto length = length_by_1000(at_))
        return {*length, LengthSource::blockette_1000};
    if (const auto length = length_by_channel(at_))
        return {*length, LengthSource::channel};
    if (const auto length = distance_to_record(at_, framing::largest_power))
        return {*length, LengthSource::next_record};
    return {last_length_ != 0 ? last_length_ : framing::usual_record_size, LengthSource::guess};
}

// True if a record begins at a place within the record at hand, which therefore ends there. Where a blockette
// 1000 gave the length and that leads to a record, a data record within it needs more: its own blockette 1000
// leads to a record or to the same end.
bool VolumeReader::Reading::record_within(std::int64_t place, const Length& length) {
    const framing::Kind kind = sound_at(place);
    if (kind == framing::Kind::control)
        return begins_blockette_at(place + signed_size(framing::header_size));
    if (kind != framing::Kind::data)
        return false;
    if (length.source != LengthSource::blockette_1000)
        return true;
    const std::int64_t end = at_ + signed_size(length.bytes);
    const auto inner = length_by_1000(place);
    const std::int64_t inner_end = place + signed_size(inner.value_or(0));
    return (inner && (inner_end == end || record_or_end_at(inner_end))) || !record_or_end_at(end);
}

std::size_t VolumeReader::Reading::settled_length(const Length& declared) {
    for (std::size_t size = shortest_record_size; size < declared.bytes; size *= 2)
        if (record_within(at_ + signed_size(size), declared))
            return size;
    const std::int64_t end = at_ + signed_size(declared.bytes);
    if (framing::find_candidate(window_.at(end, framing::header_size), 1) == 0 || ends_at(end))
        return declared.bytes;
    // Nothing confirms the length: it must not lead over another record, wherever that begins.
    const auto next = record_between(at_ + signed_size(shortest_record_size), end);
    return next ? length_up_to(static_cast<std::size_t>(*next - at_)) : declared.bytes;
}

// The place of a record within the one at hand: at a multiple of 64, or one that leads beyond its end to
// another record, which the image of a record in a text does not.
std::optional<std::int64_t> VolumeReader::Reading::record_between(std::int64_t begin, std::int64_t end) {
    const auto record =
        first_record(begin, end, framing::usual_step, [this](auto place) { return resumes_at(place); });
    return record ? record : first_record(begin, end, 1, [this, end](std::int64_t place) {
        return confirmed_end(place).value_or(0) >= end;
    });
}

// A likely length of a record behind which another one begins at this distance.
std::size_t VolumeReader::Reading::length_up_to(std::size_t distance) const {
    return last_length_ != 0 && last_length_ <= distance ? last_length_ : std::bit_floor(distance);
}

// Lists the data blockettes; false if their chain is damaged.
bool VolumeReader::Reading::list_blockettes(DataRecord* record) {
    blockettes_.clear();
    const std::string_view bytes(record->bytes.data(), record->bytes.size());
    std::size_t next = record->header.blockette_offset;
    for_each_data_blockette(bytes, next, is_swapped(record->header_order), [&](const DataBlockette& at) {
        if (!blockettes_.empty())
            blockettes_.back().length = at.offset - blockettes_.back().offset;
        blockettes_.push_back({at.type, at.offset, 0});
        next = at.next;
        return true;
    });
    if (!blockettes_.empty()) {
        const std::size_t last = blockettes_.back().offset;
        blockettes_.back().length = end_of_blockettes(*record, last) - last;
    }
    for (const DataBlocketteExtent& blockette : blockettes_)
        take_blockette(bytes, blockette, record);
    record->blockettes = blockettes_;
    return next == 0;
}

// All that the bytes of the record say.
void VolumeReader::Reading::describe_record(DataRecord* record) {
    const std::string_view bytes(record->bytes.data(), record->bytes.size());
    const std::int64_t offset = record->offset;
    record->sequence = framing::number_of(bytes.substr(0, 6));
    record->quality = bytes[6];
    take_codes(bytes, record);
    record->header = decode_fixed_header(record->bytes, is_swapped(record->header_order));
    const bool chain_holds = list_blockettes(record);
    const std::size_t data = record->header.data_offset;
    const bool has_data = data >= fixed_header_size && data <= bytes.size();
    record->payload = has_data ? record->bytes.subspan(data) : record->bytes.last(0);
    record->start = corrected_time(*record);
    const double stated = record->stated_rate.value_or(0);
    record->rate = stated > 0 && std::isfinite(stated) ? stated : rate_of(record->header);

    if (record->sequence < 0)
        add_damage(DamageKind::sequence_number, offset, 0);
    if (bytes.size() < record->length)
        add_damage(DamageKind::input_ends, offset, 0);
    else if (!chain_holds)
        add_damage(DamageKind::blockette_chain, offset, 0, blockettes_.empty() ? 0 : blockettes_.back().type);
    if (!has_data && record->header.samples > 0 && (data < fixed_header_size || data > record->length))
        add_damage(DamageKind::data_offset, offset, 0);
}

void VolumeReader::Reading::read_data() {
    const Length declared = declared_length();
    const std::size_t length = settled_length(declared);
    const std::string_view bytes = window_.at(at_, length);
    ++totals_.data_records;
    items_.emplace_back(std::in_place_type<DataRecord>);
    DataRecord record{};
    record.offset = at_;
    record.length = length;
    record.bytes = bytes;
    record.length_source = length == declared.bytes ? declared.source : LengthSource::next_record;
    record.logical_record = totals_.control_records + totals_.data_records;
    record.header_order = *framing::header_order(bytes);
    describe_record(&record);
    items_.front() = record;
    if (record.format && !is_length_power(record.format->power))
        add_damage(DamageKind::record_length, at_, 0, 1000, {},
                   "two to the power of " + std::to_string(record.format->power));
    else if (length != declared.bytes)
        add_damage(DamageKind::record_length, at_, 0,
                   declared.source == LengthSource::blockette_1000 ? 1000 : 52);
    last_length_ = length;
    totals_.data_bytes += signed_size(bytes.size());
    at_ += signed_size(bytes.size());
}

} // namespace quarry
