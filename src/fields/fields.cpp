// SPDX-License-Identifier: Apache-2.0
#include "quarry/fields.h"

#include "decode/data_record.h"
#include "platform/bytes.h"
#include "platform/calendar.h"
#include "platform/text.h"
#include "quarry/time.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quarry {

namespace {

bool is_padding(char character) {
    return is_white(character) || character == '\0';
}

bool is_character_number(FieldKind kind) {
    return kind == FieldKind::integer || kind == FieldKind::real;
}

bool is_number(const FieldValue& value) {
    return std::holds_alternative<std::int64_t>(value) || std::holds_alternative<double>(value);
}

// Trimmed text as a number, or as it is if it is not such a number from end to end.
FieldValue number_or_text(FieldKind kind, std::string_view text) {
    if (kind == FieldKind::integer) {
        const ParsedInteger parsed = parse_integer(text);
        return parsed.length == text.size() ? FieldValue(std::int64_t{parsed.value}) : FieldValue(text);
    }
    ParsedReal parsed = parse_short_real(text, true);
    if (parsed.length != text.size())
        parsed = parse_real(with_signed_exponent(text));
    const bool is_whole = parsed.length == text.size() && std::isfinite(parsed.value);
    return is_whole ? FieldValue(parsed.value) : FieldValue(text);
}

// A binary number of whole width; absent if it is not finite.
FieldValue binary_number(FieldKind kind, std::string_view raw, bool swapped) {
    switch (kind) {
    case FieldKind::u8:
        return std::int64_t{load<std::uint8_t>(raw.data())};
    case FieldKind::i8:
        return std::int64_t{load<std::int8_t>(raw.data())};
    case FieldKind::u16:
        return std::int64_t{load_swapped<std::uint16_t>(raw.data(), swapped)};
    case FieldKind::u32:
        return std::int64_t{load_swapped<std::uint32_t>(raw.data(), swapped)};
    default:
        break;
    }
    const auto real = std::bit_cast<float>(load_swapped<std::uint32_t>(raw.data(), swapped));
    return std::isfinite(real) ? FieldValue(double{real}) : FieldValue();
}

FieldValue value_of(const FieldSpec& spec, std::string_view raw, bool swapped) {
    const bool is_whole = raw.size() == spec.width;
    if (is_binary_number(spec.kind))
        return is_whole ? binary_number(spec.kind, raw, swapped) : FieldValue();
    if (spec.kind == FieldKind::bytes)
        return raw;
    const std::string_view text = trimmed(raw, is_padding);
    if (!is_character_number(spec.kind))
        return text;
    if (text.empty())
        return {};
    return is_whole ? number_or_text(spec.kind, text) : FieldValue(text);
}

// True for a numeric field that holds something else than a number or blanks.
bool is_at_fault(const Field& field) {
    const FieldKind kind = field.spec->kind;
    return !is_number(field.value) &&
           (is_binary_number(kind) || (is_character_number(kind) && field.value != FieldValue()));
}

bool is_no_time(const Field& field) {
    return field.spec->kind == FieldKind::time && field.value != FieldValue(std::string_view()) &&
           !microseconds_of(field.raw);
}

bool is_closed(FieldKind kind) {
    return kind == FieldKind::variable_text || kind == FieldKind::time;
}

template <class T>
std::optional<T> value_as(const Field* field) {
    const T* value = field != nullptr ? std::get_if<T>(&field->value) : nullptr;
    return value != nullptr ? std::optional<T>(*value) : std::nullopt;
}

// One pass over a blockette: a cursor into its text, and the fields found so far.
class Interpreter {
public:
    Interpreter(std::string_view text, bool swapped, Fields* out)
        : text_(text), end_(text.size()), swapped_(swapped), out_(*out) {}

    // Reads the fields once, groups with them. Returns false if the text ends before the last.
    bool read(std::span<const FieldSpec> specs) {
        for (std::size_t i = 0; i < specs.size(); i += 1U + specs[i].repeats) {
            if (!read_values(specs[i]))
                return false;
            if (specs[i].repeats > 0)
                read_group(specs.subspan(i + 1, specs[i].repeats));
        }
        return true;
    }

    std::string_view rest() const { return text_.substr(at_); }

private:
    bool read_values(const FieldSpec& spec) {
        std::size_t count = 0;
        for (; at_ < end_ && (count < spec.times || spec.times == 0); ++count)
            read_value(spec);
        return count > 0;
    }

    void read_value(const FieldSpec& spec) {
        if (spec.kind == FieldKind::bytes)
            seek_opaque_bytes();
        const std::size_t offset = at_;
        const std::string_view raw = is_closed(spec.kind) ? take_closed() : take(spec);
        const Field& field =
            out_.fields.emplace_back(Field{&spec, value_of(spec, raw, swapped_), raw, offset});
        if (is_at_fault(field))
            report(field, raw.size() < spec.width ? FieldFault::cut_short : FieldFault::not_a_number);
        if (is_closed(spec.kind))
            check_text(field);
    }

    std::string_view take(const FieldSpec& spec) {
        const std::size_t left = end_ - at_;
        const std::size_t size =
            spec.kind == FieldKind::bytes ? left : std::min<std::size_t>(spec.width, left);
        at_ += size;
        return text_.substr(at_ - size, size);
    }

    std::string_view take_closed() {
        const std::size_t close = std::min(text_.find('~', at_), end_);
        const std::string_view raw = text_.substr(at_, close - at_);
        at_ = std::min(close + 1, end_);
        return raw;
    }

    void check_text(const Field& field) {
        if (field.offset + field.raw.size() == end_)
            report(field, FieldFault::not_closed);
        if (field.spec->width > 0 && field.raw.size() > field.spec->width)
            report(field, FieldFault::too_long);
        if (is_no_time(field))
            report(field, FieldFault::not_a_time);
    }

    void read_group(std::span<const FieldSpec> members) {
        const Field count = out_.fields.back();
        const std::int64_t rows = value_as<std::int64_t>(&count).value_or(0);
        if (rows < 0)
            report(count, FieldFault::bad_count);
        for (std::int64_t row = 0; row < rows; ++row)
            if (!read(members)) {
                if (!ended_)
                    report(count, FieldFault::missing_rows);
                ended_ = true;
                return;
            }
    }

    // Moves the cursor to where 2000 says that its opaque bytes begin, and the end to where they end.
    void seek_opaque_bytes() {
        const Field offset = *find_field(out_.fields, "data_offset");
        const auto begin = static_cast<std::size_t>(value_as<std::int64_t>(&offset).value_or(0));
        const auto length = static_cast<std::size_t>(integer_field(out_.fields, "length").value_or(0));
        if (length >= at_)
            end_ = std::min(end_, length);
        if (begin < at_ || begin > end_)
            report(offset, FieldFault::bad_offset);
        else
            at_ = begin;
    }

    void report(const Field& field, FieldFault fault) { out_.problems.push_back({fault, field}); }

    std::string_view text_;
    std::size_t end_;
    std::size_t at_ = 0;
    bool swapped_;
    bool ended_ = false; // within a group, which has been reported
    Fields& out_;
};

} // namespace

std::string_view describe(FieldFault fault) {
    switch (fault) {
    case FieldFault::not_a_number:
        return "is not a number";
    case FieldFault::not_a_time:
        return "is not a time";
    case FieldFault::cut_short:
        return "is cut short by the blockette's end";
    case FieldFault::not_closed:
        return "is not closed by \"~\"";
    case FieldFault::too_long:
        return "is longer than its limit";
    case FieldFault::bad_count:
        return "is a negative count";
    case FieldFault::missing_rows:
        return "counts more than the blockette holds";
    case FieldFault::bad_offset:
        return "points outside the opaque bytes";
    }
    return "is wrong";
}

void decode_blockette(int type, std::string_view text, std::endian order, Fields* fields) {
    fields->type = type;
    fields->spec = blockette_spec(type);
    fields->text = text;
    fields->surplus = {};
    fields->fields.clear();
    fields->problems.clear();
    if (fields->spec == nullptr)
        return;
    Interpreter interpreter(text, order != std::endian::native, fields);
    interpreter.read(fields->spec->fields);
    fields->surplus = interpreter.rest();
}

Fields decode_blockette(int type, std::string_view text, std::endian order) {
    Fields fields;
    decode_blockette(type, text, order, &fields);
    return fields;
}

bool is_sound_by_size(int type, std::size_t size) {
    const BlocketteSpec* spec = blockette_spec(type);
    std::size_t needed = 0;
    for (const FieldSpec& field : spec != nullptr ? spec->fields : std::span<const FieldSpec>()) {
        if (!is_binary_number(field.kind) || field.kind == FieldKind::f32 || field.repeats > 0)
            return false;
        needed += std::size_t{field.width} * field.times;
    }
    return size >= needed;
}

const Field* find_field(std::span<const Field> fields, std::string_view name) {
    const auto field = std::find_if(fields.begin(), fields.end(),
                                    [name](const Field& candidate) { return candidate.spec->name == name; });
    return field != fields.end() ? &*field : nullptr;
}

std::optional<std::int64_t> integer_field(std::span<const Field> fields, std::string_view name) {
    return value_as<std::int64_t>(find_field(fields, name));
}

std::optional<double> real_field(std::span<const Field> fields, std::string_view name) {
    const Field* field = find_field(fields, name);
    if (const auto integer = value_as<std::int64_t>(field))
        return static_cast<double>(*integer);
    return value_as<double>(field);
}

std::optional<std::string_view> text_field(std::span<const Field> fields, std::string_view name) {
    return value_as<std::string_view>(find_field(fields, name));
}

std::optional<std::int64_t> binary_time_field(std::span<const Field> fields) {
    struct Part {
        std::string_view name;
        int least, largest;
    };
    constexpr std::array<Part, 6> parts{{{"year", 0, 9999},
                                         {"day", 1, 366},
                                         {"hour", 0, 23},
                                         {"min", 0, 59},
                                         {"sec", 0, 60},
                                         {"fract", 0, 9999}}};
    std::array<int, parts.size()> values{};
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const auto value = integer_field(fields, parts[i].name);
        if (!value || *value < parts[i].least || *value > parts[i].largest)
            return std::nullopt;
        values[i] = static_cast<int>(*value);
    }
    const auto [year, day, hour, minute, second, fraction] = values;
    return seconds_since_1970(year, day, hour, minute, second) * 1'000'000 +
           std::int64_t{fraction} * fraction_unit + integer_field(fields, "microsecond").value_or(0);
}

GroupRows rows_at(std::span<const Field> fields) {
    if (fields.empty())
        return GroupRows(fields);
    const FieldSpec* count = fields[0].spec;
    const auto is_member = [&](const Field& field) {
        return field.spec > count && field.spec <= count + count->repeats;
    };
    const auto end = std::find_if_not(fields.begin() + 1, fields.end(), is_member);
    return GroupRows(std::span(fields.begin() + 1, end));
}

GroupRows rows_of(std::span<const Field> fields, std::string_view count) {
    const Field* field = find_field(fields, count);
    return field != nullptr ? rows_at(fields.subspan(static_cast<std::size_t>(field - fields.data())))
                            : GroupRows({});
}

} // namespace quarry
