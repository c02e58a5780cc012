// The lines of the listing: every blockette type from its text to its line, against lines written by hand.

#include "support.h"

#include "blockette/blockette.h"
#include "blockette/station.h"
#include "listing/pbrief.h"
#include "state.h"

#include <gtest/gtest.h>

namespace quarry {
namespace {

struct Case {
    int type;
    std::string fields;
    const char* listing;
};

class ListingTest : public testing::Test {
protected:
    ListingTest() {
        name_the_log();
        Simplify = 0;
        blk_050 = {};
        blk_052 = {};
    }
};

TEST_F(ListingTest, EveryTypeOnItsLine) {
    const std::string full = "1999,123,04:05:06.7890";
    const std::vector<Case> cases = {
        {10, " 2.412" + full + "~2000~2001,001~An org~A label~",
         "B010  65 Version 2.4  LogRecLen 12  Start:1999,123,04:05:06.7890 End:                2000 <Volume "
         "Identifier >\n"},
        {11, "002  ABC000012LONGS999999",
         "B011  32 2 Stations  <Volume Station Header Index >\n"
         "\t  0   ABC     12\n"
         "\t  1 LONGS 999999\n"},
        {12, "0001" + full + "~~000017",
         "B012  41 #spans    1 <Volume Time Span Index>\n"
         "\t    0 Start:1999,123,04:05:06.7890 End:                     seq#    17\n"},
        {30, "Steim~0003050 2F1 P4~A key of more than twenty~",
         "B030  54 Steim                                              id#   3 type# 50     2 keys <Data "
         "Format "
         "Dictionary >\n"
         "\t 0                F1 P4 \n"
         "\t 1 A key of more than twenty \n"},
        {31, "0012 Time is off~007",
         "B031  27 Id#  12 Class:  units:  7 'Time is off' <Comment Description >\n"},
        {32, "03 Smith ~1999~~",
         "B032  23 Id# 3 Author:Smith Catalog/Date:1999 Publisher: <Cited Source Dictionary>\n"},
        {33, "005STS~", "B033  14 Id#  5 'STS' <Generic Abbreviation>\n"},
        {34, "006M/S~Velocity~", "B034  23 Id#  6 Unit:'M/S' Desc:'Velocity' <Units Abbreviation>\n"},
        {50, "AB    45.123456-118.500000 1234.5   4  2A site~0123210101998,001~~UXX",
         "B050  76   AB XX ( 45.123456,-118.500000) 1234.5m @ 'A site' NetId#   12 Long:3210 Word:10 Order  "
         "Start:            1998,001 End:                     Update:U <Station Identifier>\n"},
        {51, "1998~" + full + "~0007000003",
         "B051  45 Start:                1998 End:1999,123,04:05:06.7890 Id#   7 Level#     3 <Station "
         "Comment>\n"},
        {52,
         "00BHZ0000005Borehole~001002 45.123456 -118.5000001234.5100.5  0.0-90.0000112   20.0000 "
         "1.000E-050000CG~1998,001~~N",
         "B052 121 Loc:00 Chan:BHZ Sub#   0 Instr#  5 SigUnits#  1 CalUnits#  2 ( 45.12,-118.50) 1234.50m  "
         "Depth:100.50m  Az:  0.00 Dip:-90.00 DataFmt#   1 RecLen:12 Samprate: 20.00hz  ClkDrift:  0.00s "
         "Flags:'CG' Start:            1998,001 End:                     Update:N 'Borehole' <Channel "
         "Identifier>\n"},
        {57, "03   40.0000    2    0     0.0250    -0.0250",
         "B057 51 Stage# 3 SampRateIn: 40.00Hz Decimation:    2 Offset:    0 Delay: 0.025s "
         "Correction:-0.025s "
         "<Decimation>\n"},
        {58, "03 1.50000E+03 1.00000E+00 0",
         "B058  35 Stage#    3 Gain:1.500000e+03 Freq:  1.0000Hz <Channel Sensitivity/Gain>\n"},
        {58, "00 6.00000E 08 2.00000E-02 0", // a blank for the sign of the exponent
         "B058  35 Stage#    0 Sensitivity::6.000000e+08 Freq:  0.0200Hz <Channel Sensitivity/Gain>\n"},
        {59, "1998~~0007000003",
         "B059 23 Start:                1998 End:                     Comment#   7 Level#     3 <Channel "
         "Comment>\n"},
        {61, "03A filter~A003003   2  2.500000E-01 -5.000000E-01",
         "B061 57 stage# 3 'A filter' Symmetry: A Input:  3 Output:  3     2 Coefficients: <FIR Response>\n"
         "\t    0 +2.50000E-01\n"
         "\t    1 -5.00000E-01\n"},
        {70, "E" + full + "~2000~",
         "B070  36 Type:E Start:1999,123,04:05:06.7890 End:                2000 <Time Span Identifier>\n"},
        {71, full + "~01   46.2500     7.5000   10.0 2 5.40mb~01 5.60MW~02543  12SWITZERLAND~",
         "B071 101 Time:1999,123,04:05:06.7890 Id#    1 ( 46.25,  7.50) Depth: 10.00km #:2 grn=543 srn=12 "
         "gregion='SWITZERLAND' <Hypocenter Information>\n"
         "\t 0 Magnitude:  5.40 Source: 1 'mb'\n"
         "\t 1 Magnitude:  5.60 Source: 2 'MW'\n"},
        {72, "AB   00BHZ" + full + "~  125.5000    1.2500    8.0000P~01XX",
         "B072  76    AB Loc:00 Chan:BHZ Time:1999,123,04:05:06.7890 Amp:125.50 Period:  1.25 S/N:  8.00 "
         "Phase:'P' source=1 net=XX <Event Phases>\n"},
        {73, "0002AB   00BHZ" + full + "~00000901CD     LHZ1999~00001002",
         "B073  75 Segment #    0 of     2 Sta:    AB Loc: 00 Chan: BHZ Start:1999,123,04:05:06.7890 seq#    "
         " "
         "9 subseq#     1 <Time Span Data Start Index>\n"
         "B073  75 Segment #    1 of     2 Sta:    CD Loc:    Chan: LHZ Start:                1999 seq#    "
         "10 "
         "subseq#     2 <Time Span Data Start Index>\n"},
        {73, "0000", ""},
        {74, "AB   00BHZ" + full + "~00000901" + full + "~0000120200100000~00001101XX",
         "B074  98 Net: XX Sta:    AB Loc: 00 Chan: BHZ Start:1999,123,04:05:06.7890 seq#     9 subseq#     "
         "1 "
         "End:1999,123,04:05:06.7890 seq#    12 subseq#     2 #repeats     1 <Time Series Index>\n"
         "\t  0 Start:               00000 seq#    11 subseq#     1\n"},
        // Values that leave every field wider than they are.
        {10, " 2.4 82000~~~~~",
         "B010  22 Version 2.4  LogRecLen  8  Start:                2000 End:                     <Volume "
         "Identifier >\n"},
        {12, "00012000~2001~     1",
         "B012  27 #spans    1 <Volume Time Span Index>\n"
         "\t    0 Start:                2000 End:                2001 seq#     1\n"},
        {50, "A    " + fixed(1, 10, 6) + fixed(-2, 11, 6) + fixed(3, 7, 1) + "       ~  1   1 1~~N",
         "B050  60    A    (  1.000000, -2.000000)    3.0m @ '' NetId#    1 Long:0001 Word:01 Order  Start:  "
         "     "
         "              End:                     Update:N <Station Identifier>\n"},
        {58, "-1 1.50000E+03 1.00000E+00 0",
         "B058  35 Stage#   -1 Gain:1.500000e+03 Freq:  1.0000Hz <Channel Sensitivity/Gain>\n"},
        {71, "2000~ 1" + fixed(1, 10, 4) + fixed(2, 11, 4) + fixed(3, 7, 1) + " 0  1   2R~",
         "B071 53 Time:                2000 Id#    1 (  1.00,  2.00) Depth:  3.00km #:0 grn=1 srn=2 "
         "gregion='R' "
         "<Hypocenter Information>\n"},
        {72, "A      B  2000~" + fixed(1, 10, 4) + fixed(2, 10, 4) + fixed(3, 10, 4) + "P~ 1X ",
         "B072  58     A Loc:   Chan:  B Time:                2000 Amp:  1.00 Period:  2.00 S/N:  3.00 "
         "Phase:'P' "
         "source=1 net=X <Event Phases>\n"},
        {73, "0001A      B  2000~     1 1",
         "B073  34 Segment #    0 of     1 Sta:     A Loc:    Chan:   B Start:                2000 seq#     "
         "1 "
         "subseq#     1 <Time Span Data Start Index>\n"},
        {74, "A      B  2000~     1 12001~     2 1  0X ",
         "B074  48 Net:  X Sta:     A Loc:    Chan:   B Start:                2000 seq#     1 subseq#     1 "
         "End:    "
         "            2001 seq#     2 subseq#     1 #repeats     0 <Time Series Index>\n"},
        {60, "", "Unknown blockette:    60\n"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(listed(c.type, blockette(c.type, c.fields)), c.listing) << "type " << c.type;
}

TEST_F(ListingTest, PolesAndZerosAndCoefficients) {
    const std::string zero = exponent(0);
    const std::string value = exponent(1.5) + exponent(-2.5);
    const std::string error = exponent(0.001) + zero;
    const std::string none = zero + zero;
    const std::string invalid = zero + padded(" nan", 12);
    const std::string stage = "A04001002" + exponent(5.71404e8) + exponent(0.02);
    EXPECT_EQ(
        listed(53, blockette(53, stage + "002" + value + none + value + error + "003" + value + none + value +
                                     error + value + invalid)),
        "B053 286 Type:A Stage# 4 Input Units:  1 Output Units:  2 Norm:5.7140e+08 @  0.02Hz    3 Poles   "
        "2 Zeros  <Response (Poles and Zeros)>\n"
        "\t  n     Poles (r, i)                   Errors(r, i) \n"
        "\t  0 (+1.50000E+00 -2.50000e+00)\n"
        "\t  1 (+1.50000E+00 -2.50000e+00)   ( 1.00000e-03  0.00000e+00) \n"
        "\t  2 (+1.50000E+00 -2.50000e+00)   ( 0.00000e+00          nan) \n"
        "\t  n     Zeros (r, i)                   Errors(r, i) \n"
        "\t  0 (+1.50000E+00 -2.50000e+00)\n"
        "\t  1 (+1.50000E+00 -2.50000e+00)   ( 1.00000e-03  0.00000e+00)\n");
    EXPECT_EQ(listed(54, blockette(54, "D02003003   2" + exponent(0.25) + zero + exponent(-0.5) +
                                           exponent(0.001) + "   2" + exponent(1) + exponent(-0.002) +
                                           exponent(2) + padded(" nan", 12))),
              "B054 120 Type:D stage# 2 Input:  3 Output:  3     2 Numerators,    2 Denominators  <Response "
              "(Coefficients) >\n"
              "\t    0 +2.50000E-01\n"
              "\t    1 -5.00000E-01  +1.00000e-03\n"
              "\t    0 +1.00000E+00 -2.00000e-03\n"
              "\t    1 +2.00000E+00         +nan\n");
}

TEST_F(ListingTest, ShortChannelLine) {
    Simplify = 2; // as often as it was given
    Tbl_033 = {};
    Tbl_034 = {};
    Tbl_033.set(5, "STS-1");
    Tbl_034.set(1, "M/S");
    const std::string head = "00BHZ0000";
    const std::string tail = "Borehole~001002 45.123456 -118.5000001234.5100.5  0.0-90.0000112   20.0000 "
                             "1.000E-050000CG~1998,001~2001,001,12:00:00~N";
    EXPECT_EQ(listed(52, blockette(52, head + "005" + tail)),
              "B052 BHZ 00 STS-1 M/S 100.50m  (  0.00,-90.00)  20.00sps              1998,001 to    "
              "2001,001,12:00:00 'Borehole'\n");
    EXPECT_EQ(listed(52, blockette(52, head + "099" + tail)),
              "B052 BHZ 00  M/S 100.50m  (  0.00,-90.00)  20.00sps              1998,001 to    "
              "2001,001,12:00:00 'Borehole'\n");
}

TEST_F(ListingTest, DataHeader) {
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
    char* bytes = nullptr;
    std::size_t size = 0;
    std::FILE* stream = open_memstream(&bytes, &size);
    pbrief_blk(stream, &header, -1); // flushes, so that the bytes are there before the stream is closed
    EXPECT_EQ(
        std::string(bytes, size),
        "DATA Net:    Sta:       Loc:    Chan:      Start:                     #samples:  1000 sample rate "
        "factor:   -10 multiplier:     1 Sample_rate:        0.1 Activity: ffffffc0 I/O: 20 Quality: 0 "
        "#blks after:     2 time correction:    -5 first data byte:   128 first blockette:    48 <data "
        "blockette>\n");
    pbrief_blk(stream, nullptr, 60);
    EXPECT_EQ(std::string(bytes, size).substr(std::string(bytes).find('\n') + 1),
              "Unknown blockette:    60\n");
    std::fclose(stream);
    std::free(bytes);
}

// Counts above the capacities stay as read; what is listed, and where the next field is looked for, stops at
// the capacity.
TEST_F(ListingTest, CountsBeyondCapacity) {
    std::string magnitudes;
    for (int i = 0; i < 20; ++i)
        magnitudes += " 1.00mb~01";
    const std::string event = listed(71, blockette(71, "1999~01" + fixed(0, 10, 4) + fixed(0, 11, 4) +
                                                           fixed(0, 7, 1) + "21" + magnitudes + "012  34R~"));
    EXPECT_NE(event.find("#:21 grn=12 srn=34 gregion='R'"), std::string::npos);
    EXPECT_EQ(std::count(event.begin(), event.end(), '\n'), 21);

    std::string repeats;
    for (int i = 0; i < 64; ++i)
        repeats += "1999~00000101";
    const std::string series =
        listed(74, blockette(74, "AB     BHZ1999~000001011999~00000101065" + repeats + "XX"));
    EXPECT_NE(series.find("Net: XX"), std::string::npos);
    EXPECT_EQ(std::count(series.begin(), series.end(), '\n'), 65);

    std::string spans;
    for (int i = 0; i < 999; ++i)
        spans += "~~000001";
    const std::string index = listed(12, blockette(12, "1000" + spans));
    EXPECT_EQ(index.substr(0, index.find('\n')), "B012 8003 #spans 1000 <Volume Time Span Index>");
    EXPECT_EQ(std::count(index.begin(), index.end(), '\n'), 1000);

    EXPECT_EQ(listed(11, blockette(11, "-01")), "B011  10 -1 Stations  <Volume Station Header Index >\n");
}

// A blockette that ends early: what is missing is empty or zero, without a message.
TEST_F(ListingTest, ShortBlockettes) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(listed(33, "0330010 12"), "B033  10 Id# 12 '' <Generic Abbreviation>\n");
    EXPECT_EQ(listed(70, "0700007"), std::string("B070   7 Type:") + '\0' +
                                         " Start:                     End:                     <Time Span "
                                         "Identifier>\n");
    EXPECT_EQ(listed(50, "0500058AB    45.123456-118.500000 1234.5   4  2S~0123210101998~~N").substr(0, 17),
              "B050  58   AB    ");
    EXPECT_EQ(listed(61, "0610020 1~A   002"), "B061 20 stage# 1 '' Symmetry: A Input:  0 Output:  2     0 "
                                               "Coefficients: <FIR Response>\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

} // namespace
} // namespace quarry
