// The program on whole volumes: logical records, the volume loop, options, and what is said of damage.

#include "support.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>

namespace quarry {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string comment(int id, const std::string& text) {
    return blockette(31, digits(id, 4) + "S" + text + "~000");
}

std::string comment_line(int id, const std::string& text) {
    const auto length = static_cast<int>(comment(id, text).size());
    return "B031 " + fixed(length, 3, 0) + " Id#" + fixed(id, 4, 0) + " Class:S units:  0 '" + text +
           "' <Comment Description >\n";
}

std::string station_050(const std::string& code) {
    return blockette(50, padded(code, 5) + fixed(1, 10, 6) + fixed(2, 11, 6) + fixed(3, 7, 1) +
                             "   1  0Site~0013210101998~~NXX");
}

// `head`: location, channel and subchannel; `attitude`: azimuth and dip.
std::string channel_052(int format, int length_exponent, const std::string& head = "  BHZ0000",
                        const std::string& attitude = "  0.0-90.0") {
    return blockette(52, head + "001~001001" + fixed(1, 10, 6) + fixed(2, 11, 6) + fixed(3, 7, 1) + "  0.0" +
                             attitude + digits(format, 4) + digits(length_exponent, 2) +
                             "   20.0000 1.000E-050000CG~1998~~N");
}

std::string format_030(int code, const std::string& name) {
    return blockette(30, name + "~" + digits(code, 4) + "00000");
}

// The part of the output from its summary on.
std::string summary_of(const RunResult& result) {
    return result.out.substr(std::min(result.out.find("\nBlockette Summary"), result.out.size()));
}

std::string without_summary(const RunResult& result) {
    return result.out.substr(0, result.out.find("\nBlockette Summary"));
}

int count_of(const std::string& text, const std::string& part) {
    int count = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size())
        ++count;
    return count;
}

// --- logical records -----------------------------------------------------------------------------------

TEST(LogicalRecords, BlockettesRunOverThem) {
    VolumeBuilder volume(256);
    const std::string long_text(69, 'x');
    std::string expected;
    for (int i = 1; i <= 40; ++i) { // of many lengths, so that heads fall on every place of a record's end
        const std::string text = long_text.substr(0, static_cast<std::size_t>(30 + i));
        volume.control('A', comment(i, text));
        expected += comment_line(i, text);
    }
    const std::string bytes = volume_010(8);
    VolumeBuilder whole(256);
    whole.control('V', bytes);
    const RunResult result = list_volume(whole.bytes() + volume.bytes());
    EXPECT_EQ(result.err, "");
    EXPECT_THAT(result.out, HasSubstr(expected));

    // One that crosses two ends, over padding and blank records of spaces and of zeros.
    VolumeBuilder longer(256);
    std::string stations;
    for (int i = 0; i < 60; ++i)
        stations += "STA  " + digits(i, 6);
    longer.control('V', volume_010(8))
        .blank_record('V')
        .blank_record('V')
        .control('V', blockette(11, "060" + stations));
    longer.blank_record('A').raw("000009A ").raw(std::string(248, '\0')).control('A', comment(1, "end"));
    const RunResult crossing = list_volume(longer.bytes());
    EXPECT_EQ(crossing.err, "");
    EXPECT_THAT(crossing.out, HasSubstr("B011 670 60 Stations  <Volume Station Header Index >\n"));
    EXPECT_THAT(crossing.out, HasSubstr("\t 59   STA     59\n"));
    EXPECT_THAT(crossing.out, HasSubstr(comment_line(1, "end")));
}

TEST(LogicalRecords, SequenceNumbers) {
    const std::string record = padded("00001AV " + comment(1, "a"), 512);
    const RunResult result = list_volume(record + padded("  0002V " + comment(2, "b"), 512) +
                                             padded("      V " + comment(3, "c"), 512),
                                         {"-vv"}, true);
    EXPECT_THAT(result.out,
                StartsWith("\nSeed Block Sequence #1\n"
                           "quarry: Bad logical block header sequence number = '00001A'\n" +
                           comment_line(1, "a") + "\nSeed Block Sequence #2\n" + comment_line(2, "b") +
                           "\nSeed Block Sequence #0\n"
                           "quarry: Bad logical block header sequence number = '      '\n" +
                           comment_line(3, "c")));
}

TEST(LogicalRecords, RecordLengthOfTheVolume) {
    // 2^17 is refused and 512 kept; anything below 1 gives 2-byte records, in which nothing more is found.
    const std::string rest = comment(1, "a");
    const RunResult large = list_volume(VolumeBuilder(512).control('V', volume_010(17) + rest).bytes());
    EXPECT_EQ(large.err, "quarry: Logical record length 2^17 is too large: keeping 512\n");
    EXPECT_THAT(large.out, HasSubstr(comment_line(1, "a")));
    const RunResult largest = list_volume(VolumeBuilder(65536).control('V', volume_010(16) + rest).bytes() +
                                          VolumeBuilder(65536).control('A', comment(2, "b")).bytes());
    EXPECT_EQ(largest.err, "");
    EXPECT_THAT(largest.out, HasSubstr(comment_line(1, "a") + comment_line(2, "b")));
    const RunResult tiny = list_volume(VolumeBuilder(512).control('V', volume_010(0) + rest).bytes());
    EXPECT_EQ(tiny.status, 0);
    EXPECT_THAT(tiny.out, StartsWith("B010"));
}

TEST(LogicalRecords, InputsThatEndEarly) {
    EXPECT_EQ(list_volume("").out, "");
    EXPECT_EQ(list_volume("000001V").out, "");
    const std::string volume = padded("000001V " + comment(1, "first") + comment(2, "second"), 512);
    const std::size_t first = 8 + comment(1, "first").size();
    // Cut within the second blockette's head, within its body, and within the padding.
    const RunResult in_head = list_volume(volume.substr(0, first + 6));
    EXPECT_EQ(in_head.err, "");
    EXPECT_EQ(without_summary(in_head), comment_line(1, "first"));
    const RunResult in_body = list_volume(volume.substr(0, first + 12));
    EXPECT_EQ(in_body.err, "quarry: Unexpected end of file reading blockette type 31 file #0: Success\n");
    EXPECT_EQ(without_summary(in_body), comment_line(1, "first"));
    EXPECT_EQ(list_volume(volume.substr(0, 500)).err, "");

    DataRecord record;
    const std::string data = VolumeBuilder().data(record).bytes();
    EXPECT_EQ(list_volume(data.substr(0, 100)).err,
              "quarry: Unexpected end of file reading data header File #0: Success\n");
    EXPECT_EQ(list_volume(data + data.substr(0, 1000)).err,
              "quarry: Unexpected end of file reading data record File #0.: Success\n");
    const RunResult directory = run_quarry({.arguments = {"/"}});
    EXPECT_EQ(directory.err, "quarry: input read error: Is a directory\n");
    EXPECT_EQ(directory.status, 0);
}

// --- the blockette reader ------------------------------------------------------------------------------

TEST(Reader, LengthsOutOfBounds) {
    const auto with_length = [](const char* length) {
        return list_volume(VolumeBuilder(16384)
                               .control('V', volume_010(14))
                               .control('A', "031" + std::string(length) + std::string(12000, 'x'))
                               .bytes());
    };
    // 9999 is the most that four digits hold; a sign or a blank makes no length.
    EXPECT_THAT(with_length("9999").err, HasSubstr("exceeded 71 characters"));
    EXPECT_THAT(with_length("  -1").err,
                StartsWith("quarry: Blockette type 31 size = -1: too small! (file #0)\n"));

    const RunResult small = list_volume(padded("000001V 0310005" + comment(1, "next"), 512));
    EXPECT_EQ(small.err, "quarry: Blockette type 31 size = 5: too small! (file #0)\n");
    EXPECT_EQ(without_summary(small), std::string("B031   5 Id#   0 Class:") + '\0' +
                                          " units:  0 '' <Comment Description >\n" + comment_line(1, "next"));
}

TEST(Reader, FieldsThatDoNotConvert) {
    const std::string bad = blockette(33, "a12name~");
    const RunResult result = list_volume(padded("000001V " + bad + comment(1, "next"), 512), {}, true);
    EXPECT_EQ(without_summary(result), "quarry: Could not convert 'a12' to an integer\n"
                                       "quarry: Error at BLK033 : 0330015a12name~\n"
                                       "B033  15 Id#  0 'name' <Generic Abbreviation>\n"
                                       "B033  15 Id#  0 'name' <Generic Abbreviation>\n" +
                                           comment_line(1, "next"));

    const std::string too_long(80, 'u');
    const RunResult cut = list_volume(padded("000001V " + blockette(34, "001" + too_long + "~Units~"), 512));
    EXPECT_EQ(cut.err, "quarry: variable string '" + too_long.substr(0, 20) + "' exceeded 21 characters at " +
                           too_long + "\nquarry: Error at BLK034 : 0340097001" + too_long +
                           "~Units~\nB034  97 Id#  1 Unit:'uuuuuuuuuuuuuuuuuuuu' Desc:'Units' <Units "
                           "Abbreviation>\n");

    // A list stops at the first element after a failure; what was not read is zero.
    const std::string one = exponent(1) + exponent(0);
    const std::string list =
        "D01001002   4" + one + one + exponent(1) + padded("  bad", 12) + one + "   1" + one;
    const RunResult abort = list_volume(padded("000001V " + blockette(54, list), 512));
    EXPECT_THAT(abort.err, StartsWith("quarry: Couldn't convert '  bad       ' to a real number.\n"
                                      "quarry: Aborting input of fir numerators at #3\n"
                                      "quarry: Error at BLK054 : 054"));
    EXPECT_THAT(abort.out, HasSubstr("4 Numerators,    0 Denominators  <Response (Coefficients) >\n"
                                     "\t    0 +1.00000E+00\n\t    1 +1.00000E+00\n\t    2 +1.00000E+00\n"
                                     "\t    3 +0.00000E+00\n"));
    const std::string factor = "A01001002" + padded("factor", 12) + exponent(1) + "001" + one + one + "000";
    const RunResult zeros = list_volume(padded("000001V " + blockette(53, factor), 512));
    EXPECT_THAT(zeros.err, HasSubstr("quarry: Aborting input of paz zeros at #0\n"));
    EXPECT_THAT(zeros.out, HasSubstr("  0 Poles   1 Zeros  <"));
    const std::string second =
        "A01001002" + one + "000002" + padded(" bad", 12) + exponent(0) + one + one + one;
    EXPECT_THAT(list_volume(padded("000001V " + blockette(53, second), 512)).err,
                HasSubstr("quarry: Aborting input of paz poles at #1\n"));
    const std::string fir = "01n~A001001   2" + padded(" bad", 14) + padded("  1.0", 14);
    EXPECT_THAT(list_volume(padded("000001V " + blockette(61, fir), 512)).err,
                HasSubstr("quarry: Aborting input of 061 fir coefficient at #1\n"));
}

TEST(Reader, UnknownTypes) {
    std::string bad = "0990010abc-020007";
    std::string listing = "Unknown blockette:    99\nUnknown blockette:    -2\n";
    for (const int type : {498, 499, 999}) {
        bad += blockette(type, "abc");
        listing += "Unknown blockette:   " + digits(type, 3) + "\n";
    }
    const RunResult result = list_volume(padded("000001V " + bad + comment(1, "next"), 512));
    EXPECT_EQ(without_summary(result), listing + comment_line(1, "next"));
    const auto messages = [](int type, const std::string& last) {
        const std::string number = std::to_string(type);
        return "quarry: sdminsz: Unknown blockette type " + number +
               "\nquarry: WARNING(parse_blk) - Unknown blockette: " + number + "\nquarry: " + last + "\n";
    };
    EXPECT_EQ(result.err, messages(99, "Block size: unknown blockette:    99") +
                              messages(-2, "Unknown block type = -2: Success") +
                              messages(498, "Block size: unknown blockette:   498") +
                              messages(499, "Unknown block type = 499: Success") +
                              messages(999, "Unknown block type = 999: Success") +
                              "quarry: sdblknam: Unknown blockette type 99\n"
                              "quarry: sdblknam: Unknown blockette type 498\n");
    EXPECT_THAT(summary_of(result), HasSubstr("    1 (099)          0 Unknown Type blockettes\n"
                                              "    1 (498)          0 Unknown Type blockettes\n"));
}

TEST(Reader, FatalBlockettes) {
    std::string pieces;
    for (int i = 0; i < 250; ++i)
        pieces += "STA    BHZ~00000101";
    const auto index = [&](const char* count) {
        return list_volume(VolumeBuilder(8192)
                               .control('V', volume_010(13))
                               .control('T', blockette(73, count + pieces))
                               .bytes());
    };
    const RunResult whole = index("0250");
    EXPECT_EQ(whole.status, 0);
    EXPECT_EQ(count_of(whole.out, "B073 4761 Segment #"), 250);
    const RunResult beyond = index("0251");
    EXPECT_EQ(beyond.status, 1);
    EXPECT_EQ(beyond.err, "quarry: ERROR(parse_073) - num_segs is too large: 251\n");
    EXPECT_THAT(beyond.out, Not(HasSubstr("Segment")));

    DataRecord record;
    record.encoding = 3;
    record.size_exponent = 14;
    const RunResult data = list_volume(VolumeBuilder().control('V', comment(1, "a")).data(record).bytes());
    EXPECT_EQ(data.status, 1);
    EXPECT_THAT(data.err, EndsWith("quarry: Data blockette size = 16384: too large for internal buffer.\n"));
    EXPECT_EQ(data.out, comment_line(1, "a"));
}

// --- data records --------------------------------------------------------------------------------------

TEST(DataRecords, LengthAndFormatOfTheHeadersAndOfBlockette1000) {
    const std::string headers = VolumeBuilder(4096)
                                    .control('V', volume_010(12))
                                    .control('A', format_030(1, "32-Bit Integer Format"))
                                    .control('S', station_050("DEM1") + channel_052(1, 8))
                                    .bytes();
    const auto data = [](int size, int encoding, const char* channel = "BHZ") {
        DataRecord record;
        record.channel = channel;
        record.size = size;
        record.encoding = encoding;
        return VolumeBuilder().data(record).bytes();
    };
    // Declared as 256 bytes; blockette 1000 says 512, or says nothing, or an encoding without a name.
    const RunResult result =
        list_volume(headers + data(256, -1) + data(512, 3) + data(256, 30) + data(512, 10) + data(512, 10));
    const std::string sizes =
        "quarry: different record sizes in 030 blockette (256) and 1000 blockette (512)\n";
    EXPECT_EQ(result.err, "quarry: DEM1:BHZ has a non-standard block length 8\n" + sizes +
                              "quarry: \n*** Serious inconsistency in seed volume.\n"
                              "    For the channel XX_DEM1_BHZ, the 030 blockettes indicate the datatype\n"
                              "        32-Bit Integer Format\n"
                              "    but the blockette 1000 embedded in the data says the data is\n"
                              "        Steim Integer Compression Format\n"
                              "    This inconsistency may cause problems.\n" +
                              sizes + sizes);
    EXPECT_THAT(summary_of(result), HasSubstr("    5             2048 Data blockettes\n"));
    // Without headers a record has 4096 bytes.
    EXPECT_THAT(list_volume(data(4096, -1) + data(4096, -1)).out,
                HasSubstr("    2             8192 Data blockettes\n"));
}

TEST(DataRecords, DeclarationsThatDisagree) {
    VolumeBuilder volume;
    volume.control('V', volume_010(12));
    volume.control('A', format_030(1, "A") + format_030(1, "A") + format_030(1, "B"));
    volume.control('S', station_050("DEM1") + channel_052(7, 13) + channel_052(1, 12, "00BH 0001") +
                            channel_052(1, 12, "  BH 0002", "170.0  0.0"));
    const RunResult result = list_volume(volume.bytes());
    EXPECT_EQ(result.err,
              "quarry: Data format id code #1 used twice for A\n"
              "quarry: Data format id code #1 used for both A and B\n"
              "quarry: DEM1:BHZ block length is 13 which is out of the legal range 8-12: setting to 12\n"
              "quarry: No data format for format id 7 sta=DEM1 chan=BHZ loc= File #0\n"
              "quarry: Warning... Azimuth and Dip out of Range on DEM1,BH2\n");
}

// --- the volume loop -----------------------------------------------------------------------------------

TEST(VolumeLoop, SummaryAddsUp) {
    const RunResult result = list_volume(demonstration_volume(), {"-s"});
    EXPECT_THAT(result.out, StartsWith("File #0: SEED Volume Version 2.4  Start:2005,032,00:00:00.0000"));
    EXPECT_THAT(result.out, Not(HasSubstr("B010")));
    const std::regex total("Total [A-Za-z ]+: +([0-9]+) =");
    std::size_t sum = 0;
    for (std::sregex_iterator at(result.out.begin(), result.out.end(), total), end; at != end; ++at)
        sum += std::stoul((*at)[1]);
    EXPECT_EQ(sum, demonstration_volume().size());
    EXPECT_EQ(
        summary_of(list_volume(VolumeBuilder(512).control('A', comment(1, std::string(60, 'a'))).bytes())),
        "\nBlockette Summary -- file #0\n"
        "    1 (031)         76 Comment Description  blockettes\n"
        "    0                0 Data blockettes\n\n"
        "Total Parameter Info  :         76 =   14.8%\n"
        "Total Data            :          0 =    0.0%\n"
        "Total Wasted          :        436 =   85.2%\n");
}

TEST(VolumeLoop, StationListOfTwelveToALine) {
    std::string stations;
    for (int i = 0; i < 13; ++i)
        stations += padded("S" + digits(i, 2), 5) + "000001";
    const RunResult result = list_volume(padded("000001V " + blockette(11, "013" + stations), 512), {"-s"});
    EXPECT_THAT(result.out, StartsWith("Stations:\n\t  S00   S01   S02   S03   S04   S05   S06   S07   S08   "
                                       "S09   S10   S11 \n\t  S12 \n\nBlockette"));
    EXPECT_THAT(list_volume(padded("000001V " + blockette(11, "000          "), 512), {"-s"}).out,
                StartsWith("Stations:\n\n"));
}

TEST(VolumeLoop, TapeFiles) {
    const std::string first =
        VolumeBuilder(512).control('A', blockette(33, "001STS~") + blockette(34, "001M/S~~")).bytes();
    const std::string second =
        VolumeBuilder(512).control('S', station_050("DEM1") + channel_052(1, 12)).bytes();
    const RunResult result = run_quarry({.arguments = {"-S"}, .tape_files = {first, second, "", first}});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, HasSubstr("Blockette Summary -- file #0\n    1 (033)"));
    EXPECT_THAT(result.out, HasSubstr("B052 BHZ    STS M/S   0.00m")); // dictionaries outlive their file
    EXPECT_THAT(result.out, HasSubstr("Blockette Summary -- file #1\n    1 (050)"));
    EXPECT_EQ(count_of(result.out, "Blockette Summary"), 2); // an empty file ends the run
    EXPECT_THAT(result.err, HasSubstr("No data format for format id 1 sta=DEM1 chan=BHZ loc= File #1\n"));

    const RunResult one = run_quarry({.arguments = {"-f", "0"}, .tape_files = {first, second}});
    EXPECT_EQ(count_of(one.out, "Blockette Summary"), 1);
    const TemporaryDirectory directory; // the positioning command is the site's own
    const std::string command = directory.file("cmd", "#!/bin/sh\necho positioned\n");
    std::filesystem::permissions(command, std::filesystem::perms::owner_all);
    const std::string path = directory.path() + ":" + std::getenv("PATH");
    const RunResult third =
        run_quarry({.arguments = {"-f3"}, .tape_files = {first, second}, .environment = {{"PATH", path}}});
    EXPECT_THAT(third.out, StartsWith("positioned\nB033"));
    EXPECT_THAT(third.out, HasSubstr("Blockette Summary -- file #3\n"));
    EXPECT_EQ(count_of(third.out, "Blockette Summary"), 1);
}

TEST(VolumeLoop, CompressedAndStandardInput) {
    const TemporaryDirectory directory;
    const std::string plain = directory.file("demo", demonstration_volume());
    const RunResult expected = run_quarry({.arguments = {plain}});
    EXPECT_EQ(run_quarry({.standard_input = demonstration_volume()}).out, expected.out);
    EXPECT_EQ(run_quarry({.arguments = {"-"}, .standard_input = demonstration_volume()}).out, expected.out);
    for (const char* encode : {"gzip -c", "compress -c"}) {
        const std::string packed = directory.path() + "/packed.seed";
        ASSERT_EQ(std::system((std::string(encode) + " " + plain + " > " + packed).c_str()), 0);
        const RunResult result = run_quarry({.arguments = {packed}});
        EXPECT_EQ(result.out, expected.out) << encode;
        EXPECT_EQ(result.err, expected.err) << encode;
    }
    const std::string packed = directory.path() + "/cut.gz";
    ASSERT_EQ(std::system(("gzip -c " + plain + " | head -c 1500 > " + packed).c_str()), 0);
    const RunResult cut = run_quarry({.arguments = {packed}});
    EXPECT_THAT(cut.err,
                HasSubstr("quarry: Decompressing " + packed + " ended badly: unexpected end of file\n"));
    EXPECT_THAT(cut.out, StartsWith(expected.out.substr(0, 200)));
    EXPECT_EQ(cut.status, 0);
}

// --- the command line ----------------------------------------------------------------------------------

TEST(CommandLine, UsageAndBanner) {
    const std::string usage = " [[-f n] [-sS] [-d database] [seed]\n";
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"a", "b"}, {"-H"}, {"-x"}, {"a", "-s"}, {"-f"}}) {
        const RunResult result = run_quarry({.arguments = arguments});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.err, HasSubstr(usage));
    }
    const RunResult result = run_quarry({.arguments = {"-V", "no-such-file"}});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_TRUE(std::regex_search(
        result.err, std::regex("^\n[^\n]*quarry  <#>\n    [^\n]+ [0-9]{4} <#>\n    Tarn Release 1\\.0\\.0 "
                               "Linux [^\n]+  <#>\n    [0-9a-f]{40}  <#>\n\n    [^\n]+\n")))
        << result.err;
}

TEST(CommandLine, ParameterFile) {
    const TemporaryDirectory here;
    const TemporaryDirectory there;
    const auto run = [&](const std::string& path, const std::string& directory, const std::string& volume) {
        return run_quarry(
            {.arguments = {volume}, .environment = {{"QUARRY_PARAM_PATH", path}}, .directory = directory});
    };
    const std::string volume = here.file("demo", VolumeBuilder(512).control('A', comment(1, "a")).bytes());
    const std::string missing = "quarry: Couldn't read parameter file quarry.pf.\n";
    EXPECT_EQ(run("", here.path(), volume).err, missing);
    EXPECT_EQ(run(here.path() + ":" + there.path(), "/", volume).err, missing);
    there.file("quarry.pf", "");
    EXPECT_EQ(run("", there.path(), volume).err, "");
    EXPECT_EQ(run(here.path() + ":" + there.path(), "/", volume).err, "");
    const std::string broken = here.file("quarry.pf", "[data_type_aliases]\na = \n");
    const RunResult unreadable = run(here.path() + ":" + there.path(), "/", volume);
    EXPECT_EQ(unreadable.status, 1);
    EXPECT_THAT(unreadable.err, StartsWith("quarry: " + broken + ":2:"));
    EXPECT_THAT(unreadable.err, EndsWith("\n" + missing));

    // An alias makes the volume's own name agree with blockette 1000; one that is no text is left out.
    here.file("quarry.pf", "[data_type_aliases]\n\"Local ints\" = \"32-Bit Integer Format\"\n\"x\" = 7\n");
    DataRecord record;
    record.encoding = 10;
    VolumeBuilder builder;
    builder.control('V', volume_010(12)).control('A', format_030(1, "Local ints"));
    builder.control('S', station_050("DEM1") + channel_052(1, 12)).data(record);
    const std::string aliased = here.file("aliased", builder.bytes());
    const RunResult result = run(here.path(), "/", aliased);
    EXPECT_THAT(result.err, StartsWith("quarry: " + here.path() +
                                       "/quarry.pf:3: data_type_aliases: the value of 'x' is no text\n"));
    EXPECT_THAT(result.err, HasSubstr("        Local ints\n    but the blockette 1000"));
    EXPECT_EQ(count_of(result.err, "is no text"), 1);
}

TEST(CommandLine, InputsAndOutputsThatFail) {
    const RunResult missing = run_quarry({.arguments = {"no-such-file"}});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "quarry: Can't open input file no-such-file: No such file or directory\n");

    const TemporaryDirectory directory;
    const std::string volume = directory.file("demo", demonstration_volume());
    const auto shell = [&](const std::string& command) {
        return run_quarry({.arguments = {"-c", command, QUARRY_PROGRAM, volume}, .program = "/bin/sh"});
    };
    const RunResult full = shell("\"$0\" \"$1\" > /dev/full");
    EXPECT_EQ(full.status, 1);
    EXPECT_EQ(full.err, "quarry: Can't write standard output: No space left on device\n");
    const RunResult closed = shell("\"$0\" -s \"$1\" >&-");
    EXPECT_EQ(closed.status, 1);
    EXPECT_THAT(closed.err, HasSubstr("quarry: Can't write standard output: Bad file descriptor\n"));
    const RunResult gone = shell("trap '' PIPE; \"$0\" \"$1\" | head -1; \"$0\" - <&-");
    EXPECT_THAT(gone.out, StartsWith("B010"));
    EXPECT_EQ(count_of(gone.out, "\n"), 1);
    EXPECT_THAT(gone.err, Not(HasSubstr("Can't write")));
    EXPECT_THAT(gone.err, EndsWith("quarry: input read error: Bad file descriptor\n"));
}

// --- golden listing of the demonstration volume ----------------------------------------------------------

// tests/golden/ holds what was read and found right; QUARRY_RECORD=1 in the environment writes it anew.
TEST(Golden, DemonstrationVolume) {
    const std::string golden = QUARRY_GOLDEN;
    for (const auto& [name, options] : {std::pair<std::string, std::vector<std::string>>{"demo", {}},
                                        {"demo-S", {"-S"}},
                                        {"demo-s-vv", {"-s", "-vv"}}}) {
        const RunResult result = list_volume(demonstration_volume(), options, true);
        EXPECT_EQ(result.status, 0);
        const std::string path = golden + "/" + name + ".out";
        if (std::getenv("QUARRY_RECORD") != nullptr)
            std::ofstream(path, std::ios::binary) << result.out;
        std::ifstream file(path, std::ios::binary);
        EXPECT_EQ(result.out, (std::string{std::istreambuf_iterator<char>(file), {}})) << name;
    }
}

} // namespace
} // namespace quarry
