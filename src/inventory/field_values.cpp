// SPDX-License-Identifier: Apache-2.0
#include "inventory/field_values.h"

#include "decode/data_record.h"
#include "platform/text.h"

namespace quarry {

std::string text_value(std::span<const Field> fields, std::string_view name) {
    return std::string(text_field(fields, name).value_or(""));
}

char letter_value(std::span<const Field> fields, std::string_view name) {
    const std::string_view text = text_field(fields, name).value_or("");
    return text.empty() ? '\0' : text[0];
}

std::string written_value(std::span<const Field> fields, std::string_view name) {
    const Field* field = find_field(fields, name);
    const std::string_view raw = field != nullptr ? field->raw : "";
    return std::string(trimmed(raw, [](char character) { return character == ' '; }));
}

Moment moment_value(std::span<const Field> fields, std::string_view name) {
    std::string text = text_value(fields, name);
    const Integer microseconds = microseconds_of(text);
    return {std::move(text), microseconds};
}

Real real_of(const Field& field) {
    return real_field(std::span(&field, 1), field.spec->name);
}

Integer bytes_of_power(Integer power) {
    const bool is_known = power && *power >= 0 && *power <= longest_record_power;
    return is_known ? Integer(std::int64_t{1} << *power) : std::nullopt;
}

} // namespace quarry
