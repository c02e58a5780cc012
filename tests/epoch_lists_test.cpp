// What the control headers declare of the data, by station, channel and time.
#include "support.h"

#include "listing/epoch_lists.h"
#include "platform/text.h"

#include <array>
#include <climits>
#include <cmath>

namespace quarry {
namespace {

// The code of a station, channel and location in one word: "STA.BHZ.00".
std::array<std::string, 3> codes_of(const std::string& name) {
    const std::size_t first = name.find('.');
    const std::size_t second = name.find('.', first + 1);
    return {name.substr(0, first), name.substr(first + 1, second - first - 1), name.substr(second + 1)};
}

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

TEST(EpochLists, RecordLengths) {
    SortedSet<rec_len_t> list = new_rec_list();
    const auto add = [&](const char* name, double start, double end, int length) {
        rec_len_t epoch{};
        copy_text(epoch.stn, codes_of(name)[0]);
        copy_text(epoch.chan_id, codes_of(name)[1]);
        copy_text(epoch.loc_id, codes_of(name)[2]);
        copy_text(epoch.format, "format " + std::to_string(length));
        epoch.start = start;
        epoch.end = end;
        epoch.len = length;
        list.add(epoch);
    };
    const auto length_at = [&](const char* name, double time) {
        blk_dh_t header{};
        copy_text(header.stn_id, codes_of(name)[0]);
        copy_text(header.chan_id, codes_of(name)[1]);
        copy_text(header.loc_id, codes_of(name)[2]);
        copy_text(header.format, "format 0");
        header.epoch = time;
        const int found = lookup_rec_list(list, &header);
        EXPECT_EQ(found, header.length != 0 ? 1 : 0);
        EXPECT_EQ(header.format, "format " + std::to_string(header.length));
        return header.length;
    };
    add("STA.BHZ.", 100, 200, 1);
    add("STA.BHZ.00", 100, 200, 2);
    add("STA.BHZ.", 300, 400, 3);
    add("STA.BHN.", 100, 200, 11);
    add("STB.BHZ.", 100, 200, 12);
    const struct {
        const char* name;
        double time;
        int length;
    } first[] = {{"STA.BHZ.", 100, 1},   {"STA.BHZ.", 99.5, 0},  {"STA.BHZ.", 200, 0}, // the end is exclusive
                 {"STA.BHZ.", 399.5, 3}, {"STA.BHZ.00", 150, 2}, {"STA.BHZ.01", 150, 0},
                 {"STA.BHN.", 150, 11},  {"STA.BHE.", 150, 0},   {"STB.BHZ.", 150, 12},
                 {"STC.BHZ.", 150, 0}};
    for (const auto& c : first)
        EXPECT_EQ(length_at(c.name, c.time), c.length) << c.name << " " << c.time;
    add("STA.BHZ.", 150, 500, 4); // begins inside the first epoch: equal to it, ignored
    EXPECT_EQ(length_at("STA.BHZ.", 450), 0);
    add("STA.BHZ.", 100, 250, 5); // the very same start: declared again
    EXPECT_EQ(length_at("STA.BHZ.", 220), 5);
    add("STA.BHZ.", 50, 350, 6); // overlaps two others
    EXPECT_EQ(length_at("STA.BHZ.", 120), 6);
    EXPECT_EQ(length_at("STA.BHZ.", 310), 6);
    EXPECT_EQ(length_at("STA.BHZ.", 360), 3);
    add("STA.BHZ.", 100, 120, 7); // declared again, though inside another
    EXPECT_EQ(length_at("STA.BHZ.", 360), 3);
    add("STA.BHZ.02", 100, std::nan(""),
        8); // damaged: no time lies before such an end, none after such a start
    add("STA.BHZ.02", std::nan(""), 400, 9);
    add("STA.BHZ.02", 200, 300, 10);
    EXPECT_EQ(length_at("STA.BHZ.02", 250), 10);
    EXPECT_EQ(length_at("STA.BHZ.02", 150), 0);
    EXPECT_EQ(list.size(), 8U);
    list.clear();
    EXPECT_EQ(length_at("STA.BHN.", 150), 0);
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
    const auto orders_at = [&](const char* station, const char* time) {
        blk_dh_t header{};
        copy_text(header.stn_id, station);
        copy_text(header.start_time, time);
        int long_order = 7;
        int word_order = 8;
        const int found = lookup_order_list(list, header, &long_order, &word_order);
        return std::make_tuple(found, long_order, word_order);
    };
    const auto none = std::make_tuple(0, 7, 8);
    add("STA", "", "1999,123,04:05", 3210);
    add("STA", "1999,123,04:05", "", 123);
    add("STB", "2000", "2001", 1032);
    EXPECT_EQ(orders_at("STA", "1960,001"), std::make_tuple(1, 3210, -3210));
    EXPECT_EQ(orders_at("STA", "1999,123,04:04:59.9999"), std::make_tuple(1, 3210, -3210));
    EXPECT_EQ(orders_at("STA", "1999,123,04:05:00.0000"), std::make_tuple(1, 123, -123));
    EXPECT_EQ(orders_at("STB", "2000,365"), std::make_tuple(1, 1032, -1032));
    EXPECT_EQ(orders_at("STB", "1999,364"), none);
    EXPECT_EQ(orders_at("STC", "2000,365"), none);
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
