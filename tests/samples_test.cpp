// SPDX-License-Identifier: Apache-2.0
// The samples that the volume reader gives: each encoding in both word orders, exact, and what a record lacks
// of them.

#include "damaged_volumes.h"
#include "sample_encoders.h"
#include "support.h"

#include "quarry/samples.h"

#include <algorithm>
#include <bit>
#include <gmock/gmock.h>
#include <limits>

namespace quarry {
namespace {

using testing::ElementsAre;

using Integers = std::vector<std::int32_t>;
using Floats = std::vector<float>;
using Doubles = std::vector<double>;

std::endian endian_of(Order order) {
    return order == Order::big ? std::endian::big : std::endian::little;
}

std::optional<Samples> decode(const std::string& bytes, int encoding, Order order, std::size_t count) {
    const std::vector<char> exactly(bytes.begin(), bytes.end()); // so that a sanitizer sees each byte beyond
    return decode_samples(exactly, encoding, endian_of(order), count);
}

// Words of the given width, whose low bits are those of the numbers.
std::string words(std::initializer_list<std::uint64_t> values, int width, Order order) {
    std::string bytes;
    for (const std::uint64_t value : values) {
        const std::string low = number(static_cast<std::uint32_t>(value), std::min(width, 4), order);
        const std::string high =
            width > 4 ? number(static_cast<std::uint32_t>(value >> 32), width - 4, order) : "";
        bytes += order == Order::big ? high + low : low + high;
    }
    return bytes;
}

TEST(Samples, WordsOfEveryEncoding) {
    struct Case {
        int encoding;
        int width;
        std::initializer_list<std::uint64_t> words;
        SampleValues values;
    };
    const Case cases[] = {
        {1, 2, {0, 0x7FFF, 0x8000, 0xFFFE}, Integers{0, 32767, -32768, -2}},
        {32, 2, {1, 0x7FFF, 0x8000, 0xFFFE}, Integers{1, 32767, -32768, -2}},
        {2, 3, {0, 0x7FFFFF, 0x800000, 0xFFFFFE}, Integers{0, 8388607, -8388608, -2}},
        {12, 3, {0, 0x010203, 0x800000, 0xFFFFFE}, Integers{0, 66051, -8388608, -2}},
        {3, 4, {0, 0x7FFFFFFF, 0x80000000, 16777217}, Integers{0, 2147483647, -2147483647 - 1, 16777217}},
        {4, 4, {0x3FC00000, 0xFF7FFFFF}, Floats{1.5F, std::numeric_limits<float>::lowest()}},
        {5, 8, {0x3FF8000000000000, 0xC00921FB54442D18}, Doubles{1.5, -3.141592653589793}},
        // Mantissa less 2048 over two to the power of the gain.
        {13, 2, {0x7800, 0x7000, 0x8FFF, 0x0000}, Floats{0, -16, 2047, -2048}},
        {14, 2, {0xF801, 0x8000, 0x0FFF}, Floats{1.0F / 32768, -8, 2047}},
        // Mantissa less 8191, times 1, 4, 16 or 128.
        {16, 2, {0x1FFF, 0x2000, 0x6000, 0xA000, 0xFFFF, 0xC000}, Integers{0, 1, 4, 16, 1048576, -1048448}},
        // Mantissa of two's complement, times two to the power of ten less the gain.
        {30, 2, {0x0001, 0xA001, 0xA800, 0xF001}, Floats{1024, 1, -2048, 1.0F / 32}},
    };
    for (const Case& c : cases)
        for (const Order order : {Order::big, Order::little}) {
            SCOPED_TRACE(testing::Message() << c.encoding << (order == Order::big ? " big" : " little"));
            const std::string bytes = words(c.words, c.width, order);
            const std::size_t count = c.words.size();
            EXPECT_EQ(decode(bytes, c.encoding, order, count), (Samples{c.values, 0}));
            const auto fewer = decode(bytes, c.encoding, order, count - 1);
            EXPECT_EQ(std::visit([](const auto& values) { return values.size(); }, fewer->values), count - 1);
            const auto cut = decode(bytes.substr(0, bytes.size() - 1), c.encoding, order, count + 7);
            EXPECT_EQ(cut->missing, 8);
        }
}

TEST(Samples, Text) {
    EXPECT_EQ(decode("Log entry\r\n\0\0", 0, Order::big, 9), (Samples{std::string("Log entry"), 0}));
    EXPECT_EQ(decode("Log", 0, Order::little, 9), (Samples{std::string("Log"), 6}));
}

TEST(Samples, CompressedSeriesComeBackExactly) {
    constexpr std::size_t size = 4096 - 64;
    for (const int bits : {3, 4, 5, 6, 8, 10, 15, 16, 24, 29}) {
        Integers series = random_walk(8000, bits, static_cast<std::uint32_t>(bits));
        for (std::int32_t& sample : series)
            sample += 1 << 29; // floats round numbers of this size
        for (const Order order : {Order::big, Order::little}) {
            SCOPED_TRACE(testing::Message() << bits << (order == Order::big ? " big" : " little"));
            for (const int encoding : {10, 11}) {
                const Encoded encoded = (encoding == 10 ? encode_steim1 : encode_steim2)(series, size, order);
                const auto count = static_cast<std::size_t>(encoded.samples);
                const auto decoded = decode(encoded.bytes, encoding, order, count);
                const Integers expected(series.begin(), series.begin() + encoded.samples);
                EXPECT_EQ(*decoded, (Samples{expected, 0, true}));
                const auto more = decode(encoded.bytes, encoding, order, count + 100);
                EXPECT_EQ(*more, (Samples{expected, 100}));
                const Samples fewer = *decode(encoded.bytes, encoding, order, count - 1);
                EXPECT_EQ(fewer.last_agrees, series[count - 2] == series[count - 1]);
            }
        }
    }
}

TEST(Samples, SteimWrapsLikeItsIntegers) {
    // Code 1 of word 3: four differences, 0, 1, 1 and 0, from the largest integer on.
    std::string frame = bytes_of({0x0100'0000, 0x7FFF'FFFF, 0x8000'0001, 0x0001'0100}, Order::big);
    frame.resize(64);
    EXPECT_EQ(*decode(frame, 10, Order::big, 4),
              (Samples{Integers{2147483647, -2147483647 - 1, -2147483647, -2147483647}, 0, true}));
}

TEST(Samples, UsnsnIsReadMostSignificantByteFirst) {
    const Integers series = random_walk(700, 12, 5);
    const Encoded encoded = encode_usnsn(series, 4096, Order::little);
    const auto count = static_cast<std::size_t>(encoded.samples);
    const Integers expected(series.begin(), series.begin() + encoded.samples);
    for (const Order order : {Order::big, Order::little})
        EXPECT_EQ(*decode(encoded.bytes, 15, order, count), (Samples{expected, 0, true}));
    std::string other = encoded.bytes;
    other[4095] = static_cast<char>(other[4095] ^ 1);
    EXPECT_EQ(decode(other, 15, Order::big, count)->last_agrees, false);
    EXPECT_EQ(decode(encoded.bytes, 15, Order::big, count + 5)->missing, 5);
    const Samples cut = *decode(encoded.bytes.substr(0, 300), 15, Order::big, count);
    const auto& values = std::get<Integers>(cut.values);
    EXPECT_EQ(values.size() + cut.missing, count);
    EXPECT_GT(values.size(), 100);
    EXPECT_TRUE(std::equal(values.begin(), values.end(), series.begin()));
    EXPECT_EQ(cut.last_agrees, std::nullopt);
    EXPECT_EQ(decode(encoded.bytes.substr(0, 4), 15, Order::big, 3), (Samples{Integers{series[0]}, 2}));
    EXPECT_EQ(decode(encoded.bytes.substr(0, 3), 15, Order::big, 3), (Samples{Integers{}, 3}));
}

TEST(Samples, AnyBytesInAnyEncoding) {
    Random random(1);
    for (int encoding = -1; encoding < 40; ++encoding)
        for (const std::size_t size : {0U, 1U, 3U, 5U, 12U, 63U, 64U, 448U, 4096U}) {
            const std::string bytes = noise(&random, size);
            for (const std::size_t count : {0U, 1U, 100U, 65535U}) {
                const auto samples = decode(bytes, encoding, Order::big, count);
                ASSERT_EQ(samples.has_value(), is_known_encoding(encoding));
                if (samples) {
                    ASSERT_EQ(std::visit([](const auto& values) { return values.size(); }, samples->values) +
                                  samples->missing,
                              count)
                        << encoding << ' ' << size;
                }
            }
        }
}

TEST(Samples, OfARecord) {
    RecordFields fields{.samples = 200, .size = 512, .encoding = 3};
    fields.data = bytes_of({5, 0xFFFFFFFF}, Order::big);
    const std::string bytes = VolumeBuilder().data(fields).bytes();
    VolumeReader reader = VolumeReader::of_memory(bytes, "memory");
    const auto samples = samples_of(std::get<DataRecord>(*reader.next()));
    const auto& values = std::get<Integers>(samples->values);
    EXPECT_EQ(values.size(), 112);
    EXPECT_EQ(samples->missing, 88);
    EXPECT_EQ(values[1], -1);
}

} // namespace
} // namespace quarry
