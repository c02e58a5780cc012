// SPDX-License-Identifier: Apache-2.0
// A look at the text of a TOML file before the TOML library gets it: the library relies on what is checked
// here without testing it (it crashes, or worse, where that does not hold), and recurses as deep as the text
// nests.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace quarry {

// What is wrong, and where: lines and columns count from 1, columns in characters.
struct TomlFault {
    unsigned line;
    unsigned column;
    const char* reason;
};

// The deepest nesting of brackets, and of names joined by dots, that passes.
inline constexpr std::size_t toml_depth_limit = 32;

// The first fault that the library cannot be trusted with, if there is one. Other faults are left for the
// library to find. Valid TOML passes, with two exceptions: what nests too deep, and a line ended by
// a backslash inside quotes whose next line begins with a character beyond ASCII.
std::optional<TomlFault> find_toml_fault(std::string_view text);

} // namespace quarry
