// SPDX-License-Identifier: Apache-2.0
#include "commands/info_tables.h"

#include "commands/selected.h"
#include "inventory/channel_codes.h"
#include "inventory/field_values.h"
#include "quarry/samples.h"
#include "quarry/time.h"

#include <algorithm>
#include <charconv>
#include <map>

namespace quarry {

std::string time_cell(std::int64_t time) {
    return std::string(IsoTime(time).text());
}

std::string cell(const Moment& moment) {
    return moment.microseconds ? time_cell(*moment.microseconds) : moment.text;
}

std::string joined(std::string_view text, std::string_view between, std::string_view more) {
    std::string both(text);
    if (!text.empty() && !more.empty())
        both += between;
    return both += more;
}

namespace {

using Take = Table::Take;

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
    std::string lengths;
    for (const std::size_t length :
         line.row.data != nullptr ? line.row.data->lengths : std::vector<std::size_t>{})
        lengths = joined(lengths, "+", std::to_string(length));
    if (lengths.empty() && line.row.epoch != nullptr)
        return cell(bytes_of_power(line.row.epoch->record_length));
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
    {{"sensor", 8, text, 10}, sensor_cell},
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

void give_channels(const InfoContent& content, const Take& take) {
    std::vector<std::string> cells(channel_columns.size());
    for_each_row(content.contents, content.selection, [&](const ChannelRow& row) {
        std::transform(channel_columns.begin(), channel_columns.end(), cells.begin(),
                       [&](const ChannelColumn& column) {
                           return column.cell({row, content.contents.inventory});
                       });
        take(cells);
    });
}

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

void give_station(const InfoContent& content, const std::string& code, const StationLine& line,
                  const Take& take) {
    if (line.station == nullptr || line.station->epochs.empty())
        take({code, "", "", "", "", "", "", cell(Integer(line.channels)), ""});
    else
        for (const StationEpoch& epoch : line.station->epochs)
            if (takes_span(content.selection, epoch.start, epoch.end))
                take(
                    {code, epoch.site, cell(epoch.latitude), cell(epoch.longitude), cell(epoch.elevation),
                     cell(epoch.start), cell(epoch.end), cell(Integer(line.channels)),
                     std::string(abbreviation(content.contents.inventory, epoch.network_name, epoch.place))});
}

void give_stations(const InfoContent& content, const Take& take) {
    std::map<std::pair<std::string_view, std::string_view>, StationLine> lines;
    for (const Network& network : content.contents.inventory.networks)
        for (const Station& station : network.stations)
            if (content.selection.takes_station(network.code, station.code))
                lines[{network.code, station.code}].station = &station;
    std::optional<ChannelRow> before;
    for_each_row(content.contents, content.selection, [&](const ChannelRow& row) {
        if (!before || codes_of(row) != codes_of(*before))
            ++lines[{row.network, row.station}].channels;
        before = row;
    });
    for (const auto& [codes, line] : lines)
        give_station(content, joined(codes.first, ".", codes.second), line, take);
}

// --- findings ------------------------------------------------------------------------------------------

constexpr auto finding_titles = std::to_array<Column>({
    {"finding", 0},
    {"places", 1, number},
    {"byte", 2, number},
    {"record", 3, number},
    {"blockette", 6, number},
    {"other", 5, number},
    {"what", 4, text, 12},
});

void give_findings(const InfoContent& content, const Take& take) {
    struct Count {
        std::int64_t places = 0;
        const Finding* first = nullptr;
    };
    std::map<FindingKind, Count> counts;
    for (const Finding& finding : content.contents.inventory.findings) {
        Count& count = counts[finding.kind];
        if (count.places++ == 0)
            count.first = &finding;
    }
    for (const auto& [kind, count] : counts) {
        const auto& [place, other] = std::tie(count.first->place, count.first->other);
        take({std::string(name_of(kind)), cell(Integer(count.places)), cell(Integer(place.offset)),
              cell(Integer(place.logical_record)), cell(Integer(place.blockette)),
              other.blockette > 0 ? cell(Integer(other.offset)) : "", what_is_wrong(*count.first)});
    }
}

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

void give_damage(const InfoContent& content, const Take& take) {
    for (const DamageCount& count : content.damages) {
        const Damage& first = count.first;
        if (count.places == 0)
            continue;
        take({std::string(name_of(first.kind)), cell(Integer(count.places)), cell(Integer(count.bytes)),
              cell(Integer(first.offset)), cell(Integer(first.logical_record)),
              first.blockette > 0 ? cell(Integer(first.blockette)) : "", std::string(first.field),
              joined(describe(first.kind), ": ", first.detail)});
    }
}

} // namespace

const std::array<InfoTable, info_table_count> info_tables{{
    {"--stations", station_titles, give_stations},
    {"--channels", channel_titles, give_channels},
    {"--findings", finding_titles, give_findings},
    {"--damage", damage_titles, give_damage},
}};

} // namespace quarry
