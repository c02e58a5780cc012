// SPDX-License-Identifier: Apache-2.0
// Values of fields, as the records of the inventory hold them.
#pragma once

#include "quarry/fields.h"
#include "quarry/inventory.h"

#include <span>
#include <string>
#include <string_view>

namespace quarry {

// The text of the field, trimmed; empty without one.
std::string text_value(std::span<const Field> fields, std::string_view name);

// The first letter of that text; 0 without one.
char letter_value(std::span<const Field> fields, std::string_view name);

// The field as it is written ("02.4"), trimmed; empty without one.
std::string written_value(std::span<const Field> fields, std::string_view name);

Moment moment_value(std::span<const Field> fields, std::string_view name);

// The value of a field: absent unless it is a number.
Real real_of(const Field& field);

} // namespace quarry
