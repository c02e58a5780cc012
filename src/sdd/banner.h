// SPDX-License-Identifier: Apache-2.0
// The banner: the program's name, release and build, and where to report problems.
#pragma once

#include <string>
#include <string_view>

namespace quarry {

// Prints the banner on standard error: the name (else Program_Name, else the executable's path) with the
// version text, from which the marks of source control keywords are removed.
void banner(std::string_view name, std::string_view version);

// Removes the first occurrence of `sub` from the text. Returns 1, or 0 if there is none.
int delstr(std::string* text, std::string_view sub);

} // namespace quarry
