// SPDX-License-Identifier: Apache-2.0
// Writes the demonstration volume to the named file.

#include "volume_builder.h"

#include <cstdio>
#include <fstream>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FILE\n", argv[0]);
        return 1;
    }
    std::ofstream file(argv[1], std::ios::binary);
    file << quarry::demonstration_volume() << std::flush;
    if (!file) {
        std::perror(argv[1]);
        return 1;
    }
    return 0;
}
