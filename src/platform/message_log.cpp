// SPDX-License-Identifier: Apache-2.0
#include "platform/message_log.h"

#include "platform/end_process.h"
#include "platform/standard_output.h"
#include "platform/terminal_text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace quarry {

namespace {

// The base name of the program, part of argv[0].
const char* program_base_name = program_invocation_short_name;

// Made by log_init or the first note; lives until the process has ended, so that notes can still be written
// from exit handlers.
std::vector<std::string>* pending_notes = nullptr;

__attribute__((format(printf, 1, 0))) std::string formatted(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    std::string text(static_cast<std::size_t>(std::max(length, 0)), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

// A character that the text does not hold, or NUL.
char absent_from(std::string_view text) {
    for (int candidate = 1; candidate <= UCHAR_MAX; ++candidate)
        if (text.find(static_cast<char>(candidate)) == std::string_view::npos)
            return static_cast<char>(candidate);
    return '\0';
}

// For a terminal: the ends of lines in the format stay, those in the arguments are shown as codes, like all
// control characters. The former are marked by a character that is neither in the format (so it is not "%")
// nor in an argument.
__attribute__((format(printf, 1, 0))) std::string formatted_for_terminal(const char* format,
                                                                         va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    std::string marked = format;
    const char mark = absent_from(marked + formatted(format, again));
    va_end(again);
    std::replace(marked.begin(), marked.end(), '\n', mark == '\0' ? '\n' : mark);
    std::replace(marked.begin(), marked.end(), '\t', ' ');
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral" // it takes what `format` takes
    const std::string text = formatted(marked.c_str(), arguments);
#pragma GCC diagnostic pop
    std::string shown;
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view line = rest.substr(0, rest.find(mark));
        shown += shown_on_terminal(line);
        shown += line.size() < rest.size() ? "\n" : "";
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    }
    return shown;
}

// The finished line of a message.
__attribute__((format(printf, 2, 0))) std::string line_of(const char* error_text, const char* format,
                                                          va_list arguments) {
    std::string line = program_base_name;
    line += ": ";
    line += is_terminal(stderr) ? formatted_for_terminal(format, arguments) : formatted(format, arguments);
    if (line.back() == '\n')
        line.pop_back();
    if (error_text != nullptr)
        line.append(": ").append(error_text);
    return line += '\n';
}

void write_to_stderr(std::string_view line) {
    flush_output(stdout);
    std::fwrite(line.data(), 1, line.size(), stderr);
    std::fflush(stderr);
}

__attribute__((format(printf, 2, 0))) void report(const char* error_text, const char* format,
                                                  va_list arguments) {
    log_flush(1);
    write_to_stderr(line_of(error_text, format, arguments));
}

void flush_at_exit() {
    log_flush(1);
}

} // namespace

void log_init(int argc, const char* const* argv) {
    if (argc > 0 && argv[0] != nullptr) {
        const char* slash = std::strrchr(argv[0], '/');
        program_base_name = slash != nullptr ? slash + 1 : argv[0];
    }
    static const bool registered = std::atexit(flush_at_exit) == 0;
    static_cast<void>(registered);
}

void log_note(const char* format, ...) {
    flush_output(stdout); // if that fails, the message about it must not bring this note with it
    if (pending_notes == nullptr)
        pending_notes = new std::vector<std::string>;
    va_list arguments;
    va_start(arguments, format);
    pending_notes->push_back(line_of(nullptr, format, arguments));
    va_end(arguments);
    if (pending_notes->size() >= log_register_limit)
        log_flush(1);
}

void log_complain(int with_errno, const char* format, ...) {
    const char* error_text = with_errno != 0 ? std::strerror(errno) : nullptr;
    va_list arguments;
    va_start(arguments, format);
    report(error_text, format, arguments);
    va_end(arguments);
}

void log_die(int with_errno, const char* format, ...) {
    const char* error_text = with_errno != 0 ? std::strerror(errno) : nullptr;
    va_list arguments;
    va_start(arguments, format);
    report(error_text, format, arguments);
    va_end(arguments);
    end_process(EXIT_FAILURE);
}

void log_die_without_memory(const char* text) {
    static std::array<char, 1024> line;
    // Memory may be exhausted before the name is there.
    const char* name = program_base_name != nullptr ? program_base_name : program_invocation_short_name;
    const int length =
        std::snprintf(line.data(), line.size(), "%s: %s: %s\n", name, text, std::strerror(ENOMEM));
    log_flush(1);
    write_to_stderr({line.data(), std::min(static_cast<std::size_t>(std::max(length, 0)), line.size() - 1)});
    end_process(EXIT_FAILURE);
}

void log_flush(int clear) {
    if (pending_notes == nullptr)
        return;
    for (const std::string& line : *pending_notes)
        write_to_stderr(line);
    if (clear != 0)
        pending_notes->clear();
}

} // namespace quarry
