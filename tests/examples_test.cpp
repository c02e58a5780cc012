// SPDX-License-Identifier: Apache-2.0
// The examples, as a user runs them.
#include "support.h"

#include <filesystem>

namespace quarry {
namespace {

// Its second data record states a last sample that is not there, its fifth ends early.
std::string damaged_demonstration() {
    std::string volume = demonstration_volume();
    volume[14336 + 300] ^= 1;
    return volume.substr(0, 26624 + 300);
}

const std::map<std::string, std::string> volumes = {
    {"demo", demonstration_volume()},
    {"volume.seed", demonstration_volume()},
    {"volume.seed.gz", compressed("gzip -c", demonstration_volume())},
    {"damaged", damaged_demonstration()},
    {"empty", ""}};

// In the folder of the program.
std::string example(const std::string& command) {
    return std::filesystem::path(QUARRY_PROGRAM).parent_path().string() + "/" + command;
}

const bool examples = make_recorded_tests(
    "Examples",
    {
        {"PrintSamples", example("print_samples demo | awk '/samples/ || NR % 200 == 0'"), volumes},
        {"PrintSamplesOfDamage", example("print_samples damaged >out; echo $?; wc -l <out"), volumes},
        {"PrintEpochs", example("print_epochs demo | grep -v '  stage [12]'"), volumes},
        {"Snippets", example("snippets | grep -vE '^-?[0-9]+$'"), volumes},
        {"SumSamples", example("sum_samples demo missing empty damaged demo"), volumes},
    });

} // namespace
} // namespace quarry
