// SPDX-License-Identifier: Apache-2.0
#include "commands/json_lines.h"

#include "commands/field_damage.h"
#include "decode/catalogue.h"
#include "quarry/samples.h"
#include "quarry/time.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace quarry {

namespace {

// --- names of flags -------------------------------------------------------------------------

using FlagNames = std::array<std::string_view, 8>;
constexpr FlagNames activity_names{
    "calibration_present",  "time_correction_applied", "event_begins",      "event_ends",
    "positive_leap_second", "negative_leap_second",    "event_in_progress", "bit_7"};
constexpr FlagNames io_names{"station_volume_parity_error",
                             "long_record_read",
                             "short_record_read",
                             "start_of_time_series",
                             "end_of_time_series",
                             "clock_locked",
                             "bit_6",
                             "bit_7"};
constexpr FlagNames quality_names{"amplifier_saturation",
                                  "digitizer_clipping",
                                  "spikes",
                                  "glitches",
                                  "missing_or_padded_data",
                                  "telemetry_synchronisation_error",
                                  "digital_filter_may_be_charging",
                                  "time_tag_questionable"};

constexpr auto length_sources =
    std::to_array<std::string_view>({"blockette_1000", "channel", "next_record", "guess"});
static_assert(length_sources.size() == static_cast<std::size_t>(LengthSource::guess) + 1);

void write_flags(JsonWriter* json, std::string_view name, unsigned flags, const FlagNames& names) {
    json->key(name);
    json->begin_array();
    for (std::size_t bit = 0; bit < names.size(); ++bit)
        if ((flags >> bit & 1U) != 0)
            json->value(names[bit]);
    json->end_array();
}

void write_sample_values(JsonWriter* json, const std::string& text) {
    json->value(std::string_view(text));
}
template <class Number>
void write_sample_values(JsonWriter* json, const std::vector<Number>& values) {
    json->begin_array();
    for (const Number value : values)
        json->value(value);
    json->end_array();
}

} // namespace

// --- what all objects have -----------------------------------------------------------------------------

JsonWriter& JsonLines::begin(Kind kind) {
    json_.begin_object();
    json_.field("kind", kind_names[kind]);
    json_.key("file");
    json_.utf8_value(options_.file);
    return json_;
}

JsonWriter& JsonLines::begin(Kind kind, std::int64_t offset, std::int64_t logical_record) {
    begin(kind);
    json_.field("offset", offset);
    json_.field("logical_record", logical_record);
    return json_;
}

void JsonLines::end() {
    json_.end_object();
    json_.end_line();
}

void JsonLines::damage(const Damage& damage) {
    if (!options_.shows(damage_kind))
        return;
    begin(damage_kind, damage.offset, damage.logical_record);
    json_.field("damage", name_of(damage.kind));
    json_.field("bytes", damage.bytes);
    if (damage.blockette > 0)
        json_.field("blockette", damage.blockette);
    if (!damage.field.empty())
        json_.field("field", damage.field);
    json_.field("text", describe(damage.kind));
    if (!damage.detail.empty())
        json_.field("detail", std::string_view(damage.detail));
    end();
}

// --- blockettes ----------------------------------------------------------------------------------------

void JsonLines::blockette(const ControlBlockette& blockette, const Fields& fields) {
    if (!options_.shows(blockette_kind))
        return;
    begin(blockette_kind, blockette.offset, blockette.logical_record);
    json_.field("sequence_number", blockette.sequence);
    json_.field("record_type", std::string_view(&blockette.letter, 1));
    write_blockette(blockette.type, blockette.length, fields);
    end();
}

// The members of an object for the blockette in fields.
void JsonLines::write_blockette(int type, std::size_t length, const Fields& fields) {
    json_.field("type", type);
    json_.field("length", static_cast<std::int64_t>(length));
    if (fields.spec == nullptr) {
        json_.field("text", fields.text);
        return;
    }
    json_.field("name", fields.spec->name);
    json_.key("fields");
    json_.begin_object();
    const std::size_t front = type < first_data_blockette ? 2 : 1; // type and length stand above
    write_fields(std::span(fields.fields).subspan(std::min(front, fields.fields.size())));
    json_.end_object();
    if (type < first_data_blockette &&
        fields.surplus.find_first_not_of(std::string_view(" \0", 2)) != std::string_view::npos)
        json_.field("surplus", fields.surplus);
}

void JsonLines::write_fields(std::span<const Field> fields) {
    const std::span<const Field> all = fields;
    while (!fields.empty()) {
        const FieldSpec& spec = *fields[0].spec;
        std::size_t used = 1;
        if (spec.times != 1)
            used = write_values(fields);
        else
            write_field(fields[0]);
        if (spec.name == "fract") // the last of a binary time
            write_binary_time(all);
        if (spec.repeats > 0) {
            const GroupRows rows = rows_at(fields);
            write_group(spec, rows);
            used += rows.fields().size();
        }
        fields = fields.subspan(used);
    }
}

void JsonLines::write_field(const Field& field) {
    if (std::holds_alternative<std::monostate>(field.value))
        return;
    json_.key(field.spec->name);
    write_value(field);
    if (field.spec->kind != FieldKind::time)
        return;
    if (const auto time = microseconds_of(field.raw)) {
        json_.key(std::string(field.spec->name) + "_iso");
        json_.value(IsoTime(*time).text());
    }
}

void JsonLines::write_binary_time(std::span<const Field> fields) {
    if (const auto time = binary_time_field(fields))
        json_.field("time_iso", IsoTime(*time).text());
}

void JsonLines::write_value(const Field& field) {
    if (const auto* integer = std::get_if<std::int64_t>(&field.value))
        json_.value(*integer);
    else if (const auto* real = std::get_if<double>(&field.value))
        json_.value(*real);
    else if (const auto* text = std::get_if<std::string_view>(&field.value))
        json_.value(*text);
    else
        json_.value(std::numeric_limits<double>::quiet_NaN()); // null: an absent value keeps its place
}

// The values of an array, or of a group whose rows have one field. Returns their number.
std::size_t JsonLines::write_values(std::span<const Field> fields) {
    const FieldSpec* spec = fields[0].spec;
    std::size_t count = 0;
    json_.key(spec->name);
    json_.begin_array();
    for (; count < fields.size() && fields[count].spec == spec; ++count)
        write_value(fields[count]);
    json_.end_array();
    return count;
}

// Rows of one field are an array of values, others an array of objects named after their count.
void JsonLines::write_group(const FieldSpec& count, const GroupRows& rows) {
    if (rows.empty())
        return;
    if (count.repeats == 1) {
        write_values(rows.fields());
        return;
    }
    constexpr std::string_view front = "number_of_";
    json_.key(count.name.starts_with(front) ? count.name.substr(front.size()) : count.name);
    json_.begin_array();
    for (const std::span<const Field> row : rows) {
        json_.begin_object();
        write_fields(row);
        json_.end_object();
    }
    json_.end_array();
}

// --- data records --------------------------------------------------------------------------------------

std::int64_t JsonLines::record(const DataRecord& record) {
    problems_.clear();
    if (options_.shows(data_kind))
        write_record(record);
    else
        for_each_damage(options_.file, record, &fields_,
                        [this](Damage problem) { problems_.push_back(std::move(problem)); });
    for (const Damage& problem : problems_)
        damage(problem);
    return static_cast<std::int64_t>(problems_.size());
}

void JsonLines::write_record(const DataRecord& record) {
    begin(data_kind, record.offset, record.logical_record);
    json_.field("sequence_number", record.sequence);
    json_.field("quality", std::string_view(&record.quality, 1));
    write_codes(record.network, record.station, record.location, record.channel);
    json_.field("start", IsoTime(record.start).text());
    json_.field("end", IsoTime(end_of(record)).text());
    json_.field("samples", int{record.header.samples});
    json_.field("rate", record.rate);
    json_.field("rate_factor", int{record.header.rate_factor});
    json_.field("rate_multiplier", int{record.header.rate_multiplier});
    json_.field("time_correction", record.header.time_correction);
    write_flags(&json_, "activity_flags", record.header.activity_flags, activity_names);
    write_flags(&json_, "io_flags", record.header.io_flags, io_names);
    write_flags(&json_, "quality_flags", record.header.quality_flags, quality_names);
    if (record.timing_quality)
        json_.field("timing_quality", int{*record.timing_quality});
    if (record.microseconds)
        json_.field("microseconds", *record.microseconds);
    if (record.format)
        json_.field("encoding", record.format->encoding);
    if (record.format)
        json_.field("word_order", record.format->word_order == std::endian::big ? "big" : "little");
    json_.field("header_order", record.header_order == std::endian::big ? "big" : "little");
    json_.field("record_length", static_cast<std::int64_t>(record.length));
    json_.field("length_source", length_sources[static_cast<std::size_t>(record.length_source)]);
    json_.field("data_offset", int{record.header.data_offset});
    write_blockettes(record);
    if (options_.with_samples)
        write_samples(record);
    end();
}

void JsonLines::write_blockettes(const DataRecord& record) {
    json_.key("blockettes");
    json_.begin_array();
    for (const DataBlocketteExtent& blockette : record.blockettes) {
        decode(record, blockette);
        json_.begin_object();
        json_.field("offset", static_cast<std::int64_t>(blockette.offset));
        write_blockette(blockette.type, blockette.length, fields_);
        json_.end_object();
    }
    json_.end_array();
}

// To fields_, and what is wrong with it behind problems_.
void JsonLines::decode(const DataRecord& record, const DataBlocketteExtent& blockette) {
    decode_blockette(blockette.type, text_of(record, blockette), record.header_order, &fields_);
    for (const FieldProblem& problem : fields_.problems)
        problems_.push_back(damage_of(options_.file, record, blockette, problem));
}

void JsonLines::write_samples(const DataRecord& record) {
    const std::optional<Samples> samples = samples_of(record);
    if (!samples)
        return;
    json_.key("sample_values");
    std::visit([this](const auto& values) { write_sample_values(&json_, values); }, samples->values);
    json_.field("samples_missing", static_cast<std::int64_t>(samples->missing));
    if (samples->last_agrees)
        json_.field("last_sample_agrees", *samples->last_agrees);
}

void JsonLines::write_codes(std::string_view network, std::string_view station, std::string_view location,
                            std::string_view channel) {
    quarry::write_codes(network, station, location, channel, &json_, &source_);
}

void write_codes(std::string_view network, std::string_view station, std::string_view location,
                 std::string_view channel, JsonWriter* json, std::string* room) {
    json->field("network", network);
    json->field("station", station);
    json->field("location", location);
    json->field("channel", channel);
    room->assign("FDSN:").append(network) += '_';
    room->append(station) += '_';
    room->append(location);
    if (channel.size() == 3)
        for (const char code : channel)
            (*room += '_') += code;
    else
        (*room += '_').append(channel);
    json->field("source", std::string_view(*room));
}

} // namespace quarry
