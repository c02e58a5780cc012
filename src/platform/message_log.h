// SPDX-License-Identifier: Apache-2.0
// The message log: the messages of the tool family on standard error.
//
// Severity is defined by what the caller may still do:
//   note      a detail that only matters if something else is reported; it waits in a register and is
//             written ahead of the next complaint or die
//   complaint damaged or inconsistent content; the caller goes on with what could be read
//   die       nothing sensible can follow; the process ends with status 1
//
// A message is one unbroken run: the program's base name, ": ", the text, then (if asked for) ": " and the
// system's error text, then exactly one newline, whether or not the text ended in one. Standard output is
// flushed first, so that both streams keep their order when they go to one place.
#pragma once

namespace quarry {

// Number of pending notes at which the register is written out by itself.
inline constexpr int log_register_limit = 100;

// Remembers the program's base name (from argv[0]) for all later messages and has pending notes written at
// exit. Without this call the name of the running program is used.
void log_init(int argc, const char* const* argv);

// Adds a note to the register of pending messages.
void log_note(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Writes the pending notes, then this message. `with_errno` non-zero appends the text of errno as it was
// at the call.
void log_complain(int with_errno, const char* format, ...) __attribute__((format(printf, 2, 3)));

// As log_complain, then exits with status 1.
[[noreturn]] void log_die(int with_errno, const char* format, ...) __attribute__((format(printf, 2, 3)));

// The same for exhausted memory: the text, which comes from no volume, and the system's error text. Allocates
// nothing.
[[noreturn]] void log_die_without_memory(const char* text);

// Writes the pending notes in order; with `clear` non-zero the register is emptied afterwards, else they
// stay pending.
void log_flush(int clear);

} // namespace quarry
