#include "platform/compressed_input.h"

#include "platform/message_log.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <map>
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
    decompressors()[output[0]] = {name, process, messages[0]};
    return output[0];
}

// What gzip said, on one line and without its own name for its input.
std::string reason(int messages) {
    std::array<char, 512> buffer{};
    const ssize_t length = read(messages, buffer.data(), buffer.size());
    std::string text(buffer.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    text.erase(0, text.find_first_not_of('\n'));
    text.erase(std::min(text.find('\n'), text.size()));
    const std::string own_name = "gzip: stdin: ";
    return text.starts_with(own_name) ? text.substr(own_name.size()) : text;
}

} // namespace

std::FILE* open_maybe_compressed(const char* name) {
    int descriptor = open(name, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return nullptr;
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
    const auto found = decompressors().find(descriptor);
    if (found == decompressors().end())
        return;
    const Decompressor ended = found->second;
    decompressors().erase(found);

    int status = 0;
    pid_t reaped = 0;
    do
        reaped = waitpid(ended.process, &status, 0);
    while (reaped < 0 && errno == EINTR);
    // Where the program ignores its children's ends, what gzip said must do.
    std::string said = reason(ended.messages);
    const bool bad = reaped < 0 ? !said.empty() : status != 0;
    if (said.empty())
        said = WIFSIGNALED(status) ? "killed by a signal" : "no reason given";
    if (bad)
        log_complain(0, "Decompressing %s ended badly: %s\n", ended.file.c_str(), said.c_str());
    close(ended.messages);
}

} // namespace quarry
