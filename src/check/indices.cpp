// SPDX-License-Identifier: Apache-2.0
#include "check/indices.h"

#include "decode/data_record.h"
#include "inventory/field_values.h"
#include "platform/text.h"
#include "quarry/time.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace quarry {

namespace {

Place place_of(const ControlBlockette& blockette, std::span<const Field> row) {
    const std::size_t offset = row.empty() ? 0 : row.front().offset;
    return {blockette.type, input_offset(blockette, offset), blockette.logical_record};
}

std::int64_t number_or_zero(std::span<const Field> fields, std::string_view name) {
    return integer_field(fields, name).value_or(0);
}

std::int64_t time_or_least(std::span<const Field> fields, std::string_view name) {
    return moment_value(fields, name).microseconds.value_or(std::numeric_limits<std::int64_t>::min());
}

std::string span_text(std::int64_t start, std::int64_t end) {
    return words(IsoTime(start).text(), " to ", IsoTime(end).text());
}

} // namespace

void VolumeIndices::add(const ControlBlockette& blockette, const Fields& fields, bool begins_record) {
    switch (blockette.type) {
    case 11:
        return add_station_pointers(blockette, fields);
    case 12:
        return add_span_pointers(blockette, fields);
    case 50:
        ++station_headers_;
        codes_.insert(text_value(fields.fields, "station_call_letters"));
        if (begins_record)
            stations_.emplace(text_value(fields.fields, "station_call_letters"), blockette.sequence);
        return;
    case 70:
        spans_.emplace(blockette.sequence, time_or_least(fields.fields, "beginning_time_of_data_span"),
                       time_or_least(fields.fields, "end_time_of_data_span"));
        return;
    case 73:
    case 74:
        return add_data_pointers(blockette, fields);
    }
}

void VolumeIndices::add_station_pointers(const ControlBlockette& blockette, const Fields& fields) {
    if (station_index_.blockette == 0)
        station_index_ = place_of(blockette, {});
    for (const auto row : rows_of(fields.fields, "number_of_stations")) {
        ++indexed_stations_;
        const std::int64_t sequence = number_or_zero(row, "sequence_number_of_station_header");
        if (sequence > 0)
            station_pointers_.push_back(
                {place_of(blockette, row), text_value(row, "station_identifier_code"), sequence});
    }
}

void VolumeIndices::add_span_pointers(const ControlBlockette& blockette, const Fields& fields) {
    for (const auto row : rows_of(fields.fields, "number_of_spans_in_table")) {
        const std::int64_t sequence = number_or_zero(row, "sequence_number_of_time_span_header");
        if (sequence > 0)
            span_pointers_.push_back(
                {place_of(blockette, row),
                 {sequence, time_or_least(row, "beginning_of_span"), time_or_least(row, "end_of_span")}});
    }
}

void VolumeIndices::add_data_pointer(const ControlBlockette& blockette, std::span<const Field> fields,
                                     std::string_view sequence, std::string_view time, DataPointer pointer) {
    const Field* field = find_field(fields, sequence);
    pointer.time = moment_value(fields, time).microseconds;
    pointer.field = sequence;
    pointer.time_field = time;
    const std::int64_t number = number_or_zero(fields, sequence);
    if (number <= 0)
        return;
    pointer.place = place_of(blockette, {field, 1});
    data_[number].push_back(std::move(pointer));
}

void VolumeIndices::add_data_pointers(const ControlBlockette& blockette, const Fields& fields) {
    const auto pointer_of = [](std::span<const Field> from) {
        DataPointer pointer;
        pointer.station = text_value(from, "station_identifier");
        pointer.location = text_value(from, "location_identifier");
        pointer.channel = text_value(from, "channel_identifier");
        return pointer;
    };
    if (blockette.type == 73) {
        for (const auto row : rows_of(fields.fields, "number_of_index_entries"))
            add_data_pointer(blockette, row, "sequence_number_of_first_record", "time_of_record",
                             pointer_of(row));
        return;
    }
    DataPointer pointer = pointer_of(fields.fields);
    add_data_pointer(blockette, fields.fields, "sequence_number_of_first_record", "series_start_time",
                     pointer);
    for (const auto row : rows_of(fields.fields, "number_of_accelerator_repeats"))
        add_data_pointer(blockette, row, "sequence_number_of_record", "record_start_time", pointer);
    pointer.is_end = true;
    add_data_pointer(blockette, fields.fields, "sequence_number_of_last_record", "series_end_time",
                     std::move(pointer));
}

// --- data ----------------------------------------------------------------------------------------------

void VolumeIndices::compare(const DataRecord& record, StructureFaults* faults) {
    const auto found = data_.find(record.sequence);
    if (found == data_.end())
        return;
    for (const DataPointer& pointer : found->second)
        compare(record, pointer, faults);
    data_.erase(found);
}

// Ends are those of the last sample, or of the time until the next one. A time correction may be in the time
// or not.
void VolumeIndices::compare(const DataRecord& record, const DataPointer& pointer, StructureFaults* faults) {
    constexpr double millisecond = 1e3, day = 86400e6, unit_of_correction = fraction_unit;
    if (record.station != pointer.station || record.location != pointer.location ||
        record.channel != pointer.channel)
        return faults->add(StructureFault::data_index, pointer.place, record, pointer.field, " of ",
                           pointer.station, ".", pointer.location, ".", pointer.channel, " is ",
                           record.sequence, ", but that record is of ", record.station, ".", record.location,
                           ".", record.channel);
    const double interval = record.rate > 0 ? std::min(1e6 / record.rate, day) : 0;
    const double tolerance =
        std::max(millisecond, 1.5 * interval) + std::abs(unit_of_correction * record.header.time_correction);
    const std::int64_t time = pointer.is_end ? end_of(record) : record.start;
    if (pointer.time && std::abs(static_cast<double>(*pointer.time - time)) > tolerance)
        faults->add(StructureFault::data_index, pointer.place, record, pointer.time_field, " is ",
                    IsoTime(*pointer.time).text(), ", but record ", record.sequence,
                    pointer.is_end ? " ends at " : " begins at ", IsoTime(time).text());
}

// --- the end of a volume -------------------------------------------------------------------------------

void VolumeIndices::end_volume(StructureFaults* faults) {
    check_stations(faults);
    check_spans(faults);
    for (const auto& [sequence, pointers] : data_)
        for (const DataPointer& pointer : pointers)
            faults->add(StructureFault::data_index, pointer.place, pointer.field, " of ", pointer.station,
                        ".", pointer.location, ".", pointer.channel, " is ", sequence,
                        ", but no data record with that number follows");
    check_count(faults);
    *this = {};
}

void VolumeIndices::check_stations(StructureFaults* faults) const {
    for (const StationPointer& pointer : station_pointers_) {
        if (stations_.contains({pointer.station, pointer.sequence}))
            continue;
        const auto other = stations_.lower_bound({pointer.station, 0});
        const bool is_there = other != stations_.end() && other->first == pointer.station;
        faults->add(
            StructureFault::station_index, pointer.place, "sequence_number_of_station_header of ",
            pointer.station, " is ", pointer.sequence, ", but that record does not begin with its 050",
            is_there ? words("; record ", other->second, " does") : std::string("; no other record does"));
    }
}

void VolumeIndices::check_spans(StructureFaults* faults) const {
    for (const SpanPointer& pointer : span_pointers_) {
        if (spans_.contains(pointer.span))
            continue;
        const auto [sequence, start, end] = pointer.span;
        const auto other = spans_.lower_bound(
            {sequence, std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::min()});
        const bool is_there = other != spans_.end() && std::get<0>(*other) == sequence;
        faults->add(StructureFault::span_index, pointer.place, "sequence_number_of_time_span_header of ",
                    span_text(start, end), " is ", sequence, ", but ",
                    is_there ? words("the 070 of that record is of ",
                                     span_text(std::get<1>(*other), std::get<2>(*other)))
                             : std::string("that record has no 070"));
    }
}

// A station with several headers may be in the index once or each time.
void VolumeIndices::check_count(StructureFaults* faults) const {
    const auto different = static_cast<std::int64_t>(codes_.size());
    if (station_index_.blockette != 0 && indexed_stations_ != station_headers_ &&
        indexed_stations_ != different)
        faults->add(StructureFault::station_count, station_index_, "number_of_stations is ",
                    indexed_stations_, ", but the volume has ", station_headers_, " blockettes 050 of ",
                    different, " stations");
}

} // namespace quarry
