// SPDX-License-Identifier: Apache-2.0
// Open reading of volumes: built ones of every kind, damaged ones, and that each byte belongs to one item.
#include "damaged_volumes.h"
#include "sample_encoders.h"
#include "support.h"
#include "test_volumes.h"

#include "quarry/volume.h"

#include <algorithm>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <set>
#include <unistd.h>

namespace quarry {
namespace {

// What a volume holds, copied.
struct Seen {
    struct Blockette {
        std::string text;
        std::vector<Extent> pieces;
        bool operator==(const Blockette&) const = default;
    };
    std::vector<Blockette> blockettes;
    std::vector<Extent> data;
    std::vector<Damage> damage;
    std::string lines; // of all items
    Totals totals;
    bool adds_up = true; // each byte belongs to one item, which totals and texts agree with
};

// Takes what a reader gives of a volume.
class Seeing {
public:
    explicit Seeing(std::string_view volume) : volume_(volume), owned_(volume.size()) {}

    void operator()(const ControlBlockette& blockette) {
        seen_.blockettes.push_back(
            {std::string(blockette.text), {blockette.pieces.begin(), blockette.pieces.end()}});
        std::string joined;
        line("blockette " + digits(blockette.type, 3) + " of record " +
             std::to_string(blockette.logical_record));
        for (const Extent& piece : blockette.pieces)
            joined +=
                volume_.substr(static_cast<std::size_t>(piece.offset), static_cast<std::size_t>(own(piece)));
        seen_.adds_up = seen_.adds_up && joined == blockette.text;
    }
    void operator()(const DataRecord& record) {
        constexpr const char* sources[] = {"blockette 1000", "channel", "next record", "guess"};
        seen_.data.push_back({record.offset, static_cast<std::int64_t>(record.length)});
        line(std::string("data, length by ") + sources[static_cast<int>(record.length_source)]);
        own({record.offset, std::ssize(record.bytes)});
    }
    void operator()(const Damage& damage) {
        seen_.damage.push_back(damage);
        line(describe(damage));
        own({damage.offset, damage.bytes});
    }
    void operator()(const LogicalHeader& header) {
        line(formatted("header %d%c%c", header.sequence, header.letter, header.continuation));
        own({header.offset, 8});
    }
    void operator()(const Padding& padding) {
        line("padding");
        own({padding.offset, padding.length});
    }

    Seen seen(const Totals& totals) {
        seen_.totals = totals;
        seen_.adds_up = seen_.adds_up && std::ranges::count(owned_, 1) == std::ssize(owned_) &&
                        totals.bytes() == std::ssize(owned_);
        seen_.lines += seen_.adds_up ? "\n" : "\nbytes are lost or counted twice\n";
        return std::move(seen_);
    }

private:
    void line(const std::string& text) { seen_.lines += (seen_.lines.empty() ? "" : "\n") + text; }
    std::int64_t own(const Extent& extent) {
        seen_.lines += " " + std::to_string(extent.offset) + "+" + std::to_string(extent.length);
        for (std::int64_t at = extent.offset; at < extent.offset + extent.length; ++at)
            if (at < 0 || at >= std::ssize(owned_) || owned_[static_cast<std::size_t>(at)]++ != 0)
                seen_.adds_up = false;
        return extent.length;
    }

    std::string_view volume_;
    std::vector<char> owned_;
    Seen seen_;
};

// Reads to the end of an input that holds the volume.
Seen read(VolumeReader reader, std::string_view volume) {
    Seeing seeing(volume);
    while (const Item* item = reader.next())
        std::visit(seeing, *item);
    return seeing.seen(reader.totals());
}

Seen read(std::string_view volume) {
    return read(VolumeReader::of_memory(volume, "volume", Framing::shown), volume);
}

// The items of each volume against the recorded ones.
void expect_items(const char* test, const std::vector<std::pair<const char*, std::string>>& volumes) {
    std::string out;
    for (const auto& [name, volume] : volumes)
        for (const std::string& line : split(read(volume).lines, '\n'))
            out += std::string(name) + "| " + line + "\n";
    expect_recorded("Volume", test, out);
}

std::string record(RecordFields fields, int size, int encoding = 10) {
    fields.size = size;
    fields.encoding = encoding;
    return VolumeBuilder().data(fields, 1).bytes();
}

std::string record(int size, int encoding = 10) {
    return record(RecordFields{}, size, encoding);
}

std::string of_year(int year, bool big_endian, int size = 512, int encoding = 10) {
    return record({.year = year, .big_endian = big_endian}, size, encoding);
}

std::string noise(std::size_t size) {
    Random random(size);
    return quarry::noise(&random, size);
}

// --- data records --------------------------------------------------------------------------------------

TEST(Volume, DataRecords) {
    const std::string headless = record(512, -1);
    const std::string r512 = record(512);
    std::string encodings;
    for (const int encoding : {11, 0, 5, 2, 30, 12, 14, 99, 11})
        encodings += record(512, encoding);
    const std::string images = std::string(77, 't') + record(128) +
                               VolumeBuilder(128).control('S', blockette(33, "001Image~")).bytes() + "text";
    const std::string text = record({.data = images}, 512, 0);
    const std::string broken = "Broken" + text.substr(6, 14) + "time" + text.substr(24);
    const std::string stations =
        VolumeBuilder(1024)
            .control('V', blockette(10, " 2.410" + std::string("~~~Quarry~Made up~")))
            .control('S', blockette(50, padded("DEM1", 5) + std::string(35, '0') + "~003321010~~NXX") +
                              blockette(52, "  BHZ0000001~001002" + std::string(43, '0') +
                                                "00010910.0000000 1.000E-050000CG~2000,001~2005,032~N") +
                              blockette(52, "  BHZ0000001~001002" + std::string(43, '0') +
                                                "00010810.0000000 1.000E-050000CG~2005,032~~N"))
            .bytes();
    expect_items(
        "DataRecords",
        {
            {"as short as can be", record(128) + record(128) + record(128)},
            {"encodings, known or not", encodings},
            {"years of one or both byte orders", of_year(2035, false) + of_year(1965, false) +
                                                     of_year(2035, true) + of_year(1900, false) +
                                                     of_year(2056, false) + of_year(2056, true)},
            {"lengths", record(4096) + record(128) + record(1 << 20) + record(256) + record(8192)},
            // The beginning of the next record, or the end of the input, makes the length.
            {"no length of their own", record(4096, -1) + headless + record(128) + headless + headless},
            {"powers that are no length", record({.size_exponent = 6}, 256) +
                                              record({.size_exponent = 21}, 512) +
                                              record({.size_exponent = 200}, 512) + r512},
            {"garbage", noise(64) + r512 + noise(4096 + 128) + headless + record(256) + noise(5 << 18) +
                            r512 + noise(10) + record(128)},
            {"images of records in a text", text + std::string(412, 'g') + r512 + broken + r512},
            {"a cut record", r512.substr(0, 300) + r512 + r512},
            {"padding",
             std::string(512, ' ') + r512 + std::string(1 << 19, '\0') + r512 + r512 + std::string(100, ' ')},
            {"length by channel and time", stations + of_year(2004, true, 512, -1) +
                                               of_year(2005, true, 256, -1) + of_year(1999, true, 1024, -1) +
                                               record(2048) + record({.channel = "BHN"}, 4096, -1) + r512},
        });
}

TEST(Volume, HeaderOfADataRecord) {
    RecordFields fields{.location = "00", .fraction = 1234, .samples = 7};
    fields.rate_factor = -10;
    fields.rate_multiplier = 4;
    fields.time_correction = -15;
    fields.quality = 0x81;
    fields.big_endian = false;
    fields.size = 256;
    fields.encoding = 3;
    std::string bytes = VolumeBuilder().data(fields, 42).bytes();
    bytes[50] = 56; // a blockette 1001 behind blockette 1000
    bytes.replace(56, 8, bytes_of({1001}, Order::little).substr(0, 4) + std::string("\x5f\xfb\0\0", 4));
    VolumeReader reader = VolumeReader::of_memory(bytes, "memory");
    const auto& record = std::get<DataRecord>(*reader.next());
    EXPECT_EQ(record.sequence, 42);
    EXPECT_EQ(std::string(record.network) + std::string(record.station), "XXDEM1");
    EXPECT_EQ(std::string(record.location) + std::string(record.channel), "00BHZ");
    EXPECT_EQ(record.quality, 'D');
    EXPECT_EQ(record.header_order, std::endian::little);
    EXPECT_EQ(record.header.quality_flags, 0x81);
    EXPECT_EQ(record.rate, 0.4);
    // 2005,032,10:20:30 is 1107253230; then 0.1234 s, -0.0015 s of correction and -5 microseconds.
    EXPECT_EQ(record.start, 1107253230'121895);
    EXPECT_EQ(end_of(record), record.start + 15'000'000);
    ASSERT_EQ(record.blockettes.size(), 2);
    EXPECT_EQ(text_of(record, record.blockettes[1]), std::string_view(bytes).substr(56, 8));
    EXPECT_EQ(std::tie(record.format->encoding, record.format->power), std::make_tuple(3, 8));
    EXPECT_EQ(record.format->word_order, std::endian::little);
    EXPECT_EQ(record.timing_quality, 0x5f);
    EXPECT_EQ(record.payload.data() - record.bytes.data(), 64);
    EXPECT_EQ(record.payload.size(), 192);

    bytes[36] = 2; // the correction has been applied
    VolumeReader applied = VolumeReader::of_memory(bytes, "memory");
    DataRecord slow = std::get<DataRecord>(*applied.next());
    EXPECT_EQ(slow.start, 1107253230'123395);
    slow.rate = 1e-30;
    EXPECT_EQ(end_of(slow), slow.start + 100'000'000'000'000'000);
}

// --- control blockettes --------------------------------------------------------------------------------

std::string header_record(char letter, char continuation, int sequence, std::string content, int size = 256) {
    content = digits(sequence, 6) + letter + continuation + content;
    content.resize(static_cast<std::size_t>(size), ' ');
    return content;
}

TEST(Volume, ControlBlockettes) {
    const std::string volume_id = blockette(10, " 2.408~~~Quarry~Made up~");
    const std::string long_one =
        blockette(53, "A01001002" + exponent(1) + exponent(1) + "000020" + std::string(960, '7'));
    // Blockettes at the end of a logical record of 256 bytes, and what the next one begins with.
    const std::string filler = blockette(59, std::string(256 - 8 - 7 - 4, 'x'));
    const std::string next = blockette(51, "2005,001~2005,090~0001000000");
    const auto cut_head = [&](const std::string& tail, const std::string& begin) {
        return header_record('S', ' ', 1, filler + tail) + header_record('S', '*', 2, begin) +
               header_record('S', ' ', 3, next);
    };
    const std::string third = blockette(33, "003Third~");
    const auto damaged = [&](const char* second) {
        return header_record('V', ' ', 1, volume_id) +
               header_record('A', ' ', 2, blockette(33, "001First~") + second + third) +
               header_record('A', '*', 3, third);
    };
    expect_items("ControlBlockettes",
                 {
                     {"longer than a record",
                      VolumeBuilder(256).control('V', volume_id).control('S', long_one + long_one).bytes()},
                     {"head that goes on", cut_head(next.substr(0, 4), next.substr(4) + next)},
                     {"head that begins", cut_head("    ", next)},
                     {"head cut, then anew", cut_head("0510", next)},
                     {"head cut by the end", cut_head("0510", "").substr(0, 256)},
                     {"too long", damaged("0330120002Second~")},
                     {"beyond the record", damaged("0339900002Second~")},
                     {"too short", damaged("0330012002Second~")},
                     {"no length", damaged("033x017002Second~")},
                     {"no type", damaged("x330017002Second~")},
                     {"no known type, and too long", damaged("0990120002Second~")},
                 });
}

TEST(Volume, OffsetsInTheInput) {
    const std::vector<Extent> pieces{{264, 248}, {520, 100}};
    const ControlBlockette view{53, 348, {}, 264, pieces, 2, 2, 'S'};
    const std::pair<std::size_t, std::int64_t> offsets[] = {
        {0, 264}, {247, 511}, {248, 520}, {348, 620}, {350, 622}};
    for (const auto& [position, offset] : offsets)
        EXPECT_EQ(input_offset(view, position), offset);
}

TEST(Volume, LengthsOfLogicalRecords) {
    const std::string index = blockette(11, "001DEM1 000003");
    const auto contents = [&](int size, const std::string& volume_header) {
        return header_record('V', ' ', 1, index + volume_header, size) +
               header_record('V', '*', 2, index, size) + header_record('S', ' ', 3, index, size) +
               digits(4, 6) + std::string(static_cast<std::size_t>(size) - 6, ' ') +
               header_record('S', ' ', 5, index, size);
    };
    const std::string of_4096 = blockette(10, " 2.412~~~Quarry~Made up~");
    expect_items("LengthsOfLogicalRecords",
                 {
                     {"field volume", contents(512, blockette(5, "02.409~"))},
                     {"telemetry", contents(512, blockette(8, "02.409DEM1   BHZ~~~~XX"))},
                     {"not declared", contents(512, "")},
                     {"declared wrongly", contents(512, of_4096)},
                     {"two volumes", contents(4096, of_4096) + contents(256, "")},
                     {"after a data record", record(512) + contents(2048, "")},
                 });
}

// --- inputs --------------------------------------------------------------------------------------------

TEST(Volume, InputsOfEveryKind) {
    const std::string volume = demonstration_volume();
    const Seen plain = read(volume);
    EXPECT_EQ(std::tie(plain.totals.control_records, plain.totals.blockettes, plain.totals.data_records),
              std::make_tuple(10, 76, 7));
    EXPECT_EQ(plain.totals.damages, 0);

    const TemporaryDirectory directory;
    const std::string packed = compressed("gzip -c", volume);
    const std::string path = directory.file("packed", packed);
    const int descriptor = open(path.c_str(), O_RDONLY);
    EXPECT_EQ(read(VolumeReader::of_descriptor(descriptor, "-", Framing::shown), volume).lines, plain.lines);
    close(descriptor);

    VolumeReader cut = VolumeReader::of_memory(std::string_view(packed).substr(0, packed.size() - 9), "cut");
    Damage last;
    while (const Item* item = cut.next())
        if (const auto* damage = std::get_if<Damage>(item))
            last = *damage;
    EXPECT_EQ(last.kind, DamageKind::compressed_data);
    EXPECT_EQ(last.offset, cut.totals().bytes());
    EXPECT_GE(cut.totals().data_records, 6);

    VolumeReader missing = VolumeReader::of_path(directory.path() + "/missing");
    EXPECT_EQ(missing.error().number, ENOENT);
    EXPECT_EQ(missing.next(), nullptr);
    VolumeReader folder = VolumeReader::of_path(directory.path());
    EXPECT_EQ(folder.next(), nullptr);
    EXPECT_EQ(folder.error().number, EISDIR);
}

TEST(Volume, ReadersDoNotAffectEachOther) {
    const std::string one = demonstration_volume();
    const std::string two = record(512) + noise(200) + record(512, -1) + one;
    VolumeReader first = VolumeReader::of_memory(one, "one");
    VolumeReader second = VolumeReader::of_memory(two, "two");
    for (bool goes_on = true; goes_on;) {
        const bool of_first = first.next() != nullptr;
        goes_on = second.next() != nullptr || of_first;
    }
    EXPECT_EQ(first.totals(), read(one).totals);
    EXPECT_EQ(second.totals(), read(two).totals);
}

// --- damage --------------------------------------------------------------------------------------------

TEST(Volume, ACutCostsOnlyWhatItCuts) {
    const std::string volume = demonstration_volume();
    const Seen whole = read(volume);
    for (std::size_t size = 0; size < volume.size(); size += 53) {
        const Seen seen = read(std::string_view(volume).substr(0, size));
        ASSERT_TRUE(seen.adds_up) << size;
        const auto is_before = [size](const Extent& record) {
            return record.offset + record.length <= static_cast<std::int64_t>(size);
        };
        const auto complete = std::ranges::count_if(whole.data, is_before);
        ASSERT_TRUE(std::equal(whole.data.begin(), whole.data.begin() + complete, seen.data.begin())) << size;
        ASSERT_LE(std::ssize(seen.data), complete + 1) << size;
        ASSERT_TRUE(std::ranges::all_of(seen.damage,
                                        [](const Damage& damage) {
                                            return damage.kind == DamageKind::input_ends ||
                                                   damage.kind == DamageKind::blockette_cut ||
                                                   (damage.kind == DamageKind::no_blockette &&
                                                    damage.bytes < 7);
                                        }))
            << size << ' ' << describe(seen.damage.front());
    }
}

// The data records and the records of control blockettes of `whole` that `seen` lacks wholly or in part,
// without the one that holds the byte `touched`.
std::size_t lost_records(const Seen& whole, const Seen& seen, std::int64_t touched) {
    std::size_t lost = 0;
    for (const Extent& record : whole.data) {
        const bool is_touched = record.offset <= touched && touched < record.offset + record.length;
        lost += !is_touched && std::ranges::count(seen.data, record) == 0 ? 1U : 0U;
    }
    std::set<std::int64_t> headers; // of logical records that lost a blockette
    for (const Seen::Blockette& blockette : whole.blockettes) {
        const bool is_touched = std::ranges::any_of(blockette.pieces, [touched](const Extent& piece) {
            return piece.offset / 1024 == touched / 1024;
        });
        if (!is_touched && std::ranges::count(seen.blockettes, blockette) == 0)
            headers.insert(blockette.pieces[0].offset / 1024);
    }
    return lost + headers.size();
}

TEST(Volume, OneDamagedByteCostsNoOtherRecord) {
    const std::string volume = demonstration_volume();
    const Seen whole = read(volume);
    Random random(1);
    for (std::size_t at = 0; at < volume.size(); at += 1 + below(&random, 5)) {
        std::string damaged = volume;
        while (damaged[at] == volume[at])
            damaged[at] = damaging_byte(&random);
        const Seen seen = read(damaged);
        ASSERT_TRUE(seen.adds_up) << at;
        EXPECT_EQ(lost_records(whole, seen, static_cast<std::int64_t>(at)), 0)
            << at << ' ' << int{volume[at]} << " to " << int{damaged[at]};
    }
}

TEST(Volume, EveryByteBelongsToOneItem) {
    const char* more = std::getenv("QUARRY_MUTATIONS");
    const std::map<std::string, std::string> volumes = test_volumes();
    const std::uint64_t rounds = (more != nullptr ? std::stoull(more) : 3000) / volumes.size();
    for (const auto& [name, volume] : volumes) {
        ASSERT_TRUE(read(volume).adds_up) << name;
        for (std::uint64_t round = 0; round < rounds; ++round) {
            Random random(round);
            ASSERT_TRUE(read(damaged(volume, &random)).adds_up) << name << ' ' << round;
        }
    }
}

} // namespace
} // namespace quarry
