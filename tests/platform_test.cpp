// The platform's pieces and the time values, each alone.

#include "exhaustible_memory.h"
#include "support.h"

#include "blockette/blockette.h"
#include "blockette/data_header.h"
#include "blockette/response.h"
#include "blockette/sdblknam.h"
#include "blockette/station.h"
#include "blockette/volume.h"
#include "decode/data_record.h"
#include "listing/epoch_lists.h"
#include "listing/fixup_dh.h"
#include "listing/seed_utl.h"
#include "platform/bytes.h"
#include "platform/calendar.h"
#include "platform/message_log.h"
#include "platform/text.h"
#include "seedio/rseed.h"
#include "seedio/seed.h"
#include "state.h"

#include <array>
#include <climits>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace quarry {
namespace {

TEST(Text, Numbers) {
    struct {
        const char* text;
        long value;
        std::size_t length;
    } const integers[] = {{"007", 7, 3},
                          {" +12x", 12, 4},
                          {"\t-3", -3, 3},
                          {"+-3", 0, 0},
                          {"", 0, 0},
                          {"   ", 0, 0},
                          {"- 3", 0, 0},
                          {"0x10", 0, 1},
                          {"9999999999999999999", LONG_MAX, 19},
                          {"-9999999999999999999", LONG_MIN, 20}};
    for (const auto& c : integers) {
        EXPECT_EQ(parse_integer(c.text).value, c.value) << c.text;
        EXPECT_EQ(parse_integer(c.text).length, c.length) << c.text;
    }
    const double infinity = std::numeric_limits<double>::infinity();
    struct {
        const char* text;
        double value;
        std::size_t length;
    } const reals[] = {{"1.5", 1.5, 3},
                       {" +1.50000E+03", 1500, 13},
                       {"-.5x", -0.5, 3},
                       {"1e999", infinity, 5},
                       {"-1e999", -infinity, 6},
                       {"1e-999", 0, 6},
                       {"4e-320", 4e-320, 6},
                       {"inf", infinity, 3},
                       {"0x1p3", 0, 1},
                       {"+-1", 0, 0},
                       {"abc", 0, 0},
                       {"1,5", 1, 1}};
    for (const auto& c : reals) {
        EXPECT_EQ(parse_real(c.text).value, c.value) << c.text;
        EXPECT_EQ(parse_real(c.text).length, c.length) << c.text;
    }
    EXPECT_TRUE(std::isnan(parse_real("nan").value));
    EXPECT_TRUE(is_blank(std::string_view(" \t\0x", 4)));
    EXPECT_FALSE(is_blank(" x"));
}

TEST(Calendar, BothWays) {
    struct {
        int year, doy, hour, minutes;
        double sec, epoch;
    } const cases[] = {{1970, 1, 0, 0, 0, 0},
                       {2000, 60, 0, 0, 0, 951782400},   // 29 February
                       {1900, 60, 0, 0, 0, -2203891200}, // 1 March: no leap year
                       {1969, 365, 23, 59, 59.5, -0.5},
                       {0, 0, 0, 0, 0, -62167305600},
                       {2005, 32, 10, 20, 30.25, 1107253230.25}};
    for (const auto& c : cases) {
        EXPECT_EQ(human_to_epoch(c.year, c.doy, c.hour, c.minutes, c.sec), c.epoch) << c.year;
        const HumanTime back = epoch_to_human(c.epoch);
        if (c.doy == 0)
            continue;
        EXPECT_EQ(back.year, c.year);
        EXPECT_EQ(back.doy, c.doy) << c.year;
        EXPECT_EQ(back.hour, c.hour);
        EXPECT_EQ(back.minutes, c.minutes);
        EXPECT_EQ(back.sec, c.sec);
    }
    EXPECT_EQ(human_to_epoch(1999, 366, 25, -60, 3600), human_to_epoch(2000, 2, 1, 0, 0)); // out of range
    for (std::int64_t day = -1000000; day < 1000000; day += 97) { // day by day over the centuries
        const HumanTime human = epoch_to_human(static_cast<double>(day) * 86400);
        EXPECT_EQ(human_to_epoch(human.year, human.doy, 0, 0, 0), static_cast<double>(day) * 86400);
        EXPECT_TRUE(human.doy >= 1 && human.doy <= 366);
    }
    for (const double wild : {1e300, -1e300, std::nan(""), static_cast<double>(INFINITY)})
        epoch_to_human(wild);
}

TEST(TimeText, FieldsByLength) {
    struct {
        const char* text;
        int year, doy, hour, minutes;
        double sec;
    } const cases[] = {{"", 0, 0, 0, 0, 0},
                       {"1999", 1999, 0, 0, 0, 0},
                       {"99,5", 99, 0, 0, 0, 0},
                       {"1999,5", 1999, 5, 0, 0, 0},
                       {"1999,123", 1999, 123, 0, 0, 0},
                       {"1999,123,04", 1999, 123, 4, 0, 0},
                       {"1999,123,04:05", 1999, 123, 4, 5, 0},
                       {"1999,123,04:05:06", 1999, 123, 4, 5, 6},
                       {"1999,123,04:05:06.7890", 1999, 123, 4, 5, 6.789},
                       {"1999, 23,04;05:06", 1999, 23, 4, 0, 0}};
    for (const auto& c : cases) {
        int year, doy, hour, minutes;
        double sec;
        parse_time(c.text, &year, &doy, &hour, &minutes, &sec);
        EXPECT_EQ(std::make_tuple(year, doy, hour, minutes, sec),
                  std::make_tuple(c.year, c.doy, c.hour, c.minutes, c.sec))
            << c.text;
    }
    double epoch;
    start_epoch("", &epoch);
    EXPECT_EQ(epoch, -9999999999.999);
    end_epoch("", &epoch);
    EXPECT_EQ(epoch, 9999999999.999);
    seed2epoch("", &epoch);
    EXPECT_EQ(epoch, 9999999999.999);
    start_epoch(" ", &epoch);
    EXPECT_EQ(epoch, human_to_epoch(0, 0, 0, 0, 0));
    EXPECT_EQ(comp_time("1999,123,04:05:06.5", "1999,123,04:05:06.5"), '=');
    EXPECT_EQ(comp_time("1999,123,04:05:06.5", "1999,123,04:05:06.6"), '<');
    EXPECT_EQ(comp_time("1999,365", "2000,000"), '<');
    EXPECT_EQ(comp_time("1999,123,05", "1999,123,04"), '>');
    std::array<char, 23> text;
    epoch2seed(human_to_epoch(1999, 123, 4, 5, 6.789), text);
    EXPECT_STREQ(text.data(), "1999,123,04:05: 6.7890");
}

TEST(Lists, EpochsOfAChannel) {
    SortedSet<rec_len_t> list = new_rec_list();
    const auto add = [&](const char* location, double start, double end, int length) {
        rec_len_t epoch{};
        copy_text(epoch.stn, "STA");
        copy_text(epoch.chan_id, "BHZ");
        copy_text(epoch.loc_id, location);
        epoch.start = start;
        epoch.end = end;
        epoch.len = length;
        list.add(epoch);
    };
    const auto length_at = [&](const char* location, double time) {
        blk_dh_t header{};
        copy_text(header.stn_id, "STA");
        copy_text(header.chan_id, "BHZ");
        copy_text(header.loc_id, location);
        header.epoch = time;
        return lookup_rec_list(list, &header) != 0 ? header.length : 0;
    };
    add("", 100, 200, 1);
    add("00", 100, 200, 2);
    add("", 300, 400, 3);
    EXPECT_EQ(length_at("", 100), 1);
    EXPECT_EQ(length_at("", 200), 0); // the end is exclusive
    EXPECT_EQ(length_at("", 399.5), 3);
    EXPECT_EQ(length_at("00", 150), 2);
    EXPECT_EQ(length_at("01", 150), 0);
    add("", 150, 500, 4); // begins inside the first epoch: equal to it, ignored
    EXPECT_EQ(length_at("", 450), 0);
    add("", 100, 250, 5); // the very same start: told again
    EXPECT_EQ(length_at("", 220), 5);
    add("", 50, 350, 6); // overlaps two others
    EXPECT_EQ(length_at("", 120), 6);
    EXPECT_EQ(length_at("", 310), 6);
    EXPECT_EQ(length_at("", 360), 3);
    add("", 100, 120, 7); // told again, though inside another
    EXPECT_EQ(length_at("", 360), 3);
    EXPECT_EQ(list.size(), 4U);
    add("02", 100, std::nan(""), 8); // damaged: no time lies before such an end, none after such a start
    add("02", std::nan(""), 400, 9);
    add("02", 200, 300, 10);
    EXPECT_EQ(length_at("02", 250), 10);
    EXPECT_EQ(length_at("02", 150), 0);

    List<int> sparse;
    sparse.set(-1, 1);
    sparse.set(INT_MAX, 2);
    EXPECT_EQ(sparse.get(-1), nullptr);
    EXPECT_EQ(sparse.get(0), nullptr);
    EXPECT_EQ(*sparse.get(INT_MAX), 2);
}

TEST(DataHeader, ByteOrderByTheYear) {
    struct {
        int year, byteswap;
    } const cases[] = {{1969, -1}, {1970, 0}, {2030, 0}, {2031, -1}};
    for (const auto& c : cases) {
        std::string text = "AB     BHZXX" + std::string(28, '\xff');
        store(text.data() + 12, static_cast<std::uint16_t>(c.year)); // in the host's order
        text[19] = '\x7f';                                           // the unused byte
        text[28] = '\xc0';                                           // activity
        blk_dh_t header{};
        parse_dh(&header, text);
        EXPECT_EQ(header.byteswap, c.byteswap) << c.year;
        const auto swapped = static_cast<std::int16_t>(__builtin_bswap16(static_cast<std::uint16_t>(c.year)));
        EXPECT_EQ(header.year, c.byteswap == 0 ? c.year : swapped);
        EXPECT_STREQ(header.stn_id, "AB");
        EXPECT_STREQ(header.loc_id, "");
        EXPECT_EQ(header.activity, -64);
        EXPECT_EQ(header.nsamps, -1);
        EXPECT_EQ(header.time_cor, -1);
    }
    for (const bool big_endian : {true, false}) {
        DataRecord record;
        record.big_endian = big_endian;
        record.hour = 200; // bytes and words beyond their range with a sign
        record.fraction = 1234;
        record.samples = 40000;
        record.rate_factor = -100;
        record.rate_multiplier = 256;
        record.io_flags = 0x81;
        record.time_correction = -123456;
        blk_dh_t header{};
        parse_dh(&header, VolumeBuilder().data(record).bytes().substr(8));
        EXPECT_EQ(header.byteswap, big_endian == host_is_little_endian ? -1 : 0);
        EXPECT_EQ(
            std::tie(header.year, header.doy, header.hour, header.minutes, header.sec_int, header.sec_frac),
            std::make_tuple(2005, 32, 200 - 256, 20, 30, 1234));
        EXPECT_EQ(std::tie(header.nsamps, header.rate_f, header.rate_m, header.io_flags, header.blks_fol),
                  std::make_tuple(40000 - 65536, -100, 256, 0x81 - 256, 0));
        EXPECT_EQ(std::tie(header.time_cor, header.beg_data, header.beg_blks),
                  std::make_tuple(-123456, 64, 0));
    }
    const std::string cut = "AB     BHZXX"; // a text in a buffer of its size that ends before the year
    blk_dh_t header{};
    parse_dh(&header, std::string_view(std::vector<char>(cut.begin(), cut.end()).data(), cut.size()));
    EXPECT_EQ(std::tie(header.year, header.byteswap, header.beg_data), std::make_tuple(0, -1, 0));
    for (const char letter : std::string("DRQMVAST# "))
        EXPECT_EQ(is_ok_quality(letter), std::string("DRQM").find(letter) != std::string::npos) << letter;
}

TEST(DataHeader, RateAndCorrectedTime) {
    struct {
        int factor, multiplier;
        double rate;
    } const cases[] = {{20, 1, 20},     {-10, 1, 0.1}, {1, -10, 0.1}, {-10, -10, 0.01},
                       {65526, 1, 0.1}, {0, 5, 0},     {5, 0, 0},     {-32768, -32768, 1.0 / (1 << 30)}};
    for (const auto& c : cases) {
        blk_dh_t header{};
        header.rate_f = c.factor;
        header.rate_m = c.multiplier;
        fix_dh(&header, 0, 0);
        EXPECT_DOUBLE_EQ(header.samp_rate, c.rate) << c.factor;
        EXPECT_EQ(c.rate == 0, header.rate_f == 0 && header.rate_m == 0);
    }
    const read_handle_t handle{nullptr, 0, 0, new_rec_list(), new_order_list(), {}, {}, nullptr, {}, 0};
    for (const int activity : {0, 2}) {
        blk_dh_t header{};
        header.year = 2000;
        header.doy = 1;
        header.sec_frac = 9990;
        header.time_cor = 20;
        header.activity = activity;
        fixup_dh(&header, &handle);
        EXPECT_STREQ(header.start_time, "2000,001,00:00:00.9990");
        EXPECT_EQ(header.sec_frac, activity == 0 ? 10010 : 9990);
        EXPECT_DOUBLE_EQ(header.epoch, human_to_epoch(2000, 1, 0, 0, activity == 0 ? 1.001 : 0.999));
        EXPECT_EQ(header.length, 4096);
    }
    blk_dh_t wraps{};
    wraps.sec_frac = INT_MAX;
    wraps.time_cor = 1;
    fixup_dh(&wraps, &handle);
    EXPECT_EQ(wraps.sec_frac, INT_MIN);
}

// The chain of data blockettes is followed as its offsets say, and never in circles or out of what is in
// hand.
TEST(DataHeader, ChainOfDataBlockettes) {
    // A big-endian record of 512 bytes; `words` are put at their offsets, two bytes each.
    const auto walk = [](std::initializer_list<std::pair<std::size_t, int>> words, std::size_t size = 512) {
        DataRecord record;
        record.size = 512;
        std::string bytes = VolumeBuilder().data(record).bytes();
        for (const auto& [at, value] : words) {
            bytes[at] = static_cast<char>(value >> 8);
            bytes[at + 1] = static_cast<char>(value & 0xff);
        }
        bytes.resize(size);
        Steim state{};
        state.record = bytes;
        state.record_size = 256;
        const int result = parse_data_record_header(&state);
        return std::make_tuple(result, state.s1000.dataformat, state.s1000.sparc_order, state.record_size);
    };
    const auto none = std::make_tuple(0, 0, 0, 256);
    const auto found = std::make_tuple(0, 11, 1, 512);
    const auto bad = std::make_tuple(-1, 0, 0, 256);
    constexpr int steim2_big_endian = 11 << 8 | 1;
    struct {
        std::size_t at;
        bool reached;
    } const first_offsets[] = {{40, false}, {48, true}, {60, true}, {128, true}, {129, false}, {200, false}};
    for (const auto& [at, reached] : first_offsets)
        EXPECT_EQ(
            walk({{46, static_cast<int>(at)}, {at, 1000}, {at + 4, steim2_big_endian}, {at + 6, 9 << 8}}),
            reached ? found : none)
            << at;
    EXPECT_EQ(walk({{46, 48}, {48, 100}, {50, 128}, {128, 1000}, {132, steim2_big_endian}, {134, 9 << 8}}),
              found);
    EXPECT_EQ(walk({{46, 48}, {48, 100}, {50, 48}}), none); // to itself
    EXPECT_EQ(walk({{46, 60}, {60, 100}, {62, 48}, {48, 1000}, {52, steim2_big_endian}, {54, 9 << 8}}), none);
    EXPECT_EQ(walk({{46, 48},
                    {48, 1000},
                    {50, 60},
                    {52, steim2_big_endian},
                    {54, 9 << 8},
                    {60, 1000},
                    {66, 10 << 8}}),
              found); // the first one counts
    for (const int exponent : {6, 7, 30, 31})
        EXPECT_EQ(walk({{46, 48}, {48, 1000}, {52, steim2_big_endian}, {54, exponent << 8}}),
                  exponent < 7 || exponent > 30 ? bad : std::make_tuple(0, 11, 1, 1 << exponent));
    for (const int year : {1970, 2030}) // the bounds of the byte order that is recognized
        EXPECT_EQ(
            walk({{20, host_is_little_endian ? __builtin_bswap16(static_cast<std::uint16_t>(year)) : year},
                  {46, host_is_little_endian ? 48 << 8 : 48},
                  {48, host_is_little_endian ? 1000 % 256 << 8 | 1000 / 256 : 1000},
                  {52, steim2_big_endian},
                  {54, 9 << 8}}),
            found);
    EXPECT_EQ(walk({}, 47), bad);
}

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
    blk_052_t channel{};
    copy_text(channel.chan_id, "BHZ");
    copy_text(channel.loc_id, "00");
    fix_channel(&channel);
    EXPECT_STREQ(channel.channel, "BHZ00");
    EXPECT_EQ(Geoscope_channels.size(), 1U);
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

TEST(MessageLog, NotesWaitForTheNextComplaint) {
    name_the_log();
    testing::internal::CaptureStderr();
    log_note("first %d\n", 1);
    log_note("second");
    errno = ENOENT;
    log_complain(1, "complaint\nof two lines\n");
    EXPECT_EQ(
        testing::internal::GetCapturedStderr(),
        "quarry: first 1\nquarry: second\nquarry: complaint\nof two lines: No such file or directory\n");
    testing::internal::CaptureStderr();
    for (int i = 0; i < log_register_limit - 1; ++i)
        log_note("%s", std::string(3000, 'x').c_str());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    testing::internal::CaptureStderr();
    log_note("the hundredth");
    EXPECT_EQ(testing::internal::GetCapturedStderr().size(),
              99 * 3009 + sizeof "quarry: the hundredth\n" - 1);
    testing::internal::CaptureStderr();
    sdblknam(98);
    log_flush(1);
    log_flush(1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "quarry: sdblknam: Unknown blockette type 98\n");
    EXPECT_EXIT(log_die(0, "the end"), testing::ExitedWithCode(1), "^quarry: the end\n$");
}

TEST(Memory, ExhaustionIsFatal) {
    name_the_log();
    const std::string rest = ": Cannot allocate memory\n$";
    EXPECT_EXIT(
        {
            allocations_left = 0;
            new_010();
        },
        testing::ExitedWithCode(1),
        "^quarry: Out of memory in new_010 at line [0-9]+ of 'blockette'\n\tCan't malloc 1 bytes for "
        "new_blk" +
            rest);
    for (const auto& [left, what] :
         {std::pair{1, "12 bytes for blk->stn_id"}, {2, "2 bytes for blk->seq_num"}})
        EXPECT_EXIT(
            {
                allocations_left = left;
                parse_blk("0110032002AAAAA000001BBBBB000002", 11);
            },
            testing::ExitedWithCode(1),
            std::string(
                "^quarry: Out of memory in parse_011 at line [0-9]+ of 'blockette'\n\tCan't malloc ") +
                what + rest);
}

TEST(Release, UnknownType) {
    name_the_log();
    testing::internal::CaptureStderr();
    int untouched = 7;
    free_blk(&untouched, 99);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "quarry: Unknown blockette:    99\n");
}

} // namespace
} // namespace quarry
