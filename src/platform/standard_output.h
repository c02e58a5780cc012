// Standard output that may fail: a flush remembers the first failure, so that the program can report it later
// with its own error text.
#pragma once

#include <cstdio>

namespace quarry {

// Flushes the stream.
void flush_output(std::FILE* stream);

// The errno of the first failed flush of standard output; 0 if none failed.
int output_error();

} // namespace quarry
