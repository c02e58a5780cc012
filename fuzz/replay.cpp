// SPDX-License-Identifier: Apache-2.0
// Feeds files to a fuzz target, without libFuzzer: replay FILE|FOLDER...

#include "fuzz.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

// The name stands before a report of what the file broke.
bool feed(const std::filesystem::path& path, std::FILE* report) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> content{std::istreambuf_iterator<char>(file), {}};
    if (!file.is_open() || file.bad())
        return false;
    std::fprintf(report, "%s\n", path.c_str());
    std::fflush(report);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(content.data()), content.size());
    return true;
}

} // namespace

int main(int argc, char** argv) {
    // The target turns the standard streams away.
    std::FILE* const report = stdout;
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < argc; ++i)
        if (std::filesystem::is_directory(argv[i]))
            for (const auto& entry : std::filesystem::directory_iterator(argv[i]))
                files.push_back(entry.path());
        else
            files.emplace_back(argv[i]);
    for (const std::filesystem::path& file : files)
        if (!feed(file, report))
            return 1;
    std::fprintf(report, "%zu inputs\n", files.size());
    return files.empty() ? 1 : 0;
}
