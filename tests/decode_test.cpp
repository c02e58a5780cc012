// SPDX-License-Identifier: Apache-2.0
// The decoders: records made by hand, whose values were worked out, series through independent encoders and
// back, damaged records. The host is little-endian.
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
    std::string bytes;    // the record afterwards
    std::string messages; // on both streams
};

// Decodes from a buffer of exactly these bytes. A mark fills the room for samples: what is written replaces
// it.
Decoded decode(Decoder decoder, const std::string& bytes, std::int32_t nsamples, Order order) {
    constexpr float mark = -123.25F;
    std::vector<char> data(bytes.begin(), bytes.end());
    Floats room(static_cast<std::size_t>(3 * std::max(nsamples, 0) + 8), mark);
    seismic_data_ptr = room.data();
    Decoded decoded;
    name_the_log();
    CaptureStderr();
    CaptureStdout();
    decoded.status =
        decoder(data.data(), nsamples, static_cast<std::int32_t>(data.size()), order == Order::big ? -1 : 0);
    decoded.messages = GetCapturedStdout() + GetCapturedStderr();
    decoded.advanced = seismic_data_ptr - room.data();
    while (!room.empty() && room.back() == mark)
        room.pop_back();
    decoded.samples = std::move(room);
    decoded.bytes.assign(data.begin(), data.end());
    return decoded;
}

std::string hexadecimal(std::string_view bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        text += formatted(i % 4 == 0 ? " %02x" : "%02x", static_cast<unsigned char>(bytes[i]));
    return text;
}

std::string shown(const Decoded& decoded) {
    std::string text = formatted("status %d, %td moved:", decoded.status, decoded.advanced);
    for (const float sample : decoded.samples)
        text += formatted(" %.9g", static_cast<double>(sample));
    return text + "\n" + decoded.messages;
}

std::string frame(std::initializer_list<std::uint32_t> words, Order order = Order::big) {
    std::string bytes = bytes_of(words, order);
    bytes.resize(64);
    return bytes;
}

constexpr std::uint32_t code(std::uint32_t value, int word) {
    return value << (30 - 2 * word);
}

struct Area {
    const char* what;
    Decoder decoder;
    std::int32_t nsamples;
    std::string bytes;
    Order order = Order::big;
};

// Samples, and the bytes as the decoder leaves them.
void expect_decoded(const char* test, const std::vector<Area>& areas) {
    std::string out;
    for (const Area& area : areas) {
        const Decoded decoded = decode(area.decoder, area.bytes, area.nsamples, area.order);
        out +=
            std::string(area.what) + (area.order == Order::big ? ": " : ", little-endian: ") + shown(decoded);
        out += "    leaves" + hexadecimal(decoded.bytes) + "\n";
        if (area.decoder != decode_usnsn) { // which always has a first sample
            EXPECT_TRUE(decode(area.decoder, area.bytes, -5, area.order).samples.empty()) << area.what;
        }
    }
    expect_recorded("Decoders", test, out);
}

TEST(Decoders, Steim) {
    const std::string four = frame({code(1, 3), 100, 101, 0x05FE'0003});
    const std::string next = frame({code(1, 3), 0x0505'0505, 0, 0x0100'0001});
    const std::string constant = frame({code(1, 1) | code(1, 3), 0x0102'0304, 0, 0x0900'0000});
    const std::string without =
        frame({code(2, 3) | code(3, 4) | code(3, 5), 5, 0, 0x3FFF'FFFF, 0xFFFF'FFFF, 0x0104'2108});
    const auto words = {code(1, 3) | code(2, 4) | code(3, 5), 7U, 9U, 0x0102'0304U, 0x0001'0002U, 3U, 4U};
    expect_decoded(
        "Steim",
        {
            {"bytes", decode_steim, 4, four},
            {"bytes in level 2", decode_steim2, 4, four},
            {"more than wanted", decode_steim, 3, four},
            {"none wanted", decode_steim2, 0, four},
            {"fewer than expected", decode_steim, 6, four},
            {"fewer than expected, level 2", decode_steim2, 6, four},
            {"partial frame ignored", decode_steim, 5, four + four.substr(0, 36)},
            {"no whole frame", decode_steim2, 2, four.substr(0, 63)},
            {"half-words, then a word", decode_steim, 3,
             frame({code(2, 3) | code(3, 4), ~1U, 0, 0x7FFF'8000, 0x8000'0000})},
            {"anchor at word 3 only", decode_steim, 4, frame({code(1, 4), 9, 0, 0, 0x0102'0304})},
            {"anchor in frame 0 only", decode_steim2, 8, four + next},
            {"constant with a code", decode_steim2, 5, constant},
            {"more digits than a float", decode_steim, 4, frame({code(1, 3), 16777217, 0, 0x0001'0001})},
            {"seven of 4 bits", decode_steim2, 7, frame({code(3, 3), 9, 0, 0xB1F7'8001})},
            {"words without differences", decode_steim2, 5, without},
            {"every kind of word", decode_steim, 7, frame(words)},
            {"every kind of word, level 2", decode_steim2, 7, frame(words)},
            {"constants alone", decode_steim2, 0, bytes_of({1, 2, 3}, Order::big)},
            {"less than the constants", decode_steim2, 0, bytes_of({1, 2, 3}, Order::big).substr(0, 11)},
        });
}

TEST(Decoders, RoundTripOfEveryWidthAndByteOrder) {
    const struct {
        Encoded (*encoder)(std::span<const std::int32_t>, std::size_t, Order);
        Decoder decoder;
        std::vector<int> widths;
        std::vector<std::size_t> sizes;
    } cases[] = {{encode_steim1, decode_steim, {2, 8, 16, 31}, {64, 448, 4032}},
                 {encode_steim2, decode_steim2, {2, 4, 5, 6, 8, 10, 15, 30}, {64, 448, 4032}},
                 {encode_usnsn, decode_usnsn, {2, 4, 6, 8, 10, 12, 14, 16, 20, 24, 28}, {4096}}};
    for (const auto& [encoder, decoder, widths, sizes] : cases)
        for (const int width : widths)
            for (const std::size_t size : sizes)
                for (const Order order : {Order::big, Order::little}) {
                    const Series series = random_walk(9000, width, static_cast<std::uint32_t>(width));
                    const Encoded encoded = encoder(series, size, order);
                    ASSERT_GT(encoded.samples, 3);
                    const Decoded decoded = decode(decoder, encoded.bytes, encoded.samples, order);
                    EXPECT_EQ(decoded.messages, "");
                    EXPECT_EQ(decoded.status, 0);
                    EXPECT_TRUE(decoded.samples == Floats(series.begin(), series.begin() + encoded.samples))
                        << "first width " << widths[0] << " of " << widths.size() << ": " << width << " in "
                        << size;
                }
}

TEST(Decoders, Usnsn) {
    // Three differences of the first group are taken, the second group is passed over, the count byte fits.
    const std::string small("\0\0\0\x0A\0\3\0\x12\xF5\0\0\6\0", 13);
    const std::string many = std::string(small).replace(4, 2, "\xFF\xFF"); // as many as 16 bits count
    // What lies beyond the bytes given reads as zero; the last bytes, less than a word, are not swapped.
    const std::string cut("\x0A\0\0\0\x12\0\7\0\xF5", 9);
    expect_decoded("Usnsn", {{"four", decode_usnsn, 4, small, Order::little},
                             {"two", decode_usnsn, 2, small, Order::little},
                             {"always one", decode_usnsn, 0, small, Order::little},
                             {"many counted", decode_usnsn, 4, many, Order::little},
                             {"cut", decode_usnsn, 8, cut}});
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

TEST(Usnsn, MismatchesAreReportedAndTheValuesStand) {
    const std::string good = usnsn_record();
    const std::size_t kpt = good.find_last_not_of('\0', 4090);
    const std::size_t nct = kpt - 1;
    const std::size_t ian = 4095;
    struct Case {
        const char* what;
        std::vector<std::size_t> damaged;
        Series before;
    };
    const Case cases[] = {
        {"sound", {}, {}},    {"continued", {}, {7, usnsn_series[0]}}, {"first", {}, {7}},
        {"bytes", {nct}, {}}, {"bytes after first", {nct}, {7}},       {"count", {kpt}, {}},
        {"last", {ian}, {}},  {"bytes and last", {nct, ian}, {}},      {"count and last", {kpt, ian}, {}}};
    std::string out;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        std::string record = good;
        for (const std::size_t place : c.damaged)
            record[place] = static_cast<char>(record[place] ^ 1);
        const Decompressed d = decompress(record, 60, c.before);
        out += formatted("%s: %d, frame %d, end %d, kept %d\n", c.what, d.result, ifr, d.eod, ldcmprs) +
               d.output;
        EXPECT_EQ(dcmpbr(), 1);
        EXPECT_EQ(decompress(record, 60, c.before).output, "");
        EXPECT_EQ(dcmpbr(), 0);
        Series expected = c.before.empty() ? Series{usnsn_series[0]} : c.before;
        expected.insert(expected.end(), usnsn_series.begin() + 1, usnsn_series.end());
        EXPECT_EQ(d.values, expected);
    }
    CaptureStdout();
    for (const std::int32_t result : {1, 0, -1, -3, -4, -5, -6, 2})
        dcmper(result);
    expect_recorded("Decoders", "UsnsnMismatches", out + GetCapturedStdout());
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

template <int code>
std::int32_t decode_form(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap) {
    return decode_geoscope(data, nsamples, nbytes, byteswap, code);
}

TEST(Decoders, Words) {
    struct Case {
        const char* what;
        Decoder decoder;
        std::size_t size;
        std::vector<std::uint32_t> words;
    };
    const Case cases[] = {
        {"32 bits", decode_32bit, 4, {1, 0xFFFF'FFFE, 16777217, 0x8000'0000}},
        {"floats", decode_ieeefloat, 4, {0x3FC0'0000, 0xC000'0000, 1, 0xFFC0'1234}},
        {"16 bits", decode_dwwssn, 2, {1, 0xFFFE, 0x7FFF, 0x8000}},
        {"SRO", decode_sro, 2, {0x0FFF, 0xA001, 0xF800, 0x07FF}},
        {"ASRO", decode_asro, 2, {0x0FFF, 0xA001, 0xF801}},
        {"CDSN", decode_cdsn, 2, {0, 0x1FFF, 0x3FFF, 0x5FFE, 0x8000, 0xC001}},
        // Two instants of three components, which come out one behind the other.
        {"Geoscope, 3 bits", decode_form<1>, 2, {0xBC00, 0, 0x7FFF, 0x1001, 0x8800, 1}},
        {"Geoscope, 4 bits", decode_form<3>, 2, {0x3C00, 0, 0xFFFF, 0x1001, 0x8801, 1}},
    };
    std::vector<Area> areas;
    for (const Case& c : cases)
        for (const Order order : {Order::big, Order::little}) {
            const bool components = c.decoder == decode_form<1> || c.decoder == decode_form<3>;
            std::string bytes;
            for (const std::uint32_t word : c.words)
                bytes += bytes_of({word}, order).substr(order == Order::big ? 4 - c.size : 0, c.size);
            areas.push_back(
                {c.what, c.decoder, static_cast<int>(c.words.size()) / (components ? 3 : 1), bytes, order});
        }
    const std::string three_bytes("\1\0\0\0\0\1\0\0\x80", 9);
    areas.push_back({"Geoscope, 3 bytes", decode_form<2>, 1, three_bytes, Order::big});
    areas.push_back({"Geoscope, 3 bytes", decode_form<2>, 1, three_bytes, Order::little});
    areas.push_back({"no Geoscope form", decode_form<0>, 1, three_bytes, Order::big});
    areas.push_back({"no Geoscope form either", decode_form<4>, 1, three_bytes, Order::big});
    expect_decoded("Words", areas);
    const std::string no_numbers = bytes_of({0x7F80'0001, 0xFFC0'1234}, Order::little);
    const Floats kept = decode(decode_ieeefloat, no_numbers, 2, Order::little).samples;
    EXPECT_EQ(std::memcmp(kept.data(), no_numbers.data(), no_numbers.size()), 0);
}

// Through the dispatcher, from a record whose data begin at byte 64.
std::string decoded_record(int type, const std::string& bytes, int nsamps, int beg_data = 64) {
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
    name_the_log();
    CaptureStderr();
    decoded.status = decode_data(dh.get(), &output, &csstype);
    decoded.messages = GetCapturedStderr();
    const std::unique_ptr<char, void (*)(void*)> owner(output, std::free);
    const std::string format = formatted("type %d (%s), %d samples, ", type, csstype, nsamps);
    if (csstype != std::string("t4")) {
        const std::size_t size =
            csstype == std::string("as") ? static_cast<std::size_t>(nsamps) : bytes.size();
        return format + "'" + std::string(output, size) + "' " + shown(decoded);
    }
    const auto* samples = reinterpret_cast<const float*>(output);
    const int size = seed_format_map[static_cast<std::size_t>(type)].size;
    decoded.advanced = seismic_data_ptr - samples;
    decoded.samples.assign(samples, samples + std::max(nsamps, 0) * size / 4);
    return format + shown(decoded);
}

// Each format reaches its decoder, and those that trust their count get no more than their record holds.
TEST(DecodeData, EveryFormat) {
    const std::string words = bytes_of({0x0001'0003, 0x0005'0007, 0x0009'000B}, Order::little);
    const std::string floats = bytes_of({0x3F80'0000, 0xC000'0000, 0x4040'0000, 0x3E80'0000}, Order::little);
    const Series series{40, 41};
    const std::map<int, std::string> own_bytes = {
        {format_steim1, encode_steim1(series, 64, Order::little).bytes},
        {format_steim2, encode_steim2(series, 64, Order::little).bytes},
        {format_ieee_float, floats},
        {format_sun_float, floats},
        {format_geoscope_3byte, std::string(20, '\1')},
        {format_ascii, "log of a day"},
        {format_usnsn, encode_usnsn(series, 4096, Order::little).bytes}};
    std::string out;
    for (int type = 1; type < seed_format_count; ++type) {
        const std::string bytes = own_bytes.contains(type) ? own_bytes.at(type) : words;
        out += decoded_record(type, bytes, 2);
        const int held = seed_format_map[static_cast<std::size_t>(type)].raw_size;
        if (held > 0)
            out += decoded_record(type, bytes, static_cast<int>(bytes.size()) / held + 2);
    }
    expect_recorded("DecodeData", "EveryFormat", out);
}

TEST(DecodeData, DamagedHeaders) {
    const std::string words = bytes_of({3, 5, 7, 9, 11}, Order::little);
    std::string out;
    for (const int beg_data : {-32768, -1, 64, 84, 85}) // the record ends at 84
        out += formatted("data at %d: ", beg_data) + decoded_record(format_integer_32, words, 2, beg_data) +
               decoded_record(format_steim1, words, 2, beg_data);
    for (const int type : {format_integer_32, format_steim1, format_usnsn})
        out += decoded_record(type, words, -3);
    for (const int type : {-1, 0, seed_format_count})
        out += decoded_record(type, "whatever", 4);
    expect_recorded("DecodeData", "DamagedHeaders", out);
    std::string bytes(8, '\0');
    EXPECT_EQ(decode_unknown(bytes.data(), 2, 8, 0), -1);
    EXPECT_EQ(static_cast<void*>(seismic_data_ptr), bytes.data());
}

// quarry(1) lists the formats in the order of their numbers: name, and code in blockette 1000.
TEST(Identification, FormatsOfThePage) {
    std::string rows = "It Em name Ta Em code\n";
    for (int type = 1; type < seed_format_count; ++type) {
        const SeedFormat& format = seed_format_map[static_cast<std::size_t>(type)];
        EXPECT_EQ(sd_data_type(format.seed), type);
        const std::string code = format.encoding < 0 ? "" : " " + std::to_string(format.encoding);
        rows += std::string(".It ") + format.seed + " Ta" + code + "\n";
    }
    EXPECT_NE(content_of(QUARRY_PAGE).find(rows + ".El"), std::string::npos) << rows;
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
