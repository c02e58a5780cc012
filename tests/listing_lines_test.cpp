// SPDX-License-Identifier: Apache-2.0
// The lines of the listing: every blockette type from its text to its line. In each text the numbers fill
// their fields, so that a field of another width would be seen.
#include "support.h"

#include "blockette/blockette.h"
#include "blockette/types.h"
#include "listing/element_lines.h"
#include "listing/pbrief.h"
#include "state.h"

namespace quarry {
namespace {

struct Case {
    const char* name;
    int type;
    std::string fields;
};

const std::string full = "1999,123,04:05:06.7890";
const std::string zero = exponent(0);
const std::string value = exponent(1.5) + exponent(-2.5);
const std::string error = exponent(0.001) + zero;
const std::string none = zero + zero;
const std::string minus_zero = padded("-0", 12);
const std::string invalid = zero + padded(" nan", 12);

// Every number as long as its field.
std::string ones(int width, int count = 1) {
    std::string digits;
    for (int i = 0; i < count; ++i)
        digits += "-" + std::string(static_cast<std::size_t>(width - 3), static_cast<char>('1' + i)) + ".5";
    return digits;
}

std::string repeated(std::string_view text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

// The lines of a listing after the case's name; of very many the first and the last, and their number.
std::string named(const std::string& name, const std::string& listing) {
    constexpr std::size_t begin = 5, end = 3;
    const std::vector<std::string> lines = split(listing, '\n');
    std::string text;
    for (std::size_t i = 0; i < lines.size(); ++i)
        if (lines.size() <= 20 || i < begin || i + end >= lines.size())
            text += name + "| " + lines[i] + "\n";
        else if (i == begin)
            text += name + "| ... of " + std::to_string(lines.size()) + " lines\n";
    return text;
}

// What the cases print on both streams, against the recorded lines.
void expect_lines(const char* test, const std::vector<Case>& cases) {
    name_the_log();
    std::string out;
    for (const auto& [name, type, fields] : cases) {
        testing::internal::CaptureStderr();
        out += named(name, listed(type, blockette(type, fields)));
        out += named(std::string(name) + ", error", testing::internal::GetCapturedStderr());
    }
    expect_recorded("ListingLines", test, out);
}

TEST(ListingLines, EveryTypeHasACase) {
    const std::string lines = content_of(std::string(QUARRY_GOLDEN) + "/ListingLines/EveryType.txt");
#define QUARRY_EXPECT_CASE(TYPE, NAME)                                                                       \
    EXPECT_TRUE((TYPE) < 0 || lines.find("| B" #NAME " ") != std::string::npos) << #NAME;
    QUARRY_BLOCKETTE_TYPES(QUARRY_EXPECT_CASE)
#undef QUARRY_EXPECT_CASE
}

// clang-format off
TEST(ListingLines, EveryType) {
    expect_lines("EveryType", {
        {"B010", 10, " 2.412" + full + "~2000~2001,001~An org~A label~"},
        {"B010 blanks", 10, " 2.4 82000~~~~~"},
        {"B011", 11, "002  ABC000012LONGS999999"},
        {"B011 negative count", 11, "-01"},
        {"B012", 12, "0002" + full + "~~1234562000~2001~     1"},
        {"B030", 30, "Steim~123405602F1 P4~A key of more than twenty~"},
        {"B031", 31, "1234 Time is off~567"},
        {"B032", 32, "03 Smith ~1999~~"},
        {"B033", 33, "567STS~"},
        {"B033 ends early", 33, "012"},
        {"B034", 34, "678M/S~Velocity~"},
        {"B050", 50, "LONGS-45.123456-118.500000-1234.51111222A site~1233210011998,001~2001~UXXX"},
        {"B050 narrow", 50, "A    " + fixed(1, 10, 6) + fixed(-2, 11, 6) + fixed(3, 7, 1) + "       ~  1   1 1~~N"},
        {"B051", 51, "1998~" + full + "~1234567890"},
        {"B052", 52, "01BHZ-002345Borehole~678901-45.123456-118.500000-1234.5100.5123.5-89.543211223456.7890-1234.56782222CGX~1998,001~2003~U"},
        {"B053", 53, "A04123456 5.71404E+08-2.00000E-02002" + value + none + value + error + "003" + value + none + value + error + value + invalid},
        {"B053 signed", 53, "B-1" + std::string("-12-34") + ones(12, 2) + "001" + ones(12, 4) + "001" + ones(12, 4)},
        {"B054", 54, "D12123456   2" + exponent(0.25) + zero + ones(12, 2) + "   2" + exponent(1) + exponent(-0.002) + exponent(2) + padded(" nan", 12)},
        {"B057", 57, "12-1234567.51234567890-12345678.5-23456789.5"},
        {"B058 gain", 58, "12" + ones(12, 2)},
        {"B058 gain below 0", 58, "-1 1.50000E+03 1.00000E+00 0"},
        {"B058 sensitivity", 58, "00 6.00000E 08 2.00000E-02 0"},
        {"B059", 59, "1998~2001~1234567890"},
        {"B061", 61, "12A filter~A123456   2" + ones(14, 2)},
        {"B061 ends early", 61, "01~A   002"},
        {"B070", 70, "E" + full + "~2000~"},
        {"B070 empty", 70, ""},
        {"B071", 71, full + "~12" + ones(10) + ones(11) + ones(7) + " 2-2.55mb~0115.60MW~12123-456SWITZERLAND~"},
        {"B071 no magnitudes", 71, "2000~ 1" + fixed(1, 10, 4) + fixed(2, 11, 4) + fixed(3, 7, 1) + " 0  1   2R~"},
        {"B072", 72, "LONGS00BHZ" + full + "~" + ones(10, 3) + "P~12XXX"},
        {"B072 narrow", 72, "A      B  2000~" + fixed(1, 10, 4) + fixed(2, 10, 4) + fixed(3, 10, 4) + "P~ 1X "},
        {"B073", 73, "0002LONGS00BHZ" + full + "~12345678CD     LHZ1999~00001002"},
        {"B073 empty", 73, "0000"},
        {"B074", 74, "LONGS00BHZ" + full + "~12345678" + full + "~234567890021998~345678912000~123456 2XXX"},
        {"B074 narrow", 74, "A      B  2000~     1 12001~     2 1  0X "},
        {"Unknown type", 60, ""},
    });
}

// Above a capacity the count stays as read; what is listed, and where the next field is looked for, stops at
// the capacity. Lists that end in their text before their count: the other elements are listed, too.
TEST(ListingLines, CountsOfElements) {
    expect_lines("CountsOfElements", {
        {"B071 beyond", 71, "1999~01" + std::string(28, ' ') + "21" + repeated(" 1.00mb~01", 20) + "012  34R~"},
        {"B074 beyond", 74, "AB     BHZ~00000101~00000101065" + repeated("1999~00000102", 64) + "XX"},
        {"B012 beyond", 12, "1000" + repeated("~~000001", 999)},
        {"B073 as many as fit", 73, "0250" + repeated("A    00BHZ~00000102", 250)},
        {"B011 short", 11, "999A    000001     000002"},
        {"B012 short", 12, "9999~~000000~2000~000000"},
        {"B030 short", 30, "N~000100199~F1~"},
        {"B053 short", 53, "A01001002" + none + "000999" + none + error + zero + minus_zero + none},
        {"B054 short", 54, "D010010029999" + zero + zero + zero + exponent(0.001) + minus_zero},
        {"B061 short", 61, "01F~A0010029999  " + zero + "  " + exponent(1)},
        {"B073 short", 73, "0250          ~00000000          ~00000002"},
    });
}
// clang-format on

TEST(ListingLines, ShortChannelLine) {
    Simplify = 2; // as often as it was given
    Tbl_033.set(5, "STS-1");
    Tbl_034.set(1, "M/S");
    const auto channel = [](const char* instrument) {
        return listed(52, blockette(52, std::string("00BHZ0000") + instrument +
                                            "Borehole~001002 45.123456 -118.5000001234.5100.5  0.0-90.0000112"
                                            "   20.0000 1.000E-050000CG~1998,001~2001,001,12:00:00~N"));
    };
    const std::string rest =
        " 100.50m  (  0.00,-90.00)  20.00sps              1998,001 to    2001,001,12:00:00 'Borehole'\n";
    EXPECT_EQ(channel("005"), "B052 BHZ 00 STS-1 M/S" + rest);
    EXPECT_EQ(channel("099"), "B052 BHZ 00  M/S" + rest);
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
    expect_recorded("ListingLines", "DataHeader",
                    written([&](std::FILE* stream) { pbrief_blk(stream, &header, -1); }));
}

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
