// SPDX-License-Identifier: Apache-2.0
// The inventory of built volumes: what is assembled, joined, resolved, and what does not fit together.

#include "support.h"

#include "quarry/data_found.h"
#include "quarry/inventory.h"

#include <gmock/gmock.h>

namespace quarry {
namespace {

using testing::ElementsAre;

constexpr const char* station = "STA1 +12.345678-123.4567891234.500000000Site~00132101";

std::string b050(const char* start, const char* end) {
    return blockette(50, std::string(station) + "0" + start + "~" + end + "~NXX");
}

std::string b052(const char* start, const char* end) {
    return blockette(52, std::string("00BHZ0000002~001002+12.345678-123.456789") +
                             "1234.5           -90.00001122.0000E+010.0000E+000000G~" + start + "~" + end +
                             "~N");
}

// Two zeros at the value and no pole.
std::string b053(int stage, double value) {
    const std::string zero = exponent(value) + exponent(0) + exponent(0) + exponent(0);
    return blockette(53, "A" + digits(stage, 2) + "001002" + exponent(1) + exponent(1) + "002" + zero + zero +
                             "000");
}

std::string b061(int stage, double value) {
    return blockette(61, digits(stage, 2) + "Name~A002002" + "0001" + formatted("%14.7E", value));
}

std::string texts() {
    return blockette(30, "Steim~0001050"
                         "00") +
           blockette(33, "001Network~") + blockette(33, "002Sensor~") + blockette(34, "001M/S~~") +
           blockette(34, "002V~~");
}

Inventory inventory_of(const std::string& headers, const std::string& dictionary = texts()) {
    VolumeBuilder builder(256);
    builder.control('V', blockette(10, "02.4082005,001~2005,002~2005,003~Org~Label~"));
    builder.control('A', dictionary).control('S', headers);
    const std::string bytes = builder.bytes();
    VolumeReader reader = VolumeReader::of_memory(bytes, "volume");
    return read_inventory(&reader);
}

const ChannelEpoch& only_epoch(const Inventory& inventory) {
    return inventory.networks.at(0).stations.at(0).channels.at(0).epochs.at(0);
}

std::vector<std::string> findings_of(const Inventory& inventory) {
    std::vector<std::string> found;
    for (const Finding& finding : inventory.findings) {
        const Place& other = finding.other;
        found.push_back(std::to_string(finding.place.blockette) + " " + std::to_string(finding.key) + " " +
                        std::string(describe(finding.kind)) + (finding.is_changed ? " anew" : "") +
                        (other.blockette == 0                  ? ""
                         : finding.place.offset > other.offset ? ", after"
                                                               : "?"));
    }
    return found;
}

const std::string head = b050("2000,001", "");

static_assert(Real() == Real() && Real() == std::optional<double>() && Real(0) == 0 && Real() < Real(-1));
static_assert(Integer() != 0 && Integer() < 0 && !(Integer(1) < Integer()) && Integer(2) != std::nullopt);

TEST(Inventory, HoldsStationsAndChannelsAsTheyAreGiven) {
    const Inventory inventory = inventory_of(head + b052("2000,001", "2001,001"));
    EXPECT_THAT(findings_of(inventory), ElementsAre());
    EXPECT_EQ(inventory.volumes.at(0).version, "02.4");
    EXPECT_EQ(inventory.volumes.at(0).label, "Label");
    const Network& network = inventory.networks.at(0);
    EXPECT_EQ(network.code, "XX");
    const StationEpoch& of_station = network.stations.at(0).epochs.at(0);
    EXPECT_EQ(of_station.latitude, 12.345678);
    EXPECT_EQ(of_station.site, "Site");
    EXPECT_EQ(abbreviation(inventory, of_station.network_name, of_station.place), "Network");
    EXPECT_EQ(of_station.end.microseconds, std::nullopt);
    const ChannelEpoch& epoch = only_epoch(inventory);
    EXPECT_EQ(epoch.station, of_station.place.offset);
    EXPECT_EQ(epoch.dip, -90);
    EXPECT_EQ(epoch.depth, std::nullopt); // blank
    EXPECT_EQ(epoch.azimuth, std::nullopt);
    EXPECT_EQ(epoch.rate, 20);
    EXPECT_EQ(abbreviation(inventory, epoch.instrument, epoch.place), "Sensor");
}

TEST(Inventory, JoinsResponsesThatGoOn) {
    const Inventory inventory =
        inventory_of(head + b052("2000,001", "") + b053(1, 1) + b053(1, 2) + b053(1, 3) + b053(2, 4) +
                     b061(3, 1) + b061(3, 2) + b061(4, 3) + b061(4, 3));
    const std::vector<Stage>& stages = only_epoch(inventory).stages;
    ASSERT_EQ(stages.size(), 4);
    std::vector<double> zeros;
    for (const Root& zero : find_part<PolesAndZeros>(stages[0])->zeros)
        zeros.push_back(*zero.real);
    EXPECT_THAT(zeros, ElementsAre(1, 1, 2, 2, 3, 3));
    EXPECT_EQ(stages[0].responses.at(0).response->continued.size(), 2);
    EXPECT_EQ(find_part<PolesAndZeros>(stages[1])->zeros.size(), 2);
    EXPECT_THAT(find_part<Fir>(stages[2])->coefficients, ElementsAre(1, 2));
    EXPECT_EQ(stages[3].responses.size(), 2); // of the same text: written twice
}

TEST(Inventory, ResolvesReferencesToTheDictionary) {
    const std::string dictionary = texts() + blockette(41, "0003Fir~A0020020001" + formatted("%14.7E", 5.0)) +
                                   blockette(41, "0003Fir~A0020020001" + formatted("%14.7E", 6.0)) +
                                   blockette(48, "0004Gain~" + exponent(7) + exponent(1) + "00");
    const Inventory inventory = inventory_of(head + b052("2000,001", "") +
                                                 blockette(60, "02"
                                                               "02"
                                                               "02"
                                                               "0003"
                                                               "0004"
                                                               "01"
                                                               "01"
                                                               "0009"),
                                             dictionary);
    const std::vector<Stage>& stages = only_epoch(inventory).stages;
    ASSERT_EQ(stages.size(), 2);
    EXPECT_EQ(stages[0].number, 1);
    EXPECT_EQ(stages[0].responses.at(0).response, nullptr);
    EXPECT_EQ(stages[0].responses.at(0).key, 9);
    EXPECT_THAT(find_part<Fir>(stages[1])->coefficients, ElementsAre(5, 6));
    EXPECT_EQ(find_part<Gain>(stages[1])->value, 7);
    EXPECT_EQ(stages[1].responses.at(1).place.blockette, 60);
    EXPECT_EQ(stages[1].responses.at(1).response->place.blockette, 48);
    EXPECT_THAT(findings_of(inventory), ElementsAre("60 9 is not defined"));
}

// Numbers that count up, so that each shows its place.
std::string count(int first, int last) {
    return first > last ? "" : exponent(first) + count(first + 1, last);
}

// A response in a blockette of a channel, and in its twin in the dictionary: their type, the letter in front
// of the units, and the fields from the units on.
struct TwinRow {
    int type, twin;
    const char* letter;
    std::string fields;
};
const std::vector<TwinRow> twins{
    {53, 43, "B", "001002" + count(1, 2) + "002" + count(3, 10) + "001" + count(11, 14)},
    {54, 44, "D", "0020030002" + count(1, 4) + "0001" + count(5, 6)},
    {55, 45, "", "0030040002" + count(1, 10)},
    {56, 46, "", "0040050002" + count(1, 4)},
    {57, 47, "", "  100.00000000500002 1.500E+000 2.500E+000"},
    {58, 48, "", count(1, 2) + "02" + count(3, 4) + "2001,001~" + count(5, 6) + "2002,002~"},
    {61, 41, "", "B0010030002  1.000000E+00  2.000000E+00"},
    {62, 42, "P", "002004MB" + count(1, 5) + "002" + count(6, 9)},
};

// Stations and comments, and two channels: one with all responses, one that refers to their twins, which go
// on in a further blockette where they may. Recorded as quarry json assembles them.
std::string every_record() {
    std::string dictionary = texts() + blockette(31, "0007SStation comment~003") +
                             blockette(31, "0008CChannel comment~004") + blockette(33, "003Other sensor~");
    for (int unit = 3; unit <= 5; ++unit)
        dictionary += blockette(34, digits(unit, 3) + "U" + digits(unit, 1) + "~~");
    std::string responses, reference = digits(static_cast<int>(twins.size()), 2);
    int stage = 0;
    for (const TwinRow& row : twins) {
        const std::string number = digits(++stage, 2);
        responses += blockette(row.type, row.letter + number + (row.type == 61 ? "Name~" : "") + row.fields);
        for (const char* name : {"Name~", "Further~"})
            if (*name == 'N' || (row.type != 57 && row.type != 58))
                dictionary += blockette(row.twin, "00" + number + name + row.letter + row.fields);
        reference += number + "0100" + number;
    }
    const std::string channel =
        std::string("0007003Comment~001002+11.000000+022.000000   33.0 44.0 55.0-66.0") +
        "000109  100.0000 7.700E-080001GH~2001,001~2002,002~U";
    return VolumeBuilder(256)
        .control('A', dictionary)
        .control('S', blockette(50, std::string(station) + "02003,003~2004,004~UXX") +
                          blockette(51, "2005,005~2006,006~0007000042") + blockette(52, "00BHZ" + channel) +
                          responses + blockette(59, "2007,007~2008,008~0008000043") +
                          blockette(52, "10BHN" + channel) + blockette(60, reference))
        .bytes();
}

const bool recorded = make_recorded_tests(
    "Assembled", {{"EveryRecord",
                   "$quarry json --kinds damage,station,channel volume | sed 's/\\(\\[\\|},\\){/\\1\\n  {/g'",
                   {{"volume", every_record()}}}});

TEST(Inventory, HoldsDictionariesAndCounts) {
    const Inventory inventory = inventory_of(
        blockette(50, "STA1 +12.345678-123.4567891234.500011012Site~001321010~~NXX") + b052("2000,001", ""),
        blockette(30, "Steim~000105002M0~W4 D~") + blockette(31, "0002SText~003") +
            blockette(32, "04Author~2005~Publisher~") + blockette(33, "005Sensor~") +
            blockette(34, "006M/S~Velocity~") + blockette(35, "0070001STA  00BHZ000200003"));
    const Dictionary& all = inventory.dictionary;
    const auto place = [](const auto& entries) { return entries.at(0).place; };
    EXPECT_THAT(all.formats, ElementsAre(DataFormat{place(all.formats), 1, "Steim", 50, {"M0", "W4 D"}}));
    EXPECT_THAT(all.comments, ElementsAre(CommentText{place(all.comments), 2, "S", "Text", 3}));
    EXPECT_THAT(all.sources, ElementsAre(CitedSource{place(all.sources), 4, "Author", "2005", "Publisher"}));
    EXPECT_THAT(all.abbreviations, ElementsAre(Abbreviation{place(all.abbreviations), 5, "Sensor"}));
    EXPECT_THAT(all.units, ElementsAre(Unit{place(all.units), 6, "M/S", "Velocity"}));
    EXPECT_THAT(all.beams, ElementsAre(Beam{place(all.beams), 7, {{"STA", "00", "BHZ", 2, 3}}}));
    const StationEpoch& epoch = inventory.networks.at(0).stations.at(0).epochs.at(0);
    EXPECT_THAT((std::array{epoch.channel_count, epoch.comment_count, epoch.word_order_32,
                            epoch.word_order_16, only_epoch(inventory).comment_count}),
                ElementsAre(11, 12, 3210, 10, 0));
}

TEST(Inventory, ReportsKeysAndEpochsThatDoNotFit) {
    const Inventory inventory = inventory_of(head + b052("2000,001", "2002,001") + b052("2002,001", "") +
                                                 b052("2001,001", "2001,002") + b050("2003,001", "2004,001"),
                                             texts() + blockette(33, "002Sensor~") +
                                                 blockette(34, "002Volt~~") + blockette(34, "007A~~"));
    EXPECT_THAT(findings_of(inventory),
                ElementsAre("33 2 is defined twice, after", "34 2 is defined twice anew, after",
                            "34 7 is not used", "52 0 overlaps another epoch of the channel, after",
                            "50 0 overlaps another epoch of the station, after"));
    const Inventory orphans = inventory_of(b052("2000,001", "") + head + b053(1, 1));
    EXPECT_THAT(findings_of(orphans), ElementsAre("52 0 follows no station", "53 0 follows no channel"));
}

TEST(DataFound, CountsByChannelAndEpoch) {
    DataFound found;
    constexpr std::int64_t start = 1'107'253'230'000'000; // 2005,032,10:20:30
    found.expect("XX", "DEM1", "", "BHZ", start, start + 26'000'000);
    VolumeBuilder builder;
    for (const int second : {30, 40, 55, 50, 59}) { // 10 s each: a gap, an overlap, beyond the epoch
        RecordFields record;
        record.size = 512;
        record.encoding = 3;
        record.samples = 200;
        record.second = second;
        builder.data(record);
    }
    const std::string bytes = builder.bytes();
    VolumeReader reader = VolumeReader::of_memory(bytes, "volume");
    while (const Item* item = reader.next())
        if (const auto* record = std::get_if<DataRecord>(item))
            found.add(*record);
    ASSERT_EQ(found.channels().size(), 1);
    ASSERT_EQ(found.channels()[0].data.size(), 2);
    const EpochData& within = found.channels()[0].data[0];
    const EpochData& outside = found.channels()[0].data[1];
    EXPECT_EQ(outside.records, 1);
    EXPECT_EQ(within.records, 4);
    EXPECT_EQ(within.samples, 800);
    EXPECT_EQ(within.gaps, 1);
    EXPECT_EQ(within.overlaps, 1);
    EXPECT_EQ(within.first, start);
    EXPECT_EQ(within.last, start + 34'950'000);
    EXPECT_THAT(within.encodings, ElementsAre(3));
    EXPECT_THAT(within.lengths, ElementsAre(512));
}

} // namespace
} // namespace quarry
