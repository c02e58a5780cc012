// SPDX-License-Identifier: Apache-2.0
#include "support.h"

#include "blockette/blockette.h"
#include "listing/pbrief.h"
#include "platform/message_log.h"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <spawn.h>
#include <sstream>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quarry {

void name_the_log() {
    const std::array<const char*, 1> arguments{"quarry"};
    log_init(1, arguments.data());
}

std::string written(const std::function<void(std::FILE*)>& write) {
    char* bytes = nullptr;
    std::size_t size = 0;
    std::FILE* stream = open_memstream(&bytes, &size);
    write(stream);
    std::fclose(stream);
    std::string text(bytes, size);
    std::free(bytes);
    return text;
}

std::string listed(int type, std::string_view text) {
    const BlockettePointer record(parse_blk(text, type), {type});
    return written([&](std::FILE* stream) { pbrief_blk(stream, record.get(), type); });
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
    const std::filesystem::path path = path_ + "/" + name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
    return path;
}

std::string content_of(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);)
        parts.push_back(part);
    return parts;
}

namespace {

// The reading end of a packet socket, in which an empty message stands for a tape's file mark.
int tape_drive(const std::vector<std::string>& files) {
    std::array<int, 2> ends;
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), 0);
    for (const std::string& file : files) {
        for (std::size_t at = 0; at < file.size(); at += 16384)
            EXPECT_GT(send(ends[0], file.data() + at, std::min<std::size_t>(16384, file.size() - at), 0), 0);
        EXPECT_EQ(send(ends[0], "", 0, 0), 0);
    }
    close(ends[0]);
    return ends[1];
}

} // namespace

RunResult run(const Run& options) {
    const TemporaryDirectory directory;
    const TemporaryDirectory streams;
    directory.file("quarry.pf", "");
    for (const auto& [name, content] : options.files)
        directory.file(name, content);
    const std::string out = streams.file("out", "");
    const std::string err = streams.file("err", "");
    const int in =
        options.tape_files.empty() ? open("/dev/null", O_RDONLY | O_CLOEXEC) : tape_drive(options.tape_files);
    setenv("quarry", QUARRY_PROGRAM, 1);
    unsetenv("QUARRY_PARAM_PATH");

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, directory.path().c_str());
    posix_spawn_file_actions_adddup2(&actions, in, STDIN_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), O_WRONLY | O_APPEND, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.c_str(), O_WRONLY | O_APPEND, 0);
    std::string words[] = {"sh", "-c", options.command};
    char* arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
    pid_t child = 0;
    EXPECT_EQ(posix_spawn(&child, "/bin/sh", &actions, nullptr, arguments, environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    close(in);
    int status = 0;
    waitpid(child, &status, 0);
    return {content_of(out), content_of(err),
            WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status)};
}

Run listing(const char* name, std::string volume, const std::string& options, const std::string& rest) {
    return {name, "$quarry " + options + " volume.seed " + rest, {{"volume.seed", std::move(volume)}}};
}

void expect_recorded(const std::string& suite, const std::string& name, std::string text) {
    for (std::size_t at = 0; (at = text.find('\0', at)) != std::string::npos;)
        text.replace(at, 1, "\\0"); // so that the file stays one of text
    const std::string path = QUARRY_GOLDEN "/" + suite + "/" + name + ".txt";
    if (std::getenv("QUARRY_RECORD") != nullptr) {
        std::filesystem::create_directories(QUARRY_GOLDEN "/" + suite);
        std::ofstream(path, std::ios::binary) << text;
    }
    EXPECT_EQ(text, content_of(path)) << "recorded in " << path;
}

void expect_recorded(const std::string& suite, const std::string& name, const RunResult& result) {
    expect_recorded(suite, name,
                    "exit status " + std::to_string(result.status) + "\n--- standard output\n" + result.out +
                        "--- standard error\n" + result.err);
}

bool make_recorded_tests(const char* suite, std::vector<Run> runs) {
    return make_tests(suite, std::move(runs),
                      [suite](const Run& one) { expect_recorded(suite, one.name, run(one)); });
}

std::string compressed(const std::string& command, std::string_view content) {
    const TemporaryDirectory directory;
    const std::string plain = directory.file("plain", content);
    const std::string packed = directory.path() + "/packed";
    EXPECT_EQ(std::system((command + " < " + plain + " > " + packed).c_str()), 0) << command;
    return content_of(packed);
}

} // namespace quarry
