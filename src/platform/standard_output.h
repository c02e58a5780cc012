// Standard output and standard error as the command uses them: output gathered into large pieces, and
// failures remembered, so that the program can report them later with their own error text.
#pragma once

#include "platform/line_format.h"

#include <cstdio>
#include <string_view>

namespace quarry {

// From now on, text for standard output is gathered until flush_output is called, 64 KiB have come together,
// or the process ends: by itself, or by SIGINT, SIGTERM or SIGHUP. `on_failure`, unless null, is called when
// the gathered text cannot be written.
void gather_output(void (*on_failure)());

// True if the stream, standard output or standard error, is a terminal.
bool is_terminal(std::FILE* stream);

// A buffer for the lines of a stream: the scratch line, for a terminal where the stream is one, or where
// lines gathered before may stand. What is added to it is written by write_line.
LineBuffer& line_for(std::FILE* stream);

// Writes what has been added to the stream's buffer, or gathers it. A failure shows at the next flush.
void write_line(std::FILE* stream, LineBuffer& line);

// Flushes the stream.
void flush_output(std::FILE* stream);

// The errno of the first failed flush of standard output; 0 if none failed.
int output_error();

} // namespace quarry
