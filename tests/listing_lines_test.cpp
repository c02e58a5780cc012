// The lines of the listing: every blockette type from its text to its line, against lines written by hand. In
// each text the numbers fill their fields, so that a field of another width would be seen.
#include "support.h"

#include "blockette/blockette.h"
#include "listing/element_lines.h"
#include "listing/pbrief.h"
#include "state.h"

namespace quarry {
namespace {

struct Line {
    const char* name;
    int type;
    std::string fields;
    std::string listing;
};

const std::string full = "1999,123,04:05:06.7890";
const std::string zero = exponent(0);
const std::string value = exponent(1.5) + exponent(-2.5);
const std::string error = exponent(0.001) + zero;
const std::string none = zero + zero;
const std::string minus_zero = padded("-0", 12);
const std::string zeros_of_053 = "\t  n     Zeros (r, i)                   Errors(r, i) \n";
const std::string invalid = zero + padded(" nan", 12);
const std::string channel_head = "00BHZ0000";
const std::string channel_tail =
    "Borehole~001002 45.123456 -118.5000001234.5100.5  0.0-90.0000112   20.0000 1.000E-050000CG~1998,001~2001,001,12:00:00~N";

// Every number as long as its field.
std::string ones(int width, int count = 1) {
    std::string digits;
    for (int i = 0; i < count; ++i)
        digits += "-" + std::string(static_cast<std::size_t>(width - 3), static_cast<char>('1' + i)) + ".5";
    return digits;
}

// clang-format off
const bool lines = make_tests("ListingLines", std::vector<Line>{
    {"B010", 10, " 2.412" + full + "~2000~2001,001~An org~A label~",
     "B010  65 Version 2.4  LogRecLen 12  Start:1999,123,04:05:06.7890 End:                2000 <Volume Identifier >\n"},
    {"B010_blanks", 10, " 2.4 82000~~~~~",
     "B010  22 Version 2.4  LogRecLen  8  Start:                2000 End:                     <Volume Identifier >\n"},
    {"B011", 11, "002  ABC000012LONGS999999",
     "B011  32 2 Stations  <Volume Station Header Index >\n"
     "\t  0   ABC     12\n"
     "\t  1 LONGS 999999\n"},
    {"B011_negative_count", 11, "-01", "B011  10 -1 Stations  <Volume Station Header Index >\n"},
    {"B012", 12, "0002" + full + "~~1234562000~2001~     1",
     "B012  57 #spans    2 <Volume Time Span Index>\n"
     "\t    0 Start:1999,123,04:05:06.7890 End:                     seq#123456\n"
     "\t    1 Start:                2000 End:                2001 seq#     1\n"},
    {"B030", 30, "Steim~123405602F1 P4~A key of more than twenty~",
     "B030  54 Steim                                              id#1234 type# 56     2 keys <Data Format Dictionary >\n"
     "\t 0                F1 P4 \n"
     "\t 1 A key of more than twenty \n"},
    {"B031", 31, "1234 Time is off~567", "B031  27 Id#1234 Class:  units:567 'Time is off' <Comment Description >\n"},
    {"B032", 32, "03 Smith ~1999~~", "B032  23 Id# 3 Author:Smith Catalog/Date:1999 Publisher: <Cited Source Dictionary>\n"},
    {"B033", 33, "567STS~", "B033  14 Id#567 'STS' <Generic Abbreviation>\n"},
    {"B033_ends_early", 33, "012", "B033  10 Id# 12 '' <Generic Abbreviation>\n"},
    {"B034", 34, "678M/S~Velocity~", "B034  23 Id#678 Unit:'M/S' Desc:'Velocity' <Units Abbreviation>\n"},
    {"B050", 50, "LONGS-45.123456-118.500000-1234.51111222A site~1233210011998,001~2001~UXXX",
     "B050  81 LONGS XX (-45.123456,-118.500000) -1234.5m @ 'A site' NetId#  123 Long:3210 Word:01 Order  Start:            1998,001 End:                2001 Update:U <Station Identifier>\n"},
    {"B050_narrow", 50, "A    " + fixed(1, 10, 6) + fixed(-2, 11, 6) + fixed(3, 7, 1) + "       ~  1   1 1~~N",
     "B050  60    A    (  1.000000, -2.000000)    3.0m @ '' NetId#    1 Long:0001 Word:01 Order  Start:                     End:                     Update:N <Station Identifier>\n"},
    {"B051", 51, "1998~" + full + "~1234567890",
     "B051  45 Start:                1998 End:1999,123,04:05:06.7890 Id#1234 Level#567890 <Station Comment>\n"},
    {"B052", 52, "01BHZ-002345Borehole~678901-45.123456-118.500000-1234.5100.5123.5-89.543211223456.7890-1234.56782222CGX~1998,001~2003~U",
     "B052 126 Loc:01 Chan:BHZ Sub#  -2 Instr#345 SigUnits#678 CalUnits#901 (-45.12,-118.50) -1234.50m  Depth:100.50m  Az:123.50 Dip:-89.50 DataFmt#4321 RecLen:12 Samprate:23456.79hz  ClkDrift:-1234.57s Flags:'CGX' Start:            1998,001 End:                2003 Update:U 'Borehole' <Channel Identifier>\n"},
    {"B053", 53, "A04123456 5.71404E+08-2.00000E-02002" + value + none + value + error + "003" + value + none + value + error + value + invalid,
     "B053 286 Type:A Stage# 4 Input Units:123 Output Units:456 Norm:5.7140e+08 @ -0.02Hz    3 Poles   2 Zeros  <Response (Poles and Zeros)>\n"
     "\t  n     Poles (r, i)                   Errors(r, i) \n"
     "\t  0 (+1.50000E+00 -2.50000e+00)\n"
     "\t  1 (+1.50000E+00 -2.50000e+00)   ( 1.00000e-03  0.00000e+00) \n"
     "\t  2 (+1.50000E+00 -2.50000e+00)   ( 0.00000e+00          nan) \n"
     "\t  n     Zeros (r, i)                   Errors(r, i) \n"
     "\t  0 (+1.50000E+00 -2.50000e+00)\n"
     "\t  1 (+1.50000E+00 -2.50000e+00)   ( 1.00000e-03  0.00000e+00)\n"},
    {"B053_signed", 53, "B-1" + std::string("-12-34") + ones(12, 2) + "001" + ones(12, 4) + "001" + ones(12, 4),
     "B053 142 Type:B Stage#-1 Input Units:-12 Output Units:-34 Norm:-1.1111e+08 @-222222222.50Hz    1 Poles   1 Zeros  <Response (Poles and Zeros)>\n"
     "\t  n     Poles (r, i)                   Errors(r, i) \n"
     "\t  0 (-1.11111E+08 -2.22222e+08)   (-3.33333e+08 -4.44444e+08) \n"
     "\t  n     Zeros (r, i)                   Errors(r, i) \n"
     "\t  0 (-1.11111E+08 -2.22222e+08)   (-3.33333e+08 -4.44444e+08)\n"},
    {"B054", 54, "D12123456   2" + exponent(0.25) + zero + ones(12, 2) + "   2" + exponent(1) + exponent(-0.002) + exponent(2) + padded(" nan", 12),
     "B054 120 Type:D stage#12 Input:123 Output:456     2 Numerators,    2 Denominators  <Response (Coefficients) >\n"
     "\t    0 +2.50000E-01\n"
     "\t    1 -1.11111E+08  -2.22222e+08\n"
     "\t    0 +1.00000E+00 -2.00000e-03\n"
     "\t    1 +2.00000E+00         +nan\n"},
    {"B057", 57, "12-1234567.51234567890-12345678.5-23456789.5",
     "B057 51 Stage#12 SampRateIn:-1234567.50Hz Decimation:12345 Offset:67890 Delay:-12345678.500s Correction:-23456789.500s <Decimation>\n"},
    {"B058_gain", 58, "12" + ones(12, 2), "B058  33 Stage#   12 Gain:-1.111111e+08 Freq:-222222222.5000Hz <Channel Sensitivity/Gain>\n"},
    {"B058_gain_below_0", 58, "-1 1.50000E+03 1.00000E+00 0", "B058  35 Stage#   -1 Gain:1.500000e+03 Freq:  1.0000Hz <Channel Sensitivity/Gain>\n"},
    {"B058_sensitivity", 58, "00 6.00000E 08 2.00000E-02 0", // a blank for the sign of the exponent
     "B058  35 Stage#    0 Sensitivity::6.000000e+08 Freq:  0.0200Hz <Channel Sensitivity/Gain>\n"},
    {"B059", 59, "1998~2001~1234567890",
     "B059 27 Start:                1998 End:                2001 Comment#1234 Level#567890 <Channel Comment>\n"},
    {"B061", 61, "12A filter~A123456   2" + ones(14, 2),
     "B061 57 stage#12 'A filter' Symmetry: A Input:123 Output:456     2 Coefficients: <FIR Response>\n"
     "\t    0 -1.11111E+10\n"
     "\t    1 -2.22222E+10\n"},
    {"B061_ends_early", 61, "01~A   002", "B061 17 stage# 1 '' Symmetry: A Input:  0 Output:  2     0 Coefficients: <FIR Response>\n"},
    {"B070", 70, "E" + full + "~2000~",
     "B070  36 Type:E Start:1999,123,04:05:06.7890 End:                2000 <Time Span Identifier>\n"},
    {"B070_empty", 70, "", std::string("B070   7 Type:") + '\0' + " Start:                     End:                     <Time Span Identifier>\n"},
    {"B071", 71, full + "~12" + ones(10) + ones(11) + ones(7) + " 2-2.55mb~0115.60MW~12123-456SWITZERLAND~",
     "B071 101 Time:1999,123,04:05:06.7890 Id#   12 (-1111111.50,-11111111.50) Depth:-1111.50km #:2 grn=123 srn=-456 gregion='SWITZERLAND' <Hypocenter Information>\n"
     "\t 0 Magnitude: -2.55 Source: 1 'mb'\n"
     "\t 1 Magnitude: 15.60 Source:12 'MW'\n"},
    {"B071_no_magnitudes", 71, "2000~ 1" + fixed(1, 10, 4) + fixed(2, 11, 4) + fixed(3, 7, 1) + " 0  1   2R~",
     "B071 53 Time:                2000 Id#    1 (  1.00,  2.00) Depth:  3.00km #:0 grn=1 srn=2 gregion='R' <Hypocenter Information>\n"},
    {"B072", 72, "LONGS00BHZ" + full + "~" + ones(10, 3) + "P~12XXX",
     "B072  77 LONGS Loc:00 Chan:BHZ Time:1999,123,04:05:06.7890 Amp:-1111111.50 Period:-2222222.50 S/N:-3333333.50 Phase:'P' source=12 net=XX <Event Phases>\n"},
    {"B072_narrow", 72, "A      B  2000~" + fixed(1, 10, 4) + fixed(2, 10, 4) + fixed(3, 10, 4) + "P~ 1X ",
     "B072  58     A Loc:   Chan:  B Time:                2000 Amp:  1.00 Period:  2.00 S/N:  3.00 Phase:'P' source=1 net=X <Event Phases>\n"},
    {"B073", 73, "0002LONGS00BHZ" + full + "~12345678CD     LHZ1999~00001002",
     "B073  75 Segment #    0 of     2 Sta: LONGS Loc: 00 Chan: BHZ Start:1999,123,04:05:06.7890 seq# 123456 subseq#    78 <Time Span Data Start Index>\n"
     "B073  75 Segment #    1 of     2 Sta:    CD Loc:    Chan: LHZ Start:                1999 seq#    10 subseq#     2 <Time Span Data Start Index>\n"},
    {"B073_empty", 73, "0000", ""},
    {"B074", 74, "LONGS00BHZ" + full + "~12345678" + full + "~234567890021998~345678912000~123456 2XXX",
     "B074 111 Net: XX Sta: LONGS Loc: 00 Chan: BHZ Start:1999,123,04:05:06.7890 seq# 123456 subseq#    78 End:1999,123,04:05:06.7890 seq# 234567 subseq#    89 #repeats     2 <Time Series Index>\n"
     "\t  0 Start:                1998 seq# 345678 subseq#    91\n"
     "\t  1 Start:                2000 seq# 123456 subseq#     2\n"},
    {"B074_narrow", 74, "A      B  2000~     1 12001~     2 1  0X ",
     "B074  48 Net:  X Sta:     A Loc:    Chan:   B Start:                2000 seq#     1 subseq#     1 End:                2001 seq#     2 subseq#     1 #repeats     0 <Time Series Index>\n"},
    {"Unknown_type", 60, "", "Unknown blockette:    60\n"},
}, [](const Line& c) {
    name_the_log();
    testing::internal::CaptureStderr();
    EXPECT_EQ(listed(c.type, blockette(c.type, c.fields)), c.listing);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), c.type != 60 ? "" : "quarry: WARNING(parse_blk) - Unknown blockette: 60\n");
});
// clang-format on

TEST(ListingLines, ShortChannelLine) {
    Simplify = 2; // as often as it was given
    Tbl_033.set(5, "STS-1");
    Tbl_034.set(1, "M/S");
    const std::string rest =
        " 100.50m  (  0.00,-90.00)  20.00sps              1998,001 to    2001,001,12:00:00 'Borehole'\n";
    EXPECT_EQ(listed(52, blockette(52, channel_head + "005" + channel_tail)), "B052 BHZ 00 STS-1 M/S" + rest);
    EXPECT_EQ(listed(52, blockette(52, channel_head + "099" + channel_tail)), "B052 BHZ 00  M/S" + rest);
    Simplify = 0;
    Tbl_033 = Tbl_034 = {};
}

TEST(ListingLines, DataHeader) {
    blk_dh_t header{};
    header.nsamps = 1000;
    header.rate_f = -10;
    header.rate_m = 1;
    header.samp_rate = 0.1;
    header.activity = -64; // a flag byte with its top bit set
    header.io_flags = 0x20;
    header.blks_fol = 2;
    header.time_cor = -5;
    header.beg_data = 128;
    header.beg_blks = 48;
    const auto print = [&](std::FILE* stream) { pbrief_blk(stream, &header, -1); };
    EXPECT_EQ(
        written(print),
        "DATA Net:    Sta:       Loc:    Chan:      Start:                     #samples:  1000 sample rate factor:   -10 multiplier:     1 Sample_rate:        0.1 Activity: ffffffc0 I/O: 20 Quality: 0 #blks after:     2 time correction:    -5 first data byte:   128 first blockette:    48 <data blockette>\n");
}

// Counts above the capacities stay as read; what is listed, and where the next field is looked for, stops at
// the capacity.
TEST(ListingLines, CountsBeyondCapacity) {
    const auto check = [](int type, int count, const std::string& before, const std::string& field,
                          const std::string& behind, const std::string& head, const std::string& line_head,
                          int width, const std::string& line_end) {
        std::string fields = before;
        std::string listing = head;
        for (int i = 0; i < count; ++i) {
            fields += field;
            listing += line_head + fixed(i, width, 0) + line_end;
        }
        EXPECT_EQ(listed(type, blockette(type, fields + behind)), listing);
    };
    check(
        71, 20, "1999~01" + std::string(28, ' ') + "21", " 1.00mb~01", "012  34R~",
        "B071 253 Time:                1999 Id#    1 (  0.00,  0.00) Depth:  0.00km #:21 grn=12 srn=34 gregion='R' <Hypocenter Information>\n",
        "\t", 2, " Magnitude:  1.00 Source: 1 'mb'\n");
    check(
        74, 64, "AB     BHZ~00000101~00000101065", "1999~00000102", "XX",
        "B074 872 Net: XX Sta:    AB Loc:    Chan: BHZ Start:                     seq#     1 subseq#     1 End:                     seq#     1 subseq#     1 #repeats    65 <Time Series Index>\n",
        "\t", 3, " Start:                1999 seq#     1 subseq#     2\n");
    check(12, 999, "1000", "~~000001", "", "B012 8003 #spans 1000 <Volume Time Span Index>\n", "\t", 5,
          " Start:                     End:                     seq#     1\n");
    check(
        73, 250, "0250", "A    00BHZ~00000102", "", "", "B073 4761 Segment #", 5,
        " of   250 Sta:     A Loc: 00 Chan: BHZ Start:                     seq#     1 subseq#     2 <Time Span Data Start Index>\n");
}

// Lists that end in their text before their count: the other elements are listed, too.
struct ShortList {
    const char* name;
    int type;
    std::string fields;
    std::string before; // lines up to that of element `first`
    int first;
    int end;
    std::string line_begin;
    int width; // of the element's number
    std::string line_end;
};

// clang-format off
const bool short_lists = make_tests("ShortLists", std::vector<ShortList>{
    {"B011", 11, "999A    000001     000002",
     "B011  32 999 Stations  <Volume Station Header Index >\n\t  0     A      1\n\t  1            2\n",
     2, 999, "\t", 3, "            0\n"},
    {"B012", 12, "9999~~000000~2000~000000",
     "B012  31 #spans 9999 <Volume Time Span Index>\n"
     "\t    0 Start:                     End:                     seq#     0\n"
     "\t    1 Start:                     End:                2000 seq#     0\n",
     2, 999, "\t", 5, " Start:                     End:                     seq#     0\n"},
    {"B030", 30, "N~000100199~F1~",
     "B030  22 N                                                  id#   1 type#  1    99 keys <Data Format Dictionary >\n"
     "\t 0                      \n\t 1                   F1 \n",
     2, 99, "\t", 2, "                      \n"},
    {"B053", 53, "A01001002" + none + "000999" + none + error + zero + minus_zero + none,
     "B053 142 Type:A Stage# 1 Input Units:  1 Output Units:  2 Norm:0.0000e+00 @  0.00Hz  999 Poles   0 Zeros  <Response (Poles and Zeros)>\n"
     "\t  n     Poles (r, i)                   Errors(r, i) \n"
     "\t  0 (+0.00000E+00 +0.00000e+00)   ( 1.00000e-03  0.00000e+00) \n"
     "\t  1 (+0.00000E+00 -0.00000e+00)\n",
     2, 999, "\t", 3, " (+0.00000E+00 +0.00000e+00)\n"},
    {"B054", 54, "D010010029999" + zero + zero + zero + exponent(0.001) + minus_zero,
     "B054 80 Type:D stage# 1 Input:  1 Output:  2  9999 Numerators,    0 Denominators  <Response (Coefficients) >\n"
     "\t    0 +0.00000E+00\n\t    1 +0.00000E+00  +1.00000e-03\n\t    2 -0.00000E+00\n",
     3, 9999, "\t", 5, " +0.00000E+00\n"},
    {"B061", 61, "01F~A0010029999  " + zero + "  " + exponent(1),
     "B061 50 stage# 1 'F' Symmetry: A Input:  1 Output:  2  9999 Coefficients: <FIR Response>\n"
     "\t    0 +0.00000E+00\n\t    1 +1.00000E+00\n",
     2, 9999, "\t", 5, " +0.00000E+00\n"},
    {"B073", 73, "0250          ~00000000          ~00000002",
     "B073  49 Segment #    0 of   250 Sta:       Loc:    Chan:     Start:                     seq#     0 subseq#     0 <Time Span Data Start Index>\n"
     "B073  49 Segment #    1 of   250 Sta:       Loc:    Chan:     Start:                     seq#     0 subseq#     2 <Time Span Data Start Index>\n",
     2, 250, "B073  49 Segment #", 5, " of   250 Sta:       Loc:    Chan:     Start:                     seq#     0 subseq#     0 <Time Span Data Start Index>\n"},
}, [](const ShortList& c) {
    std::string listing = c.before;
    for (int i = c.first; i < c.end; ++i)
        listing += c.line_begin + fixed(i, c.width, 0) + c.line_end;
    EXPECT_EQ(listed(c.type, blockette(c.type, c.fields)), listing + (c.type == 53 ? zeros_of_053 : ""));
});
// clang-format on

TEST(ListingLines, BytesBeforeZeros) {
    std::string bytes(2000, '\0');
    EXPECT_EQ(filled_bytes(bytes), 0);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = 1;
        EXPECT_EQ(filled_bytes(bytes), i + 1);
        bytes[i] = 0;
    }
}

TEST(ListingLines, MoreElementsThanABlocketteDeclares) {
    blk_061_t blk{};
    blk.coef.resize(10001);
    const std::string text = written([&](std::FILE* stream) { pbrief_061(stream, &blk); });
    EXPECT_TRUE(text.ends_with("\t 9999 +0.00000E+00\n\t10000 +0.00000E+00\n"));
}

} // namespace
} // namespace quarry
