// SPDX-License-Identifier: Apache-2.0
// quarry json: everything in a volume as JSON Lines, for programs.

#include "commands/command_line.h"
#include "commands/each_volume.h"
#include "commands/json_inventory.h"
#include "commands/json_lines.h"
#include "commands/selected.h"
#include "decode/catalogue.h"
#include "inventory/field_values.h"
#include "inventory/station.h"
#include "volume/record_batch.h"

#include <algorithm>
#include <atomic>

namespace quarry {

namespace {

// --- kinds of objects ----------------------------------------------------------------------------------

constexpr unsigned bit(Kind kind) {
    return 1U << kind;
}
constexpr unsigned as_written =
    bit(volume_kind) | bit(blockette_kind) | bit(data_kind) | bit(damage_kind) | bit(summary_kind);
constexpr unsigned assembled =
    (as_written & ~bit(blockette_kind)) | bit(station_kind) | bit(channel_kind) | bit(finding_kind);

constexpr std::string_view kinds_front = "only these kinds of objects: ";

// That, and the names of all kinds with commas between them.
constexpr auto kinds_help = [] {
    std::array<char, 128> text{};
    auto* end = text.begin();
    const auto add = [&end](std::string_view part) { end = std::copy(part.begin(), part.end(), end); };
    add(kinds_front);
    for (const std::string_view name : kind_names) {
        add(name == kind_names.front() ? "" : ", ");
        add(name);
    }
    return text;
}();

// The kinds of a comma list as bits, the usual ones for an empty list; 0 if it names one that is unknown.
unsigned kinds_of(std::string_view list, unsigned usual) {
    unsigned kinds = list.empty() ? usual : 0;
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

// True for a blockette of a volume's records that may stand in front of its header.
bool may_precede_header(const Item* item) {
    const auto* blockette = item != nullptr ? std::get_if<ControlBlockette>(item) : nullptr;
    return blockette != nullptr && blockette->letter == 'V' && !is_volume_header(blockette->type);
}

Place place_of(const ControlBlockette& blockette) {
    return {blockette.type, blockette.offset, blockette.logical_record};
}

// What the item says of the volume, if it is its header.
VolumeHeader header_of(const Item* item) {
    const auto* blockette = item != nullptr ? std::get_if<ControlBlockette>(item) : nullptr;
    if (blockette == nullptr || !is_volume_header(blockette->type))
        return {};
    return read_volume_header(place_of(*blockette), decode_blockette(blockette->type, blockette->text));
}

// --- one volume ----------------------------------------------------------------------------------------

class VolumeLines {
public:
    VolumeLines(const CommandLine& line, JsonOptions options, VolumeReader* reader, OrderedOutput::Part* out)
        : selection_(line.selection), shared_(std::make_shared<Shared>(std::move(options))), reader_(*reader),
          out_(*out), lines_(shared_->options, &out->text()) {}

    bool write() {
        for (const Item* item = write_front(); item != nullptr; item = reader_.next()) {
            std::visit([this](const auto& one) { take(one); }, *item);
            out_.flush_if_large();
        }
        give_batch();
        out_.finish();
        write_inventory();
        write_summary();
        return damages() == 0;
    }

private:
    // Writes the volume, in front of the blockettes that precede its header. Returns the item after these.
    const Item* write_front() {
        const std::size_t front = out_.text().size();
        const Item* item = reader_.next();
        for (; may_precede_header(item) && out_.text().size() - front < batch_size; item = reader_.next())
            take(std::get<ControlBlockette>(*item));
        if (options().shows(volume_kind)) {
            std::string text;
            JsonLines line(options(), &text);
            const VolumeHeader header = header_of(item);
            write_volume(header, &line);
            first_header_ = header.place.blockette != 0 ? header.place.offset : -1;
            out_.text().insert(front, text);
        }
        return item;
    }

    // Shared with other threads, which may still run when this object is gone.
    struct Shared {
        explicit Shared(JsonOptions the_options) : options(std::move(the_options)) {}
        const JsonOptions options;
        std::atomic<std::int64_t> damages = 0;
    };

    const JsonOptions& options() const { return shared_->options; }
    std::int64_t damages() const { return shared_->damages; }
    bool assembles() const { return (options().kinds & (assembled & ~as_written)) != 0; }

    void take(const LogicalHeader&) {}
    void take(const Padding&) {}

    void take(const Damage& damage) {
        give_batch();
        ++shared_->damages;
        lines_.damage(damage);
    }

    // --- control blockettes

    // Follows which station and channel the blockettes belong to.
    bool takes_blockette(const ControlBlockette& blockette) {
        const auto text = [this](std::string_view name) {
            return text_field(fields_.fields, name).value_or(std::string_view());
        };
        const auto time = [this](std::string_view name) { return moment_value(fields_.fields, name); };
        if (is_volume_header(blockette.type)) {
            station_taken_ = selection_.takes_station("", ""); // of channels that follow no 050
            channel_taken_ = true;
        } else if (blockette.type == 50) {
            station_taken_ = selection_.takes_station(text("network_code"), text("station_call_letters")) &&
                             takes_span(selection_, time("start_effective_date"), time("end_effective_date"));
            channel_taken_ = true;
        } else if (blockette.type == 52) {
            channel_taken_ =
                selection_.takes_channel(text("location_identifier"), text("channel_identifier")) &&
                takes_span(selection_, time("start_date"), time("end_date"));
        }
        return !is_of_station(blockette.type) || (station_taken_ && channel_taken_);
    }

    void take(const ControlBlockette& blockette) {
        give_batch();
        decode_blockette(blockette.type, blockette.text, std::endian::big, &fields_);
        if (is_volume_header(blockette.type) && blockette.offset != first_header_)
            write_further_volume(blockette);
        if (takes_blockette(blockette))
            lines_.blockette(blockette, fields_);
        for (const FieldProblem& problem : fields_.problems)
            take(damage_of(reader_.name(), blockette, problem));
        if (assembles())
            builder_.add(blockette, fields_);
    }

    // Of several that were joined to one input.
    void write_further_volume(const ControlBlockette& blockette) {
        if (options().shows(volume_kind))
            write_volume(read_volume_header(place_of(blockette), fields_), &lines_);
    }

    // --- data records

    void take(const DataRecord& record) {
        if (!takes(selection_, record))
            return;
        samples_ += record.header.samples;
        ++records_;
        if (assembles())
            builder_.add(record);
        if (!out_.is_shared() || !options().shows(data_kind)) {
            shared_->damages += lines_.record(record);
            return;
        }
        batch_.add(record);
        if (batch_.bytes() >= batch_size)
            give_batch();
    }

    // The records of the batch become lines in any thread, here in the order of the volume.
    void give_batch() {
        if (batch_.size() == 0)
            return;
        const auto batch =
            std::make_shared<const RecordBatch>(std::exchange(batch_, RecordBatch(batch_room)));
        out_.defer([shared = shared_, batch](std::string* text) {
            text->reserve(text->size() + 2 * batch->bytes());
            JsonLines lines(shared->options, text);
            std::int64_t damages = 0; // added once: the threads share the cache line
            for (std::size_t i = 0; i < batch->size(); ++i)
                damages += lines.record(batch->at(i));
            shared->damages += damages;
        });
    }

    // --- the end

    void write_inventory() {
        if (!assembles())
            return;
        const Contents contents = builder_.finish();
        const auto after_line = [this] { out_.flush_if_large(); };
        if (options().shows(station_kind))
            write_stations(contents, selection_, &lines_, after_line);
        if (options().shows(channel_kind))
            write_channels(contents, selection_, &lines_, after_line);
        if (options().shows(finding_kind))
            write_findings(contents, &lines_, after_line);
    }

    void write_summary() {
        if (!options().shows(summary_kind))
            return;
        const Totals& totals = reader_.totals();
        JsonWriter& json = lines_.begin(summary_kind);
        json.field("bytes", totals.bytes());
        json.field("header_bytes", totals.header_bytes);
        json.field("blockette_bytes", totals.blockette_bytes);
        json.field("padding_bytes", totals.padding_bytes);
        json.field("data_bytes", totals.data_bytes);
        json.field("damaged_bytes", totals.damaged_bytes);
        json.field("control_records", totals.control_records);
        json.field("blockettes", totals.blockettes);
        json.field("data_records", totals.data_records);
        json.field("damages", damages());
        json.field("selected_data_records", records_);
        json.field("selected_samples", samples_);
        if (reader_.error().kind != ByteError::Kind::none)
            json.field("error", std::string_view(describe(reader_.error())));
        lines_.end();
    }

    static constexpr std::size_t batch_size = std::size_t{1} << 17;
    static constexpr std::size_t batch_room = batch_size + (std::size_t{1} << 12);

    const Selection& selection_;
    std::shared_ptr<Shared> shared_;
    VolumeReader& reader_;
    OrderedOutput::Part& out_;
    JsonLines lines_;
    Fields fields_ = {};
    RecordBatch batch_{0}; // room is reserved after the first batch
    ContentsBuilder builder_{Responses::all};
    bool station_taken_ = true;
    bool channel_taken_ = true;
    std::int64_t first_header_ = -1; // offset of the header that the first line is about; -1 without one
    std::int64_t records_ = 0;
    std::int64_t samples_ = 0;
};

ExitStatus write_json(const CommandLine& line) {
    const unsigned kinds = kinds_of(line.value("--kinds"), line.has("--inventory") ? assembled : as_written);
    if (kinds == 0) {
        report_trouble(line.command, "--kinds: unknown kind in " + std::string(line.value("--kinds")) +
                                         "; known are " +
                                         std::string(kinds_help.data()).substr(kinds_front.size()));
        return failed;
    }
    return for_each_volume(line, [&](VolumeReader& reader, OrderedOutput::Part& out) {
        return VolumeLines(line, {kinds, line.has("--samples"), reader.name()}, &reader, &out).write();
    });
}

constexpr auto options = std::to_array<OptionRow>({
    {"--kinds", "LIST", kinds_help.data()},
    {"--inventory", nullptr, "assembled stations and channels, and findings, instead of blockettes"},
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
    "  quarry json --kinds channel volume.seed | jq -c '[.source, .start, .latitude, .longitude]'\n"
    "  find archive -name '*.mseed' | quarry json --jobs 2 --kinds summary @/dev/stdin\n"
    "\n"
    "Exit status: 0 all volumes are sound, 1 some are damaged, 2 some are unreadable.",
    write_json};

} // namespace quarry
