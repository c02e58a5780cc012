// SPDX-License-Identifier: Apache-2.0
// Values of fields, as the records of the inventory hold them.
#pragma once

#include "quarry/fields.h"
#include "quarry/inventory.h"
#include "quarry/time.h"

#include <cstdint>
#include <limits>
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

// The length in bytes of records whose power of two a volume states; absent unless it is 0 to 30.
Integer bytes_of_power(Integer power);

// The span of time of an epoch, open on a side where the time is missing or is not one.
constexpr TimeSpan span_of(Integer start, Integer end) {
    using Limits = std::numeric_limits<std::int64_t>;
    return {start.value_or(Limits::min()), end.value_or(Limits::max())};
}
template <class Epoch>
TimeSpan span_of(const Epoch& epoch) {
    return span_of(epoch.start.microseconds, epoch.end.microseconds);
}

} // namespace quarry
