// What the tests share: texts of blockettes through parser and printer, and runs of the program itself.
#pragma once

#include "volume_builder.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quarry {

// Replaces the program name of messages by "quarry" for the in-process tests.
void name_the_log();

// What `text`, parsed as a blockette of the type, prints on its listing. Messages go to standard error.
std::string listed(int type, std::string_view text);

// The blockette 010 that most volumes of the tests begin with, with the given record length exponent.
std::string volume_010(int exponent);

// A temporary directory for one test, removed with its end.
class TemporaryDirectory {
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    // Writes a file into it and returns its path.
    std::string file(const std::string& name, std::string_view content) const;
    const std::string& path() const { return path_; }

private:
    std::string path_;
};

struct RunResult {
    std::string out;
    std::string err;
    int status; // exit status, 128 + the signal for a killed program
};

struct RunOptions {
    std::vector<std::string> arguments = {};
    std::string standard_input = {};
    std::vector<std::string> tape_files = {};            // if any: standard input as a tape of these
    std::map<std::string, std::string> environment = {}; // on top of a path to an empty quarry.pf
    std::string directory = {};                          // to run in
    bool one_place = false;                              // both streams into `out`
    std::string program = {};                            // instead of quarry
};

// Runs the program to its end.
RunResult run_quarry(const RunOptions& options);

// Runs it on a volume given as bytes, with the given options before its name.
RunResult list_volume(std::string_view volume, std::vector<std::string> options = {}, bool one_place = false);

} // namespace quarry
