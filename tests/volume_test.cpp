// Open reading of volumes: built ones of every kind, damaged ones, and that each byte belongs to one item.

#include "damaged_volumes.h"
#include "sample_encoders.h"
#include "support.h"

#include "quarry/volume.h"

#include <algorithm>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <set>
#include <unistd.h>

namespace quarry {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Blockette {
    int type;
    std::string text;
    std::int64_t offset;
    std::int64_t logical_record;
    auto operator<=>(const Blockette&) const = default;
};

// What a volume holds, copied.
struct Seen {
    std::vector<Blockette> blockettes;
    std::vector<std::vector<Extent>> pieces; // of each blockette
    std::vector<Extent> data;
    std::vector<LengthSource> sources; // of each data record's length
    std::vector<Extent> padding;
    std::vector<LogicalHeader> headers;
    std::vector<Damage> damage;
    Totals totals;
    bool adds_up = true; // each byte belongs to one item, and the totals say so
};

// Reads to the end of an input of `size` bytes.
Seen read(VolumeReader reader, std::size_t size) {
    Seen seen;
    std::vector<char> owned(size);
    const auto own = [&](std::int64_t offset, std::int64_t length) {
        for (std::int64_t at = offset; at < offset + length; ++at)
            if (at < 0 || at >= std::ssize(owned) || owned[static_cast<std::size_t>(at)]++ != 0)
                seen.adds_up = false;
    };
    while (const Item* item = reader.next()) {
        if (const auto* blockette = std::get_if<ControlBlockette>(item)) {
            seen.blockettes.push_back({blockette->type, std::string(blockette->text), blockette->offset,
                                       blockette->logical_record});
            seen.pieces.emplace_back(blockette->pieces.begin(), blockette->pieces.end());
            for (const Extent& piece : blockette->pieces)
                own(piece.offset, piece.length);
        } else if (const auto* record = std::get_if<DataRecord>(item)) {
            seen.data.push_back({record->offset, static_cast<std::int64_t>(record->length)});
            seen.sources.push_back(record->length_source);
            own(record->offset, std::ssize(record->bytes));
        } else if (const auto* damage = std::get_if<Damage>(item)) {
            seen.damage.push_back(*damage);
            own(damage->offset, damage->bytes);
        } else if (const auto* header = std::get_if<LogicalHeader>(item)) {
            seen.headers.push_back(*header);
            own(header->offset, 8);
        } else if (const auto* padding = std::get_if<Padding>(item)) {
            seen.padding.push_back({padding->offset, padding->length});
            own(padding->offset, padding->length);
        }
    }
    seen.totals = reader.totals();
    seen.adds_up = seen.adds_up && std::ranges::count(owned, 1) == std::ssize(owned) &&
                   seen.totals.bytes() == std::ssize(owned);
    return seen;
}

Seen read(std::string_view volume) {
    return read(VolumeReader::of_memory(volume, "volume", Framing::shown), volume.size());
}

std::string record(RecordFields fields, int size, int encoding = 10, int sequence = 1) {
    fields.size = size;
    fields.encoding = encoding;
    return VolumeBuilder().data(fields, sequence).bytes();
}

std::string record(int size, int encoding = 10, int sequence = 1) {
    return record(RecordFields{}, size, encoding, sequence);
}

// --- data records --------------------------------------------------------------------------------------

struct Part {
    enum Kind { data, blank, garbage } kind;
    std::string bytes;
};

// The data records of the parts are found, their blanks are padding and their garbage is damage.
void expect_parts(const std::vector<Part>& parts) {
    std::string volume;
    std::map<Part::Kind, std::vector<Extent>> expected;
    for (const auto& [kind, bytes] : parts) {
        expected[kind].push_back({std::ssize(volume), std::ssize(bytes)});
        volume += bytes;
    }
    const Seen seen = read(volume);
    std::vector<Extent> skipped;
    for (const Damage& damage : seen.damage) {
        EXPECT_EQ(damage.kind, DamageKind::no_record) << describe(damage);
        skipped.push_back({damage.offset, damage.bytes});
    }
    EXPECT_EQ(seen.data, expected[Part::data]);
    EXPECT_EQ(seen.padding, expected[Part::blank]);
    EXPECT_EQ(skipped, expected[Part::garbage]);
    EXPECT_TRUE(seen.adds_up);
}

RecordFields of_year(int year, bool big_endian) {
    RecordFields record;
    record.year = year;
    record.big_endian = big_endian;
    return record;
}

std::string noise(std::size_t size) {
    Random random(size);
    std::string bytes;
    while (bytes.size() < size)
        bytes.push_back(static_cast<char>(below(&random, 256)));
    return bytes;
}

TEST(DataRecords, AreFoundOneAfterTheOther) {
    const std::string headless = record(512, -1);
    const std::vector<std::vector<Part>> volumes{
        {{Part::data, record(128)}, {Part::data, record(128)}, {Part::data, record(128)}},
        // Every encoding, known or not, among others.
        {{Part::data, record(512, 11)},
         {Part::data, record(512, 0)},
         {Part::data, record(512, 5)},
         {Part::data, record(512, 2)},
         {Part::data, record(512, 30)},
         {Part::data, record(512, 12)},
         {Part::data, record(512, 14)},
         {Part::data, record(512, 99)},
         {Part::data, record(512, 11)}},
        // Years that one byte order alone makes sense of, and one that both do.
        {{Part::data, record(of_year(2035, false), 512)},
         {Part::data, record(of_year(1965, false), 512)},
         {Part::data, record(of_year(2035, true), 512)},
         {Part::data, record(of_year(1900, false), 512)},
         {Part::data, record(of_year(2056, false), 512)},
         {Part::data, record(of_year(2056, true), 512)}},
        {{Part::data, record(4096)},
         {Part::data, record(128)},
         {Part::data, record(1 << 20)},
         {Part::data, record(256)},
         {Part::data, record(8192)}},
        // No length of their own: the next record tells it, or the end of the input.
        {{Part::data, record(4096, -1)},
         {Part::data, headless},
         {Part::data, record(128)},
         {Part::data, headless},
         {Part::data, headless}},
        {{Part::garbage, noise(64)},
         {Part::data, record(512)},
         {Part::garbage, noise(4096 + 128)},
         {Part::data, headless},
         {Part::data, record(256)},
         {Part::garbage, noise(5 << 18)},
         {Part::data, record(512)},
         {Part::garbage, noise(10)},
         {Part::data, record(128)}},
        {{Part::blank, std::string(512, ' ')},
         {Part::data, record(512)},
         {Part::blank, std::string(1 << 19, '\0')},
         {Part::data, record(512)},
         {Part::data, record(512)},
         {Part::blank, std::string(100, ' ')}},
    };
    for (const auto& parts : volumes) {
        SCOPED_TRACE(&parts - volumes.data());
        expect_parts(parts);
    }
}

TEST(DataRecords, TakeTheirLengthFromTheFirstThatTellsIt) {
    RecordFields other;
    other.channel = "BHN";
    const std::string volume =
        VolumeBuilder(1024)
            .control('V', blockette(10, " 2.410" + std::string("~~~Quarry~Made up~")))
            .control('S', blockette(50, padded("DEM1", 5) + std::string(35, '0') + "~003321010~~NXX") +
                              blockette(52, "  BHZ0000001~001002" + std::string(43, '0') +
                                                "00010910.0000000 1.000E-050000CG~2000,001~2005,032~N") +
                              blockette(52, "  BHZ0000001~001002" + std::string(43, '0') +
                                                "00010810.0000000 1.000E-050000CG~2005,032~~N"))
            .bytes() +
        record(of_year(2004, true), 512, -1) + record(of_year(2005, true), 256, -1) +
        record(of_year(1999, true), 1024, -1) + record(2048) + record(other, 4096, -1) + record(512);
    const Seen seen = read(volume);
    EXPECT_THAT(seen.damage, IsEmpty());
    EXPECT_THAT(seen.data, ElementsAre(Extent{2048, 512}, Extent{2560, 256}, Extent{2816, 1024},
                                       Extent{3840, 2048}, Extent{5888, 4096}, Extent{9984, 512}));
    using enum LengthSource;
    EXPECT_THAT(seen.sources,
                ElementsAre(channel, channel, next_record, blockette_1000, next_record, blockette_1000));
}

TEST(DataRecords, GiveAllThatTheirHeadersSay) {
    RecordFields fields;
    fields.location = "00";
    fields.fraction = 1234;
    fields.samples = 7;
    fields.rate_factor = -10;
    fields.rate_multiplier = 4;
    fields.time_correction = -15;
    fields.quality = 0x81;
    fields.big_endian = false;
    std::string bytes = record(fields, 256, 3, 42);
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
    EXPECT_EQ(record.format->encoding, 3);
    EXPECT_EQ(record.format->word_order, std::endian::little);
    EXPECT_EQ(record.format->power, 8);
    EXPECT_EQ(record.timing_quality, 0x5f);
    EXPECT_EQ(record.payload.data() - record.bytes.data(), 64);
    EXPECT_EQ(record.payload.size(), 192);

    bytes[36] = 2; // the correction has been applied
    VolumeReader applied = VolumeReader::of_memory(bytes, "memory");
    EXPECT_EQ(std::get<DataRecord>(*applied.next()).start, 1107253230'123395);
}

// --- control blockettes --------------------------------------------------------------------------------

std::string poles_and_zeros(int count) {
    std::string fields = "A01001002" + exponent(1) + exponent(1) + "000" + digits(count, 3);
    for (int i = 0; i < count; ++i)
        fields += exponent(i) + exponent(-i) + exponent(0) + exponent(0);
    return blockette(53, fields);
}

std::string header_record(char letter, char continuation, int sequence, std::string content, int size = 256) {
    content = digits(sequence, 6) + letter + continuation + content;
    content.resize(static_cast<std::size_t>(size), ' ');
    return content;
}

TEST(ControlBlockettes, AreJoinedOverLogicalRecords) {
    const std::string long_one = poles_and_zeros(20);
    const std::string volume = VolumeBuilder(256)
                                   .control('V', blockette(10, " 2.408~~~Quarry~Made up~"))
                                   .control('S', long_one + long_one + long_one)
                                   .bytes();
    const Seen seen = read(volume);
    EXPECT_THAT(seen.damage, IsEmpty());
    EXPECT_TRUE(seen.adds_up);
    ASSERT_EQ(seen.blockettes.size(), 4);
    for (std::size_t i = 1; i < 4; ++i) {
        EXPECT_EQ(seen.blockettes[i].text, long_one);
        std::string joined;
        for (const Extent& piece : seen.pieces[i])
            joined +=
                volume.substr(static_cast<std::size_t>(piece.offset), static_cast<std::size_t>(piece.length));
        EXPECT_EQ(joined, long_one);
    }
    EXPECT_EQ(seen.blockettes[2].logical_record, 6);
    const ControlBlockette view{.type = 53,
                                .length = long_one.size(),
                                .text = long_one,
                                .offset = 0,
                                .pieces = seen.pieces[1],
                                .logical_record = 2,
                                .sequence = 2,
                                .letter = 'S'};
    EXPECT_EQ(input_offset(view, 247), 256 + 8 + 247);
    EXPECT_EQ(input_offset(view, 248), 512 + 8);
    EXPECT_EQ(input_offset(view, long_one.size()), seen.blockettes[2].offset);
}

// Blockettes at the end of a logical record of 256 bytes, and what the next one begins with.
TEST(ControlBlockettes, HeadsThatTheEndOfTheRecordCuts) {
    const std::string filler = blockette(59, std::string(256 - 8 - 7 - 4, 'x'));
    const std::string next = blockette(51, "2005,001~2005,090~0001000000");
    const auto volume = [&](const std::string& tail, const std::string& begin) {
        return header_record('S', ' ', 1, filler + tail) + header_record('S', '*', 2, begin) +
               header_record('S', ' ', 3, next);
    };
    const auto texts = [](const Seen& seen) {
        std::vector<std::string> all;
        for (const Blockette& blockette : seen.blockettes)
            all.push_back(blockette.text);
        return all;
    };
    const Seen goes_on = read(volume(next.substr(0, 4), next.substr(4) + next));
    EXPECT_THAT(texts(goes_on), ElementsAre(filler, next, next, next));
    EXPECT_THAT(goes_on.damage, IsEmpty());
    const Seen begins = read(volume("    ", next));
    EXPECT_THAT(texts(begins), ElementsAre(filler, next, next));
    EXPECT_THAT(begins.damage, IsEmpty());
    const Seen anew = read(volume("0510", next));
    EXPECT_THAT(texts(anew), ElementsAre(filler, next, next));
    EXPECT_EQ(anew.totals.damaged_bytes, 4);
    const Seen alone = read(volume("0510", "").substr(0, 256));
    EXPECT_THAT(texts(alone), ElementsAre(filler));
    EXPECT_TRUE(goes_on.adds_up && begins.adds_up && anew.adds_up && alone.adds_up);
}

TEST(ControlBlockettes, DamagedOnesCostNoOthers) {
    const std::string first = blockette(33, "001First~");
    const std::string second = blockette(33, "002Second~");
    const std::string third = blockette(33, "003Third~");
    struct Case {
        const char* what;
        std::string damaged; // the second blockette
        DamageKind kind;
        std::size_t blockettes;
    };
    const std::vector<Case> cases{
        {"too long", "0330120002Second~", DamageKind::blockette_length, 4},
        {"beyond the record", "0339900002Second~", DamageKind::blockette_length, 4},
        {"too short", "0330012002Second~", DamageKind::blockette_length, 3},
        {"no length", "033x017002Second~", DamageKind::no_blockette, 3},
        {"no type", "x330017002Second~", DamageKind::no_blockette, 3},
        {"no known type, and too long", "0990120002Second~", DamageKind::no_blockette, 3},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const Seen seen =
            read(header_record('V', ' ', 1, blockette(10, " 2.408~~~Quarry~Made up~")) +
                 header_record('A', ' ', 2, first + c.damaged + third) + header_record('A', '*', 3, third));
        EXPECT_EQ(seen.blockettes.size(), c.blockettes + 1);
        EXPECT_EQ(seen.blockettes.back().text, third);
        EXPECT_EQ(seen.blockettes[seen.blockettes.size() - 2].text, third);
        ASSERT_EQ(seen.damage.size(), 1);
        EXPECT_EQ(seen.damage[0].kind, c.kind) << describe(seen.damage[0]);
        EXPECT_EQ(seen.damage[0].offset, 256 + 8 + 16);
        EXPECT_EQ(seen.damage[0].bytes, c.blockettes == 3 ? 17 : 0);
        EXPECT_EQ(seen.damage[0].logical_record, 2);
        EXPECT_TRUE(seen.adds_up);
    }
}

TEST(ControlBlockettes, LengthsOfLogicalRecords) {
    const std::string index = blockette(11, "001DEM1 000003");
    const auto contents = [&](int size, const std::string& volume_header) {
        return header_record('V', ' ', 1, index + volume_header, size) +
               header_record('V', '*', 2, index, size) + header_record('S', ' ', 3, index, size) +
               digits(4, 6) + std::string(static_cast<std::size_t>(size) - 6, ' ') +
               header_record('S', ' ', 5, index, size);
    };
    const std::string of_field_volume = blockette(5, "02.409~");
    const std::string of_telemetry = blockette(8, "02.409DEM1   BHZ~~~~XX");
    for (const std::string& volume :
         {contents(512, of_field_volume), contents(512, of_telemetry), contents(512, ""),
          contents(512, blockette(10, " 2.412~~~Quarry~Made up~")), // damaged
          contents(4096, blockette(10, " 2.412~~~Quarry~Made up~")) + contents(256, ""),
          record(512) + contents(2048, "")}) {
        const Seen seen = read(volume);
        EXPECT_EQ(seen.headers.size() % 5, 0);
        EXPECT_EQ(std::ranges::count(seen.blockettes, 11, &Blockette::type),
                  std::ssize(seen.headers) / 5 * 4);
        EXPECT_EQ(seen.totals.damaged_bytes, 0);
        EXPECT_TRUE(seen.adds_up);
    }
}

// --- inputs --------------------------------------------------------------------------------------------

TEST(VolumeReader, InputsOfEveryKind) {
    const std::string volume = demonstration_volume();
    const Seen plain = read(volume);
    EXPECT_EQ(plain.totals.control_records, 8);
    EXPECT_EQ(plain.totals.blockettes, 55);
    EXPECT_EQ(plain.totals.data_records, 7);
    EXPECT_THAT(plain.damage, IsEmpty());

    const TemporaryDirectory directory;
    const std::string packed = compressed("gzip -c", volume);
    const std::string path = directory.file("packed", packed);
    const int descriptor = open(path.c_str(), O_RDONLY);
    EXPECT_EQ(read(VolumeReader::of_descriptor(descriptor, "-", Framing::shown), volume.size()).blockettes,
              plain.blockettes);
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

TEST(VolumeReader, ReadersDoNotAffectEachOther) {
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

TEST(DamagedVolumes, ACutCostsOnlyWhatItCuts) {
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
    std::set<std::pair<std::int64_t, std::string>> found; // the count of records before varies
    for (const Blockette& blockette : seen.blockettes)
        found.emplace(blockette.offset, blockette.text);
    std::set<std::int64_t> headers; // of logical records that lost a blockette
    for (std::size_t i = 0; i < whole.blockettes.size(); ++i) {
        const bool is_touched = std::ranges::any_of(whole.pieces[i], [touched](const Extent& piece) {
            return piece.offset / 1024 == touched / 1024;
        });
        if (!is_touched && !found.contains({whole.blockettes[i].offset, whole.blockettes[i].text}))
            headers.insert(whole.blockettes[i].offset / 1024);
    }
    return lost + headers.size();
}

TEST(DamagedVolumes, OneDamagedByteCostsNoOtherRecord) {
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

TEST(DamagedVolumes, EveryByteBelongsToOneItem) {
    const std::string volume = demonstration_volume();
    const char* more = std::getenv("QUARRY_MUTATIONS");
    const std::uint64_t rounds = more != nullptr ? std::stoull(more) : 3000;
    for (std::uint64_t round = 0; round < rounds; ++round) {
        Random random(round);
        const std::string mutation = damaged(volume, &random);
        ASSERT_TRUE(read(mutation).adds_up) << round;
    }
}

} // namespace
} // namespace quarry
