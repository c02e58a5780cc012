// SPDX-License-Identifier: Apache-2.0
// Runs a command and prints what it took: "STATUS CPU_SECONDS WALL_SECONDS PEAK_KIB".
//
//   measure LIMIT OUT ERR COMMAND [ARGUMENT ...]
//
// The command's standard output and error go to the files OUT and ERR, which are made anew; standard input
// stays. LIMIT is the processor time in whole seconds after which the command is stopped (status 128 and its
// signal's number). Processor time is that of the user and of the system.
//
// A program of its own because a process begins with the peak memory of the one that started it: this one's
// is less than that of anything measured.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

void redirect(int descriptor, const char* name) {
    const int file = open(name, O_WRONLY | O_CREAT | O_TRUNC, 0666);
    if (file < 0 || dup2(file, descriptor) < 0) {
        std::perror(name);
        std::_Exit(126);
    }
    close(file);
}

[[noreturn]] void become(char** argv) {
    const auto seconds = static_cast<rlim_t>(std::atol(argv[1]));
    const rlimit limit{seconds, seconds};
    setrlimit(RLIMIT_CPU, &limit);
    redirect(STDOUT_FILENO, argv[2]);
    redirect(STDERR_FILENO, argv[3]);
    execv(argv[4], argv + 4);
    std::perror(argv[4]);
    std::_Exit(127);
}

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 5) {
        std::fprintf(stderr, "usage: %s LIMIT OUT ERR COMMAND [ARGUMENT ...]\n", argv[0]);
        return EXIT_FAILURE;
    }
    const auto begin = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0)
        become(argv);
    int status = 0;
    rusage usage{};
    if (child < 0 || wait4(child, &status, 0, &usage) != child) {
        std::perror(argv[4]);
        return EXIT_FAILURE;
    }
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - begin;
    std::printf("%d %.6f %.6f %ld\n", WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
                seconds(usage.ru_utime) + seconds(usage.ru_stime), wall.count(), usage.ru_maxrss);
    return 0;
}
