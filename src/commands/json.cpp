// quarry json: everything in a volume as JSON Lines, for programs.

#include "commands/command_line.h"
#include "commands/each_volume.h"
#include "fields/time_text.h"
#include "platform/iso_time.h"
#include "report/json_writer.h"
#include "volume/samples.h"

#include <algorithm>
#include <array>

namespace quarry {

namespace {

// --- kinds of objects ----------------------------------------------------------------------------------

enum Kind : unsigned { volume_kind, blockette_kind, data_kind, damage_kind, summary_kind };
constexpr std::array<std::string_view, 5> kind_names{"volume", "blockette", "data", "damage", "summary"};

// The kinds of a comma list as bits, all for an empty list; 0 if it names one that is unknown.
unsigned kinds_of(std::string_view list) {
    unsigned kinds = list.empty() ? (1U << kind_names.size()) - 1 : 0;
    while (!list.empty()) {
        const std::size_t comma = std::min(list.find(','), list.size());
        const auto* const name = std::find(kind_names.begin(), kind_names.end(), list.substr(0, comma));
        if (name == kind_names.end())
            return 0;
        kinds |= 1U << (name - kind_names.begin());
        list.remove_prefix(std::min(comma + 1, list.size()));
    }
    return kinds;
}

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

constexpr int first_data_blockette = 100;

constexpr std::array<std::string_view, 4> length_sources{"blockette_1000", "channel", "next_record", "guess"};

// --- one volume ----------------------------------------------------------------------------------------

class VolumeLines {
public:
    VolumeLines(const CommandLine& line, unsigned kinds, VolumeReader* reader, OrderedOutput::Part* out)
        : selection_(line.selection), kinds_(kinds), with_samples_(line.has("--samples")), reader_(*reader),
          out_(*out), json_(&out->text()) {}

    bool write() {
        write_volume();
        while (const Item* item = reader_.next()) {
            std::visit([this](const auto& one) { take(one); }, *item);
            out_.settle();
        }
        write_summary();
        return damages_ == 0;
    }

private:
    bool shows(Kind kind) const { return (kinds_ >> kind & 1U) != 0; }

    void begin(Kind kind) {
        json_.begin_object();
        json_.field("kind", kind_names[kind]);
        json_.key("file");
        json_.utf8_value(reader_.name());
    }
    void begin(Kind kind, std::int64_t offset, std::int64_t logical_record) {
        begin(kind);
        json_.field("offset", offset);
        json_.field("logical_record", logical_record);
    }
    void end() {
        json_.end_object();
        json_.end_line();
    }

    void write_volume() {
        if (!shows(volume_kind))
            return;
        begin(volume_kind);
        end();
    }

    void take(const LogicalHeader&) {}
    void take(const Padding&) {}

    void take(const Damage& damage) {
        ++damages_;
        if (!shows(damage_kind))
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

    // --- control blockettes

    // Follows which station and channel the blockettes belong to.
    bool takes(const ControlBlockette& blockette) {
        const auto text = [this](std::string_view name) {
            return text_field(fields_.fields, name).value_or(std::string_view());
        };
        if (blockette.type == 50) {
            station_taken_ = selection_.takes_station(text("network_code"), text("station_call_letters")) &&
                             takes_span(text("start_effective_date"), text("end_effective_date"));
            channel_taken_ = true;
        } else if (blockette.type == 52) {
            channel_taken_ =
                selection_.takes_channel(text("location_identifier"), text("channel_identifier")) &&
                takes_span(text("start_date"), text("end_date"));
        }
        const bool is_of_station = blockette.type >= 50 && blockette.type < 70;
        return !is_of_station || (station_taken_ && channel_taken_);
    }

    bool takes_span(std::string_view first, std::string_view last) const {
        const Selection unbounded;
        return selection_.takes_span(microseconds_of(first).value_or(unbounded.from),
                                     microseconds_of(last).value_or(unbounded.to));
    }

    void take(const ControlBlockette& blockette) {
        decode_blockette(blockette.type, blockette.text, std::endian::big, &fields_);
        if (takes(blockette) && shows(blockette_kind)) {
            begin(blockette_kind, blockette.offset, blockette.logical_record);
            json_.field("sequence_number", blockette.sequence);
            json_.field("record_type", std::string_view(&blockette.letter, 1));
            write_blockette(blockette.type, blockette.length);
            end();
        }
        for (const FieldProblem& problem : fields_.problems)
            take(damage_of(reader_.name(), blockette, problem));
    }

    // The members of an object for the blockette in fields_.
    void write_blockette(int type, std::size_t length) {
        json_.field("type", type);
        json_.field("length", static_cast<std::int64_t>(length));
        if (fields_.spec == nullptr) {
            json_.field("text", fields_.text);
            return;
        }
        json_.field("name", fields_.spec->name);
        json_.key("fields");
        json_.begin_object();
        const std::size_t front = type < first_data_blockette ? 2 : 1; // type and length stand above
        write_fields(std::span(fields_.fields).subspan(std::min(front, fields_.fields.size())));
        json_.end_object();
        if (type < first_data_blockette &&
            fields_.surplus.find_first_not_of(std::string_view(" \0", 2)) != std::string_view::npos)
            json_.field("surplus", fields_.surplus);
    }

    void write_fields(std::span<const Field> fields) {
        while (!fields.empty()) {
            const FieldSpec& spec = *fields[0].spec;
            std::size_t used = 1;
            if (spec.times != 1)
                used = write_values(fields);
            else
                write_field(fields[0]);
            if (spec.repeats > 0) {
                const GroupRows rows = rows_at(fields);
                write_group(spec, rows);
                used += rows.fields().size();
            }
            fields = fields.subspan(used);
        }
    }

    void write_field(const Field& field) {
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

    void write_value(const Field& field) {
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
    std::size_t write_values(std::span<const Field> fields) {
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
    void write_group(const FieldSpec& count, const GroupRows& rows) {
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

    // --- data records

    void take(const DataRecord& record) {
        if (!selection_.takes_station(record.network, record.station) ||
            !selection_.takes_channel(record.location, record.channel) ||
            !selection_.takes_span(record.start, end_of(record)))
            return;
        samples_ += record.header.samples;
        ++records_;
        problems_.clear();
        if (shows(data_kind))
            write_record(record);
        else
            for (const DataBlocketteExtent& blockette : record.blockettes)
                decode(record, blockette);
        for (const Damage& damage : problems_)
            take(damage);
    }

    void write_record(const DataRecord& record) {
        begin(data_kind, record.offset, record.logical_record);
        json_.field("sequence_number", record.sequence);
        json_.field("quality", std::string_view(&record.quality, 1));
        write_names(record);
        json_.field("start", IsoTime(record.start).text());
        json_.field("end", IsoTime(end_of(record)).text());
        json_.field("samples", int{record.header.samples});
        json_.field("rate", record.rate);
        json_.field("rate_factor", int{record.header.rate_factor});
        json_.field("rate_multiplier", int{record.header.rate_multiplier});
        json_.field("time_correction", record.header.time_correction);
        write_flags("activity_flags", record.header.activity_flags, activity_names);
        write_flags("io_flags", record.header.io_flags, io_names);
        write_flags("quality_flags", record.header.quality_flags, quality_names);
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
        if (with_samples_)
            write_samples(record);
        end();
    }

    void write_names(const DataRecord& record) {
        json_.field("network", record.network);
        json_.field("station", record.station);
        json_.field("location", record.location);
        json_.field("channel", record.channel);
        source_.assign("FDSN:").append(record.network) += '_';
        source_.append(record.station) += '_';
        source_.append(record.location);
        if (record.channel.size() == 3)
            for (const char code : record.channel)
                (source_ += '_') += code;
        else
            (source_ += '_').append(record.channel);
        json_.field("source", std::string_view(source_));
    }

    void write_flags(std::string_view name, unsigned flags, const FlagNames& names) {
        json_.key(name);
        json_.begin_array();
        for (std::size_t bit = 0; bit < names.size(); ++bit)
            if ((flags >> bit & 1U) != 0)
                json_.value(names[bit]);
        json_.end_array();
    }

    void write_blockettes(const DataRecord& record) {
        json_.key("blockettes");
        json_.begin_array();
        for (const DataBlocketteExtent& blockette : record.blockettes) {
            decode(record, blockette);
            json_.begin_object();
            json_.field("offset", static_cast<std::int64_t>(blockette.offset));
            write_blockette(blockette.type, blockette.length);
            json_.end_object();
        }
        json_.end_array();
    }

    // To fields_, and what is wrong with it behind problems_.
    void decode(const DataRecord& record, const DataBlocketteExtent& blockette) {
        decode_blockette(blockette.type, text_of(record, blockette), record.header_order, &fields_);
        for (const FieldProblem& problem : fields_.problems)
            problems_.push_back(damage_of(reader_.name(), record, blockette, problem));
    }

    void write_samples(const DataRecord& record) {
        const std::optional<Samples> samples = samples_of(record);
        if (!samples)
            return;
        json_.key("sample_values");
        std::visit([this](const auto& values) { write_sample_values(values); }, samples->values);
        json_.field("samples_missing", static_cast<std::int64_t>(samples->missing));
        if (samples->last_agrees)
            json_.field("last_sample_agrees", *samples->last_agrees);
    }

    void write_sample_values(const std::string& text) { json_.value(std::string_view(text)); }
    template <class Number>
    void write_sample_values(const std::vector<Number>& values) {
        json_.begin_array();
        for (const Number value : values)
            json_.value(value);
        json_.end_array();
    }

    // --- the end

    void write_summary() {
        if (!shows(summary_kind))
            return;
        const Totals& totals = reader_.totals();
        begin(summary_kind);
        json_.field("bytes", totals.bytes());
        json_.field("header_bytes", totals.header_bytes);
        json_.field("blockette_bytes", totals.blockette_bytes);
        json_.field("padding_bytes", totals.padding_bytes);
        json_.field("data_bytes", totals.data_bytes);
        json_.field("damaged_bytes", totals.damaged_bytes);
        json_.field("control_records", totals.control_records);
        json_.field("blockettes", totals.blockettes);
        json_.field("data_records", totals.data_records);
        json_.field("damages", damages_);
        json_.field("selected_data_records", records_);
        json_.field("selected_samples", samples_);
        if (reader_.error().kind != ByteError::Kind::none)
            json_.field("error", std::string_view(describe(reader_.error())));
        end();
    }

    const Selection& selection_;
    unsigned kinds_;
    bool with_samples_;
    VolumeReader& reader_;
    OrderedOutput::Part& out_;
    JsonWriter json_;
    Fields fields_ = {};
    std::vector<Damage> problems_ = {}; // of the data record
    std::string source_ = {};
    bool station_taken_ = true;
    bool channel_taken_ = true;
    std::int64_t damages_ = 0;
    std::int64_t records_ = 0;
    std::int64_t samples_ = 0;
};

ExitStatus write_json(const CommandLine& line) {
    const unsigned kinds = kinds_of(line.value("--kinds"));
    if (kinds == 0) {
        report_trouble(line.command, "--kinds: volume, blockette, data, damage, summary are known");
        return failed;
    }
    return for_each_volume(line, [&](VolumeReader& reader, OrderedOutput::Part& out) {
        return VolumeLines(line, kinds, &reader, &out).write();
    });
}

constexpr auto options = std::to_array<OptionRow>({
    {"--kinds", "LIST", "only these kinds of objects: volume, blockette, data, damage, summary"},
    {"--samples", nullptr, "data objects with their samples"},
});

} // namespace

extern const Command json_command;
const Command json_command{
    "json", "Writes everything in SEED volumes as JSON Lines: one object a line.", options,
    "Examples:\n"
    "  quarry json volume.seed | jq -c 'select(.kind == \"data\") | [.source, .start, .samples]'\n"
    "  quarry json --kinds damage *.seed\n"
    "  quarry json --kinds data --samples --channel 'BH?' --from 2010-02-27 volume.seed\n"
    "  find archive -name '*.mseed' | quarry json --jobs 2 --kinds summary @/dev/stdin\n"
    "\n"
    "Exit status: 0 all volumes are sound, 1 some are damaged, 2 some could not be read.",
    write_json};

} // namespace quarry
