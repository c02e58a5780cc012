// Data records: the fixed header, the data blockettes behind it, what the reader makes of them.
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

#include <climits>

namespace quarry {
namespace {

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
    read_handle_t* handle = seed_read("/dev/null");
    for (const int activity : {0, 2}) {
        blk_dh_t header{};
        header.year = 2000;
        header.doy = 1;
        header.sec_frac = 9990;
        header.time_cor = 20;
        header.activity = activity;
        fixup_dh(&header, handle);
        EXPECT_STREQ(header.start_time, "2000,001,00:00:00.9990");
        EXPECT_EQ(header.sec_frac, activity == 0 ? 10010 : 9990);
        EXPECT_DOUBLE_EQ(header.epoch, human_to_epoch(2000, 1, 0, 0, activity == 0 ? 1.001 : 0.999));
        EXPECT_EQ(header.length, 4096);
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

TEST(DataHeader, RecordLengths) {
    const std::pair<int, int> lengths[] = {{-1, 2}, {0, 2}, {1, 2}, {7, 128}, {16, 65536}, {30, 1 << 30}};
    for (const auto& [power, bytes] : lengths)
        EXPECT_EQ(record_bytes(power), bytes) << power;
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

// Records of several lengths, none of which divides the reader's buffer, through several buffers.
TEST(DataRecord, VolumesLargerThanTheBuffer) {
    std::vector<std::string> records;
    std::string bytes;
    std::uint32_t noise = 1;
    for (int i = 0; i < 150; ++i) {
        DataRecord record;
        record.size = 256 << (i % 6);
        record.encoding = 3;
        while (record.data.size() + 64 < static_cast<std::size_t>(record.size))
            record.data += static_cast<char>((noise = noise * 1664525 + 1013904223) >> 24);
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
        EXPECT_EQ(dh->data, dh->raw + 64);
        EXPECT_EQ(std::tie(dh->seq_num, dh->sub_seq_num, dh->type),
                  std::make_tuple(100 + i / 3, 1 + i % 3, 1))
            << i;
    }
    EXPECT_EQ(volume.next(), nullptr);
    testing::internal::GetCapturedStderr();
}

TEST(DataRecord, BeginningOfItsData) {
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
TEST(DataRecord, ReinitializedHandle) {
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
    reinit_handle(volume.handle());
    const blk_dh_t* dh = volume.next();
    EXPECT_EQ(dh->length, 4096);
    EXPECT_STREQ(dh->format, "");
    testing::internal::GetCapturedStderr();
}

} // namespace
} // namespace quarry
