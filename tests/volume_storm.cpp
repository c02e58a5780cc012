// SPDX-License-Identifier: Apache-2.0
// Damaged volumes through the whole lister: volume_storm ROUNDS [SEED]
//
// Every round damages the demonstration volume (or begins with noise) and lists it in a process of its own,
// which must end by itself within some seconds, with status 0 or 1. The rounds are the same for the same
// seed; a volume that broke the lister is left in the current directory.

#include "damaged_volumes.h"
#include "sdd/sdd.h"
#include "state.h"
#include "volume_builder.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

// A sanitizer's report must not look like a fatal message of the lister, which ends with status 1 too.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
    return "abort_on_error=1:exitcode=99";
}
extern "C" const char* __ubsan_default_options();
extern "C" const char* __ubsan_default_options() {
    return "abort_on_error=1:print_stacktrace=1";
}

namespace {

using quarry::below;
using quarry::Random;

int list(const std::string& name, Random* random) {
    constexpr unsigned seconds = 20;
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        alarm(seconds);
        if (std::freopen("/dev/null", "w", stdout) == nullptr ||
            std::freopen((name + ".messages").c_str(), "w", stderr) == nullptr)
            _exit(98);
        quarry::Simplify = static_cast<int>(below(random, 2));
        quarry::Verbose_Flag = static_cast<int>(below(random, 3));
        std::exit(quarry::sdd(name.c_str(), 0));
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) <= 1 ? 0 : status;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s ROUNDS [SEED]\n", argv[0]);
        return 1;
    }
    const long rounds = std::atol(argv[1]);
    const unsigned long seed = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 1;
    const std::string volume = quarry::demonstration_volume();
    const std::string name = "storm-" + std::to_string(getpid()) + ".seed";
    long broken = 0;
    for (long round = 0; round < rounds; ++round) {
        Random random(seed * 1000003 + static_cast<unsigned long>(round));
        std::ofstream(name, std::ios::binary) << quarry::damaged(volume, &random);
        if (const int status = list(name, &random); status != 0) {
            const std::string kept = "broken-" + std::to_string(seed) + "-" + std::to_string(round) + ".seed";
            std::filesystem::copy_file(name, kept, std::filesystem::copy_options::overwrite_existing);
            std::printf("round %ld: wait status %d, volume kept as %s\n%s\n", round, status, kept.c_str(),
                        (std::ostringstream() << std::ifstream(name + ".messages").rdbuf()).str().c_str());
            ++broken;
        }
    }
    std::filesystem::remove(name);
    std::filesystem::remove(name + ".messages");
    std::printf("%ld damaged volumes listed, %ld broke the lister\n", rounds, broken);
    return broken == 0 ? 0 : 1;
}
