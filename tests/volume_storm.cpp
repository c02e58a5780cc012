// Damaged volumes through the whole lister: volume_storm ROUNDS [SEED]
//
// Every round damages the demonstration volume (or begins with noise) and lists it in a process of its own,
// which must end by itself within some seconds, with status 0 or 1. The rounds are the same for the same
// seed; a volume that broke the lister is left in the current directory.

#include "sdd/sdd.h"
#include "state.h"
#include "volume_builder.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
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

using Random = std::mt19937_64;

std::size_t below(Random* random, std::size_t limit) {
    return std::uniform_int_distribution<std::size_t>(0, limit > 0 ? limit - 1 : 0)(*random);
}

// What damage tends to be made of: the characters that mean something in a volume.
char damaging_byte(Random* random) {
    constexpr std::string_view characters = "0123456789~ -+.,:*DRQMVAST\0\xff\x01";
    return below(random, 3) == 0 ? static_cast<char>(below(random, 256))
                                 : characters[below(random, characters.size())];
}

std::string damaged(std::string volume, Random* random) {
    switch (below(random, 6)) {
    case 0: // cut
        volume.resize(below(random, volume.size()));
        break;
    case 1: // bytes lost or doubled: all that follows is out of step
        volume.erase(below(random, volume.size()), below(random, 600));
        volume.insert(below(random, volume.size()),
                      volume.substr(below(random, volume.size()), below(random, 600)));
        break;
    case 2: // noise
        for (char& byte : volume)
            byte = static_cast<char>(below(random, 256));
        volume.replace(0, 8, "000001V ");
        break;
    default:
        break;
    }
    const std::size_t changes = std::size_t{1} << below(random, 9);
    for (std::size_t i = 0; i < changes && !volume.empty(); ++i)
        volume[below(random, volume.size())] = damaging_byte(random);
    return volume;
}

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
        std::ofstream(name, std::ios::binary) << damaged(volume, &random);
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
