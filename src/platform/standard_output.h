// Standard output that may fail: flushes that remember the first failure, so that it can be told of with its
// own error text, however much later.
#pragma once

#include <cstdio>

namespace quarry {

// Flushes the stream.
void flush_output(std::FILE* stream);

// The errno of the first flush of standard output that failed, or found it failed; 0 if none did.
int output_error();

} // namespace quarry
