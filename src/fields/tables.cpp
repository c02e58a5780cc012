// SPDX-License-Identifier: Apache-2.0
// The public tables, made of the layouts at compile time.

#include "decode/catalogue.h"
#include "fields/layouts.h"
#include "platform/text.h"
#include "quarry/fields.h"

#include <algorithm>
#include <array>

namespace quarry {

namespace {

using namespace layout;

// What every control and every data blockette begins with.
constexpr auto control_front = std::to_array<Row>({{"type", D, 3}, {"length", D, 4}});
constexpr auto data_front = std::to_array<Row>({{"type", u16}, {"next_offset", u16}});

constexpr auto time_rows = std::to_array<Row>({
    {"year", u16},
    {"day", u16},
    {"hour", u8},
    {"min", u8},
    {"sec", u8},
    {"unused", u8},
    {"fract", u16},
});

// The fields that a row stands for: itself, or those of a binary time or of a blockette's front.
constexpr std::span<const Row> expansion(const Row& row) {
    if (row.type != 0)
        return row.type < first_data_blockette ? std::span<const Row>(control_front) : data_front;
    return row.name == binary_time.name ? std::span<const Row>(time_rows) : std::span(&row, 1);
}

constexpr std::uint16_t width_of(const Row& row) {
    switch (row.kind) {
    case FieldKind::time:
        return 22;
    case FieldKind::u8:
    case FieldKind::i8:
        return 1;
    case FieldKind::u16:
        return 2;
    case FieldKind::u32:
    case FieldKind::f32:
        return 4;
    default:
        return row.size;
    }
}

constexpr std::uint16_t times_of(const Row& row) {
    if (!is_binary_number(row.kind) || row.size == 0)
        return 1;
    return row.size == to_the_end ? 0 : row.size;
}

constexpr std::size_t field_count = [] {
    std::size_t count = 0;
    for (const Row& row : rows)
        count += expansion(row).size();
    return count;
}();

// The fields of all blockettes, one blockette after the other.
constexpr auto all_fields = [] {
    std::array<FieldSpec, field_count> fields{};
    std::size_t used = 0;
    std::uint8_t number = 0;
    for (const Row& row : rows) {
        if (row.type != 0)
            number = 0;
        const auto parts = expansion(row);
        for (const Row& part : parts) {
            if (row.name != binary_time.name || &part == parts.data())
                ++number;
            fields[used++] = {part.name, part.kind, number, part.repeats, width_of(part), times_of(part)};
        }
    }
    return fields;
}();

constexpr auto is_head = [](const Row& row) { return row.type != 0; };
constexpr auto is_first = [](const FieldSpec& field) { return field.number == 1; };

static_assert(std::all_of(rows.begin(), rows.end(),
                          [](const Row& row) {
                              return !is_head(row) || catalogue_row(row.type).has_value();
                          }),
              "a blockette has no row in the catalogue");

constexpr std::string_view title_of(int type) {
    return trimmed(catalogue_row(type)->name, [](char character) { return character == ' '; });
}

constexpr auto specs = [] {
    std::array<BlocketteSpec, std::count_if(rows.begin(), rows.end(), is_head)> blockettes{};
    auto spec = blockettes.begin();
    auto first = all_fields.begin();
    for (const Row& row : rows)
        if (is_head(row)) {
            const auto end = std::find_if(first + 1, all_fields.end(), is_first);
            *spec++ = {
                row.type, catalogue_row(row.type)->smallest, row.name, title_of(row.type), {first, end}};
            first = end;
        }
    return blockettes;
}();

// What the interpreter takes for granted.

constexpr bool is_integer(FieldKind kind) {
    return kind == D || kind == u8 || kind == u16 || kind == u32;
}

// Groups follow an integer, end within the blockette, and lie within one another.
constexpr bool has_sound_groups(std::span<const FieldSpec> fields) {
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const std::size_t group = fields[i].repeats;
        if (group >= fields.size() - i || (group > 0 && !is_integer(fields[i].kind)) ||
            !has_sound_groups(fields.subspan(i + 1, group)))
            return false;
    }
    return true;
}

// A field that takes no bytes would repeat for ever.
constexpr bool has_sound_widths(std::span<const FieldSpec> fields) {
    return std::all_of(fields.begin(), fields.end(), [&](const FieldSpec& field) {
        const bool goes_on = field.kind == opaque || field.times == 0;
        return (field.width > 0 || field.kind == V || field.kind == opaque) &&
               (!goes_on || &field == &fields.back());
    });
}

constexpr bool has_unique_names(std::span<const FieldSpec> fields) {
    for (std::size_t i = 0; i < fields.size(); ++i)
        for (std::size_t j = 0; j < i; ++j)
            if (fields[i].name == fields[j].name)
                return false;
    return true;
}

constexpr bool types_ascend() {
    return std::adjacent_find(specs.begin(), specs.end(), [](const auto& one, const auto& next) {
               return one.type >= next.type;
           }) == specs.end();
}

constexpr bool has_record_power(const BlocketteSpec& blockette) {
    const auto& fields = blockette.fields;
    return !is_volume_header(blockette.type) ||
           (fields[3].name == "logical_record_length" && fields[3].width == record_power_size &&
            std::size_t{fields[0].width} + fields[1].width + fields[2].width == record_power_offset);
}

template <class Check>
constexpr bool holds_for_all(Check check) {
    return std::all_of(specs.begin(), specs.end(), [check](const auto& spec) { return check(spec.fields); });
}

static_assert(types_ascend());
static_assert(control_front[0].size + control_front[1].size == blockette_head_size);
static_assert(std::all_of(specs.begin(), specs.end(), has_record_power));
static_assert(holds_for_all(has_sound_groups));
static_assert(holds_for_all(has_sound_widths));
static_assert(holds_for_all(has_unique_names));

} // namespace

std::span<const BlocketteSpec> blockette_specs() {
    return specs;
}

const BlocketteSpec* blockette_spec(int type) {
    const auto row =
        std::lower_bound(specs.begin(), specs.end(), type,
                         [](const BlocketteSpec& spec, int wanted) { return spec.type < wanted; });
    return row != specs.end() && row->type == type ? &*row : nullptr;
}

} // namespace quarry
