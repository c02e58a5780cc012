// Blockettes by their tables of fields: every type, damage, and the same numbers as the listing's parsers.

#include "support.h"

#include "blockette/blockette.h"
#include "blockette/response.h"
#include "blockette/sdblknam.h"
#include "blockette/station.h"
#include "blockette/timespan.h"
#include "blockette/volume.h"
#include "quarry/fields.h"
#include "seedio/seed.h"

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <sstream>

namespace quarry {
namespace {

std::string shown(const FieldValue& value) {
    if (const auto* integer = std::get_if<std::int64_t>(&value))
        return std::to_string(*integer);
    if (const auto* real = std::get_if<double>(&value))
        return written([&](std::FILE* stream) { std::fprintf(stream, "%.9g", *real); });
    if (const auto* text = std::get_if<std::string_view>(&value))
        return "'" + std::string(*text) + "'";
    return "absent";
}

// A line a field; the rows of a group stand below their count, each begun by a dash.
std::string shown(std::span<const Field> fields, const std::string& indent = "  ") {
    std::string lines;
    while (!fields.empty()) {
        const Field& field = fields.front();
        lines += indent + std::to_string(field.spec->number) + " " + std::string(field.spec->name) + " = " +
                 shown(field.value) + "\n";
        const GroupRows rows = rows_at(fields);
        for (const auto row : rows)
            lines += indent + "-\n" + shown(row, indent + "  ");
        fields = fields.subspan(1 + rows.fields().size());
    }
    return lines;
}

// What is wrong with a blockette, a line each.
std::string faults_of(const Fields& blockette) {
    std::string lines;
    for (const auto& [fault, field] : blockette.problems)
        lines += std::string(field.spec->name) + " '" +
                 std::string(is_binary_number(field.spec->kind) ? "" : field.raw) + "' at " +
                 std::to_string(field.offset) + " " + std::string(describe(fault)) + "\n";
    if (!blockette.surplus.empty())
        lines += "surplus '" + std::string(blockette.surplus) + "'\n";
    return lines;
}

// --- every type ----------------------------------------------------------------------------------------

// The texts of the types, a bar after each field; those of data blockettes in hexadecimal digits.
struct TypeCase {
    int type;
    const char* text;
};
const TypeCase type_cases[] = {
    {5, "005|0036|02.4|14|2005,032,10:20:03.0000~"},
    {8, "008|0081|02.4|14|T    |UU|VVV|2005,032,10:20:06.0000~|2005,008~|~|2005,032,10:20:09.0000~|QQ"},
    {10, "010|0077|02.4|14|2005,032,10:20:03.0000~|2005,005~|~|originating organization~|label~"},
    {11, "011|0032|002|SSS  |    21|UU   |    35"},
    {12, "012|0071|0002|~|2005,032,10:20:03.0000~|000028|~|2005,032,10:20:06.0000~|    49"},
    {30, "030|0065|short descriptive name~|0014| 21|02|decoder keys~|decoder keys~"},
    {31, "031|0038|   7|S|description of comment~|028"},
    {32, "032|0074| 7|name of publication author~|date published catalog~|publisher name~"},
    {33, "033|0035|  7|abbreviation description~"},
    {34, "034|0037|  7|unit name~|unit description~"},
    {35, "035|0052|  7|0002|T    |UU|VVV|0042|   49|YYY  |Z |QQ |  77|00084"},
    {41, "041|0064|   7|response name~|T|028| 35|0002|  -7.25000E+00|   8.25000E+01"},
    {42,
     "042|0145|   7|response name~|T|028| 35|W|X| 8.25000E+01|-9.25000E+02| 1.02500E-01|-1.12500E+00| 1.22500E+01|002| 1.42500E+03|-1.52500E-01| 1.62500E+00|-1.72500E+01"},
    {43,
     "043|0254|   7|response name~|T|028| 35| 6.25000E-01|-7.25000E+00|002|-9.25000E+02| 1.02500E-01|-1.12500E+00| 1.22500E+01|-1.32500E+02| 1.42500E+03|-1.52500E-01| 1.62500E+00|002| 1.82500E+02|-1.92500E+03| 2.02500E-01|-2.12500E+00| 2.22500E+01|-2.32500E+02| 2.42500E+03|-2.52500E-01"},
    {44,
     "044|0136|   7|response name~|T|028| 35|0002|-7.25000E+00| 8.25000E+01|-9.25000E+02| 1.02500E-01|0002| 1.22500E+01|-1.32500E+02| 1.42500E+03|-1.52500E-01"},
    {45,
     "045|0155|   7|response name~| 21|028|0002| 6.25000E-01|-7.25000E+00| 8.25000E+01|-9.25000E+02| 1.02500E-01|-1.12500E+00| 1.22500E+01|-1.32500E+02| 1.42500E+03|-1.52500E-01"},
    {46, "046|0083|   7|response name~| 21|028|0002| 6.25000E-01|-7.25000E+00| 8.25000E+01|-9.25000E+02"},
    {47, "047|0067|   7|response name~|   -3.5000|00028|   35|     6.5000|    -7.5000"},
    {48,
     "048|0101|   7|response name~|-3.25000E+01| 4.25000E+02|02| 6.25000E-01|-7.25000E+00|~|-9.25000E+02| 1.02500E-01|~"},
    {50,
     "050|0093|RR   |    2.5000|    -3.5000|    4.5|  35|042|site name~|056|  63|70|~|2005,032,10:20:12.0000~|T|UU"},
    {51, "051|0027|2005,002~|~|  21|000028"},
    {52,
     "052|0154|RR|SSS|  21|028|optional comment~|042| 49|    8.5000|    -9.5000|   10.5|-11.5| 12.5|-13.5|0098| 5|   16.5000|  -17.5000|0126|channel flags~|~|2005,032,10:20:21.0000~|S"},
    {53,
     "053|0238|R|14| 21|028|-5.25000E-02| 6.25000E-01|002| 8.25000E+01|-9.25000E+02| 1.02500E-01|-1.12500E+00| 1.22500E+01|-1.32500E+02| 1.42500E+03|-1.52500E-01|002|-1.72500E+01| 1.82500E+02|-1.92500E+03| 2.02500E-01|-2.12500E+00| 2.22500E+01|-2.32500E+02| 2.42500E+03"},
    {54,
     "054|0120|R|14| 21|028|0002| 6.25000E-01|-7.25000E+00| 8.25000E+01|-9.25000E+02|0002|-1.12500E+00| 1.22500E+01|-1.32500E+02| 1.42500E+03"},
    {55,
     "055|0139| 7|014| 21|0002|-5.25000E-02| 6.25000E-01|-7.25000E+00| 8.25000E+01|-9.25000E+02| 1.02500E-01|-1.12500E+00| 1.22500E+01|-1.32500E+02| 1.42500E+03"},
    {56, "056|0067| 7|014| 21|0002|-5.25000E-02| 6.25000E-01|-7.25000E+00| 8.25000E+01"},
    {57, "057|0051| 7|    2.5000|   21|00028|    -5.5000|     6.5000"},
    {58,
     "058|0101| 7| 2.25000E+00|-3.25000E+01|02|-5.25000E-02| 6.25000E-01|2005,008~| 8.25000E+01|-9.25000E+02|2005,011~"},
    {59, "059|0027|2005,002~|~|  21|000028"},
    {60, "060|0033|02|14|02|0028|  35|42|02|0056|  63"},
    {61, "061|0062| 7|response name~|T|028| 35|0002|  -7.25000E+00|   8.25000E+01"},
    {62,
     "062|0129|R|14| 21|028|V|W|-7.25000E+00| 8.25000E+01|-9.25000E+02| 1.02500E-01|-1.12500E+00|002|-1.32500E+02| 1.42500E+03|-1.52500E-01| 1.62500E+00"},
    {70, "070|0032|R|~|2005,032,10:20:03.0000~"},
    {71,
     "071|0103|2005,002~|14|   -3.5000|     4.5000|   -5.5|02| -7.5|magnitude ~|63| 10.5|magnitude ~|84| 91|0098|region name~"},
    {72, "072|0074|RR   |SS|T  |2005,005~|   -5.5000|    6.5000|   -7.5000|name of phase~|63|QQ"},
    {73, "073|0049|0002|SSS  |T |UU |~|000042|49|YYY  |Z |QQ |~|000084|91"},
    {74, "074|0074|RR   |SS|T  |2005,005~|    35|42|2005,008~|000056|63|002|~|000084|91|~|   105|12|XX"},
    {100, "0064|0003|3fc00000|4a|6f|94|b9"},
    {200,
     "00c8|0006|3fc00000|40200000|40600000|94|b9|07d5|0020|0a|14|1e|00|04d2|416220633600000000000000000000000000000000000000"},
    {201,
     "00c9|0007|3fc00000|40200000|40600000|94|b9|07d5|0020|0a|14|1e|00|04d2|de|03|28|4d|72|97|bc|e1|416220633134202020202020202020202020202020202020"},
    {300,
     "012c|0009|07d5|0020|0a|14|1e|00|04d2|25|4a|ee6b2803|ee6b2804|40b00000|416220|03|ee6b2808|416220633920202020202020|416220633130202020202020"},
    {310,
     "0136|0013|07d5|0020|0a|14|1e|00|04d2|25|4a|ee6b2803|40900000|40b00000|416220|03|ee6b2808|416220633920202020202020|416220633130202020202020"},
    {320,
     "0140|001d|07d5|0020|0a|14|1e|00|04d2|25|4a|ee6b2803|40900000|416220|de|ee6b2807|416220633820202020202020|416220633920202020202020|4162206320202020"},
    {390, "0186|0002|07d5|0020|0a|14|1e|00|04d2|25|4a|ee6b2803|40900000|416220|de"},
    {395, "018b|0007|07d5|0020|0a|14|1e|00|04d2|25|4a"},
    {400, "0190|000c|3fc00000|40200000|ea63|94|b9"},
    {405, "0195|0011|0001|fffe"},
    {500,
     "01f4|000f|3fc00000|07d5|0020|0a|14|1e|00|04d2|f0|6f|ee6b2804|41622063352020202020202020202020|4162206336202020202020202020202020202020202020202020202020202020|4162206337202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020202020"},
    {1000, "03e8|001e|25|4a|6f|94"},
    {1001, "03e9|001f|25|f0|6f|94"},
    {2000, "07d0|0000|001b|0017|00000007|01|05|02|6f6e657e|74776f7e|00417e00"},
};

std::string from_hexadecimal(const std::string& hexadecimal) {
    std::string bytes;
    for (std::size_t at = 0; at < hexadecimal.size(); at += 2)
        bytes += static_cast<char>(std::stoi(hexadecimal.substr(at, 2), nullptr, 16));
    return bytes;
}

std::vector<std::string> pieces_of(const TypeCase& one) {
    std::vector<std::string> pieces;
    std::istringstream text(one.text);
    for (std::string piece; std::getline(text, piece, '|');)
        pieces.push_back(one.type < 100 ? piece : from_hexadecimal(piece));
    return pieces;
}

std::string joined(const std::vector<std::string>& pieces) {
    std::string text;
    for (const std::string& piece : pieces)
        text += piece;
    return text;
}

TEST(Fields, EveryType) {
    std::string out;
    std::vector<int> types;
    for (const TypeCase& one : type_cases) {
        std::vector<std::string> pieces = pieces_of(one);
        const std::string text = joined(pieces);
        const Fields blockette = decode_blockette(one.type, text);
        EXPECT_EQ(faults_of(blockette), "") << one.type;
        ASSERT_EQ(blockette.fields.size(), pieces.size()) << one.type;
        for (std::size_t i = 0; i < pieces.size(); ++i) {
            const Field& field = blockette.fields[i];
            EXPECT_EQ(pieces[i].substr(0, pieces[i].size() - (pieces[i].ends_with('~') ? 1 : 0)), field.raw)
                << field.spec->name;
            if (is_binary_number(field.spec->kind))
                std::reverse(pieces[i].begin(), pieces[i].end());
        }
        out += digits(one.type, 3) + " " + std::string(blockette.spec->name) + ": " +
               std::string(blockette.spec->title) + "\n" + shown(blockette.fields);
        types.push_back(one.type);

        const std::string other = joined(pieces);
        EXPECT_EQ(shown(decode_blockette(one.type, other, std::endian::little).fields),
                  shown(blockette.fields))
            << one.type;
    }
    expect_recorded("Fields", "EveryType", {out, "", 0});
    EXPECT_TRUE(std::ranges::equal(blockette_specs(), types, {}, &BlocketteSpec::type));
}

// --- damage --------------------------------------------------------------------------------------------

TEST(Fields, FaultsAreReportedWhereTheyStand) {
    const std::string row(24, '1');
    struct {
        int type;
        std::string text;
        const char* faults;
    } const cases[] = {
        // What an older version lacks is no fault, a number cut short is.
        {50, "0500066AB    45.123456-118.500000 1234.5   4  2A site~0123210101998,001~~U", ""},
        {33, "0330011", ""},
        {33, "0330011 4", "abbreviation_lookup_code ' 4' at 7 is cut short by the blockette's end\n"},
        {34, "0340025001M/S~Velocity", "unit_description 'Velocity' at 14 is not closed by \"~\"\n"},
        {33, "0330011001STS~ tail", "surplus ' tail'\n"},
        {34, "0340035001metres per second squared~~",
         "unit_name 'metres per second squared' at 10 is longer than its limit\n"},
        {57, "0570051 1   20.0O00    1   1x          -        1.5",
         "input_sample_rate '   20.0O00' at 9 is not a number\n"
         "decimation_offset '   1x' at 24 is not a number\n"
         "estimated_delay '          -' at 29 is not a number\n"},
        {58, "05800350          nan      1E+999 0",
         "sensitivity_gain '         nan' at 9 is not a number\n"
         "frequency '      1E+999' at 21 is not a number\n"},
        // Counts of more than there is: at the end of a row, within a row, within a row's own group.
        {54,
         "0549999A01001002"
         "9999" +
             row + row,
         "number_of_numerators '9999' at 16 counts more than the blockette holds\n"},
        {54,
         "0549999A01001002"
         "9999" +
             row + row.substr(0, 12),
         "number_of_numerators '9999' at 16 counts more than the blockette holds\n"},
        {60,
         "0600099"
         "99"
         "0102"
         "1111",
         "number_of_responses '02' at 11 counts more than the blockette holds\n"},
        {60,
         "0600099"
         "99"
         "0101"
         "1111",
         "number_of_stages '99' at 7 counts more than the blockette holds\n"},
        {54,
         "0540048A01001002"
         "-001"
         "   1" +
             row,
         "number_of_numerators '-001' at 16 is a negative count\n"},
        {99, "0990010abc", ""},
        {58, "", ""},
    };
    for (const auto& one : cases)
        EXPECT_EQ(faults_of(decode_blockette(one.type, one.text)), one.faults) << one.text;
}

TEST(Fields, BinaryFaults) {
    struct {
        int type;
        const char* hexadecimal;
        const char* faults;
        const char* last; // field
    } const cases[] = {
        {100,
         "00640000"
         "7fc00000",
         "samprate '' at 4 is not a number\n", "samprate = absent"},
        {100,
         "00640000"
         "3f80",
         "samprate '' at 4 is cut short by the blockette's end\n", "samprate = absent"},
        {405,
         "01950000"
         "000100020a",
         "delay_values '' at 8 is cut short by the blockette's end\n", "delay_values = absent"},
        // Opaque bytes after a gap, up to the length; then an offset within the fields and one beyond the
        // end.
        {2000,
         "07d00000"
         "00130011"
         "00000001"
         "010001"
         "7e"
         "00"
         "7879"
         "7a",
         "surplus 'z'\n", "payload = 'xy'"},
        {2000,
         "07d00000"
         "00110008"
         "00000001"
         "010000"
         "7879",
         "data_offset '' at 6 points outside the opaque bytes\n", "payload = 'xy'"},
        {2000,
         "07d00000"
         "00000012"
         "00000001"
         "010000"
         "7879",
         "data_offset '' at 6 points outside the opaque bytes\n", "payload = 'xy'"},
    };
    for (const auto& one : cases) {
        const std::string bytes = from_hexadecimal(one.hexadecimal);
        const Fields blockette = decode_blockette(one.type, bytes);
        EXPECT_EQ(faults_of(blockette), one.faults) << one.hexadecimal;
        EXPECT_TRUE(shown(blockette.fields).ends_with(std::string(one.last) + "\n"))
            << shown(blockette.fields);
    }
}

TEST(Fields, ValuesByName) {
    const std::string text = "0580108 1"
                             "     1.5E 03"
                             "          x1"
                             "02" +
                             exponent(2) + std::string(12, ' ') + "~" + "     1.5E 30" + exponent(4) +
                             "1998~";
    const Fields blockette = decode_blockette(58, text);
    EXPECT_EQ(integer_field(blockette.fields, "stage_sequence_number"), 1);
    EXPECT_EQ(real_field(blockette.fields, "stage_sequence_number"), 1.0);
    EXPECT_EQ(real_field(blockette.fields, "sensitivity_gain"), 1500.0);
    EXPECT_EQ(integer_field(blockette.fields, "sensitivity_gain"), std::nullopt);
    EXPECT_EQ(real_field(std::span(blockette.fields).last(3), "sensitivity_for_calibration"), 1.5e30);
    EXPECT_EQ(text_field(blockette.fields, "frequency"), "x1");
    EXPECT_EQ(real_field(blockette.fields, "frequency"), std::nullopt);
    EXPECT_EQ(real_field(blockette.fields, "nothing"), std::nullopt);
    EXPECT_TRUE(rows_of(blockette.fields, "nothing").empty());
    std::vector<std::optional<double>> frequencies;
    for (const auto row : rows_of(blockette.fields, "number_of_history_values"))
        frequencies.push_back(real_field(row, "frequency_of_calibration_sensitivity"));
    EXPECT_EQ(frequencies, (std::vector<std::optional<double>>{std::nullopt, 4.0}));
    const Field* blank = find_field(blockette.fields, "frequency_of_calibration_sensitivity");
    EXPECT_EQ(blank->raw, std::string(12, ' '));
    EXPECT_EQ(blank->value, FieldValue());
}

// However damaged, every byte of a blockette is in one field, its "~" or the surplus, in wire order.
TEST(Fields, EveryByteIsSomewhere) {
    std::mt19937 random(1);
    Fields blockette;
    for (int round = 0; round < 20000; ++round) {
        const TypeCase& one = type_cases[random() % (std::size(type_cases) - 1)]; // the last may have a gap
        std::string text = joined(pieces_of(one));
        for (std::size_t hits = random() % 4; hits > 0; --hits)
            text[random() % text.size()] = "0123456789~ -E.\0\xff"[random() % 17];
        text.resize(random() % 3 == 0 ? random() % text.size() : text.size());
        decode_blockette(one.type, text, std::endian::little, &blockette);
        std::size_t at = 0;
        for (const Field& field : blockette.fields) {
            ASSERT_EQ(field.offset, at) << text;
            ASSERT_EQ(field.raw, text.substr(at, field.raw.size()));
            at += field.raw.size();
            if (field.spec->kind == FieldKind::variable_text || field.spec->kind == FieldKind::time)
                at = std::min(at + 1, text.size());
        }
        ASSERT_EQ(text.substr(at), blockette.surplus);
        const Fields fresh = decode_blockette(one.type, text, std::endian::little);
        ASSERT_EQ(faults_of(blockette), faults_of(fresh)); // nothing is left of the blockette before
    }
}

// --- beside the listing's parsers ----------------------------------------------------------------------

using Numbers = std::vector<double>;

// The numbers of a blockette after its type and length, in wire order.
Numbers decoded_numbers(const Fields& blockette) {
    Numbers numbers;
    for (const Field& field : std::span(blockette.fields).subspan(2))
        if (const auto number = real_field({&field, 1}, field.spec->name))
            numbers.push_back(*number);
    return numbers;
}

template <class... Values>
void append(Numbers* numbers, Values... values) {
    (numbers->push_back(values), ...);
}

void append_list(Numbers* numbers, int count, const std::vector<Complex_t>& values,
                 const std::vector<Complex_t>& errors) {
    append(numbers, count);
    for (std::size_t i = 0; i < values.size(); ++i)
        append(numbers, values[i].real, values[i].imag, errors[i].real, errors[i].imag);
}

void append_list(Numbers* numbers, int count, const std::vector<double>& values,
                 const std::vector<double>& errors) {
    append(numbers, count);
    for (std::size_t i = 0; i < values.size(); ++i)
        append(numbers, values[i], errors[i]);
}

template <class... Values>
Numbers numbers(Values... values) {
    Numbers result;
    append(&result, values...);
    return result;
}

Numbers parsed_numbers(const blk_010_t& b) {
    return numbers(b.version, b.rec_len);
}
Numbers parsed_numbers(const blk_011_t& b) {
    Numbers result = numbers(b.num_stn);
    result.insert(result.end(), b.seq_num.begin(), b.seq_num.end());
    return result;
}
Numbers parsed_numbers(const blk_052_t& b) {
    return numbers(b.subchan_id, b.instr_id, b.units_signal, b.units_cal, b.lat, b.lon, b.elev, b.depth,
                   b.azimuth, b.dip, b.format_id, b.record_length, b.sample_rate, b.max_drift,
                   b.num_comments);
}
Numbers parsed_numbers(const blk_053_t& b) {
    Numbers result = numbers(b.stage_num, b.input_units, b.output_units, b.normal_factor, b.normal_freq);
    append_list(&result, b.num_zeros, b.zero, b.zero_error);
    append_list(&result, b.num_poles, b.pole, b.pole_error);
    return result;
}
Numbers parsed_numbers(const blk_054_t& b) {
    Numbers result = numbers(b.stage_num, b.input_units, b.output_units);
    append_list(&result, b.num_numer, b.numer_coef, b.numer_error);
    append_list(&result, b.num_denom, b.denom_coef, b.denom_error);
    return result;
}
Numbers parsed_numbers(const blk_057_t& b) {
    return numbers(b.stage_num, b.samprate, b.dec_factor, b.dec_offset, b.delay, b.correction);
}
Numbers parsed_numbers(const blk_058_t& b) {
    return numbers(b.stage_num, b.gain, b.freq, 0); // the listing does not read the history
}
Numbers parsed_numbers(const blk_061_t& b) {
    Numbers result = numbers(b.stage_num, b.input_units, b.output_units, b.num_coef);
    result.insert(result.end(), b.coef.begin(), b.coef.end());
    return result;
}
Numbers parsed_numbers(const blk_071_t& b) {
    Numbers result = numbers(b.source_id, b.lat, b.lon, b.depth, b.num_mags);
    for (int i = 0; i < b.num_mags; ++i)
        append(&result, b.mag[i], b.mag_source[i]);
    append(&result, b.grn, b.srn);
    return result;
}
Numbers parsed_numbers(const blk_073_t& b) {
    Numbers result = numbers(b.num_segs);
    for (int i = 0; i < b.num_segs; ++i)
        append(&result, b.seq_num[i], b.sub_seq_num[i]);
    return result;
}
Numbers parsed_numbers(const blk_074_t& b) {
    Numbers result =
        numbers(b.first_seq_num, b.first_sub_seq_num, b.last_seq_num, b.last_sub_seq_num, b.num_repeats);
    for (int i = 0; i < b.num_repeats; ++i)
        append(&result, b.req_seq_num[i], b.req_sub_seq_num[i]);
    return result;
}

template <class Record>
Numbers numbers_of(const void* record) {
    return parsed_numbers(*static_cast<const Record*>(record));
}

TEST(Fields, SameNumbersAsTheListing) {
    std::map<int, Numbers (*)(const void*)> parsers = {
        {10, numbers_of<blk_010_t>}, {11, numbers_of<blk_011_t>}, {52, numbers_of<blk_052_t>},
        {53, numbers_of<blk_053_t>}, {54, numbers_of<blk_054_t>}, {57, numbers_of<blk_057_t>},
        {58, numbers_of<blk_058_t>}, {61, numbers_of<blk_061_t>}, {71, numbers_of<blk_071_t>},
        {73, numbers_of<blk_073_t>}, {74, numbers_of<blk_074_t>}};
    const TemporaryDirectory directory;
    read_handle_t* handle = seed_read(directory.file("demo.seed", demonstration_volume()).c_str());
    std::set<int> compared;
    void* record = nullptr;
    int type = 0;
    while (read_blk(handle, &record, &type) != 0) {
        const BlockettePointer owner(record, {type});
        if (type < 0)
            continue;
        const std::string_view text(handle->image.data() + logical_header_size,
                                    static_cast<std::size_t>(handle->bufflength));
        const Fields blockette = decode_blockette(type, text);
        EXPECT_EQ(faults_of(blockette), "") << text;
        EXPECT_EQ(integer_field(blockette.fields, "length"), block_size(record, type));
        if (!parsers.contains(type))
            continue;
        EXPECT_EQ(decoded_numbers(blockette), parsers[type](record)) << text;
        compared.insert(type);
    }
    free_handle(handle);
    EXPECT_EQ(compared.size(), parsers.size());
}

TEST(Catalogue, TheListingKnowsItsTypesOnly) {
    EXPECT_EQ(Nseed, 48);
    EXPECT_STREQ(sdinfo.back().name, "Data Only SEED");
}

} // namespace
} // namespace quarry
