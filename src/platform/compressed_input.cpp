#include "platform/compressed_input.h"

#include "platform/message_log.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <map>
#include <optional>
#include <spawn.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quarry {

namespace {

struct Decompressor {
    std::string file;
    pid_t process;
    int messages; // read end of its standard error
};

// By the descriptor that its output is read from.
std::map<int, Decompressor>& decompressors() {
    static std::map<int, Decompressor> running;
    return running;
}

bool looks_compressed(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || (!S_ISREG(status.st_mode) && !S_ISBLK(status.st_mode)))
        return false;
    std::array<unsigned char, 2> magic{};
    if (pread(descriptor, magic.data(), magic.size(), 0) != static_cast<ssize_t>(magic.size()))
        return false;
    return magic[0] == 0x1f && (magic[1] == 0x8b || magic[1] == 0x9d);
}

// Starts gzip from `input` to the two pipe ends. Returns 0 or an errno.
int spawn_gzip(int input, int output, int messages, pid_t* process) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, messages, STDERR_FILENO);

    // It must end by itself when its reader has gone, whatever this process makes of SIGPIPE.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);

    std::string program = "gzip";
    std::string option = "-dc";
    std::array<char*, 3> arguments{program.data(), option.data(), nullptr};
    const int result =
        posix_spawnp(process, program.c_str(), &actions, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return result;
}

// The last line of what gzip said, without its own name for its input.
std::string reason(int messages) {
    std::array<char, 512> buffer{};
    const ssize_t length = read(messages, buffer.data(), buffer.size());
    std::string text(buffer.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    text.erase(text.find_last_not_of('\n') + 1);
    text.erase(0, text.rfind('\n') + 1); // npos + 1 is 0: all one line
    const std::string own_name = "gzip: stdin: ";
    return text.starts_with(own_name) ? text.substr(own_name.size()) : text;
}

// Waits for the process and returns its wait status; -1 where this program ignores its children's ends.
int wait_for(pid_t process) {
    int status = 0;
    pid_t reaped = 0;
    do
        reaped = waitpid(process, &status, 0);
    while (reaped < 0 && errno == EINTR);
    return reaped < 0 ? -1 : status;
}

// Takes the decompressor that feeds the descriptor, if there is one.
std::optional<Decompressor> take_decompressor(int descriptor) {
    auto node = decompressors().extract(descriptor);
    return node.empty() ? std::nullopt : std::optional(std::move(node.mapped()));
}

// A descriptor that is given out anew was closed before its decompressor had ended.
void forget_decompressor(int descriptor) {
    if (const auto forgotten = take_decompressor(descriptor)) {
        close(forgotten->messages);
        wait_for(forgotten->process);
    }
}

int open_decompressed(const char* name, int input) {
    std::array<int, 2> output{-1, -1};
    std::array<int, 2> messages{-1, -1};
    pid_t process = -1;
    int error = pipe2(output.data(), O_CLOEXEC) != 0 || pipe2(messages.data(), O_CLOEXEC) != 0
                    ? errno
                    : spawn_gzip(input, output[1], messages[1], &process);
    close(output[1]);
    close(messages[1]);
    if (error != 0) {
        errno = error;
        log_complain(1, "Can't run gzip to decompress %s\n", name);
        close(output[0]);
        close(messages[0]);
        errno = error;
        return -1;
    }
    forget_decompressor(output[0]);
    decompressors()[output[0]] = {name, process, messages[0]};
    return output[0];
}

} // namespace

std::FILE* open_maybe_compressed(const char* name) {
    int descriptor = open(name, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return nullptr;
    forget_decompressor(descriptor);
    if (looks_compressed(descriptor)) {
        const int plain = open_decompressed(name, descriptor);
        const int error = errno;
        close(descriptor);
        errno = error;
        descriptor = plain;
    }
    return descriptor < 0 ? nullptr : fdopen(descriptor, "r");
}

void end_maybe_compressed(int descriptor) {
    constexpr int gzip_warning = 2;
    const auto ended = take_decompressor(descriptor);
    if (!ended)
        return;
    const int status = wait_for(ended->process);
    const std::string said = reason(ended->messages);
    close(ended->messages);
    const char* file = ended->file.c_str();
    if (status > 0 && WIFEXITED(status) && WEXITSTATUS(status) == gzip_warning)
        log_complain(0, "Decompressing %s: %s\n", file, said.c_str());
    else if (status > 0 || (status < 0 && !said.empty()))
        log_complain(0, "Decompressing %s ended badly: %s\n", file,
                     said.empty() ? "no reason was given" : said.c_str());
}

} // namespace quarry
