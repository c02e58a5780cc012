// What station and channel blockettes leave behind for others: names of channels, codes, validity.
#include "support.h"

#include "blockette/blockette.h"
#include "blockette/response.h"
#include "blockette/station.h"
#include "platform/text.h"
#include "state.h"

namespace quarry {
namespace {

TEST(Channel, OrientationLetters) {
    struct {
        double dip, azimuth;
        const char* channel;
    } const cases[] = {{0, 0, "BHN"},    {0, 175, "BHN"},   {0, 170, "BH1"},    {-90, 1.5, "BHZ"},
                       {90, 2, "BH1"},   {5, 270, "BHE"},   {5, 0, "BH1"},      {10, 90, "BH1"},
                       {60, 180, "BHA"}, {-60, 121, "BHB"}, {60, 238.5, "BHC"}, {58, 0, "BH1"}};
    name_the_log();
    testing::internal::CaptureStderr();
    for (const auto& c : cases) {
        blk_052_t channel{};
        copy_text(channel.station, "SSB");
        copy_text(channel.chan_id, "BH");
        channel.subchan_id = 1;
        channel.dip = c.dip;
        channel.azimuth = c.azimuth;
        fix_channel(&channel);
        EXPECT_STREQ(channel.channel, c.channel) << c.dip << " " << c.azimuth;
        EXPECT_EQ(*Geoscope_channels.get("SSB:BH1"), c.channel[2]);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr().substr(0, 61),
              "quarry: Warning... Azimuth and Dip out of Range on SSB,BH1\nqu");
    EXPECT_EQ(Geoscope_channels.size(), 1U);
}

// Channel and location up to their first character that is no letter or digit.
TEST(Channel, Names) {
    const std::tuple<const char*, const char*, const char*> names[] = {
        {"BHZ", "00", "BHZ00"}, {"09Z", "  ", "09Z"}, {"/HZ", "1", "1"},
        {":HZ", "", ""},        {"A@Z", "", "A"},     {"AZ[", "", "AZ"},
        {"a`z", "", "a"},       {"az{", "", "az"},    {"Hz9", "a", "Hz9a"}};
    for (const auto& [code, location, name] : names) {
        blk_052_t channel{};
        copy_text(channel.chan_id, code);
        copy_text(channel.loc_id, location);
        fix_channel(&channel);
        EXPECT_STREQ(channel.channel, name);
    }
}

// What a record says of its station and channel, none of which is listed.
template <class Record>
std::string context(int type, const std::string& fields) {
    const BlockettePointer owner(parse_blk(blockette(type, fields), type), {type});
    const auto* record = static_cast<const Record*>(owner.get());
    std::string text = std::string(record->station) + "," + record->network_code;
    if constexpr (requires { record->channel; })
        text += std::string(",") + record->channel + "," + record->start_date + "," + record->end_date + "," +
                std::to_string(record->instr_id);
    if constexpr (requires { record->sample_rate; })
        text += "," + fixed(record->sample_rate, 0, 1);
    if constexpr (requires { record->units_signal; })
        text += "," + std::to_string(record->units_signal);
    return text;
}

TEST(Channel, ContextOfLaterBlockettes) {
    blk_050 = {};
    blk_052 = {};
    EXPECT_EQ(context<blk_051_t>(51, "~~00010000"), ",");
    EXPECT_EQ(context<blk_053_t>(53, ""), ",,,,,0,0.0");
    const auto station = [](const std::string& network) {
        free_blk(parse_blk(blockette(50, "SSB  " + std::string(35, ' ') + "~0013210101998~~N" + network), 50),
                 50);
    };
    station("G ");
    free_blk(parse_blk(blockette(52, "00BHZ0000007~003004" + std::string(43, ' ') + "000112" +
                                         fixed(20, 10, 4) + std::string(14, ' ') + "~1998~2001~N"),
                       52),
             52);
    EXPECT_EQ(context<blk_051_t>(51, "~~00010000"), "SSB,G ");
    const std::string channel = "SSB,G ,BHZ00,1998,2001,7";
    EXPECT_EQ(context<blk_053_t>(53, "A01"), channel + ",20.0");
    EXPECT_EQ(context<blk_054_t>(54, "A01"), channel + ",20.0");
    EXPECT_EQ(context<blk_057_t>(57, "01"), channel);
    EXPECT_EQ(context<blk_058_t>(58, "01"), channel + ",20.0,3");
    EXPECT_EQ(context<blk_059_t>(59, "~~"), channel + ",20.0");
    EXPECT_EQ(context<blk_061_t>(61, "01~"), channel + ",20.0");
    station(""); // a blockette that ends before its network code
    EXPECT_EQ(context<blk_061_t>(61, "01~"), "SSB,,BHZ00,1998,2001,7,20.0");
}

} // namespace
} // namespace quarry
