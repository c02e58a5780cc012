// SPDX-License-Identifier: Apache-2.0
// Writes the test volumes into the named folder, which it makes.

#include "test_volumes.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 1;
    }
    std::filesystem::create_directories(argv[1]);
    for (const auto& [name, bytes] : quarry::test_volumes()) {
        std::ofstream file(std::filesystem::path(argv[1]) / (name + ".seed"), std::ios::binary);
        if (!(file << bytes << std::flush)) {
            std::perror(name.c_str());
            return 1;
        }
    }
    return 0;
}
