// Compressed input: opens a file for reading and, where its first bytes say that it is gzip- or
// compress-encoded, reads it through the system's gzip.
#pragma once

#include <cstdio>

namespace quarry {

// Opens the named file. Only regular files and block devices are looked at (at 1f 8b and 1f 9d, whatever the
// name): from a tape or a pipe the look itself would take bytes away. Returns a stream to be read through
// its descriptor, or null with errno set.
std::FILE* open_maybe_compressed(const char* name);

// To be called when a read of the descriptor found the end: if a decompressor fed it and ended badly (a
// damaged or cut file), that is complained of with the file's name, once. Of any other descriptor nothing is
// known and nothing said.
void end_maybe_compressed(int descriptor);

} // namespace quarry
