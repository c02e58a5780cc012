// SPDX-License-Identifier: Apache-2.0
#include "test_volumes.h"

#include "damaged_volumes.h"
#include "sample_encoders.h"
#include "volume_builder.h"

#include <map>
#include <vector>

namespace quarry {

namespace {

struct Kind {
    int encoding; // of blockette 1000; -1: none
    int size;
    int year = 2005;
    bool big_endian = true;
    const char* channel = "BHZ";
};

// Sample bytes that are sound where the encoding asks for that.
std::string data_of(int encoding, std::size_t size, Order order, std::uint32_t seed) {
    const std::vector<std::int32_t> series = random_walk(size, 12, seed);
    if (encoding == 10 && size >= 64)
        return encode_steim1(series, size, order).bytes;
    if (encoding == 11 && size >= 64)
        return encode_steim2(series, size, order).bytes;
    if (encoding == 0)
        return std::string(size, 't');
    std::string bytes;
    for (std::size_t i = 0; bytes.size() + 2 <= size; ++i)
        bytes += number(static_cast<std::uint32_t>(series[i] % 4096), 2, order);
    return bytes;
}

// Records one after the other, a second apart.
std::string records(const std::vector<Kind>& kinds) {
    std::string volume;
    int count = 0;
    for (const Kind& kind : kinds) {
        RecordFields fields;
        fields.channel = kind.channel;
        fields.year = kind.year;
        fields.second = count++ % 60;
        fields.big_endian = kind.big_endian;
        fields.encoding = kind.encoding;
        fields.size = kind.size;
        fields.samples = 20;
        fields.data =
            data_of(kind.encoding, static_cast<std::size_t>(kind.size) - 64,
                    kind.big_endian ? Order::big : Order::little, static_cast<std::uint32_t>(count));
        volume += VolumeBuilder().data(fields, count).bytes();
    }
    return volume;
}

std::string records(const Kind& kind, std::size_t count) {
    return records(std::vector<Kind>(count, kind));
}

// Blockettes 053 that go on over three logical records of 256 bytes.
std::string continued_headers() {
    std::string poles = "A01001002" + exponent(1) + exponent(1) + "000010";
    for (int i = 0; i < 10; ++i)
        poles += exponent(i) + exponent(-i) + exponent(0) + exponent(0);
    const std::string response = blockette(53, poles);
    return VolumeBuilder(256)
        .control('V', blockette(10, " 2.408~~~Quarry~Made up~"))
        .control('S', response + response + response)
        .bytes();
}

// The first of two logical records of 256 bytes ends within type and length of a blockette.
std::string cut_head() {
    const std::string filler = blockette(59, std::string(256 - 8 - 7 - 4, 'x'));
    const std::string comment = blockette(51, "2005,001~2005,090~0001000000");
    std::string volume = "000001S " + filler + comment.substr(0, 4) + "000002S*" + comment.substr(4);
    volume.resize(512, ' ');
    return volume;
}

} // namespace

std::map<std::string, std::string> test_volumes() {
    const std::string demonstration = demonstration_volume();
    std::map<std::string, std::string> volumes{
        {"demonstration", demonstration},
        {"records-of-128", records({11, 128}, 20)},
        {"many-encodings", records({{11, 512},
                                    {0, 512},
                                    {5, 512},
                                    {2, 512},
                                    {30, 512},
                                    {12, 512},
                                    {14, 512},
                                    {15, 512},
                                    {10, 512},
                                    {99, 512},
                                    {13, 512},
                                    {16, 512},
                                    {3, 512},
                                    {4, 512},
                                    {1, 512},
                                    {32, 512},
                                    {11, 512}})},
        {"little-endian-2035", records({10, 512, 2035, false}, 5)},
        {"little-endian-1965", records({11, 512, 1965, false}, 5)},
        {"both-orders", records({{10, 512, 2035, false}, {10, 512, 1965, true}, {3, 256, 2056, false}})},
        {"no-1000", records({-1, 512}, 8)},
        {"mixed-lengths",
         records({{10, 4096}, {3, 128}, {11, 65536}, {-1, 256}, {5, 256}, {1, 8192}, {-1, 4096}})},
        {"garbage-between", records({11, 512}, 3) + std::string(320, 'g') + records({11, 512}, 2) +
                                std::string(4096 + 64, 'g') + records({{-1, 512}, {-1, 512}, {11, 512}}) +
                                std::string(64, 'g') + records({3, 128}, 2)},
        {"blanks-between", std::string(512, ' ') + records({11, 512}, 2) + std::string(8192, '\0') +
                               records({3, 256}, 2) + std::string(1024, ' ') + records({11, 512}, 1)},
        {"continued", continued_headers() + records({10, 512}, 2)},
        {"cut-head", cut_head() + records({10, 512}, 2)},
        {"cut", demonstration.substr(0, demonstration.size() - 300)},
    };
    for (std::uint64_t seed = 1; seed <= 4; ++seed) {
        Random random(seed);
        volumes["damaged-" + std::to_string(seed)] = damaged(demonstration, &random);
    }
    return volumes;
}

} // namespace quarry
