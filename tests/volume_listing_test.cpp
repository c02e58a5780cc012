// SPDX-License-Identifier: Apache-2.0
// The program on whole volumes: logical records, the blockette reader, data records, tape files, summaries.
#include "support.h"

#include "blockette/sdblknam.h"

namespace quarry {
namespace {

std::string comment(int id, const std::string& text) {
    return blockette(31, digits(id, 4) + "S" + text + "~000");
}

std::string volume_010(int exponent) {
    return blockette(10, " 2.4" + digits(exponent, 2) + "2005,001~2005,002~2005,003~Org~Label~");
}

std::string station_050(const std::string& code, const std::string& dates = "1998~~") {
    return blockette(50, padded(code, 5) +
                             " 11.000000  22.000000   33.0   1  0Site~0013210"
                             "10" +
                             dates + "NXX");
}

// `head`: location, channel and subchannel; `attitude`: azimuth and dip.
std::string channel_052(int format, int length_exponent, const std::string& head = "  BHZ0000",
                        const std::string& dates = "1998~~", const std::string& attitude = "  0.0-90.0") {
    return blockette(52, head + "001~001001 11.000000  22.000000   33.0  0.0" + attitude + digits(format, 4) +
                             digits(length_exponent, 2) + "   20.0000 1.000E-050000CG~" + dates + "N");
}

std::string format_030(int code, const std::string& name) {
    return blockette(30, name + "~" + digits(code, 4) + "00000");
}

std::string data(const RecordFields& record) {
    return VolumeBuilder().data(record).bytes();
}

// A logical record of 512 bytes.
std::string record(const std::string& blockettes, const std::string& header = "000001V ") {
    return padded(header + blockettes, 512);
}

const std::string next = comment(1, "next");

// --- logical records -----------------------------------------------------------------------------------

std::string blockettes_over_records() {
    VolumeBuilder volume(256);
    volume.control('V', volume_010(8));
    for (int i = 1; i <= 40; ++i) // of many lengths, so that heads fall on every place of a record's end
        volume.control('A', comment(i, std::string(static_cast<std::size_t>(30 + i), 'x').substr(0, 69)));
    std::string stations;
    for (int i = 0; i < 60; ++i)
        stations += "STA  " + digits(i, 6);
    volume.blank_record('V').control('V', blockette(11, "060" + stations)); // crosses two ends
    volume.blank_record('A').raw("000009A ").raw(std::string(248, '\0')).control('A', next);
    return volume.bytes();
}

std::string of_record_length(int exponent, int next_length) {
    const std::string first = VolumeBuilder(next_length).control('V', volume_010(exponent) + next).bytes();
    return first + VolumeBuilder(next_length).control('A', comment(2, "second record")).bytes();
}

const std::string two_comments = record(comment(1, "first") + comment(2, "second"));
const std::size_t to_second = 8 + comment(1, "first").size();

const bool logical_records = make_recorded_tests(
    "LogicalRecords",
    {
        listing("BlockettesRunOverThem", blockettes_over_records()),
        listing("SequenceNumbers",
                record(comment(1, "a"), "00001AV ") + record(comment(2, "b"), "  0002V ") +
                    record(comment(3, "c"), "      V ") +
                    record(comment(4, "d"), std::string("000\0  V ", 8)),
                "-vv 2>&1"),
        listing("NotAnnouncedBelowTwoOptions", two_comments, "-v"),
        listing("LengthOf256", of_record_length(8, 256)),
        listing("LongestIs65536", of_record_length(16, 65536)),
        listing("LongerIsRefused", of_record_length(17, 512)),
        listing("NothingIsFoundInTwoBytes", of_record_length(0, 512), "", "2>&1 | head -9"),
        listing("Empty", ""),
        listing("CutInTheirHeader", "000001V"),
        listing("OnlyTheHeader", "000001V "),
        listing("CutInTheHeadOfABlockette", two_comments.substr(0, to_second + 6)),
        listing("CutBehindTheHeadOfABlockette", two_comments.substr(0, to_second + 7)),
        listing("CutInABlockette", two_comments.substr(0, to_second + 12)),
        listing("CutInThePadding", two_comments.substr(0, 500)),
        listing("CutInADataHeader", data({}).substr(0, 135)),
        listing("CutInADataRecord", data({}) + data({}).substr(0, 4095)),
        {"FromAPipe", "cat volume.seed volume.seed | $quarry -s", {{"volume.seed", demonstration_volume()}}},
    });

// --- the blockette reader ------------------------------------------------------------------------------

std::string longest_blockette() {
    const std::string longest = "0319999" + std::string(9999 - 7, 'x');
    return VolumeBuilder(16384).control('V', volume_010(14)).control('A', longest + next).bytes();
}

using Fields = std::vector<std::pair<int, std::string>>;
std::string volume_of(const Fields& all) {
    VolumeBuilder volume(512);
    for (const auto& [type, fields] : all)
        volume.control('A', blockette(type, fields));
    return volume.bytes();
}

// In every field letters, so that no number is one and every complaint shows where its field lies; and in
// every field that may hold as many as it likes 100 characters.
const std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
const std::string text = "text~";
const std::string longer = std::string(100, 'x') + "~";
const std::string numbers(100, '1');

std::string some(std::size_t count) {
    return letters.substr(0, count);
}

const Fields letters_in_every_field = {
    {11, letters},
    {12, letters},
    {30, text + letters},
    {31, some(5) + text + letters},
    {32, some(2) + text + text + text},
    {33, some(3) + text},
    {34, some(3) + text + text},
    {50, some(40) + text + some(9) + text + text + "N" + letters},
    {51, text + text + letters},
    {52, some(12) + text + letters + text + text + text + letters},
    {53, letters},
    {54, letters},
    {57, letters},
    {58, letters},
    {59, text + text + letters},
    {61, some(2) + text + letters},
    {70, "P" + text + text},
    {71, text + some(39) + text},
    {72, some(10) + text + some(30) + text + letters},
    {73, letters},
    {74, some(10) + text + some(8) + text + letters},
    {10, "abcd09" + text + text + text + text + text},
};

const Fields long_text_in_every_field = {
    {12, "0001" + longer + longer + "000001"},
    {30, longer + "000100001" + longer},
    {31, "0001S" + longer},
    {32, "01" + longer + longer + longer},
    {33, "001" + longer},
    {34, "001" + longer + longer},
    {50, numbers.substr(0, 40) + longer + numbers.substr(0, 9) + longer + longer + "NXX"},
    {51, longer + longer},
    {52, "  BHZ0000001" + longer + numbers.substr(0, 53) + "12" + numbers.substr(0, 24) + longer + longer +
             longer},
    {59, longer + longer},
    {61, "01" + longer + "A001001   0"},
    {70, "P" + longer + longer},
    {71, longer + numbers.substr(0, 30) + " 1  5.0" + longer + "010010001" + longer},
    {72, "DEM1   BHZ" + longer + numbers.substr(0, 30) + longer + "01XX"},
    {73, "0001DEM1   BHZ" + longer},
    {74, "DEM1   BHZ" + longer + "00000101" + longer + "00000101001" + longer},
    {10, " 2.412" + longer + longer + longer + longer + longer},
};

// A list stops at the first element after a failure; what was not read is zero.
std::string lists_with_a_bad_element() {
    const std::string one = exponent(1) + exponent(0);
    const std::string bad = padded("  bad", 12);
    const std::string normal = "A01001002" + one;
    return record(blockette(54, "D01001002   4" + one + "     1.5E 03" + exponent(0) + exponent(1) + bad +
                                    one + "   1" + one)) +
           record(blockette(54, "D01001002   1" + one + "   2" + bad + bad + one)) +
           record(
               blockette(53, "A01001002" + padded("factor", 12) + exponent(1) + "001" + one + one + "000")) +
           record(blockette(53, normal + "000002" + bad + exponent(0) + one + one + one)) +
           record(blockette(61, "01n~A001001   2" + padded(" bad", 14) + padded("  1.0", 14)));
}

// Long lists that are not there, of a blockette that fails and of one that does not.
std::string long_lists() {
    return record(blockette(54, "Dx10010029999   0")) + record(blockette(61, "01n~A0010029999")) +
           record(next);
}

// One blockette of every type that has a name, as short as allowed, and one a byte shorter.
std::string all_types() {
    VolumeBuilder volume(512);
    for (const Sdinfo& row : sdinfo)
        if (row.id > 0 && row.id < 1000 && row.id != 10) // 10 would set the record length
            for (const int length : {row.minsz - 1, row.minsz})
                volume.control('A', digits(row.id, 3) + digits(length, 4) +
                                        std::string(static_cast<std::size_t>(std::max(length - 7, 0)), '0'));
    return volume.bytes();
}

std::string unknown_types() {
    std::string blockettes = "0990010abc-020007";
    for (const int type : {498, 499, 999})
        blockettes += blockette(type, "abc");
    return record(blockettes + next);
}

std::string segments(const std::string& count) {
    std::string pieces;
    for (int i = 0; i < 251; ++i)
        pieces += "STA    BHZ~00000101";
    return VolumeBuilder(8192)
        .control('V', volume_010(13))
        .control('T', blockette(73, count + pieces))
        .bytes();
}

const bool blockette_reader = make_recorded_tests(
    "BlocketteReader",
    {
        listing("LengthOf9999", longest_blockette(), "", "2>&1 | cut -c1-120"),
        listing("LengthsOutOfRange", record("031  -1   " + next)),
        listing("ShorterThanItsOwnLength", record("0310005" + next), "2>&1"),
        listing("ShorterThanItsTypeAllows", record("0310015000112~0" + next), "2>&1"),
        listing("AsShortAsItsTypeAllows", record("0310016000112~00" + next), "2>&1"),
        listing("LettersInEveryField", volume_of(letters_in_every_field), "2>&1"),
        listing("LongTextInEveryField", volume_of(long_text_in_every_field), "2>&1"),
        listing("FieldsThatDoNotConvert", record(blockette(33, "a12name~") + next), "2>&1"),
        listing("NulsInText", record(blockette(33, std::string("001na\0me~", 9)) + next)),
        listing("ListsWithABadElement", lists_with_a_bad_element(), "2>&1"),
        listing("LongLists", long_lists(), "", "2>&1 | sed 's/^\t *[0-9]* /\t/' | uniq -c"),
        listing("UnknownTypes", unknown_types()),
        listing("AllTypes", all_types(), "-s 2>&1"),
        listing("AsManySegmentsAsFit", segments("0250"), "-s"),
        listing("MoreSegmentsThanFit", segments("0251")),
    });

// --- data records --------------------------------------------------------------------------------------

const std::string headers = VolumeBuilder(4096)
                                .control('V', volume_010(12))
                                .control('A', format_030(1, "32-Bit Integer Format") + format_030(2, "Other"))
                                .control('S', station_050("DEM1") + channel_052(1, 8))
                                .bytes();

// Channels that differ in one code or in their time only, each with records of a length of its own: what is
// found for the wrong one leaves the reader out of step.
std::string lengths_by_channel_and_time() {
    VolumeBuilder volume(512);
    volume.control('A', format_030(1, "32-Bit Integer Format"));
    volume.control('S', station_050("DEM1") + channel_052(1, 8) + channel_052(1, 9, "  BHN0000"));
    volume.control('S', channel_052(1, 10, "00BHZ0000") + channel_052(1, 11, "10BHZ0000", "1998~2001,001~"));
    volume.control('S', channel_052(1, 9, "10BHZ0000", "2001,001~2002,001,12:00:00.5000~"));
    volume.control('S', station_050("DEM2") + channel_052(1, 11) + station_050("DEM3"));
    volume.data({.size = 256}).data({.channel = "BHN", .size = 512}).data({.location = "00", .size = 1024});
    volume.data({.station = "DEM2", .size = 2048}).data({.station = "DEM3", .size = 4096});
    volume.data({.location = "10", .year = 2000, .doy = 366, .size = 2048});
    volume.data({.location = "10", .year = 2001, .doy = 1, .size = 512});
    RecordFields record{.location = "10", .year = 2002, .doy = 1, .hour = 12, .minute = 0, .second = 0};
    record.fraction = 5000;
    const RecordFields last = record;
    record.fraction = 4999;
    record.size = 512;
    volume.data(record).data(last);
    return volume.bytes();
}

// Declared as 256 bytes; blockette 1000 says 512, or says nothing, or an encoding without a name. The format
// that disagrees is reported once for each channel.
std::string lengths_of_blockette_1000() {
    return headers + data({.size = 256}) + data({.size = 512, .encoding = 3}) +
           data({.size = 256, .encoding = 30}) + data({.size = 512, .encoding = 10}) +
           data({.size = 512, .encoding = 10}) + data({.channel = "BHN", .size = 4096, .encoding = 10}) +
           data({.size = 256, .size_exponent = 6, .encoding = 3}) + data({.size = 256});
}

std::string declarations_that_disagree() {
    VolumeBuilder volume(512);
    volume.control('A', format_030(1, "A") + format_030(1, "A") + format_030(1, "B"));
    volume.control('S', station_050("DEM1") + channel_052(7, 13) + channel_052(1, 7, "00BHN0000"));
    volume.control('S', channel_052(1, 8) + channel_052(1, 11) + channel_052(1, 12, "00BH 0001"));
    return volume.control('S', channel_052(1, 12, "  BH 0002", "1998~~", "170.0  0.0")).bytes();
}

// Sub-sequence numbers are not listed; letters and byte orders are.
std::string letters_of_data_records() {
    std::string volume;
    for (const char letter : std::string("DRQM"))
        volume += data({.quality_indicator = letter, .size = 4096, .big_endian = letter < 'Q'});
    return volume + data({.quality_indicator = 'E', .size = 512});
}

// Of 128 bytes among others; each with a minute of its own.
std::string short_records() {
    std::string volume = record(next);
    for (int minute = 0; minute < 6; ++minute)
        volume += data({.minute = minute, .size = minute == 3 ? 512 : 128, .encoding = 3});
    return volume;
}

const bool data_records = make_recorded_tests(
    "DataRecords",
    {
        listing("LengthsByChannelAndTime", lengths_by_channel_and_time()),
        listing("LengthsOfBlockette1000", lengths_of_blockette_1000()),
        listing("DeclarationsThatDisagree", declarations_that_disagree(), "2>&1"),
        listing("LettersOfDataRecords", letters_of_data_records(), "2>&1"),
        listing("LongestIs8192", data({.size = 8192, .encoding = 3}) + data({.size = 8192, .encoding = 3})),
        listing("LongerIsFatal", record(next) + data({.size_exponent = 14, .encoding = 3})),
        listing("RecordsOf128Bytes", short_records(), "2>&1"),
        listing("AlonePlain128Bytes", data({.size = 128, .encoding = 3}), "2>&1"),
        listing("ShorterThanItsHead", data({.size = 136, .size_exponent = 7, .encoding = 3}) + record(next)),
    });

// --- tape files, summaries, compressed input -------------------------------------------------------------

std::string stations_011(int count) {
    std::string stations;
    for (int i = 0; i < count; ++i)
        stations += padded("S" + digits(i, 2), 5) + "000001";
    return record(blockette(11, digits(count, 3) + padded(stations, std::max(count * 11, 10))));
}

const std::string dictionaries =
    record(blockette(31, "0001Sa~000") + blockette(33, "001STS~") + blockette(34, "001M/S~~"));
const std::string channels =
    VolumeBuilder(512).control('S', station_050("DEM1") + channel_052(1, 12)).bytes();
const std::string cmd = "printf '#!/bin/sh\\necho positioned\\n' >cmd; chmod +x cmd; PATH=.:$PATH; ";

const bool volume_loop = make_recorded_tests(
    "VolumeLoop",
    {
        listing("Demonstration", demonstration_volume(), "2>&1"),
        listing("DemonstrationShort", demonstration_volume(), "-S 2>&1"),
        listing("DemonstrationSummary", demonstration_volume(), "-s -vv 2>&1"),
        listing("SummaryOfOneComment", record(comment(1, std::string(60, 'a')))),
        listing("StationsTwelveToALine", stations_011(13), "-s"),
        listing("NoStations", stations_011(0), "-s"),
        listing("StationsThatAreNotThere", record(blockette(11, "014     000001S01  000001")), "-s"),
        // Dictionaries outlive their file, formats and totals do not; an empty file ends the run.
        {"TapeFiles", "$quarry -S", {}, {dictionaries, channels + data({}), dictionaries, "", dictionaries}},
        {"OneTapeFile", "$quarry -f 0", {}, {dictionaries, channels}},
        {"OneTapeFileAfterPositioning", cmd + "$quarry -f3", {}, {dictionaries, channels}},
        {"TapeLikeCompressedData", "$quarry", {}, {"BZh9" + two_comments.substr(4)}},
        {"StandardInput", "$quarry <volume.seed; $quarry - <volume.seed", {{"volume.seed", two_comments}}},
    });

} // namespace
} // namespace quarry
