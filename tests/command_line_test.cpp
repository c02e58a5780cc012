// SPDX-License-Identifier: Apache-2.0
// The command line: options, what the program does about its streams and signals, the parameter file.
#include "support.h"

#include <regex>

namespace quarry {
namespace {

const std::map<std::string, std::string> demo = {{"demo", demonstration_volume()}};
const std::string channel_of_format_1 =
    blockette(52, "  BHZ0000001~001001" + std::string(43, ' ') + "000112" + std::string(24, ' ') + "~~~N");
const std::map<std::string, std::string> two_parameter_files = {
    {"first/quarry.pf", "[data_type_aliases]\n\"Local ints\" = \"32-Bit Integer Format\"\n\"x\" = 7\n"},
    {"second/quarry.pf", "[data_type_aliases]\n\"Local ints\" = \"IEEE single precision real\"\n"},
    {"broken/quarry.pf", "[data_type_aliases]\na = \n"},
    {"volume", VolumeBuilder(512)
                   .control('A', blockette(30, "Local ints~000100000"))
                   .control('S', channel_of_format_1)
                   .data({.station = "", .encoding = 10})
                   .bytes()}};
const std::string named = "ln -s \"$quarry\" quarry; ";

// A copy of the program beside its configuration, whose place does not show.
const std::string installed = "mkdir bin etc; cp \"$quarry\" bin; mv first etc/quarry; ";
const std::string in_its_place = " 2>&1 | sed \"s:$PWD/::\"";

// The parts of a zero or pole and their errors.
const std::string ones = " 1.00000E+00 1.00000E+00 1.00000E+00 1.00000E+00";

// Texts that would move the cursor, forge a line or change the terminal's settings ("\303\251" is a letter),
// a message of several lines, and a type that the summary does not know.
const std::map<std::string, std::string> volume_of_controls{
    {"volume",
     VolumeBuilder(512)
         .control('A', blockette(30, "32-Bit Integer Format~000100000") +
                           blockette(33, "001\33[2J\nquarry: forged\303\251\302\233\200\177~") +
                           blockette(33, "\33\n\r~") +
                           blockette(53, "A01001002" + padded("", 24) + "001" + ones + "001" + ones))
         .control('S', channel_of_format_1 + blockette(98, ""))
         .data({.station = "", .encoding = 10})
         .bytes()}};

// The smallest limits at which the program is loaded at all, and what then ends it.
const std::string little_memory =
    "kib=4096; while (ulimit -v $kib; $quarry demo) >out 2>&1; [ $? = 127 ]; do kib=$((kib + 64)); done; "
    "for step in $(seq 32); do (ulimit -v $kib; $quarry demo >out 2>err); "
    "echo status $?, $(grep -c '^quarry: Out of memory in .*of' err) message; kib=$((kib + 16)); done | sort | uniq -c | sed 's/ *[0-9]* //'";

// A volume in parts, the first of which ends within padding and the last but one within a record. Each is
// written when the line of the one before has arrived.
const std::string slow_header = padded("000001A " + blockette(33, "001text~"), 512);
const std::string slow_records =
    VolumeBuilder().data({.encoding = 3}).data({.second = 31, .encoding = 3}).data({.second = 32}).bytes();
const std::map<std::string, std::string> slow_volume = {
    {"1", slow_header.substr(0, 100)},
    {"2", slow_header.substr(100) + slow_records.substr(0, 4096)},
    {"3", slow_records.substr(4096, 4096 + 4000)},
    {"4", slow_records.substr(4096 + 4096 + 4000)}};
const std::string from_a_slow_pipe =
    "mkfifo in out; timeout 100 $quarry <in >out & exec 3>in 4<out; for part in 1 2 3 4; do "
    "cat $part >&3; timeout 20 sed -u '/^B033/q; /^DATA/q' <&4; echo part $part; done; exec 3>&-; cat <&4";

const bool command_line = make_recorded_tests(
    "CommandLine",
    {
        // What stands on the three standard descriptors that were closed, and whether they can be written.
        {"ClosedDescriptors",
         "mkfifo volume; $quarry volume <&- >&- 2>&- & exec 3>volume; cd /proc/$!; readlink fd/0 fd/1 fd/2; "
         "grep -ho 'flags.*' fdinfo/0 fdinfo/1 fdinfo/2 | grep -o '.$'; exec 3>&-; wait"},
        {"SlowPipe", from_a_slow_pipe, slow_volume},
        {"Terminal", "script -qec '$quarry volume' /dev/null </dev/null | tr -d '\\r'", volume_of_controls},
        {"NoTerminal", "$quarry volume", volume_of_controls},
        {"NoParameterFile", "rm quarry.pf; $quarry demo", demo},
        {"NoParameterFileOnThePath", "QUARRY_PARAM_PATH=here:there $quarry demo", demo},
        {"ParameterFileOfTheCurrentDirectory", "cd first; $quarry ../volume", two_parameter_files},
        {"EmptyPathCountsAsNone", "cd first; QUARRY_PARAM_PATH= $quarry ../volume", two_parameter_files},
        {"ParameterFileOfTheInstallation", installed + "rm quarry.pf; bin/quarry volume" + in_its_place,
         two_parameter_files},
        {"ParameterFileOfBoth", installed + "bin/quarry volume" + in_its_place, two_parameter_files},
        {"ParameterFileBehindThePath",
         installed + "QUARRY_PARAM_PATH=nowhere bin/quarry volume" + in_its_place, two_parameter_files},
        {"Help",
         "($quarry --help && $quarry --version | sed 's/[0-9a-f]\\{40\\}/REVISION/'; $quarry --help >/dev/full)",
         {}},
        {"FirstParameterFileOfThePath", "QUARRY_PARAM_PATH=here::first:second $quarry volume",
         two_parameter_files},
        {"SecondParameterFileOfThePath", "QUARRY_PARAM_PATH=second:first $quarry volume",
         two_parameter_files},
        {"BrokenParameterFile", "QUARRY_PARAM_PATH=broken:first $quarry volume", two_parameter_files},
    });

#ifndef __SANITIZE_ADDRESS__ // which needs more address space than any limit gives
const bool limits = make_recorded_tests("Limits", {{"LittleMemory", little_memory, demo}});
#endif

const std::string usage_of_link = "\nUsage: ./quarry [[-f n] [-sS] [-d database] [seed]\n";
const std::string banner_of_link =
    "\n\\./quarry  <#>\n    [^\n]+ [0-9]{4} <#>\n    Tarn Release 1\\.0\\.0 Linux [^\n]+  <#>\n    [0-9a-f]{40}  <#>\n\n    The Quarry project\n    Source and issues are kept in the project's repository, quarry;\n    report problems among its issues\\.\n\n";

struct Usage {
    const char* name;
    const char* arguments;
    int status;
    std::string usage;
};

const bool usage = make_tests(
    "Usage",
    std::vector<Usage>{
        {"TwoVolumes", "a b", 1, usage_of_link},
        {"Help", "-H", 1, usage_of_link},
        {"UnknownOption", "-x", 1, "./quarry: invalid option -- 'x'\n" + usage_of_link},
        {"OptionAfterVolume", "a -s", 1, usage_of_link},
        {"OptionWithoutArgument", "-f", 1, "./quarry: option requires an argument -- 'f'\n" + usage_of_link},
        {"Banner", "-V missing", 0, ""}},
    [](const Usage& c) {
        const RunResult result = run({c.name, named + "./quarry " + c.arguments});
        EXPECT_EQ(result.status, c.status);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.substr(0, c.usage.size()), c.usage);
        const std::string rest = result.err.substr(std::min(c.usage.size(), result.err.size()));
        EXPECT_TRUE(std::regex_match(rest, std::regex(banner_of_link))) << rest;
    });

} // namespace
} // namespace quarry
