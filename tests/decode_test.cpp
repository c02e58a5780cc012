// The decoders: values worked out by hand, series through independent encoders and back, damaged records. The
// host is little-endian.
#include "support.h"

#include "blockette/data_header.h"
#include "decode/formats.h"
#include "platform/text.h"
#include "quarry/decoders.h"
#include "sample_encoders.h"
#include "state.h"

#include <array>
#include <cstdlib>
#include <memory>

namespace quarry {
namespace {

using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

using Floats = std::vector<float>;
using Series = std::vector<std::int32_t>;

struct Decoded {
    std::int32_t status = 0;
    Floats samples; // all that was written
    std::ptrdiff_t advanced = 0;
    std::string bytes; // the record afterwards
    std::string errors;
    std::string csstype;
};

void capture_errors() {
    name_the_log();
    CaptureStderr();
}

// Decodes from a buffer of exactly these bytes; tells what was written from a mark.
Decoded decode(Decoder decoder, const std::string& bytes, std::int32_t nsamples, Order order) {
    constexpr float mark = -123.25F;
    std::vector<char> data(bytes.begin(), bytes.end());
    Floats room(static_cast<std::size_t>(3 * std::max(nsamples, 0) + 8), mark);
    seismic_data_ptr = room.data();
    Decoded decoded;
    capture_errors();
    decoded.status =
        decoder(data.data(), nsamples, static_cast<std::int32_t>(data.size()), order == Order::big ? -1 : 0);
    decoded.errors = GetCapturedStderr();
    decoded.advanced = seismic_data_ptr - room.data();
    while (!room.empty() && room.back() == mark)
        room.pop_back();
    decoded.samples = std::move(room);
    decoded.bytes.assign(data.begin(), data.end());
    return decoded;
}

std::string frame(std::initializer_list<std::uint32_t> words, Order order = Order::big) {
    std::string bytes = bytes_of(words, order);
    bytes.resize(64);
    return bytes;
}

constexpr std::uint32_t code(std::uint32_t value, int word) {
    return value << (30 - 2 * word);
}

TEST(Steim, ByHand) {
    const std::string four = frame({code(1, 3), 100, 101, 0x05FE'0003});
    const std::string late = frame({code(1, 4), 9, 0, 0, 0x0102'0304});
    const std::string next = frame({code(1, 3), 0x0505'0505, 0, 0x0100'0001});
    const std::string half_words = frame({code(2, 3) | code(3, 4), ~1U, 0, 0x7FFF'8000, 0x8000'0000});
    const std::string coded_constant = frame({code(1, 1) | code(1, 3), 0x0102'0304, 0, 0x0900'0000});
    const std::string large = frame({code(1, 3), 16777217, 0, 0x0001'0001});
    const std::string narrow = frame({code(3, 3), 9, 0, 0xB1F7'8001});
    const std::string empty_words =
        frame({code(2, 3) | code(3, 4) | code(3, 5), 5, 0, 0x3FFF'FFFF, 0xFFFF'FFFF, 0x0104'2108});
    struct Case {
        const char* what;
        Decoder decoder;
        std::string bytes;
        Floats samples;
        std::int32_t status = 0;
    };
    const std::vector<Case> cases{
        {"bytes", decode_steim, four, {100, 98, 98, 101}},
        {"bytes in level 2", decode_steim2, four, {100, 98, 98, 101}},
        {"more than wanted", decode_steim, four, {100, 98, 98}},
        {"none wanted", decode_steim2, four, {}},
        {"partial frame ignored", decode_steim, four + four.substr(0, 36), {100, 98, 98, 101, 0}, -1},
        {"no whole frame", decode_steim2, four.substr(0, 63), {0, 0}, -1},
        {"half-words, then a word", decode_steim, half_words, {-2, -32770, -2147516418.0F}},
        {"anchor at word 3 only", decode_steim, late, {1, 3, 6, 10}},
        {"anchor in frame 0 only", decode_steim2, four + next, {100, 98, 98, 101, 102, 102, 102, 103}},
        {"constant with a code", decode_steim2, coded_constant, {4, 7, 9, 10, 0x0102'0304}},
        {"more digits than a float", decode_steim, large, {16777216, 16777218, 16777218, 16777220}},
        {"seven of 4 bits", decode_steim2, narrow, {9, 8, 15, 7, 7, 7, 8}},
        {"words without differences", decode_steim2, empty_words, {1, 2, 4, 8, 16}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const auto nsamples = static_cast<std::int32_t>(c.samples.size());
        const Decoded decoded = decode(c.decoder, c.bytes, nsamples, Order::big);
        EXPECT_EQ(decoded.samples, c.samples);
        EXPECT_EQ(decoded.advanced, nsamples);
        EXPECT_EQ(decoded.status, c.status);
        EXPECT_EQ(decoded.errors.empty(), c.status == 0) << decoded.errors;
        EXPECT_TRUE(decode(c.decoder, c.bytes, -5, Order::big).samples.empty());
    }
}

TEST(Steim, ShortCountIsToldInTheWordsOfItsLevel) {
    const Series series = random_walk(80, 8, 1);
    Floats expected(series.begin(), series.end());
    expected.resize(100);
    const Decoded one = decode(decode_steim, encode_steim1(series, 192, Order::big).bytes, 100, Order::big);
    EXPECT_EQ(one.samples, expected);
    EXPECT_EQ(one.errors, "quarry: Steim Decompression Sample Count Error at Sample: 100\n"
                          "quarry: Expected 100, found 80 samples... lost values replaced with zeros\n");
    const Decoded two = decode(decode_steim2, encode_steim2(series, 192, Order::big).bytes, 100, Order::big);
    EXPECT_EQ(two.samples, expected);
    EXPECT_EQ(two.errors,
              "quarry: !!! WARNING !!! Steim2 Decompression Sample Count Error at Sample: 100\n"
              "quarry: Expected 100, found 80 samples... Lost values will be Padded with Zeros\n");
}

TEST(Steim, WordsAreLeftInTheHostsOrder) {
    // Bytes, half-words, a word; what has no code stays.
    const auto words = {code(1, 3) | code(2, 4) | code(3, 5), 7U, 9U, 0x0102'0304U, 0x0001'0002U, 3U, 4U};
    std::string expected = frame(words, Order::little);
    expected.replace(12, 8, frame(words).substr(12, 4) + std::string("\1\0\2\0", 4));
    expected.replace(24, 4, bytes_of({4}, Order::big));
    EXPECT_EQ(decode(decode_steim, frame(words), 7, Order::big).bytes, expected);
    expected.replace(16, 4, bytes_of({0x0001'0002}, Order::little)); // no half-words in level 2
    EXPECT_EQ(decode(decode_steim2, frame(words), 7, Order::big).bytes, expected);

    const std::string constants = bytes_of({1, 2, 3}, Order::big);
    EXPECT_EQ(decode(decode_steim2, constants, 0, Order::big).bytes,
              constants.substr(0, 4) + bytes_of({2, 3}, Order::little));
    EXPECT_EQ(decode(decode_steim2, constants.substr(0, 11), 0, Order::big).bytes, constants.substr(0, 11));
}

TEST(RoundTrip, EveryWidthAndByteOrder) {
    struct Case {
        Encoded (*encoder)(std::span<const std::int32_t>, std::size_t, Order);
        Decoder decoder;
        std::vector<int> widths;
        std::vector<std::size_t> sizes;
    };
    const std::vector<Case> cases{
        {encode_steim1, decode_steim, {2, 8, 16, 31}, {64, 448, 4032}},
        {encode_steim2, decode_steim2, {2, 4, 5, 6, 8, 10, 15, 30}, {64, 448, 4032}},
        {encode_usnsn, decode_usnsn, {2, 4, 6, 8, 10, 12, 14, 16, 20, 24, 28}, {4096}},
    };
    const auto check = [](const Case& c, int width, std::size_t size, Order order) {
        const Series series = random_walk(9000, width, static_cast<std::uint32_t>(width));
        const Encoded encoded = c.encoder(series, size, order);
        ASSERT_GT(encoded.samples, 3);
        CaptureStdout();
        const Decoded decoded = decode(c.decoder, encoded.bytes, encoded.samples, order);
        EXPECT_EQ(GetCapturedStdout() + decoded.errors, "");
        EXPECT_EQ(decoded.status, 0);
        EXPECT_TRUE(decoded.samples == Floats(series.begin(), series.begin() + encoded.samples))
            << "decoder " << &c.decoder << " width " << width << " size " << size;
    };
    for (const Case& c : cases)
        for (const int width : c.widths)
            for (const std::size_t size : c.sizes) {
                check(c, width, size, Order::big);
                check(c, width, size, Order::little);
            }
}

TEST(Usnsn, ByHand) {
    // Three differences of the first group are taken, the second group is passed over, the count byte fits.
    const std::string small("\0\0\0\x0A\0\3\0\x12\xF5\0\0\6\0", 13);
    EXPECT_EQ(decode(decode_usnsn, small, 4, Order::little).samples, (Floats{10, 11, 13, 12}));
    EXPECT_EQ(decode(decode_usnsn, small, 2, Order::little).samples, (Floats{10, 11}));
    EXPECT_EQ(decode(decode_usnsn, small, 0, Order::little).samples, (Floats{10})); // always one
    std::string many = small; // as many as 16 bits count
    many.replace(4, 2, "\xFF\xFF");
    EXPECT_EQ(decode(decode_usnsn, many, 4, Order::little).samples, (Floats{10, 11, 13, 12}));
    // What lies beyond the bytes given reads as zero; the last bytes, less than a word, are not swapped.
    const std::string cut("\x0A\0\0\0\x12\0\7\0\xF5", 9);
    CaptureStdout();
    const Decoded decoded = decode(decode_usnsn, cut, 8, Order::big);
    EXPECT_EQ(GetCapturedStdout(), "########## nct mismatch ########## ict=0 nct=6 ipt=13\n");
    EXPECT_EQ(decoded.samples, (Floats{10, 11, 13, 12, 17, 17, 17, 17}));
    EXPECT_EQ(decoded.bytes, std::string("\0\0\0\x0A\0\7\0\x12\xF5", 9));
}

TEST(Usnsn, BytesBeyondTheRecordAreNotRead) {
    const std::string bytes("\0\0\0\x0A\0\4\x33\x04\x10\x41", 10); // differences of 1 in 6 bits each
    const std::array<float, 5> expected[] = {
        {10, 10, 10, 10, 10}, {10, 11, 11, 11, 11}, {10, 11, 12, 12, 12}, {10, 11, 12, 13, 14}};
    for (const int count : {3, 4}) // 3 take some bits of their last byte only
        for (const int size : {7, 8, 9, 10}) {
            std::string record = bytes.substr(0, static_cast<std::size_t>(size)) + std::string(99, '\xFF');
            record[5] = static_cast<char>(count);
            std::array<float, 5> samples = expected[size - 7];
            seismic_data_ptr = samples.data();
            CaptureStdout();
            decode_usnsn(record.data(), 5, size, 0);
            GetCapturedStdout();
            EXPECT_EQ(samples, expected[size - 7]) << size;
            EXPECT_EQ(seismic_data_ptr - samples.data(), count + 1);
        }
}

// A record as dcmprs reads it: 40 samples, two full frames with keys 6 and 6, then a part of one.
const Series usnsn_series = random_walk(40, 8, 3);
std::string usnsn_record() {
    return encode_usnsn(usnsn_series, 4096, Order::little).bytes;
}

struct Decompressed {
    std::int32_t result = 0;
    Series values;
    std::int32_t eod = 0;
    std::int32_t ovr = 0;
    std::string output;
};

Decompressed decompress(const std::string& record, std::int32_t maxx, Series before = {}) {
    auto n = static_cast<std::int32_t>(before.size()) - 1;
    Decompressed d;
    d.values = std::move(before);
    d.values.resize(static_cast<std::size_t>(maxx), -77);
    CaptureStdout();
    d.result = dcmprs(maxx, &n, d.values.data(), &d.eod, &d.ovr, record.data());
    d.output = GetCapturedStdout();
    d.values.resize(static_cast<std::size_t>(n + 1));
    return d;
}

TEST(Usnsn, MismatchesAreToldAndTheValuesStand) {
    const std::string good = usnsn_record();
    const std::size_t kpt = good.find_last_not_of('\0', 4090);
    const std::size_t nct = kpt - 1;
    const std::size_t ian = 4095;
    const std::string first =
        "########## ia0 mismatch ########## idat=7 ia0=" + std::to_string(usnsn_series[0]) + "\n";
    const std::string bytes = "########## nct mismatch ########## ict=51 nct=50 ipt=57\n";
    const std::string count = "########## kpt mismatch ########## kpt=7 lpt=6 ipt=58\n";
    const std::string last =
        "########## ian mismatch ########## ian=" + std::to_string(usnsn_series[39] ^ 1) +
        " idat[n]=" + std::to_string(usnsn_series[39]) + "\n";
    struct Case {
        const char* what;
        std::vector<std::size_t> damaged;
        Series before;
        std::int32_t result;
        std::string output;
    };
    const std::vector<Case> cases{
        {"sound", {}, {}, 1, ""},
        {"continued", {}, {7, usnsn_series[0]}, 1, ""},
        {"first", {}, {7}, 0, first},
        {"bytes", {nct}, {}, -4, bytes},
        {"bytes after first", {nct}, {7}, -4, first + bytes},
        {"count", {kpt}, {}, -5, count},
        {"last", {ian}, {}, -6, last},
        {"bytes and last", {nct, ian}, {}, -4, bytes + last},
        {"count and last", {kpt, ian}, {}, -5, count + last},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        std::string record = good;
        for (const std::size_t place : c.damaged)
            record[place] = static_cast<char>(record[place] ^ 1);
        const Decompressed d = decompress(record, 60, c.before);
        EXPECT_EQ(d.result, c.result);
        EXPECT_EQ(std::tie(d.eod, ifr, ldcmprs), std::make_tuple(1, 3, c.result));
        EXPECT_EQ(d.output, c.output);
        EXPECT_EQ(dcmpbr(), 1);
        EXPECT_EQ(decompress(record, 60, c.before).output, "");
        EXPECT_EQ(dcmpbr(), 0);
        Series expected = c.before.empty() ? Series{usnsn_series[0]} : c.before;
        expected.insert(expected.end(), usnsn_series.begin() + 1, usnsn_series.end());
        EXPECT_EQ(d.values, expected);
    }
}

// Frame by frame, as a caller does who keeps the decompressor's state himself.
TEST(Usnsn, FramesOneByOne) {
    const std::string record = usnsn_record();
    const auto unpack = [&](std::int32_t room) {
        Series values(20, usnsn_series[static_cast<std::size_t>(39 - npt)]);
        std::int32_t n = 77, fin = 77, ovr = 77, eod = 77;
        ++ifr;
        unpacknsn(room, &n, values.data() + 1, &fin, &ovr, &eod, record.data());
        values.resize(static_cast<std::size_t>(n + 2));
        const std::size_t last = static_cast<std::size_t>(39 - npt);
        EXPECT_EQ(values, Series(usnsn_series.begin() + static_cast<std::ptrdiff_t>(last) - n - 1,
                                 usnsn_series.begin() + static_cast<std::ptrdiff_t>(last) + 1));
        EXPECT_EQ(id0, values.back());
        return std::array{n, fin, ovr, eod, ipt};
    };
    ipt = 7, nct = 6, npt = 39, ifr = 0, id0 = usnsn_series[0];
    EXPECT_EQ(unpack(20), (std::array{15, 0, 0, 0, 24}));
    EXPECT_EQ(unpack(20), (std::array{15, 0, 0, 0, 41}));
    EXPECT_EQ(unpack(20), (std::array{6, 1, 0, 1, 4097}));
    ipt = 7, npt = 39, ifr = 0, id0 = usnsn_series[0];
    EXPECT_EQ(unpack(8), (std::array{7, 0, 1, 0, 16}));
}

TEST(Usnsn, ImpendingOverflowAndFullBufferStopTheRecord) {
    std::string record = usnsn_record();
    ASSERT_EQ(record[6], '\x66');
    for (const std::int32_t room : {2, 9, 17, 18, 39}) {
        const Decompressed d = decompress(record, room);
        EXPECT_EQ(d.values, Series(usnsn_series.begin(), usnsn_series.begin() + room));
        EXPECT_EQ(d.ovr, 1);
    }
    Series expected(usnsn_series.begin(), usnsn_series.begin() + 17);
    expected.resize(39); // zeros up to the last sample but one
    for (const auto& [keys, shown] : {std::pair{'\x0F', "0 15"}, {'\xF0', "15 0"}}) {
        record[6 + 17] = keys; // of the second frame
        const Decompressed d = decompress(record, 60);
        EXPECT_EQ(d.result, -1);
        EXPECT_EQ(d.output, "## impending integer overflow ## id0=" + std::to_string(usnsn_series[16]) +
                                " keys=" + shown + " ipt=25\n");
        EXPECT_EQ(d.values, expected);
    }

    record.replace(0, 4, bytes_of({0x3FFF'FFFF}, Order::big));
    EXPECT_EQ(decompress(record, 60).values[1], 0x3FFF'FFFF + usnsn_series[1] - usnsn_series[0]);
    record.replace(0, 4, bytes_of({0x4000'0000}, Order::big));
    EXPECT_EQ(decompress(record, 60).values[1], 0);
}

TEST(Usnsn, ResultsInWords) {
    CaptureStdout();
    for (const std::int32_t result : {1, 0, -1, -3, -4, -5, -6, 2})
        dcmper(result);
    EXPECT_EQ(GetCapturedStdout(),
              "IA0 mismatch in Dcmprs.\nInteger overflow in Dcmprs.\nUnknown error in Dcmprs (-3).\n"
              "NCT mismatch in Dcmprs.\nKPT mismatch in Dcmprs.\nIAN mismatch in Dcmprs.\n"
              "Unknown error in Dcmprs (2).\n");
}

TEST(Usnsn, FieldsOfAnyWidth) {
    const char bytes[] = "\xFF\x8F\x01\x80\x00\x00\x00";
    Series fields(3);
    std::int32_t position = 1;
    EXPECT_EQ(gnible(bytes, fields.data(), &position, 6, 3, 4, 1), 4); // moves past the group of four
    EXPECT_EQ(fields, (Series{-1, -8, -4}));
    EXPECT_EQ(gnible(bytes, fields.data(), &position, 32, 1, 1, 1), 8);
    EXPECT_EQ(fields[0], INT32_MIN);
    position = 1;
    EXPECT_EQ(gnible(bytes, fields.data(), &position, 4, 3, 3, 0), 2); // down to whole bytes
    EXPECT_EQ(fields, (Series{15, 15, 8}));
}

TEST(Words, ByHandInBothOrders) {
    struct Case {
        const char* what;
        Decoder decoder;
        std::size_t size;
        std::vector<std::uint32_t> words;
        Floats samples;
    };
    const std::vector<Case> cases{
        {"32 bits", decode_32bit, 4, {1, 0xFFFF'FFFE, 16777217, 0x8000'0000}, {1, -2, 16777216, -0x1p31F}},
        {"floats", decode_ieeefloat, 4, {0x3FC0'0000, 0xC000'0000, 1}, {1.5F, -2, 0x1p-149F}},
        {"16 bits", decode_dwwssn, 2, {1, 0xFFFE, 0x7FFF, 0x8000}, {1, -2, 32767, -32768}},
        {"SRO", decode_sro, 2, {0x0FFF, 0xA001, 0xF800, 0x07FF}, {-1024, 1, -64, 2047 * 1024}},
        {"ASRO", decode_asro, 2, {0x0FFF, 0xA001, 0xF801}, {-1024, 1, -2047 / 32.0F}},
        {"CDSN",
         decode_cdsn,
         2,
         {0, 0x1FFF, 0x3FFF, 0x5FFE, 0x8000, 0xC001},
         {-8191, 0, 8192, -4, -8191 * 16, -8190 * 128}},
        // Two instants of three components, which come out one behind the other.
        {"3 bits",
         decode_geo1,
         2,
         {0xBC00, 0, 0x7FFF, 0x1001, 0x8800, 1},
         {128, -1023.5F, -2048, 0, 2047 / 128.F, -2047}},
        {"4 bits",
         decode_geo3,
         2,
         {0x3C00, 0, 0xFFFF, 0x1001, 0x8801, 1},
         {128, -1023.5F, -2048, 1 / 256.F, 2047 / 32768.F, -2047}},
    };
    for (const Case& c : cases)
        for (const Order order : {Order::big, Order::little}) {
            SCOPED_TRACE(c.what);
            std::string bytes;
            std::string in_host_order;
            for (const std::uint32_t word : c.words) {
                bytes += bytes_of({word}, order).substr(order == Order::big ? 4 - c.size : 0, c.size);
                in_host_order += bytes_of({word}, Order::little).substr(0, c.size);
            }
            const bool components = c.decoder == decode_geo1 || c.decoder == decode_geo3;
            const int instants = static_cast<int>(c.samples.size()) / (components ? 3 : 1);
            const Decoded decoded = decode(c.decoder, bytes, instants, order);
            EXPECT_EQ(decoded.samples, c.samples);
            EXPECT_EQ(decoded.advanced, instants);
            EXPECT_EQ(decoded.status, 0);
            EXPECT_EQ(decoded.bytes, in_host_order);
            EXPECT_TRUE(decode(c.decoder, bytes, -1, order).samples.empty());
        }
    const std::string no_numbers = bytes_of({0x7F80'0001, 0xFFC0'1234}, Order::little);
    const Floats kept = decode(decode_ieeefloat, no_numbers, 2, Order::little).samples;
    EXPECT_EQ(std::memcmp(kept.data(), no_numbers.data(), no_numbers.size()), 0);
}

TEST(Words, GeoscopeOfThreeBytes) {
    const std::string bytes("\1\0\0\0\0\1\0\0\x80", 9);
    EXPECT_EQ(decode(decode_geo2, bytes, 1, Order::little).samples, (Floats{256, 0, -0x1p31F}));
    const Decoded swapped = decode(decode_geo2, bytes, 1, Order::big);
    EXPECT_EQ(swapped.samples, (Floats{0, 256, 32768}));
    EXPECT_EQ(swapped.bytes, bytes);
}

TEST(Words, GeoscopeByItsCode) {
    constexpr Decoder by_code[] = {decode_geo1, decode_geo2, decode_geo3};
    std::string bytes(18, '\x92');
    std::array<float, 6> expected, found;
    for (const int form : {1, 2, 3}) {
        seismic_data_ptr = expected.data();
        by_code[form - 1](bytes.data(), 2, 18, 0);
        seismic_data_ptr = found.data();
        EXPECT_EQ(decode_geoscope(bytes.data(), 2, 18, 0, form), 0);
        EXPECT_EQ(found, expected) << form;
    }
    EXPECT_EQ(decode_geoscope(bytes.data(), 2, 18, 0, 0), -1);
    EXPECT_EQ(decode_geoscope(bytes.data(), 2, 18, 0, 4), -1);
}

// Through the dispatcher, from a record whose data begin at byte 64.
Decoded decode_record(int type, const std::string& bytes, int nsamps, int beg_data = 64) {
    std::vector<char> data(bytes.begin(), bytes.end());
    std::unique_ptr<blk_dh_t, void (*)(blk_dh_t*)> dh(new_dh(), free_dh);
    copy_text(dh->stn_id, "STA");
    copy_text(dh->chan_id, "BHZ");
    copy_text(dh->format, "local name");
    dh->type = type;
    dh->length = 64 + static_cast<int>(bytes.size());
    dh->beg_data = beg_data;
    dh->nsamps = nsamps;
    dh->data = data.data();
    char* output = nullptr;
    const char* csstype = nullptr;
    Decoded decoded;
    capture_errors();
    decoded.status = decode_data(dh.get(), &output, &csstype);
    decoded.errors = GetCapturedStderr();
    decoded.csstype = csstype;
    if (decoded.csstype == "t4") {
        const auto* samples = reinterpret_cast<const float*>(output);
        decoded.advanced = seismic_data_ptr - samples;
        decoded.samples.assign(samples, samples + std::max(nsamps, 0) *
                                                      seed_format_map[static_cast<std::size_t>(type)].size /
                                                      4);
    } else {
        decoded.bytes.assign(output,
                             decoded.csstype == "as" ? static_cast<std::size_t>(nsamps) : bytes.size());
    }
    std::free(output);
    return decoded;
}

TEST(DecodeData, EveryFormatReachesItsDecoder) {
    const std::string words = bytes_of({0x0001'0003, 0x0005'0007, 0x0009'000B}, Order::little);
    const std::string floats = bytes_of({0x3F80'0000, 0xC000'0000}, Order::little);
    const Series series{40, 41};
    struct Case {
        std::vector<int> types;
        std::string bytes;
        Floats samples;
        int held; // sample instants in 36 bytes; 0 where the bytes do not say it
    };
    const std::vector<Case> cases{
        {{1, 2}, words, {65539, 327687}, 9},
        {{3, 4}, words, {3072, 1024}, 18},
        {{5}, words, {-8188, -8190}, 18},
        {{6, 7, 12}, words, {3, 1}, 18},
        {{8}, encode_steim1(series, 64, Order::little).bytes, {40, 41}, 0},
        {{9}, encode_steim2(series, 64, Order::little).bytes, {40, 41}, 0},
        {{10, 11}, floats, {1, -2}, 9},
        {{13, 15}, words, {-2045, -2043, -2047, -2037, -2041, -2039}, 6},
        {{14}, std::string(18, '\1'), Floats(6, 65792), 4},
        {{17}, encode_usnsn(series, 4096, Order::little).bytes, {40, 41}, 0},
        {{16}, "log of a day", {}, 36},
    };
    for (const Case& c : cases)
        for (const int type : c.types) {
            SCOPED_TRACE(type);
            const Decoded decoded = decode_record(type, c.bytes, 2);
            EXPECT_EQ(decoded.samples, c.samples);
            EXPECT_EQ(decoded.advanced, type == 16 ? 0 : 2);
            EXPECT_EQ(decoded.status, type == 16 ? 1 : 0);
            EXPECT_EQ(decoded.csstype, type == 16 ? "as" : "t4");
            EXPECT_EQ(decoded.errors, "");
            EXPECT_EQ(seed_format_map[static_cast<std::size_t>(type)].size,
                      type == 16 ? 1 : 2 * c.samples.size());
            if (c.held == 0)
                continue;
            EXPECT_EQ(decode_record(type, std::string(36, '0'), c.held).errors, "");
            EXPECT_EQ(decode_record(type, std::string(36, '0'), c.held + 1).errors,
                      "quarry: Record of STA:BHZ holds " + std::to_string(c.held) + " of " +
                          std::to_string(c.held + 1) + " samples\n");
        }
    EXPECT_EQ(decode_record(16, "log of a day", 6).bytes, "log of");
    EXPECT_EQ(seed_format_count, 18);
}

TEST(DecodeData, DamagedHeaders) {
    const std::string words = bytes_of({3, 5, 7, 9, 11}, Order::little);
    struct Case {
        const char* what;
        int type;
        int nsamps;
        int beg_data;
        Floats samples;
        std::string holds; // empty if nothing is reported
    };
    const std::vector<Case> cases{
        {"too many", 1, 8, 64, {3, 5, 7, 9, 11, 0, 0, 0}, "5 of 8"},
        // Components stay as far apart as the header says; only whole instants are decoded.
        {"of 6 bytes",
         15,
         4,
         64,
         {-2045, -2048, -2039, 0, -2048, -2041, -2048, 0, -2043, -2048, -2037, 0},
         "3 of 4"},
        {"of 9 bytes", 14, 3, 64, {768, 0, 0, 327680, 2304, 0, 100663296, 720896, 0}, "2 of 3"},
        {"text", 16, 21, 64, {}, "20 of 21"},
        {"begins before", 1, 2, -1, {0, 0}, "0 of 2"},
        {"begins behind", 8, 2, 85, {0, 0}, "0 of 2"},
        {"begins far before", 17, 2, -32768, {0, 0}, "0 of 2"},
        {"begins at the end", 1, 2, 84, {0, 0}, "0 of 2"},
        {"negative", 1, -3, 64, {}, ""},
        {"negative, Steim", 8, -3, 64, {}, ""},
        {"negative, USNSN", 17, -3, 64, {}, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const Decoded decoded = decode_record(c.type, words, c.nsamps, c.beg_data);
        EXPECT_EQ(decoded.samples, c.samples);
        EXPECT_EQ(decoded.status, c.holds.empty() ? 0 : -1);
        EXPECT_EQ(decoded.errors,
                  c.holds.empty() ? "" : "quarry: Record of STA:BHZ holds " + c.holds + " samples\n");
    }
}

TEST(DecodeData, UnknownFormatIsCopied) {
    for (const int type : {0, -1, 18}) {
        const Decoded decoded = decode_record(type, "whatever", 4);
        EXPECT_EQ(decoded.errors,
                  "quarry: Can't understand data type 'local name'\n\tconsider adding an alias "
                  "for this type in the parameter file quarry.pf\n");
        EXPECT_EQ(decoded.bytes, "whatever");
        EXPECT_EQ(decoded.status, -1);
        EXPECT_EQ(decoded.csstype, "**");
    }
    std::string bytes(8, '\0');
    EXPECT_EQ(decode_unknown(bytes.data(), 2, 8, 0), -1);
    EXPECT_EQ(static_cast<void*>(seismic_data_ptr), bytes.data());
}

// README lists the formats in the order of their numbers: name, and code in blockette 1000.
TEST(Identification, FormatsOfTheReadme) {
    const std::string readme = content_of(QUARRY_README);
    std::string rows;
    for (int type = 1; type < seed_format_count; ++type) {
        const SeedFormat& format = seed_format_map[static_cast<std::size_t>(type)];
        EXPECT_EQ(sd_data_type(format.seed), type);
        const std::string code = format.encoding < 0 ? "" : std::to_string(format.encoding) + " ";
        rows += std::string("| ") + format.seed + " | " + code + "|\n";
    }
    const std::size_t begin = readme.find("| --- |", readme.find("| format | code in blockette 1000 |"));
    const std::size_t first = readme.find('\n', begin) + 1;
    EXPECT_EQ(readme.substr(first, readme.find("\n\n", first) + 1 - first), rows);
}

// The last test that looks names up: the aliases are fetched once and kept.
TEST(Identification, NamesAndAliases) {
    const std::pair<int, int> types_by_code[] = {{1, 6},  {3, 1},   {4, 10}, {10, 8},
                                                 {11, 9}, {15, 17}, {16, 5}};
    for (const auto& [encoding, type] : types_by_code)
        EXPECT_EQ(sd_data_type(translate_number(encoding, seedname)), type);
    for (const int encoding : {0, 2, 5, 9, 12, 14, 17, 30})
        EXPECT_EQ(translate_number(encoding, seedname), nullptr) << encoding;
    Parameters.tables["data_type_aliases"] = {{"Steim-1", {"Steim Integer Compression Format", 1}},
                                              {"32-Bit Integer Format", {"no such format", 2}}};
    EXPECT_EQ(sd_data_type("Steim-1"), 8);
    EXPECT_EQ(sd_data_type("32-Bit Integer Format"), 0);
    Parameters.tables.clear();
    EXPECT_EQ(sd_data_type("Steim-1"), 8);
    for (const char* unknown :
         {"", "steim integer compression format", "Steim Integer Compression Format ", "Steim"})
        EXPECT_EQ(sd_data_type(unknown), 0) << unknown;
}

} // namespace
} // namespace quarry
