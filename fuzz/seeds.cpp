// SPDX-License-Identifier: Apache-2.0
// Writes the inputs that the fuzzing of a target begins with: fuzz_seeds TARGET FOLDER

#include "damaged_volumes.h"
#include "decode/formats.h"
#include "sample_encoders.h"
#include "volume_builder.h"
#include "volume_parts.h"

#include <algorithm>
#include <array>
#include <bzlib.h>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <lzma.h>
#include <map>
#include <zlib.h>
#include <zstd.h>

namespace {

using namespace quarry;

using Seeds = std::vector<std::string>;

// The demonstration volume, and small volumes of its parts: the control headers one by one in records of 256
// bytes, with the volume header before them and each data record once.
Seeds volumes() {
    const std::string demonstration = demonstration_volume();
    int record_size;
    const std::vector<fuzz::VolumePart> parts = fuzz::take_apart(demonstration, &record_size);
    fuzz::VolumePart first = parts.front();
    first.bytes.replace(11, 2, "08");
    Seeds seeds{demonstration};
    for (std::size_t at = 1; at < parts.size(); ++at)
        if (fuzz::is_data(parts[at]) || at % 4 == 1) {
            std::vector<fuzz::VolumePart> few{first};
            for (std::size_t i = at; i < std::min(at + (fuzz::is_data(parts[at]) ? 1 : 8), parts.size()); ++i)
                few.push_back(parts[i]);
            for (const char option : {'\0', '\4', '\10', '\14'})
                seeds.push_back(fuzz::put_together(few, 256) + option);
        }
    return seeds;
}

// Areas of every encoding, with the two bytes and the count that the target reads first.
Seeds data_areas() {
    const std::vector<std::int32_t> walk = random_walk(300, 12, 1);
    const std::array areas{encode_steim1(walk, 192, Order::big), encode_steim2(walk, 192, Order::big),
                           encode_usnsn(walk, 192, Order::big), encode_usnsn(walk, 4096, Order::big)};
    Seeds seeds;
    for (int how = 0; how < 4 * (seed_format_count + 2); ++how)
        for (const Encoded& area : areas)
            if (how % 4 < 2)
                seeds.push_back(
                    number(static_cast<std::uint32_t>(how), 1, Order::little) + '\1' +
                    number(static_cast<std::uint32_t>(area.samples * 4096 + 7), 4, Order::little) +
                    area.bytes);
    return seeds;
}

// Rows of few stations and times, many of which overlap, and searches at and beside their ends.
std::string random_table(std::size_t rows, Random* random) {
    constexpr std::array stations{"AB", "LONGS", "LONGST"};
    constexpr std::array times{"",
                               "1960,001",
                               "1970,001",
                               "1970,001,00:00:00.5",
                               "1970,002",
                               "1970,003,12",
                               "1970,004",
                               "1970,006,00:00:1",
                               "1970,001,00:00:nan",
                               "1970,001,00:00:inf"};
    std::string table;
    for (std::size_t i = 0; i < 3 * rows; ++i) {
        table += i < rows ? "" : "?";
        table += stations[below(random, stations.size())];
        table += below(random, 4) != 0 ? ";BHZ;" : ";B;";
        table += times[below(random, times.size() - (i < rows ? 0 : 1))];
        if (i < rows)
            table += std::string(";") + times[below(random, times.size())] + ";Format " +
                     digits(static_cast<int>(i), 1);
        table += '\n';
    }
    return table;
}

Seeds tables() {
    Seeds seeds{
        "DEM1;BHZ;2005,032,00:00:00.0000;2006,001,00:00:00.0000;Steim2 Integer Compression Format\n"
        "DEM1;BHZ;2005,040;;32-Bit Integer Format\n"
        "DEM1;BHZ;1999;2010;DWWSSN Integer Format\n"
        "DEM2;LHZ;2005,032;2005,032;USNSN Integer Compression\n"
        "?DEM1;BHZ;2005,032,10:20:30.0000\n?DEM1;BHZ;2007,001\n?DEM1;BHZ;1970\n?DEM2;LHZ;2005,032\n?;;\n",
        "A;B;2000;2001;x\nA;B;2000,100;2000,200;y\nA;B;1990;2020;z\n;;;;\n"
        "?A;B;2000,150\n?A;B;1995\n?A;B;2030\n?A;C;2000\n?A;B;2000,100\n"};
    Random random(7);
    for (std::size_t round = 1; round <= 80; ++round)
        seeds.push_back(random_table(1 + round % 16, &random));
    return seeds;
}

Seeds parameter_files() {
    return {"[data_type_aliases]\n\"STEIM2\" = \"Steim2 Integer Compression Format\"\nsteim_1 = 'x'\n",
            "a.b.\"c d\" = { x = [1, 0x1F, -2.5e3, inf, true], 'y' = 1979-05-27T07:32:00.5-07:00 }\n"
            "[t.u]\nv = \"\"\"text \\\n   \\u00e9\"\"\"\nw = '''raw\n'''\n[[many]]\nn = 1\n[[many]]\nn = 2\n",
            "# é\nd = 07:32:00\ne = \"\\\"\\U0001F600\\t\"\n"};
}

std::string gzip(std::string_view content) {
    z_stream stream{};
    deflateInit2(&stream, 9, Z_DEFLATED, 16 + MAX_WBITS, 9, Z_DEFAULT_STRATEGY);
    std::string out(content.size() + 1000, '\0');
    std::string in(content);
    stream.next_in = reinterpret_cast<Bytef*>(in.data());
    stream.avail_in = static_cast<unsigned int>(in.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<unsigned int>(out.size());
    deflate(&stream, Z_FINISH);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

std::string bzip2(std::string_view content) {
    std::string out(content.size() + 1000, '\0');
    std::string in(content);
    auto size = static_cast<unsigned int>(out.size());
    BZ2_bzBuffToBuffCompress(out.data(), &size, in.data(), static_cast<unsigned int>(in.size()), 1, 0, 0);
    return out.substr(0, size);
}

std::string zstd(std::string_view content) {
    std::string out(ZSTD_compressBound(content.size()), '\0');
    return out.substr(0, ZSTD_compress(out.data(), out.size(), content.data(), content.size(), 3));
}

std::string lzma_finished(lzma_stream stream, std::string_view content) {
    std::string out(content.size() + 1000, '\0');
    stream.next_in = reinterpret_cast<const std::uint8_t*>(content.data());
    stream.avail_in = content.size();
    stream.next_out = reinterpret_cast<std::uint8_t*>(out.data());
    stream.avail_out = out.size();
    static_cast<void>(lzma_code(&stream, LZMA_FINISH) == LZMA_STREAM_END);
    out.resize(stream.total_out);
    lzma_end(&stream);
    return out;
}

std::string xz(std::string_view content) {
    lzma_stream stream = LZMA_STREAM_INIT;
    static_cast<void>(lzma_easy_encoder(&stream, 1, LZMA_CHECK_CRC32) != LZMA_OK);
    return lzma_finished(stream, content);
}

std::string lzip(std::string_view content) {
    lzma_options_lzma options{};
    lzma_lzma_preset(&options, 1);
    options.dict_size = 1 << 16;
    const std::array filters{lzma_filter{LZMA_FILTER_LZMA1, &options},
                             lzma_filter{LZMA_VLI_UNKNOWN, nullptr}};
    lzma_stream stream = LZMA_STREAM_INIT;
    static_cast<void>(lzma_raw_encoder(&stream, filters.data()) != LZMA_OK);
    const std::string data = lzma_finished(stream, content);
    constexpr std::uint32_t header_and_trailer = 6 + 20;
    const std::uint32_t checksum =
        lzma_crc32(reinterpret_cast<const std::uint8_t*>(content.data()), content.size(), 0);
    const std::string zeros(4, '\0');
    return std::string("LZIP\x01\x10") + data + number(checksum, 4, Order::little) +
           number(static_cast<std::uint32_t>(content.size()), 4, Order::little) + zeros +
           number(static_cast<std::uint32_t>(data.size()) + header_and_trailer, 4, Order::little) + zeros;
}

// Each byte as a code of its own, 9 bits wide as far as the table allows.
std::string compress(std::string_view content) {
    constexpr std::size_t before_wider_codes = 254;
    std::string out = "\x1f\x9d\x90";
    std::uint32_t bits = 0;
    int held = 0;
    for (const char byte : content.substr(0, before_wider_codes)) {
        bits |= static_cast<std::uint32_t>(static_cast<unsigned char>(byte)) << held;
        for (held += 9; held >= 8; held -= 8, bits >>= 8)
            out.push_back(static_cast<char>(bits & 0xFF));
    }
    return out + static_cast<char>(bits & 0xFF);
}

Seeds compressed_files() {
    std::string content;
    for (int i = 0; i < 60; ++i)
        content += formatted("%06dV 0100036 line %d of a text\n", i, i * i);
    Seeds seeds{content,
                "",
                "B",
                "BZx",
                "LZI",
                "\xfd"
                "7zXY",
                "\x1f",
                "\x1f\x8c",
                "\x28\xb5\x2f\x28\xb5\x2f\xfd"};
    for (const auto pack : {gzip, bzip2, zstd, xz, lzip, compress}) {
        const std::string packed = pack(content);
        seeds.insert(seeds.end(), {packed, pack(""), packed + packed, packed + "garbage",
                                   packed.substr(0, packed.size() / 2)});
    }
    return seeds;
}

} // namespace

int main(int argc, char** argv) {
    const std::map<std::string_view, std::function<Seeds()>> targets{{"reader", volumes},
                                                                     {"volume", volumes},
                                                                     {"decoders", data_areas},
                                                                     {"rows", tables},
                                                                     {"parameters", parameter_files},
                                                                     {"compressed", compressed_files}};
    if (argc != 3 || targets.count(argv[1]) == 0) {
        std::fprintf(stderr, "usage: %s TARGET FOLDER\n", argv[0]);
        return 1;
    }
    std::filesystem::create_directories(argv[2]);
    int count = 0;
    for (const std::string& seed : targets.at(argv[1])()) {
        std::ofstream file(formatted("%s/seed-%03d", argv[2], ++count), std::ios::binary);
        file << seed << std::flush;
        if (!file) {
            std::perror(argv[2]);
            return 1;
        }
    }
    return 0;
}
