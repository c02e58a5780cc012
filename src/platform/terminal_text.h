// SPDX-License-Identifier: Apache-2.0
// Texts of a volume on a terminal: control characters in them would move its cursor, forge lines or worse, so
// they are shown as their codes.
#pragma once

#include <string>
#include <string_view>

namespace quarry {

// The text with each control character, and each byte that has not the form of UTF-8, as "\x1b". Controls are
// those below 0x20, 0x7f, and 0x80 to 0x9f. Surrogates and numbers above 10FFFF in that form stay as they
// are.
std::string shown_on_terminal(std::string_view text);

// True if shown_on_terminal changes the text.
bool has_controls(std::string_view text);

} // namespace quarry
