// SPDX-License-Identifier: Apache-2.0
// What the tests share: texts of blockettes through parser and printer, runs of the program, recorded
// results.
#pragma once

#include "volume_builder.h"

#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quarry {

// Replaces the program name of messages by "quarry" for the in-process tests.
void name_the_log();

// What `write` writes on the stream that it is given.
std::string written(const std::function<void(std::FILE*)>& write);

// What `text`, parsed as a blockette of the type, prints on its listing. Messages go to standard error.
std::string listed(int type, std::string_view text);

// A temporary directory for one test, removed with its end.
class TemporaryDirectory {
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    // Writes a file into it, in a folder of its own if the name says so, and returns its path.
    std::string file(const std::string& name, std::string_view content) const;
    const std::string& path() const { return path_; }

private:
    std::string path_;
};

std::string content_of(const std::string& path);

// The parts of a text, each up to a separator or the end; none of an empty text.
std::vector<std::string> split(const std::string& text, char separator);

// The content as the command ("gzip -c") writes it, which reads it on standard input.
std::string compressed(const std::string& command, std::string_view content);

struct RunResult {
    std::string out;
    std::string err;
    int status; // exit status, 128 + the signal for a killed program
};

struct Run {
    const char* name;    // of the test
    std::string command; // for the shell, in a fresh directory; $quarry is the program
    std::map<std::string, std::string> files = {}; // of the directory, besides an empty quarry.pf
    std::vector<std::string> tape_files = {};      // if any: standard input is a tape of these
};
RunResult run(const Run& options);

// The listing of a volume of the given bytes, with the given options and what follows in the command.
Run listing(const char* name, std::string volume, const std::string& options = "",
            const std::string& rest = "");

// Compares a text, or a result, with tests/golden/SUITE/NAME.txt, which was read and found right. With
// QUARRY_RECORD=1 in the environment the file is written anew.
void expect_recorded(const std::string& suite, const std::string& name, std::string text);
void expect_recorded(const std::string& suite, const std::string& name, const RunResult& result);

// Makes a test SUITE.NAME of each case: check (case). Cases have a `name`.
template <class Case, class Check>
bool make_tests(const char* suite, std::vector<Case> cases, Check check) {
    struct Test : testing::Test {
        Test(const Case& the_case, Check the_check) : case_(the_case), check_(the_check) {}
        void TestBody() override { check_(case_); }
        Case case_;
        Check check_;
    };
    for (const Case& one : cases)
        testing::RegisterTest(suite, one.name, nullptr, nullptr, __FILE__, __LINE__,
                              [=]() -> testing::Test* { return new Test(one, check); });
    return true;
}

// A test of each run: its result is as recorded.
bool make_recorded_tests(const char* suite, std::vector<Run> runs);

} // namespace quarry
