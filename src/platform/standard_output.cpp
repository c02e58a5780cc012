#include "platform/standard_output.h"

#include <algorithm>
#include <array>
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
std::array<char, std::size_t{1} << 16> gathered;

// How many bytes of it wait to be written. A signal handler reads it.
volatile std::sig_atomic_t waiting = 0;

// Writes all of the text; where the descriptor takes nothing now, this waits.
void write_all(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
        pollfd writable{STDOUT_FILENO, POLLOUT, 0};
        if (written >= 0)
            text.remove_prefix(static_cast<std::size_t>(written));
        else if (errno == EAGAIN)
            poll(&writable, 1, -1);
        else if (errno != EINTR)
            return remember_error(errno);
    }
}

void write_gathered() {
    const auto size = static_cast<std::size_t>(waiting);
    if (size == 0)
        return;
    waiting = 0; // a signal from here on must not write these bytes again
    write_all({gathered.data(), size});
    if (first_error != 0 && failure_hook != nullptr)
        failure_hook();
}

void gather(std::string_view text) {
    if (text.size() > gathered.size() - static_cast<std::size_t>(waiting))
        write_gathered();
    if (text.size() > gathered.size())
        return write_all(text);
    std::copy(text.begin(), text.end(), gathered.begin() + waiting);
    waiting = waiting + static_cast<int>(text.size());
}

// The process ends at once also where the reader of a pipe does not read: only what fits now is written.
void end_by_signal(int signal) {
    constexpr std::size_t always_fits = 4096; // once a pipe is writable
    pollfd writable{STDOUT_FILENO, POLLOUT, 0};
    std::string_view text(gathered.data(), static_cast<std::size_t>(waiting));
    while (!text.empty() && poll(&writable, 1, 0) == 1) {
        const ssize_t written = write(STDOUT_FILENO, text.data(), std::min(text.size(), always_fits));
        if (written <= 0)
            break;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    raise(signal); // which has its default effect again
}

void catch_signal(int signal) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL)
        return;
    action.sa_handler = end_by_signal;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
    sigaction(signal, &action, nullptr);
}

} // namespace

void gather_output(void (*on_failure)()) {
    gathering = true;
    failure_hook = on_failure;
    std::atexit([] { flush_output(stdout); });
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        catch_signal(signal);
}

bool is_terminal(std::FILE* stream) {
    static const bool output = isatty(STDOUT_FILENO) == 1;
    static const bool messages = isatty(STDERR_FILENO) == 1;
    return stream == stdout ? output : stream == stderr && messages;
}

LineBuffer& line_for(std::FILE* stream) {
    LineBuffer& line = scratch_line();
    line.set_for_terminal(is_terminal(stream));
    line.set_stream(write_text, stream);
    return line;
}

void write_text(std::FILE* stream, std::string_view text) {
    if (text.empty())
        return;
    if (gathering && stream == stdout)
        gather(text);
    else
        std::fwrite(text.data(), 1, text.size(), stream);
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
