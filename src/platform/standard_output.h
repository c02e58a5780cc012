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

// An empty buffer for the lines of a stream: the scratch line, for a terminal where the stream is one. What
// it holds in the end is written by write_text.
LineBuffer& line_for(std::FILE* stream);

// Writes the text to the stream, or gathers it. A failure shows at the next flush.
void write_text(std::FILE* stream, std::string_view text);

// Flushes the stream.
void flush_output(std::FILE* stream);

// The errno of the first failed flush of standard output; 0 if none failed.
int output_error();

} // namespace quarry
