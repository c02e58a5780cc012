// Parameter files: where they are looked for, what they hold, and what is reported of those that cannot be
// used.

#include "support.h"

#include "platform/message_log.h"
#include "platform/parameter_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <sys/stat.h>

namespace quarry {
namespace {

using testing::ElementsAre;
using testing::Pair;
using testing::StartsWith;

class ParameterFileTest : public testing::Test {
protected:
    ParameterFileTest() {
        name_the_log();
        search(directory_.path());
    }
    ~ParameterFileTest() override { unsetenv("QUARRY_PARAM_PATH"); }

    static void search(const std::string& path) { setenv("QUARRY_PARAM_PATH", path.c_str(), 1); }

    std::string path() const { return directory_.path() + "/tool.pf"; }

    // Reads tool.pf; returns what is reported, after the names of program and file.
    std::string read() {
        testing::internal::CaptureStderr();
        status_ = param_read("tool", &parameters_);
        log_flush(1);
        const std::string begin = "quarry: " + path() + ":";
        const std::string message = testing::internal::GetCapturedStderr();
        return message.starts_with(begin) ? message.substr(begin.size()) : message;
    }

    std::string read_text(std::string_view text) {
        directory_.file("tool.pf", text);
        return read();
    }

    TemporaryDirectory directory_;
    ParameterFile parameters_;
    int status_ = 0;
};

TEST_F(ParameterFileTest, TheFirstThatExistsIsRead) {
    const TemporaryDirectory second;
    const TemporaryDirectory third;
    second.file("tool.pf", "second = 1");
    third.file("tool.pf", "third = 1");
    const auto found_in = [&](const std::string& path) {
        search(path);
        EXPECT_EQ(read(), "");
        return parameters_.path;
    };
    const std::string both = second.path() + "::" + third.path();
    EXPECT_EQ(found_in(directory_.path() + ":" + both), second.path() + "/tool.pf");
    EXPECT_THAT(parameters_.others, ElementsAre(Pair("second", 1)));
    std::filesystem::create_symlink("nowhere", path()); // leads to a file that is missing
    EXPECT_EQ(found_in(directory_.path() + ":" + both), second.path() + "/tool.pf");
    EXPECT_EQ(found_in(third.path() + ":" + second.path()), third.path() + "/tool.pf");

    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(third.path());
    EXPECT_EQ(found_in(""), "tool.pf");
    EXPECT_EQ(found_in(second.path()), second.path() + "/tool.pf");
    std::filesystem::current_path(before);

    search(directory_.path());
    EXPECT_EQ(read(), "");
    EXPECT_EQ(status_, -1);
}

TEST_F(ParameterFileTest, FilesThatAreNotRead) {
    const std::string begin = "quarry: Can't read " + path() + ": ";
    const auto refused = [&](const std::string& reason) {
        EXPECT_EQ(read(), begin + reason + "\n");
        EXPECT_EQ(status_, -1);
        std::filesystem::remove(path());
    };
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    refused("Not a regular file");
    std::filesystem::create_symlink("/dev/zero", path());
    refused("Not a regular file");
    std::filesystem::create_directory(path());
    refused("Is a directory");
    std::filesystem::create_symlink("tool.pf", path());
    refused("Too many levels of symbolic links");
    directory_.file("tool.pf", std::string((1 << 20) + 1, '\n'));
    refused("File too large");
}

TEST_F(ParameterFileTest, TextsOfATable) {
    EXPECT_EQ(read_text("\xEF\xBB\xBF# f\xC3\xBCr\r\n"
                        "top = 'x'\r\n"
                        "[names] # \xF0\x9F\x8C\x8D\n"
                        "plain = \"t\\u00e9\\\"xt\"\n"
                        "'t\xC3\xA9 = [{' = 't\xC3\xA9 \\'\n"
                        "quotes = '''a'b\n''c'''''\n"
                        "lines = \"\"\"\"a\\\"\"\"\\\n   b\"\"\"\"\n"
                        "dotted . \"k.\xC3\xA9y\" = { 3.'a' = [[1, 2.5e-3], [ # \xC3\xA9\n"
                        "  +inf, 'x', 0x1F, true]], b = '' }\n"
                        "date = 1979-05-27 07:32:00.5-07:00\n"
                        "[[ list.'of' . tables ]]\n"
                        "  [list.of.tables.\"below\"]\n"
                        "four = ['''x'''']\n"
                        "  at = 07:32:00"),
              "");
    EXPECT_EQ(status_, 0);
    EXPECT_THAT(parameters_.others, ElementsAre(Pair("top", 2)));
    std::map<std::string, std::string> texts;
    for (const auto& [name, value] : parameters_.tables["names"])
        texts[name] = value.text.value_or("line " + std::to_string(value.line));
    EXPECT_THAT(texts, ElementsAre(Pair("date", "line 12"), Pair("dotted", "line 10"),
                                   Pair("lines", "\"a\"\"\"b\""), Pair("plain", "t\xC3\xA9\"xt"),
                                   Pair("quotes", "a'b\n''c''"), Pair("t\xC3\xA9 = [{", "t\xC3\xA9 \\")));
}

TEST_F(ParameterFileTest, MapsHoldTheTexts) {
    EXPECT_EQ(read_text("flat = 1\n[names]\na = 'x'\nb = 2\n"), "");
    testing::internal::CaptureStderr();
    const std::optional<Map<std::string>> names = param_get_map(parameters_, "names");
    EXPECT_EQ(names->size(), 1U);
    EXPECT_EQ(*names->get("a"), "x");
    EXPECT_EQ(param_get_map(parameters_, "flat")->size(), 0U);
    EXPECT_FALSE(param_get_map(parameters_, "none"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "quarry: " + path() +
                                                          ":4: names: the value of 'b' is no text\n" +
                                                          "quarry: " + path() + ":1: flat is no table\n");
}

std::string repeated(const std::string& text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

// Every one of these texts but the last group ends the TOML library, or the stack, if it gets there.
TEST_F(ParameterFileTest, WhatIsWrongAndWhere) {
    struct Case {
        std::string text;
        std::string message;
    };
    const std::string beyond_ascii = "a character beyond ASCII outside of quotes";
    const std::string after_backslash = "a character beyond ASCII after a backslash";
    const std::vector<Case> cases = {
        {"a=\xC3\xA9", "1:3: this is not a value"},
        {"a = [\xC3\xA9]", "1:6: this is not a value"},
        {"'\xC3\xA9' = 1\xC3\xA9", "1:7: this is not a value"},
        {"a = 1.\"\xC3\xA9\"", "1:5: this is not a value"},
        {"a = 1=\"\xC3\xA9\"", "1:5: this is not a value"},
        {"a = 9999-99-99T:", "1:5: this is not a value"},
        {"a = " + std::string(300000, '1'), "1:5: this is not a value"},
        {"\n\t\xC3\xA9 = 1", "2:2: " + beyond_ascii},
        {"[\xC2\xA5]", "1:1: a table without a name"},
        {"a = {\xC3\xA9=1}", "1:6: " + beyond_ascii},
        {"a = 1 \xC3\xA9", "1:7: this is not a value"},
        {"'''\xC3\xA9'''\xC3\xA9", "1:8: " + beyond_ascii},
        {"a = \"\"\"\\\n \xC3\xA9\"\"\"", "1:9: " + after_backslash},
        {"[%", "1:1: a table without a name"},
        {"a = 1\n  [[ =", "2:3: a table without a name"},
        {"a = [1,\n }]", "2:2: a bracket that closes none"},
        {"a = 'x\xFF'", "1:7: this is not UTF-8"},
        {"# \xC0\x80", "1:3: this is not UTF-8"},
        {"# \xED\xA0\x80", "1:3: this is not UTF-8"},
        {"# \xF4\x90\x80\x80", "1:3: this is not UTF-8"},
        {"# \xC3", "1:3: this is not UTF-8"},
        {repeated("a.", 300000) + "a=1", "1:66: nested too deep"},
        {"[" + repeated("a . ", 250000), "1:132: nested too deep"},
        {"a=" + repeated("[", 300000), "1:35: nested too deep"},
        {"a=" + repeated("{a=", 300000), "1:99: nested too deep"},
        // What the library finds itself.
        {"a = 1\nb = \n", "2:5: Error while parsing key-value pair: expected value, saw '\\n'"},
        {"a = 1\na = 2", "2:5: Error while parsing key-value pair: cannot redefine existing integer 'a'"},
        {"[names", "1:7: Error while parsing table header: encountered end-of-file"},
        {"a = 'x\n'",
         "1:7: Error while parsing literal string: control characters other than TAB (U+0009) are "
         "explicitly prohibited"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(read_text(c.text), c.message + "\n") << c.text.substr(0, 40);
        EXPECT_EQ(status_, -1);
    }
}

// Without a path given it is that of the current directory, then that of the installation.
TEST_F(ParameterFileTest, EndsTheProgram) {
    const std::string file = directory_.file("quarry.pf", "a = \xC3\xA9\n");
    const RunResult result = run({"", "QUARRY_PARAM_PATH=" + directory_.path() + " $quarry"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "quarry: " + file +
                              ":1:5: this is not a value\n"
                              "quarry: Couldn't read parameter file quarry.pf.\n");
}

} // namespace
} // namespace quarry
