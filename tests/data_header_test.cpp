// SPDX-License-Identifier: Apache-2.0
// Data records: the fixed header, the data blockettes behind it, what the reader makes of them.
#include "damaged_volumes.h"
#include "support.h"

#include "blockette/blockette.h"
#include "blockette/data_header.h"
#include "decode/data_record.h"
#include "listing/fixup_dh.h"
#include "platform/bytes.h"
#include "platform/calendar.h"
#include "platform/text.h"
#include "seedio/rseed.h"
#include "seedio/seed.h"
#include "state.h"

#include <array>
#include <climits>
#include <cstdlib>
#include <sys/resource.h>
#include <unistd.h>

namespace quarry {
namespace {

TEST(Bytes, AreReversedElementByElement) {
    std::string bytes = "abcdefghi";
    swap_two(bytes.data(), bytes.data(), 3);
    EXPECT_EQ(bytes, "badcfeghi");
    swap_four("abcdefghi", bytes.data(), 2);
    EXPECT_EQ(bytes, "dcbahgfei");
}

// The codes, and the numbers from the year on, as they are after parse_dh.
std::string parsed(const std::string& record) {
    const std::vector<char> exactly(record.begin(), record.end()); // so that a sanitizer sees a byte beyond
    blk_dh_t h{};
    parse_dh(&h, {exactly.data(), exactly.size()});
    std::string text = std::string(h.stn_id) + "." + h.loc_id + "." + h.chan_id + "." + h.network_code;
    for (const int number :
         {h.year, h.doy, h.hour, h.minutes, h.sec_int, h.sec_frac, h.nsamps, h.rate_f, h.rate_m, h.activity,
          h.io_flags, h.quality, h.blks_fol, h.time_cor, h.beg_data, h.beg_blks, h.byteswap})
        text += " " + std::to_string(number);
    return text + "\n";
}

TEST(DataHeader, Numbers) {
    std::string out;
    for (const int year : {1969, 1970, 2030, 2031}) {
        std::string text = "AB     BHZXX" + std::string(28, '\xff');
        store(text.data() + 12, static_cast<std::uint16_t>(year)); // in the host's order
        text[19] = '\x7f';                                         // the unused byte
        text[28] = '\xc0';                                         // activity
        out += std::to_string(year) + ": " + parsed(text);
    }
    for (const bool big_endian : {true, false}) {
        RecordFields record{.hour = 200, .minute = 21, .fraction = 1234, .samples = 40000};
        record.activity = 3;
        record.rate_factor = -100;
        record.rate_multiplier = 256;
        record.quality = 5;
        record.time_correction = -123456;
        record.encoding = 3;
        record.io_flags = 0x81;
        record.big_endian = big_endian;
        out += std::string(big_endian ? "big" : "little") +
               "-endian: " + parsed(VolumeBuilder().data(record).bytes().substr(8));
    }
    expect_recorded("DataHeader", "Numbers", out + "cut: " + parsed("AB     BHZXX"));
    for (const char letter : std::string("DRQMVAST# "))
        EXPECT_EQ(is_ok_quality(letter), std::string("DRQM").find(letter) != std::string::npos) << letter;
    for (const auto& [power, bytes] :
         {std::pair{-1, 2}, {0, 2}, {1, 2}, {7, 128}, {16, 65536}, {30, 1 << 30}})
        EXPECT_EQ(record_bytes(power), bytes) << power;
}

TEST(DataHeader, SampleRate) {
    std::string out;
    for (const int factor : {20, 1, -10, 0, 65526, -32768})
        for (const int multiplier : {1, 3, -10, 0, -32768}) {
            blk_dh_t header{};
            header.rate_f = factor;
            header.rate_m = multiplier;
            fix_dh(&header, 0, 0);
            out += formatted("%d, %d: %.15g of %d, %d\n", factor, multiplier, header.samp_rate, header.rate_f,
                             header.rate_m);
        }
    expect_recorded("DataHeader", "SampleRate", out);
}

TEST(Handle, ReleasesAllThatItOpened) {
    const TemporaryDirectory directory;
    const std::string plain = directory.file("demo", demonstration_volume());
    ASSERT_EQ(std::system(("gzip -k " + plain).c_str()), 0);
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = 64;
    setrlimit(RLIMIT_NOFILE, &limit);
    for (int i = 0; i < 10000; ++i) {
        read_handle_t* handle = seed_read((i % 2 == 0 ? plain : plain + ".gz").c_str()); // fatal if it fails
        void* record = nullptr;
        int type = 0;
        ASSERT_EQ(read_blk(handle, &record, &type), 1);
        free_blk(record, type);
        free_handle(handle);
    }
}

TEST(DataHeader, CorrectedTime) {
    read_handle_t* handle = seed_read("/dev/null");
    for (const int activity : {0, 2, 0xFD, 0xFF}) { // bit 1: the correction has been applied
        blk_dh_t header{};
        header.year = 2000;
        header.doy = 1;
        header.sec_frac = 9990;
        header.time_cor = 20;
        header.activity = activity;
        copy_text(header.format, "of before");
        fixup_dh(&header, handle);
        EXPECT_STREQ(header.start_time, "2000,001,00:00:00.9990");
        EXPECT_EQ(header.sec_frac, (activity & 2) == 0 ? 10010 : 9990);
        EXPECT_DOUBLE_EQ(header.epoch, human_to_epoch(2000, 1, 0, 0, (activity & 2) == 0 ? 1.001 : 0.999));
        EXPECT_EQ(header.length, 4096);
        EXPECT_STREQ(header.format, "");
    }
    blk_dh_t wraps{};
    wraps.sec_frac = INT_MAX;
    wraps.time_cor = 1;
    fixup_dh(&wraps, handle);
    EXPECT_EQ(wraps.sec_frac, INT_MIN);
    free_handle(handle);
}

// The chain of data blockettes is followed as its offsets say, and never in circles or out of what is in
// hand.
TEST(DataHeader, ChainOfDataBlockettes) {
    std::string out;
    const auto show = [&](const std::string& what, std::string_view bytes) {
        Steim state{};
        state.record = bytes;
        state.record_size = 256;
        const int result = parse_data_record_header(&state);
        out += formatted("%s: %d, format %d, order %d, %d bytes, rate %g\n", what.c_str(), result,
                         state.s1000.dataformat, state.s1000.sparc_order, state.record_size,
                         static_cast<double>(state.s100.sample_rate));
    };
    // A big-endian record of 512 bytes with data blockettes, each {its place, its type, the next one's
    // place}.
    using Chain = std::initializer_list<std::array<std::size_t, 3>>;
    const auto walk = [&](const char* what, std::size_t first, Chain chain, std::size_t exponent = 9,
                          std::size_t size = 512) {
        const std::string name = formatted("%s, at %zu, exponent %zu", what, first, exponent);
        std::string bytes = VolumeBuilder().data({.size = 512}).bytes();
        const auto put = [&](std::size_t at, std::size_t value) {
            bytes.replace(at, 2, number(static_cast<std::uint32_t>(value), 2, Order::big));
        };
        put(46, first);
        for (const auto& [at, type, next] : chain) {
            put(at, type);
            put(at + 2, next);
            put(at + 4, type == 100 ? 0x4120 : 11 << 8 | 1); // 10.0 or Steim 2, big-endian
            if (type == 1000)
                put(at + 6, exponent++ << 8);
        }
        bytes.resize(size);
        show(name, bytes);
    };
    for (const std::size_t at : {40U, 47U, 48U, 60U, 128U, 129U, 200U})
        walk("blockette 1000", at, {{at, 1000, 0}});
    walk("500, 1000", 48, {{48, 500, 128}, {128, 1000, 0}});
    walk("100, 1000", 48, {{48, 100, 60}, {60, 1000, 0}});
    walk("100", 128, {{128, 100, 0}});
    walk("100 out of hand", 129, {{129, 100, 0}});
    walk("500 to itself", 48, {{48, 500, 48}});
    walk("500 backwards", 60, {{60, 500, 48}, {48, 1000, 0}});
    walk("1000 twice", 48, {{48, 1000, 60}, {60, 1000, 0}});
    for (const std::size_t exponent : {6U, 7U, 30U, 31U})
        walk("length", 48, {{48, 1000, 0}}, exponent);
    walk("cut in the header", 48, {}, 9, 47);
    walk("header alone", 0, {}, 9, 48);
    for (const int year : {1970, 2030}) // the bounds of the years whose byte order is recognized
        for (const bool big_endian : {true, false})
            show(formatted("%d, big-endian %d", year, big_endian),
                 VolumeBuilder()
                     .data({.year = year, .size = 512, .encoding = 10, .big_endian = big_endian})
                     .bytes());
    expect_recorded("DataHeader", "Chain", out);
}

TEST(SeedInput, StateOfALogicalRecord) {
    const TemporaryDirectory directory;
    SeedInput* input = newSeedInput(directory.file("v", padded("000007T*", 600)).c_str());
    EXPECT_EQ(std::tie(input->fileno, input->seq_num, input->type_code, input->cont_code),
              std::make_tuple(0, 0, '#', '#'));
    EXPECT_EQ(advanceLogicalRecord(input), 0);
    EXPECT_EQ(std::tie(input->seq_num, input->type_code, input->cont_code, input->cur),
              std::make_tuple(7, 'T', '*', 8));
    EXPECT_EQ(std::tie(input->recsiz, input->recno, input->nreads, input->totbytes),
              std::make_tuple(512, 1, 1, 600));
    EXPECT_EQ(advanceLogicalRecord(input), 0);
    EXPECT_EQ(advanceLogicalRecord(input), -1);
    EXPECT_EQ(advanceLogicalRecord(input), -1);
    clrSeedInput(input);
    EXPECT_EQ(std::tie(input->fileno, input->recno, input->nreads, input->totbytes, input->recsiz),
              std::make_tuple(1, 0, 0, 0, 0));
    freeSeedInput(input);
}

// What the reader delivers of a volume in a file.
class Volume {
public:
    explicit Volume(const std::string& bytes) : handle_(seed_read(directory_.file("v", bytes).c_str())) {}
    ~Volume() { free_handle(handle_); }

    // The next data record, valid until the one after; null at the end.
    const blk_dh_t* next() {
        void* record = nullptr;
        int type = 0;
        while (read_blk(handle_, &record, &type) != 0) {
            record_ = {record, {type}};
            if (type == data_record_type)
                return static_cast<const blk_dh_t*>(record);
        }
        return nullptr;
    }
    read_handle_t* handle() { return handle_; }

private:
    TemporaryDirectory directory_;
    read_handle_t* handle_;
    BlockettePointer record_{nullptr, {0}};
};

// Records of several lengths, whose boundaries are not those of the reader's buffer, through several buffers.
TEST(RecordFields, VolumesLargerThanTheBuffer) {
    std::vector<std::string> records;
    std::string bytes;
    Random random(1);
    for (int i = 0; i < 150; ++i) {
        RecordFields record;
        record.size = 256 << (i % 6);
        record.encoding = 3;
        record.data = noise(&random, static_cast<std::size_t>(record.size) - 64);
        records.push_back(VolumeBuilder().data(record, 100 + i / 3).bytes());
        bytes +=
            records.back() + (i % 10 == 9 ? padded("000999A " + blockette(33, "001text~"), record.size) : "");
    }
    ASSERT_GT(bytes.size(), 2U * 131074);
    testing::internal::CaptureStderr();
    Volume volume(bytes);
    for (std::size_t i = 0; i < records.size(); ++i) {
        const blk_dh_t* dh = volume.next();
        ASSERT_NE(dh, nullptr) << i;
        const std::string image(dh->raw, static_cast<std::size_t>(dh->length));
        EXPECT_EQ(image.substr(0, 8), "000000D ");
        EXPECT_TRUE(image.substr(8) == records[i].substr(8)) << i;
        EXPECT_EQ(dh->raw[dh->length], '\0') << i; // nothing is left of a longer record before
        EXPECT_EQ(dh->data, dh->raw + 64);
        EXPECT_EQ(std::tie(dh->seq_num, dh->sub_seq_num, dh->type),
                  std::make_tuple(100 + i / 3, 1 + i % 3, 1))
            << i;
    }
    EXPECT_EQ(volume.next(), nullptr);
    testing::internal::GetCapturedStderr();
}

// The reader takes more bytes of a record than the shortest ones have.
TEST(RecordFields, NothingIsLeftOfAShortRecord) {
    const std::string text = blockette(33, "001text~");
    testing::internal::CaptureStderr();
    Volume volume(VolumeBuilder().data({.size = 128, .encoding = 3}).bytes() + "beyond!" +
                  padded("000002A " + text, 256));
    ASSERT_NE(volume.next(), nullptr);
    EXPECT_NE(std::string(volume.handle()->image.data() + 128, 8).find("beyond"), std::string::npos);
    EXPECT_EQ(volume.next(), nullptr);
    const std::vector<char>& image = volume.handle()->image;
    const std::string behind(image.begin() + 8 + std::ssize(text), image.begin() + 136);
    EXPECT_EQ(behind, std::string(behind.size(), '\0'));
    testing::internal::GetCapturedStderr();
}

TEST(RecordFields, BeginningOfItsData) {
    for (const auto& [beginning, reached] : {std::pair{-1, false}, {0, true}, {512, true}, {513, false}}) {
        std::string bytes = VolumeBuilder().data({.size = 512, .encoding = 3}).bytes();
        bytes[44] = static_cast<char>(beginning >> 8);
        bytes[45] = static_cast<char>(beginning & 0xff);
        testing::internal::CaptureStderr();
        Volume volume(bytes);
        const blk_dh_t* dh = volume.next();
        EXPECT_EQ(dh->data, reached ? dh->raw + beginning : nullptr) << beginning;
        testing::internal::GetCapturedStderr();
    }
}

// What the headers declared is forgotten when the handle is made ready anew.
TEST(RecordFields, ReinitializedHandle) {
    testing::internal::CaptureStderr();
    Volume volume(VolumeBuilder(512)
                      .control('A', blockette(30, "Any~000100000"))
                      .control('S', blockette(50, "DEM1 " + std::string(35, ' ') + "~0013210101998~~NXX"))
                      .control('S', blockette(52, "  BHZ0000007~003004" + std::string(43, ' ') + "000109" +
                                                      std::string(24, ' ') + "~~~N"))
                      .data({.size = 512})
                      .data({.size = 4096})
                      .bytes());
    EXPECT_EQ(volume.next()->length, 512);
    EXPECT_EQ(volume.handle()->order_list.size(), 1U);
    reinit_handle(volume.handle());
    EXPECT_EQ(volume.handle()->order_list.size(), 0U);
    const blk_dh_t* dh = volume.next();
    EXPECT_EQ(dh->length, 4096);
    EXPECT_STREQ(dh->format, "");
    testing::internal::GetCapturedStderr();
}

} // namespace
} // namespace quarry
