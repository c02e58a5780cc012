// SPDX-License-Identifier: Apache-2.0
// What station and channel blockettes leave behind for others: names of channels, codes, validity.
#include "support.h"

#include "blockette/blockette.h"
#include "blockette/response.h"
#include "blockette/station.h"
#include "platform/text.h"
#include "state.h"

namespace quarry {
namespace {

// Of a channel whose code ends in its subchannel's number, the dip and azimuth make the letter.
TEST(Channel, OrientationLetters) {
    const double orientations[][2] = {
        {0, 0},    {0, 175},  {0, 170},    {0, 2},    {2, 0},    {-90, 1.5}, {90, 2},   {88, 0},  {5, 270},
        {5, 0},    {10, 90},  {0, 92},     {0, 272},  {60, 180}, {60, 182},  {60, 2},   {58, 0},  {-60, 121},
        {62, 120}, {60, 122}, {60, 238.5}, {60, 302}, {60, 61},  {58, 240},  {60, 242}, {60, 62}, {60, 299}};
    name_the_log();
    std::string out;
    for (const auto& [dip, azimuth] : orientations) {
        blk_052_t channel{};
        copy_text(channel.station, "SSB");
        copy_text(channel.chan_id, "BH");
        channel.subchan_id = 1;
        channel.dip = dip;
        channel.azimuth = azimuth;
        testing::internal::CaptureStderr();
        fix_channel(&channel);
        out +=
            formatted("%g %g: %s\n", dip, azimuth, channel.channel) + testing::internal::GetCapturedStderr();
        EXPECT_EQ(*Geoscope_channels.get("SSB:BH1"), channel.channel[2]);
    }
    EXPECT_EQ(Geoscope_channels.size(), 1U);
    expect_recorded("Channel", "OrientationLetters", out);
}

// Channel and location up to their first character that is not a letter or digit.
TEST(Channel, Names) {
    std::string out;
    for (const char* code : {"BHZ", "09Z", "/HZ", ":HZ", "A@Z", "AZ[", "a`z", "az{", "Hz9"})
        for (const char* location : {"00", "  ", "1", "a-"}) {
            blk_052_t channel{};
            copy_text(channel.chan_id, code);
            copy_text(channel.loc_id, location);
            fix_channel(&channel);
            out += std::string(code) + "," + location + ": " + channel.channel + "\n";
        }
    expect_recorded("Channel", "Names", out);
}

// The station and channel of a record, which its line does not show.
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

std::string contexts() {
    return "51 " + context<blk_051_t>(51, "~~00010000") + "\n53 " + context<blk_053_t>(53, "A01") + "\n54 " +
           context<blk_054_t>(54, "A01") + "\n57 " + context<blk_057_t>(57, "01") + "\n58 " +
           context<blk_058_t>(58, "01") + "\n59 " + context<blk_059_t>(59, "~~") + "\n61 " +
           context<blk_061_t>(61, "01~") + "\n";
}

TEST(Channel, ContextOfLaterBlockettes) {
    blk_050 = {};
    blk_052 = {};
    const std::string station = "SSB  " + std::string(35, ' ') + "~0013210101998~~N";
    const std::string channel = "00BHZ0000007~003004" + std::string(43, ' ') + "000112" + fixed(20, 10, 4) +
                                std::string(14, ' ') + "~1998~2001~N";
    std::string out = "nothing before\n" + contexts();
    out += "50 " + context<blk_050_t>(50, station + "G ") + "\n";
    out += "52 " + context<blk_052_t>(52, channel) + "\n";
    out += contexts();
    out += "50 " + context<blk_050_t>(50, station) + "\n";
    expect_recorded("Channel", "Context", out + contexts());
}

} // namespace
} // namespace quarry
