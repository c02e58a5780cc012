#include "platform/message_log.h"

#include "platform/end_process.h"
#include "platform/standard_output.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace quarry {

namespace {

// Both live until the process has ended, so that notes can still be written from exit handlers.
std::string& program_base_name() {
    static auto* name = new std::string(program_invocation_short_name);
    return *name;
}

std::vector<std::string>& pending_notes() {
    static auto* notes = new std::vector<std::string>;
    return *notes;
}

// The finished line of a message, in a buffer large enough to report exhausted memory without allocating.
class MessageLine {
public:
    MessageLine() { line_.reserve(reserved); }

    __attribute__((format(printf, 3, 0))) const std::string& build(const char* error_text, const char* format,
                                                                   va_list arguments) {
        line_.assign(program_base_name()).append(": ");
        append_formatted(format, arguments);
        if (line_.back() == '\n')
            line_.pop_back();
        if (error_text != nullptr)
            line_.append(": ").append(error_text);
        line_.push_back('\n');
        return line_;
    }

private:
    static constexpr std::size_t reserved = 4096;

    __attribute__((format(printf, 2, 0))) void append_formatted(const char* format, va_list arguments) {
        va_list again;
        va_copy(again, arguments);
        const int length = std::vsnprintf(nullptr, 0, format, arguments);
        if (length > 0) {
            const std::size_t before = line_.size();
            line_.resize(before + static_cast<std::size_t>(length));
            std::vsnprintf(line_.data() + before, static_cast<std::size_t>(length) + 1, format, again);
        }
        va_end(again);
    }

    std::string line_;
};

MessageLine& message_line() {
    static auto* line = new MessageLine;
    return *line;
}

void write_to_stderr(const std::string& line) {
    flush_output(stdout);
    std::fwrite(line.data(), 1, line.size(), stderr);
    std::fflush(stderr);
}

__attribute__((format(printf, 2, 0))) void report(const char* error_text, const char* format,
                                                  va_list arguments) {
    log_flush(1);
    write_to_stderr(message_line().build(error_text, format, arguments));
}

void flush_at_exit() {
    log_flush(1);
}

} // namespace

void log_init(int argc, const char* const* argv) {
    if (argc > 0 && argv[0] != nullptr) {
        const std::string_view path = argv[0];
        program_base_name() = path.substr(path.find_last_of('/') + 1); // npos + 1 is 0: the whole name
    }
    // Reporting exhausted memory needs these buffers, so they are made now.
    message_line();
    pending_notes();
    static const bool registered = std::atexit(flush_at_exit) == 0;
    static_cast<void>(registered);
}

void log_note(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    pending_notes().push_back(message_line().build(nullptr, format, arguments));
    va_end(arguments);
    if (pending_notes().size() >= log_register_limit)
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
    flush_output(stdout);
    end_process(EXIT_FAILURE);
}

void log_flush(int clear) {
    for (const std::string& line : pending_notes())
        write_to_stderr(line);
    if (clear != 0)
        pending_notes().clear();
}

} // namespace quarry
