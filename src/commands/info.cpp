// quarry info: what a volume holds, on one screen: the volume itself, its stations, its channel epochs with
// the data found, and what is damaged.

#include "commands/command_line.h"
#include "commands/each_volume.h"
#include "commands/field_damage.h"
#include "commands/selected.h"
#include "platform/terminal_text.h"
#include "quarry/samples.h"
#include "quarry/time.h"
#include "report/table.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <map>

namespace quarry {

namespace {

// --- cells ---------------------------------------------------------------------------------------------

std::string cell(Integer number) {
    return number ? std::to_string(*number) : "";
}

std::string cell(Real number) {
    std::array<char, 32> digits;
    if (!number)
        return "";
    return {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), *number).ptr};
}

std::string time_cell(std::int64_t time) {
    return std::string(IsoTime(time).text());
}

// A text that is not a time is shown as the volume has it.
std::string cell(const Moment& moment) {
    return moment.microseconds ? time_cell(*moment.microseconds) : moment.text;
}

std::string joined(std::string_view text, std::string_view between, std::string_view more) {
    std::string both(text);
    if (!text.empty() && !more.empty())
        both += between;
    return both += more;
}

// --- channels ------------------------------------------------------------------------------------------

// A row of the table of channels with what it needs to look up.
struct ChannelLine {
    const ChannelRow& row;
    const Inventory& inventory;
};

template <class Value>
std::string of_epoch(const ChannelLine& line, Value ChannelEpoch::*member) {
    return line.row.epoch != nullptr ? cell(line.row.epoch->*member) : "";
}

std::string of_data(const ChannelLine& line, std::int64_t EpochData::*member) {
    return line.row.data != nullptr ? cell(Integer(line.row.data->*member)) : "";
}

std::string time_of_data(const ChannelLine& line, std::int64_t EpochData::*member) {
    return line.row.data != nullptr ? time_cell(line.row.data->*member) : "";
}

std::string code_cell(const ChannelLine& line) {
    const ChannelRow& row = line.row;
    return std::string(row.network).append(".").append(row.station).append(".").append(row.location) + "." +
           std::string(row.channel);
}

std::string rate_cell(const ChannelLine& line) {
    if (line.row.epoch != nullptr)
        return cell(line.row.epoch->rate);
    return line.row.data->rate > 0 ? cell(Real(line.row.data->rate)) : "";
}

std::string sensor_cell(const ChannelLine& line) {
    const ChannelEpoch* epoch = line.row.epoch;
    return epoch != nullptr ? std::string(abbreviation(line.inventory, epoch->instrument, epoch->place)) : "";
}

const Gain* sensitivity_of(const ChannelLine& line) {
    const Stage* stage = line.row.epoch != nullptr ? find_stage(*line.row.epoch, 0) : nullptr;
    return stage != nullptr ? find_part<Gain>(*stage) : nullptr;
}

std::string sensitivity_cell(const ChannelLine& line, Real Gain::*member) {
    const Gain* gain = sensitivity_of(line);
    return gain != nullptr ? cell(gain->*member) : "";
}

std::string units_cell(const ChannelLine& line) {
    const ChannelEpoch* epoch = line.row.epoch;
    return epoch != nullptr ? std::string(unit_name(line.inventory, epoch->signal_units, epoch->place)) : "";
}

std::string declared_encoding(const ChannelLine& line) {
    const ChannelEpoch* epoch = line.row.epoch;
    const auto* found = epoch != nullptr ? find_definition(line.inventory.dictionary.formats, epoch->format,
                                                           epoch->place.offset)
                                         : nullptr;
    return found != nullptr ? found->name : "";
}

// What the data say, which may be several; what they leave open is what the headers say.
std::string encoding_cell(const ChannelLine& line) {
    std::string names;
    for (const int encoding : line.row.data != nullptr ? line.row.data->encodings : std::vector<int>{}) {
        const std::string_view name = encoding_name(encoding);
        if (encoding >= 0)
            names = joined(names, "+", name.empty() ? std::to_string(encoding) : std::string(name));
    }
    return names.empty() ? declared_encoding(line) : names;
}

std::string length_cell(const ChannelLine& line) {
    constexpr std::int64_t largest_power = 30;
    std::string lengths;
    for (const std::size_t length :
         line.row.data != nullptr ? line.row.data->lengths : std::vector<std::size_t>{})
        lengths = joined(lengths, "+", std::to_string(length));
    const Integer power = line.row.epoch != nullptr ? line.row.epoch->record_length : std::nullopt;
    if (lengths.empty() && power && *power >= 0 && *power <= largest_power)
        lengths = std::to_string(std::int64_t{1} << *power);
    return lengths;
}

struct ChannelColumn {
    Column column;
    std::string (*cell)(const ChannelLine& line);
};

using Line = const ChannelLine&;
constexpr auto text = Column::Kind::text;
constexpr auto number = Column::Kind::number;
constexpr auto time = Column::Kind::time;

constexpr auto channel_columns = std::to_array<ChannelColumn>({
    {{"channel", 0}, code_cell},
    {{"start", 1, time}, [](Line of) { return of_epoch(of, &ChannelEpoch::start); }},
    {{"end", 2, time}, [](Line of) { return of_epoch(of, &ChannelEpoch::end); }},
    {{"rate", 3, number}, rate_cell},
    {{"azimuth", 14, number}, [](Line of) { return of_epoch(of, &ChannelEpoch::azimuth); }},
    {{"dip", 15, number}, [](Line of) { return of_epoch(of, &ChannelEpoch::dip); }},
    {{"sensor", 8, text, 14}, sensor_cell},
    {{"sensitivity", 9, number}, [](Line of) { return sensitivity_cell(of, &Gain::value); }},
    {{"units", 10, text, 6}, units_cell},
    {{"hertz", 17, number}, [](Line of) { return sensitivity_cell(of, &Gain::frequency); }},
    {{"encoding", 11, text, 8}, encoding_cell},
    {{"length", 12, number}, length_cell},
    {{"first", 5, time}, [](Line of) { return time_of_data(of, &EpochData::first); }},
    {{"last", 6, time}, [](Line of) { return time_of_data(of, &EpochData::last); }},
    {{"records", 13, number}, [](Line of) { return of_data(of, &EpochData::records); }},
    {{"samples", 4, number}, [](Line of) { return of_data(of, &EpochData::samples); }},
    {{"gaps", 7, number}, [](Line of) { return of_data(of, &EpochData::gaps); }},
    {{"overlaps", 16, number}, [](Line of) { return of_data(of, &EpochData::overlaps); }},
});

template <class Row, std::size_t count>
constexpr std::array<Column, count> columns_of(const std::array<Row, count>& rows) {
    std::array<Column, count> columns{};
    for (std::size_t i = 0; i < count; ++i)
        columns[i] = rows[i].column;
    return columns;
}
constexpr auto channel_titles = columns_of(channel_columns);

// --- stations ------------------------------------------------------------------------------------------

constexpr auto station_titles = std::to_array<Column>({
    {"station", 0},
    {"name", 1, text, 8},
    {"latitude", 2, number},
    {"longitude", 3, number},
    {"elevation", 4, number},
    {"start", 5, time},
    {"end", 6, time},
    {"channels", 7, number},
    {"network", 8, text, 8},
});

// A station of the headers, or one that only data records name.
struct StationLine {
    const Station* station = nullptr;
    std::int64_t channels = 0;
};

// --- damage --------------------------------------------------------------------------------------------

constexpr auto damage_titles = std::to_array<Column>({
    {"damage", 0},
    {"places", 1, number},
    {"skipped", 7, number},
    {"byte", 2, number},
    {"record", 3, number},
    {"blockette", 5, number},
    {"field", 6, text, 8},
    {"what", 4, text, 12},
});

struct DamageCount {
    std::int64_t places = 0;
    std::int64_t bytes = 0;
    Damage first = {};
};

// --- one volume ----------------------------------------------------------------------------------------

struct Shown {
    bool volume, stations, channels, damage;
    bool for_programs;
    std::size_t width; // of the terminal; 0: as wide as need be
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
        if (shown_.stations)
            write_table("stations", station_titles, &VolumeInfo::give_stations);
        if (shown_.channels)
            write_table("channels", channel_titles, &VolumeInfo::give_channels);
        if (shown_.damage)
            write_table("damage", damage_titles, &VolumeInfo::give_damage);
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

    // --- tables

    using Take = Table::Take;
    using Give = void (VolumeInfo::*)(const Take& take) const;

    void write_table(std::string_view title, std::span<const Column> columns, Give give) {
        const Table table(
            columns, [this, give](const Take& take) { (this->*give)(take); }, [this] { part_.settle(); });
        const std::string front = shown_.volume ? "\n" + fitting(title) + "\n" : "";
        if (shown_.for_programs)
            table.write_rows(shown_on_terminal(reader_.name()), &out_);
        else if (!table.write_text(front, shown_.width, &out_) && !shown_.volume)
            out_ += "none\n";
    }

    void give_channels(const Take& take) const {
        std::vector<std::string> cells(channel_columns.size());
        for_each_row(contents_, selection_, [&](const ChannelRow& row) {
            std::transform(channel_columns.begin(), channel_columns.end(), cells.begin(),
                           [&](const ChannelColumn& column) {
                               return column.cell({row, contents_.inventory});
                           });
            take(cells);
        });
    }

    void give_stations(const Take& take) const {
        std::map<std::pair<std::string_view, std::string_view>, StationLine> lines;
        for (const Network& network : contents_.inventory.networks)
            for (const Station& station : network.stations)
                if (selection_.takes_station(network.code, station.code))
                    lines[{network.code, station.code}].station = &station;
        std::optional<ChannelRow> before;
        for_each_row(contents_, selection_, [&](const ChannelRow& row) {
            if (!before || !is_of_same_channel(row, *before))
                ++lines[{row.network, row.station}].channels;
            before = row;
        });
        for (const auto& [codes, line] : lines)
            give_station(joined(codes.first, ".", codes.second), line, take);
    }

    static bool is_of_same_channel(const ChannelRow& one, const ChannelRow& other) {
        return one.network == other.network && one.station == other.station &&
               one.location == other.location && one.channel == other.channel;
    }

    void give_station(const std::string& code, const StationLine& line, const Take& take) const {
        if (line.station == nullptr || line.station->epochs.empty())
            take({code, "", "", "", "", "", "", cell(Integer(line.channels)), ""});
        else
            for (const StationEpoch& epoch : line.station->epochs)
                if (takes_span(selection_, epoch.start, epoch.end))
                    take({code, epoch.site, cell(epoch.latitude), cell(epoch.longitude),
                          cell(epoch.elevation), cell(epoch.start), cell(epoch.end),
                          cell(Integer(line.channels)),
                          std::string(abbreviation(contents_.inventory, epoch.network_name, epoch.place))});
    }

    void give_damage(const Take& take) const {
        for (const DamageCount& count : damages_) {
            const Damage& first = count.first;
            if (count.places == 0)
                continue;
            take({std::string(name_of(first.kind)), cell(Integer(count.places)), cell(Integer(count.bytes)),
                  cell(Integer(first.offset)), cell(Integer(first.logical_record)),
                  first.blockette > 0 ? cell(Integer(first.blockette)) : "", std::string(first.field),
                  joined(describe(first.kind), ": ", first.detail)});
        }
    }

    const Selection& selection_;
    const Shown& shown_;
    VolumeReader& reader_;
    std::size_t number_; // of the volume
    OrderedOutput::Part& part_;
    std::string& out_; // of it
    Fields fields_ = {};
    std::array<DamageCount, damage_kinds> damages_ = {};
    ContentsBuilder builder_{Responses::sensitivity};
    Contents contents_ = {};
};

// --- the command ---------------------------------------------------------------------------------------

Shown shown_by(const CommandLine& line) {
    const bool is_chosen = line.has("--stations") || line.has("--channels") || line.has("--damage");
    const bool for_programs = line.has("--tsv");
    return {!is_chosen && !for_programs,
            line.has("--stations") || !(is_chosen || for_programs),
            line.has("--channels") || !is_chosen,
            line.has("--damage") || !(is_chosen || for_programs),
            for_programs,
            terminal_width()};
}

std::string titles(const Shown& shown) {
    if (!shown.for_programs)
        return "";
    const std::span<const Column> columns = shown.stations ? std::span<const Column>(station_titles)
                                            : shown.damage ? std::span<const Column>(damage_titles)
                                                           : std::span<const Column>(channel_titles);
    return titles_of("file", columns);
}

ExitStatus write_info(const CommandLine& line) {
    const Shown shown = shown_by(line);
    const std::array tables{shown.stations, shown.channels, shown.damage};
    if (shown.for_programs && std::count(tables.begin(), tables.end(), true) > 1) {
        report_trouble(line.command, "--tsv: one of --stations, --channels, --damage");
        return failed;
    }
    return for_each_volume(
        line,
        [&](VolumeReader& reader, OrderedOutput::Part& out) {
            return VolumeInfo(line, shown, &reader, &out).write();
        },
        titles(shown));
}

constexpr auto options = std::to_array<OptionRow>({
    {"--stations", nullptr, "only the table of stations"},
    {"--channels", nullptr, "only the table of channels"},
    {"--damage", nullptr, "only the table of damage"},
    {"--tsv", nullptr, "one table (channels unless another is chosen) for programs: tabs, a line of titles"},
});

} // namespace

extern const Command info_command;
const Command info_command{
    "info", "Shows what SEED volumes hold: stations, channel epochs with the data found, damage.", options,
    "Examples:\n"
    "  quarry info volume.seed\n"
    "  quarry info --channels --channel 'BH?' --from 2010-02-27 volume.seed\n"
    "  quarry info --damage archive/*\n"
    "  quarry info --tsv --stations *.seed | cut -f 2,4,5\n"
    "\n"
    "Exit status: 0 all volumes are sound, 1 some are damaged, 2 some could not be read.",
    write_info};

} // namespace quarry
