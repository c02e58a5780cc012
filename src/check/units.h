// SPDX-License-Identifier: Apache-2.0
// Names of units in the headers, in the spelling that is usual and in others.
#pragma once

#include <string>
#include <string_view>

namespace quarry {

// The usual name, in capital letters, of a unit in any spelling; empty for an unknown one.
std::string_view usual_unit(std::string_view name);

// True if the name is written as usual: in capital letters, or as the SI has it.
bool is_usual_spelling(std::string_view name);

// The usual name of a known unit, else the name in capital letters: for comparing.
std::string comparable_unit(std::string_view name);

} // namespace quarry
