// SPDX-License-Identifier: Apache-2.0
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

// The buffer to which the next lines of a stream are added, for a terminal if the stream is one. write_line
// then writes them. Gathered standard output has its own, which may hold earlier lines; other streams share
// the scratch line, so only one of them can have lines at a time.
LineBuffer& line_for(std::FILE* stream);

// Writes what has been added to the stream's buffer, or gathers it.
void write_line(std::FILE* stream, LineBuffer& line);

// Writes all of the text to the descriptor; where that takes nothing now, this waits. Returns 0 or the errno
// of what failed.
int write_all(int descriptor, std::string_view text);

// Flushes the stream.
void flush_output(std::FILE* stream);

// The errno of the first failed flush of standard output; 0 if none failed.
int output_error();

} // namespace quarry
