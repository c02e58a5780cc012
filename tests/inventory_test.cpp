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
