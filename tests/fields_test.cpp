// SPDX-License-Identifier: Apache-2.0
// Blockettes by their tables of fields: every type, damage, values by name.
#include "support.h"

#include "blockette/sdblknam.h"
#include "quarry/fields.h"

#include <algorithm>
#include <fstream>
#include <numeric>
#include <random>

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

std::string from_hexadecimal(const std::string& hexadecimal) {
    std::string bytes;
    for (std::size_t at = 0; at < hexadecimal.size(); at += 2)
        bytes += static_cast<char>(std::stoi(hexadecimal.substr(at, 2), nullptr, 16));
    return bytes;
}

// A line of blockettes.txt: a type, and the fields with a bar between them, those of data blockettes in
// hexadecimal digits.
struct TypeCase {
    int type;
    std::vector<std::string> pieces;
};

std::vector<TypeCase> type_cases() {
    std::vector<TypeCase> cases;
    std::ifstream lines(QUARRY_BLOCKETTES);
    int type = 0;
    for (std::string line; lines >> type && lines.get() && std::getline(lines, line);) {
        std::vector<std::string> pieces = split(line, '|');
        if (type >= 100)
            std::ranges::transform(pieces, pieces.begin(), from_hexadecimal);
        cases.push_back({type, pieces});
    }
    return cases;
}

std::string joined(const std::vector<std::string>& pieces) {
    return std::accumulate(pieces.begin(), pieces.end(), std::string());
}

TEST(Fields, EveryType) {
    std::string out;
    std::vector<int> types;
    for (auto& [type, pieces] : type_cases()) {
        SCOPED_TRACE(type);
        const std::string text = joined(pieces);
        const Fields blockette = decode_blockette(type, text);
        EXPECT_EQ(faults_of(blockette), "");
        ASSERT_EQ(blockette.fields.size(), pieces.size());
        for (std::size_t i = 0; i < pieces.size(); ++i) {
            const Field& field = blockette.fields[i];
            EXPECT_EQ(pieces[i].substr(0, pieces[i].size() - (pieces[i].ends_with('~') ? 1 : 0)), field.raw);
            if (is_binary_number(field.spec->kind))
                std::ranges::reverse(pieces[i]);
        }
        out += digits(type, 3) + " " + std::string(blockette.spec->name) + ": " +
               std::string(blockette.spec->title) + "\n" + shown(blockette.fields);
        types.push_back(type);
        const std::string other = joined(pieces);
        EXPECT_EQ(shown(decode_blockette(type, other, std::endian::little).fields), shown(blockette.fields));
    }
    expect_recorded("Fields", "EveryType", out);
    EXPECT_TRUE(std::ranges::equal(blockette_specs(), types, {}, &BlocketteSpec::type));
}

TEST(Fields, FaultsAreReportedWhereTheyStand) {
    const std::string row(24, '1');
    const struct {
        const char* what;
        int type;
        std::string text;
    } cases[] = {
        {"older version", 50, "0500066AB    45.123456-118.500000 1234.5   4  2A site~0123210101998,001~~U"},
        {"no fields", 33, "0330011"},
        {"number cut short", 33, "0330011 4"},
        {"text not closed", 34, "0340025001M/S~Velocity"},
        {"surplus", 33, "0330011001STS~ tail"},
        {"long text", 34, "0340035001metres per second squared~~"},
        {"no numbers", 57, "0570051 1   20.0O00    1   1x          -        1.5"},
        {"no times", 59, "05900372005,367~ unknown ~0001000000"},
        {"blank time", 59, "0590027 1998~ ~0001000000"},
        {"not finite", 58, "05800350          nan      1E+999 0"},
        {"rows missing", 54, "0549999A010010029999" + row + row},
        {"row cut short", 54, "0549999A010010029999" + row + row.substr(0, 12)},
        {"rows of a row missing", 60, "06000999901021111"},
        {"rows behind a row missing", 60, "06000999901011111"},
        {"negative count", 54, "0540048A01001002-001   1" + row},
        {"unknown type", 99, "0990010abc"},
        {"empty", 58, ""},
        {"number not finite", 100, from_hexadecimal("006400007fc00000")},
        {"binary number cut short", 100, from_hexadecimal("006400003f80")},
        {"array cut short", 405, from_hexadecimal("01950000000100020a")},
        {"gap before opaque bytes", 2000, from_hexadecimal("07d0000000130011000000010100017e0078797a")},
        {"offset within the fields", 2000, from_hexadecimal("07d0000000110008000000010100007879")},
        {"offset beyond the end", 2000, from_hexadecimal("07d0000000000012000000010100007879")},
    };
    std::string out;
    for (const auto& [what, type, text] : cases) {
        const Fields blockette = decode_blockette(type, text);
        out += std::string(what) + ":\n" + faults_of(blockette);
        if (!blockette.fields.empty())
            out += shown(std::span(blockette.fields).last(1));
    }
    expect_recorded("Fields", "Faults", out);
}

TEST(Fields, ValuesByName) {
    const std::string text = "0580108 1     1.5E 03          x102" + exponent(2) + std::string(12, ' ') +
                             "~" + "     1.5E 30" + exponent(4) + "1998~";
    const Fields blockette = decode_blockette(58, text);
    EXPECT_EQ(integer_field(blockette.fields, "stage_sequence_number"), 1);
    EXPECT_EQ(real_field(blockette.fields, "stage_sequence_number"), 1.0);
    EXPECT_EQ(real_field(blockette.fields, "sensitivity_gain"), 1500.0);
    EXPECT_EQ(integer_field(blockette.fields, "sensitivity_gain"), std::nullopt);
    EXPECT_EQ(text_field(blockette.fields, "frequency"), "x1");
    EXPECT_EQ(real_field(blockette.fields, "frequency"), std::nullopt);
    EXPECT_EQ(real_field(blockette.fields, "nothing"), std::nullopt);
    EXPECT_TRUE(rows_of(blockette.fields, "nothing").empty());
    std::vector<std::optional<double>> frequencies;
    for (const auto row : rows_of(blockette.fields, "number_of_history_values"))
        frequencies.push_back(real_field(row, "frequency_of_calibration_sensitivity"));
    EXPECT_EQ(frequencies, (std::vector<std::optional<double>>{std::nullopt, 4.0}));
    EXPECT_EQ(find_field(blockette.fields, "frequency_of_calibration_sensitivity")->raw,
              std::string(12, ' '));
}

// However damaged, every byte of a blockette is in one field, its "~" or the surplus, in wire order.
TEST(Fields, EveryByteIsSomewhere) {
    std::mt19937 random(1);
    const std::vector<TypeCase> cases = type_cases();
    Fields blockette;
    for (int round = 0; round < 20000; ++round) {
        const TypeCase& one = cases[random() % (cases.size() - 1)]; // the last may have a gap
        std::string text = joined(one.pieces);
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

TEST(Catalogue, TheListingKnowsItsTypesOnly) {
    EXPECT_EQ(Nseed, 48);
    EXPECT_STREQ(sdinfo.back().name, "Data Only SEED");
}

} // namespace
} // namespace quarry
