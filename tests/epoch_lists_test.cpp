// SPDX-License-Identifier: Apache-2.0
// What the control headers declare of the data, by station, channel and time.
#include "support.h"

#include "listing/epoch_lists.h"
#include "platform/text.h"

#include <array>
#include <climits>
#include <cmath>

namespace quarry {
namespace {

// A dictionary keeps what the volume says, not what it only declares.
TEST(EpochLists, FormatsWithTheirKeys) {
    List<blk_030_t> list;
    blk_030_t format{30, 50, "Name", 12, 50, 99, std::vector(99, std::vector<char>(decode_key_capacity))};
    copy_text(format.decode_key[0], "F1 P4");
    copy_text(format.decode_key[2], "W4");
    update_fmt_list(&list, format);
    const blk_030_t& entry = *list.get(12);
    EXPECT_STREQ(entry.name, "Name");
    EXPECT_EQ((std::array{entry.type, entry.length, entry.format_id, entry.data_type, entry.num_keys}),
              (std::array{30, 50, 12, 50, 99}));
    EXPECT_EQ(entry.decode_key,
              (std::vector<std::vector<char>>{{'F', '1', ' ', 'P', '4', 0}, {0}, {'W', '4', 0}}));
}

// The lengths that a look-up finds, a line a channel: at each time, from 50 to 500, and their formats.
TEST(EpochLists, RecordLengths) {
    using Codes = std::array<const char*, 3>; // of station, channel and location
    SortedSet<rec_len_t> list = new_rec_list();
    const auto set = [](const Codes& codes, auto* station, auto* channel, auto* location) {
        copy_text(*station, codes[0]);
        copy_text(*channel, codes[1]);
        copy_text(*location, codes[2]);
    };
    const auto add = [&](const Codes& codes, double start, double end, int length) {
        rec_len_t epoch{};
        set(codes, &epoch.stn, &epoch.chan_id, &epoch.loc_id);
        copy_text(epoch.format, "format " + std::to_string(length));
        epoch.start = start;
        epoch.end = end;
        epoch.len = length;
        list.add(epoch);
    };
    std::string out;
    const auto look_up = [&](const Codes& codes) {
        out += std::string(codes[0]) + "." + codes[1] + "." + codes[2] + ":";
        for (const double time :
             {50.0, 99.5, 100.0, 120.0, 150.0, 200.0, 220.0, 250.0, 310.0, 360.0, 400.0, 450.0}) {
            blk_dh_t header{};
            set(codes, &header.stn_id, &header.chan_id, &header.loc_id);
            copy_text(header.format, "format 0");
            header.epoch = time;
            const int found = lookup_rec_list(list, &header);
            EXPECT_EQ(found, header.length != 0 ? 1 : 0);
            EXPECT_EQ(header.format, "format " + std::to_string(header.length));
            out += " " + std::to_string(header.length);
        }
        out += "\n";
    };
    const Codes vertical{"STA", "BHZ", ""}, damaged{"STA", "BHZ", "02"};
    add(vertical, 100, 200, 1);
    add({"STA", "BHZ", "00"}, 100, 200, 2);
    add(vertical, 300, 400, 3);
    add({"STA", "BHN", ""}, 100, 200, 11);
    add({"STB", "BHZ", ""}, 100, 200, 12);
    for (const char* channel : {"BHZ", "BHN", "BHE"})
        for (const char* location : {"", "00", "01"})
            look_up({"STA", channel, location});
    look_up({"STB", "BHZ", ""});
    look_up({"STC", "BHZ", ""});
    const std::tuple<double, double, int> later[] = {
        {150, 500, 4}, // begins inside the first epoch: equal to it, ignored
        {100, 250, 5}, // the very same start: declared again
        {50, 350, 6},  // overlaps two others
        {100, 120, 7}, // declared again, though inside another
    };
    for (const auto& [start, end, length] : later) {
        add(vertical, start, end, length);
        look_up(vertical);
    }
    add(damaged, 100, std::nan(""), 8); // no time lies before such an end, none after such a start
    add(damaged, std::nan(""), 400, 9);
    add(damaged, 200, 300, 10);
    look_up(damaged);
    EXPECT_EQ(list.size(), 8U);
    list.clear();
    look_up(vertical);
    expect_recorded("EpochLists", "RecordLengths", out);
}

TEST(EpochLists, WordOrders) {
    SortedSet<order_t> list = new_order_list();
    const auto add = [&](const char* station, const char* start, const char* end, int order) {
        blk_050_t b050{};
        copy_text(b050.station, station);
        copy_text(b050.start_date, start);
        copy_text(b050.end_date, end);
        b050.long_order = order;
        b050.word_order = -order;
        update_order_list(&list, b050);
    };
    add("STA", "", "1999,123,04:05", 3210);
    add("STA", "1999,123,04:05", "", 123);
    add("STB", "2000", "2001", 1032);
    add("STATIONS", "2000", "2001", 32); // longer than codes are
    std::string out;
    for (const char* station : {"STA", "STB", "STC", "STATIONS"})
        for (const char* time :
             {"1960,001", "1999,123,04:04:59.9999", "1999,123,04:05:00.0000", "2000,365", "2001,001"}) {
            blk_dh_t header{};
            copy_text(header.stn_id, station);
            copy_text(header.start_time, time);
            int long_order = 7;
            int word_order = 8;
            const int found = lookup_order_list(list, header, &long_order, &word_order);
            out += formatted("%s %s: %d, %d %d\n", station, time, found, long_order, word_order);
        }
    expect_recorded("EpochLists", "WordOrders", out);

    const order_t before{"STA", 1, 2, 0, 0}, within{"STA", 1.5, 9, 0, 0}, other{"STB", 1, 2, 0, 0};
    EXPECT_EQ(order_cmp(within, before), 0);
    EXPECT_GT(order_cmp(order_t{"STA", 2, 3, 0, 0}, before), 0);
    EXPECT_LT(order_cmp(before, within), 0);
    EXPECT_LT(order_cmp(before, other), 0);
}

TEST(SparseList, IndexesOfAnySize) {
    List<int> sparse;
    sparse.set(-1, 1);
    sparse.set(INT_MAX, 2);
    EXPECT_EQ(sparse.get(-1), nullptr);
    EXPECT_EQ(sparse.get(0), nullptr);
    EXPECT_EQ(*sparse.get(INT_MAX), 2);
}

} // namespace
} // namespace quarry
