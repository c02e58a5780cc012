// SPDX-License-Identifier: Apache-2.0
// quarry info: what a volume holds, on one screen: the volume itself, its stations, its channel epochs with
// the data found, and what is damaged.

#include "commands/command_line.h"
#include "commands/each_volume.h"
#include "commands/field_damage.h"
#include "commands/info_tables.h"
#include "commands/selected.h"
#include "platform/terminal_text.h"

#include <algorithm>
#include <array>

namespace quarry {

namespace {

// --- one volume ----------------------------------------------------------------------------------------

struct Shown {
    bool volume = false;
    bool for_programs = false;
    std::array<bool, info_table_count> tables = {};
    std::size_t width = 0; // of the terminal; 0: as wide as need be
};

class VolumeInfo {
public:
    VolumeInfo(const CommandLine& line, const Shown& shown, VolumeReader* reader, OrderedOutput::Part* out)
        : selection_(line.selection), shown_(shown), reader_(*reader), number_(out->number()), part_(*out),
          out_(out->text()) {}

    // Returns true if the volume is sound.
    bool write() {
        while (const Item* item = reader_.next())
            std::visit([this](const auto& one) { take(one); }, *item);
        contents_ = builder_.finish();
        if (!reader_.totals().holds_seed())
            return true;
        if (!shown_.for_programs)
            write_title();
        if (shown_.volume)
            write_volume();
        for (std::size_t i = 0; i < info_tables.size(); ++i)
            if (shown_.tables[i])
                write_table(info_tables[i]);
        return is_sound();
    }

private:
    void take(const LogicalHeader&) {}
    void take(const Padding&) {}

    void take(const Damage& damage) {
        DamageCount& count = damages_[static_cast<std::size_t>(damage.kind)];
        if (count.places++ == 0)
            count.first = damage;
        count.bytes += damage.bytes;
    }

    void take(const ControlBlockette& blockette) {
        decode_blockette(blockette.type, blockette.text, std::endian::big, &fields_);
        for_each_damage(reader_.name(), blockette, fields_, [this](const Damage& damage) { take(damage); });
        builder_.add(blockette, fields_);
    }

    void take(const DataRecord& record) {
        if (!takes(selection_, record))
            return;
        builder_.add(record);
        for_each_damage(reader_.name(), record, &fields_, [this](const Damage& damage) { take(damage); });
    }

    bool is_sound() const {
        return std::all_of(damages_.begin(), damages_.end(),
                           [](const DamageCount& count) { return count.places == 0; });
    }

    // --- the volume

    std::string fitting(std::string_view line) const {
        return shown_.width > 0 ? cut_text(line, shown_.width) : std::string(line);
    }

    void write_title() {
        const std::string name = shown_on_terminal(reader_.name());
        out_ += number_ > 0 ? "\n" : "";
        out_ += fitting(name) + "\n";
    }

    void write_line(std::string_view title, std::string_view content) {
        constexpr std::size_t title_width = 14;
        if (content.empty())
            return;
        std::string line(title);
        line.resize(title_width, ' ');
        line += shown_text(content);
        out_ += fitting(line) + "\n";
    }

    void write_volume() {
        for (const VolumeHeader& volume : contents_.inventory.volumes) {
            write_line("version", volume.version);
            write_line("label", volume.label);
            write_line("organisation", volume.organization);
            write_line("written", cell(volume.written));
            write_line("span", joined(cell(volume.start), " to ", cell(volume.end)));
        }
        write_data_span();
        const Totals& totals = reader_.totals();
        write_line("size", counted(totals.bytes(), "byte") + ": " +
                               counted(totals.control_records, "header record") + " with " +
                               counted(totals.blockettes, "blockette") + ", " +
                               counted(totals.data_records, "data record"));
        if (totals.damaged_bytes > 0)
            write_line("skipped", counted(totals.damaged_bytes, "byte"));
        if (is_sound())
            write_line("damage", "none");
    }

    static std::string counted(std::int64_t count, std::string_view what) {
        return std::to_string(count) + " " + std::string(what) + (count == 1 ? "" : "s");
    }

    void write_data_span() {
        const EpochData* first = nullptr;
        const EpochData* last = nullptr;
        for_each_row(contents_, selection_, [&](const ChannelRow& row) {
            if (row.data == nullptr)
                return;
            first = first == nullptr || row.data->first < first->first ? row.data : first;
            last = last == nullptr || row.data->last > last->last ? row.data : last;
        });
        if (first != nullptr)
            write_line("data", time_cell(first->first) + " to " + time_cell(last->last));
    }

    void write_table(const InfoTable& shown) {
        const InfoContent content{contents_, selection_, damages_};
        const Table table(
            shown.columns, [&](const Table::Take& take) { shown.give(content, take); },
            [this] { part_.flush_if_large(); });
        const std::string front = shown_.volume ? "\n" + fitting(shown.title()) + "\n" : "";
        if (shown_.for_programs)
            table.write_rows(shown_on_terminal(reader_.name()), &out_);
        else if (!table.write_text(front, shown_.width, &out_) && !shown_.volume)
            out_ += "none\n";
    }

    const Selection& selection_;
    const Shown& shown_;
    VolumeReader& reader_;
    std::size_t number_; // of the volume
    OrderedOutput::Part& part_;
    std::string& out_; // of it
    Fields fields_ = {};
    DamageCounts damages_ = {};
    ContentsBuilder builder_{Responses::sensitivity};
    Contents contents_ = {};
};

// --- the command ---------------------------------------------------------------------------------------

// Without a choice all tables; for programs one, the channels.
Shown shown_by(const CommandLine& line) {
    Shown shown{.for_programs = line.has("--tsv"), .width = terminal_width()};
    std::transform(info_tables.begin(), info_tables.end(), shown.tables.begin(),
                   [&line](const InfoTable& table) { return line.has(table.option); });
    const bool is_chosen = std::count(shown.tables.begin(), shown.tables.end(), true) > 0;
    shown.volume = !is_chosen && !shown.for_programs;
    if (shown.volume)
        shown.tables.fill(true);
    else if (!is_chosen)
        shown.tables[channel_table] = true;
    return shown;
}

std::string titles(const Shown& shown) {
    const auto* const table = std::find(shown.tables.begin(), shown.tables.end(), true);
    return titles_of("file", info_tables[static_cast<std::size_t>(table - shown.tables.begin())].columns);
}

ExitStatus write_info(const CommandLine& line) {
    const Shown shown = shown_by(line);
    if (shown.for_programs && std::count(shown.tables.begin(), shown.tables.end(), true) > 1) {
        std::string names;
        for (const InfoTable& table : info_tables)
            names = joined(names, ", ", table.option);
        report_trouble(line.command, "--tsv: only one of " + names + " is allowed");
        return failed;
    }
    return for_each_volume(
        line,
        [&](VolumeReader& reader, OrderedOutput::Part& out) {
            return VolumeInfo(line, shown, &reader, &out).write();
        },
        shown.for_programs ? titles(shown) : "");
}

constexpr auto options = std::to_array<OptionRow>({
    {"--stations", nullptr, "only the table of stations"},
    {"--channels", nullptr, "only the table of channels"},
    {"--findings", nullptr, "only the table of what does not fit together in the headers"},
    {"--damage", nullptr, "only the table of damage"},
    {"--tsv", nullptr, "one table (channels unless another is chosen) for programs: tabs, a line of titles"},
});

} // namespace

extern const Command info_command;
const Command info_command{
    "info", "Shows what SEED volumes hold: stations, channel epochs with the data found, findings, damage.",
    options,
    "Examples:\n"
    "  quarry info volume.seed\n"
    "  quarry info --channels --channel 'BH?' --from 2010-02-27 volume.seed\n"
    "  quarry info --damage archive/*\n"
    "  quarry info --tsv --stations *.seed | cut -f 2,4,5\n"
    "\n"
    "Exit status: 0 all volumes are sound, 1 some are damaged, 2 some are unreadable.",
    write_info};

} // namespace quarry
