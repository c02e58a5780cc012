#include "support.h"

#include "blockette/blockette.h"
#include "listing/pbrief.h"
#include "platform/message_log.h"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quarry {

void name_the_log() {
    const std::array<const char*, 1> arguments{"quarry"};
    log_init(1, arguments.data());
}

std::string listed(int type, std::string_view text) {
    char* bytes = nullptr;
    std::size_t size = 0;
    std::FILE* stream = open_memstream(&bytes, &size);
    const BlockettePointer record(parse_blk(text, type), {type});
    pbrief_blk(stream, record.get(), type);
    std::fclose(stream);
    std::string line(bytes, size);
    std::free(bytes);
    return line;
}

std::string volume_010(int exponent) {
    return blockette(10, " 2.4" + digits(exponent, 2) + "2005,001~2005,002~2005,003~Org~Label~");
}

TemporaryDirectory::TemporaryDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "quarry-test-XXXXXX").string();
    path_ = mkdtemp(name.data());
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string TemporaryDirectory::file(const std::string& name, std::string_view content) const {
    const std::string path = path_ + "/" + name;
    std::ofstream(path, std::ios::binary) << content;
    return path;
}

namespace {

[[noreturn]] void run_child(const RunOptions& options, const std::string& program, int in, int out, int err) {
    dup2(in, STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(options.one_place ? out : err, STDERR_FILENO);
    for (const auto& [name, value] : options.environment)
        setenv(name.c_str(), value.c_str(), 1);
    if (!options.directory.empty() && chdir(options.directory.c_str()) != 0)
        _exit(126);
    std::vector<std::string> words = options.arguments;
    words.insert(words.begin(), program);
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    execv(program.c_str(), arguments.data());
    _exit(127);
}

void drain(int out, std::string* out_text, int err, std::string* err_text) {
    std::array<pollfd, 2> waiting{pollfd{out, POLLIN, 0}, pollfd{err, POLLIN, 0}};
    const std::array<std::string*, 2> texts{out_text, err_text};
    int open = 2;
    while (open > 0 && poll(waiting.data(), waiting.size(), -1) > 0) {
        for (std::size_t i = 0; i < waiting.size(); ++i) {
            if (waiting[i].revents == 0)
                continue;
            std::array<char, 65536> buffer;
            const ssize_t got = read(waiting[i].fd, buffer.data(), buffer.size());
            if (got > 0) {
                texts[i]->append(buffer.data(), static_cast<std::size_t>(got));
            } else {
                waiting[i].fd = -1;
                --open;
            }
        }
    }
}

// Standard input: a file's descriptor, or the end of a packet socket, in which an empty message stands for a
// tape's file mark.
int input_descriptor(const RunOptions& options, const TemporaryDirectory& directory) {
    if (options.tape_files.empty())
        return open(directory.file("stdin", options.standard_input).c_str(), O_RDONLY | O_CLOEXEC);
    std::array<int, 2> ends;
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), 0);
    for (const std::string& file : options.tape_files) {
        for (std::size_t at = 0; at < file.size(); at += 16384)
            EXPECT_GT(send(ends[0], file.data() + at, std::min<std::size_t>(16384, file.size() - at), 0), 0);
        EXPECT_EQ(send(ends[0], "", 0, 0), 0);
    }
    close(ends[0]);
    return ends[1];
}

} // namespace

RunResult run_quarry(const RunOptions& given) {
    const TemporaryDirectory directory;
    RunOptions options = given;
    options.environment.emplace("QUARRY_PARAM_PATH", directory.path());
    directory.file("quarry.pf", "");

    const int in = input_descriptor(options, directory);
    std::array<int, 2> out;
    std::array<int, 2> err;
    EXPECT_EQ(pipe2(out.data(), O_CLOEXEC), 0);
    EXPECT_EQ(pipe2(err.data(), O_CLOEXEC), 0);
    const pid_t child = fork();
    if (child == 0)
        run_child(options, options.program.empty() ? QUARRY_PROGRAM : options.program, in, out[1], err[1]);
    close(in);
    close(out[1]);
    close(err[1]);
    RunResult result{};
    drain(out[0], &result.out, err[0], &result.err);
    close(out[0]);
    close(err[0]);
    int status = 0;
    waitpid(child, &status, 0);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}

RunResult list_volume(std::string_view volume, std::vector<std::string> options, bool one_place) {
    const TemporaryDirectory directory;
    options.push_back(directory.file("volume.seed", volume));
    RunOptions run;
    run.arguments = std::move(options);
    run.one_place = one_place;
    return run_quarry(run);
}

} // namespace quarry
