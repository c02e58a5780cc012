// Standard output that may fail: a flush remembers the first failure, so that the program can report it later
// with its own error text.
#pragma once

#include <cstdio>
#include <string_view>

namespace quarry {

// Writes the text to the stream. A failure shows at the next flush.
void write_text(std::FILE* stream, std::string_view text);

// Flushes the stream.
void flush_output(std::FILE* stream);

// The errno of the first failed flush of standard output; 0 if none failed.
int output_error();

} // namespace quarry
