// SPDX-License-Identifier: Apache-2.0
// Field scanners: the four ways in which a control blockette's text is read.
//
// A cursor is the rest of one blockette's text. Every scanner reads at its start and takes away what it
// consumed, never more than there is, so a parser is a straight list of scans in wire order and a blockette
// that ends early yields empty texts and zeros. A NUL inside the text ends a field's text, but a fixed-width
// field is still consumed by its width.
//
// A field that cannot be converted sets Bad_blkflag and leaves a note or a complaint; scanning goes on.
#pragma once

#include <span>
#include <string_view>

namespace quarry {

// The next `len` characters as a base-10 integer; 0 if blank. What follows the digits is ignored.
int scan_int(std::string_view* str, int len);

// The next `len` characters as a real number; 0.0 if blank. An exponent written "E 03" is read as "E+03".
double scan_double(std::string_view* str, int len);

// The next `len` characters, trimmed of white space on both sides, into `destination` (cut to its capacity).
void scan_str(std::string_view* str, int len, std::span<char> destination);

// A variable field up to its "~", which is consumed, trimmed of white space on both sides. The capacity of
// `destination`, at least 1, counts the NUL; a text of that many characters or more is cut to one less, which
// is reported, and the cursor goes on after the next "~". At a NUL the field ends and the cursor stays on it.
// Returns the position in `destination` just after the last character written.
char* scan_var_str(std::string_view* source, std::span<char> destination);

// One character as it stands; NUL at the end of the text.
char scan_char(std::string_view* str);

// Passes over `len` characters.
void scan_skip(std::string_view* str, int len);

} // namespace quarry
