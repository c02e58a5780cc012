// SPDX-License-Identifier: Apache-2.0
#include "platform/standard_output.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <poll.h>
#include <unistd.h>

namespace quarry {

namespace {

int first_error = 0;

void remember_error(int error) {
    if (first_error == 0)
        first_error = error != 0 ? error : EIO;
}

bool gathering = false;
void (*failure_hook)() = nullptr;
constexpr std::size_t enough_for_a_write = std::size_t{1} << 16;
constexpr std::array ending_signals = {SIGINT, SIGTERM, SIGHUP};

// The lines of standard output one behind the other: first those that are written, then those that wait to
// be, then the one that is being put together. A signal handler reads those that wait.
// Their beginning and their memory change only while no line waits.
LineBuffer gathered;
volatile std::sig_atomic_t behind_written = 0;
volatile std::sig_atomic_t waiting = 0;

// Whenever a signal comes. (The size of the buffer may be out of date then, and substr could throw.)
std::string_view waiting_lines() {
    const std::sig_atomic_t size = waiting;
    return size == 0
               ? std::string_view()
               : std::string_view(gathered.text().data() + behind_written, static_cast<std::size_t>(size));
}

void write_or_remember(std::string_view text) {
    if (const int error = write_all(STDOUT_FILENO, text); error != 0)
        remember_error(error);
}

void report_failure() {
    if (first_error != 0 && failure_hook != nullptr)
        failure_hook();
}

void write_gathered() {
    const std::string_view lines = waiting_lines();
    if (lines.empty())
        return;
    waiting = 0; // a signal from here on must not write these bytes again
    write_or_remember(lines);
    behind_written = behind_written + static_cast<int>(lines.size());
    report_failure();
}

// What is put together is a line from now on.
void end_gathered_line() {
    std::atomic_signal_fence(std::memory_order_release); // its characters are in memory first
    waiting = static_cast<int>(gathered.text().size()) - behind_written;
}

void forget_written() {
    gathered.remove_prefix(static_cast<std::size_t>(behind_written));
    behind_written = 0;
}

// As LineBuffer::Write.
void write_with_gathered(LineBuffer& /*gathered*/, std::FILE* /*stdout*/, std::string_view text) {
    end_gathered_line();
    write_gathered();
    write_or_remember(text);
    forget_written();
    report_failure();
}

void write_text(std::FILE* stream, std::string_view text) {
    if (!text.empty()) // else it may be at null, which fwrite does not take
        std::fwrite(text.data(), 1, text.size(), stream);
}

void write_to_stream(LineBuffer& line, std::FILE* stream, std::string_view text) {
    write_text(stream, line.text());
    write_text(stream, text);
    line.clear();
}

// The process ends at once also where the reader of a pipe does not read: only what fits now is written.
void end_by_signal(int signal) {
    constexpr std::size_t always_fits = 4096; // once a pipe is writable
    pollfd writable{STDOUT_FILENO, POLLOUT, 0};
    std::string_view text = waiting_lines();
    while (!text.empty() && poll(&writable, 1, 0) == 1) {
        const ssize_t written = write(STDOUT_FILENO, text.data(), std::min(text.size(), always_fits));
        if (written <= 0)
            break;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    raise(signal); // which has its default effect again once this returns
}

void catch_signal(int signal) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL)
        return;
    action.sa_handler = end_by_signal;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int other : ending_signals) // or it would write the same lines once more
        sigaddset(&action.sa_mask, other);
    sigaction(signal, &action, nullptr);
}

} // namespace

void gather_output(void (*on_failure)()) {
    gathering = true;
    failure_hook = on_failure;
    gathered.room(enough_for_a_write + enough_for_a_write / 8);
    gathered.set_for_terminal(is_terminal(stdout));
    gathered.set_stream(write_with_gathered, stdout);
    gathered.set_before_growth([] {
        write_gathered();
        forget_written();
    });
    std::atexit([] { flush_output(stdout); });
    for (const int signal : ending_signals)
        catch_signal(signal);
}

bool is_terminal(std::FILE* stream) {
    static const bool output = isatty(STDOUT_FILENO) == 1;
    static const bool messages = isatty(STDERR_FILENO) == 1;
    return stream == stdout ? output : stream == stderr && messages;
}

LineBuffer& line_for(std::FILE* stream) {
    if (gathering && stream == stdout) {
        if (waiting == 0)
            forget_written();
        return gathered;
    }
    LineBuffer& line = scratch_line();
    line.set_for_terminal(is_terminal(stream));
    line.set_stream(write_to_stream, stream);
    return line;
}

void write_line(std::FILE* stream, LineBuffer& line) {
    if (&line != &gathered)
        return write_to_stream(line, stream, {});
    end_gathered_line();
    if (static_cast<std::size_t>(waiting) >= enough_for_a_write)
        write_gathered();
}

int write_all(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(descriptor, text.data(), text.size());
        pollfd writable{descriptor, POLLOUT, 0};
        if (written >= 0)
            text.remove_prefix(static_cast<std::size_t>(written));
        else if (errno == EAGAIN)
            poll(&writable, 1, -1);
        else if (errno != EINTR)
            return errno;
    }
    return 0;
}

void flush_output(std::FILE* stream) {
    const bool failed = std::fflush(stream) != 0 || std::ferror(stream) != 0;
    if (stream != stdout)
        return;
    if (failed)
        remember_error(errno);
    write_gathered();
}

int output_error() {
    return first_error;
}

} // namespace quarry
