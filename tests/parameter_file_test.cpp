// SPDX-License-Identifier: Apache-2.0
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
                        "long = 0." +
                        std::string(98, '1') +
                        "\n"
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
    EXPECT_THAT(texts,
                ElementsAre(Pair("date", "line 13"), Pair("dotted", "line 10"), Pair("lines", "\"a\"\"\"b\""),
                            Pair("long", "line 12"), Pair("plain", "t\xC3\xA9\"xt"),
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

// The TOML library itself finds what is wrong with the last four short texts; the others end it, or the
// stack, if they get there.
TEST_F(ParameterFileTest, WhatIsWrongAndWhere) {
    const std::string short_texts =
        "a=\xC3\xA9|a = [\xC3\xA9]|'\xC3\xA9' = 1\xC3\xA9|a = 1.\"\xC3\xA9\"|a = 1=\"\xC3\xA9\"|a = 9999-99-99T:|"
        "\n\t\xC3\xA9 = 1|[\xC2\xA5]|a = {\xC3\xA9=1}|a = 1 \xC3\xA9|'''\xC3\xA9'''\xC3\xA9|"
        "a = \"\"\"\\\n \xC3\xA9\"\"\"|[%|a = ['''x''''']\n[%|a = 1\n  [[ =|a = [1,\n }]|a = 'x\xFF'|# \xC0\x80|# \xED\xA0\x80|"
        "# \xF4\x90\x80\x80|# \xC3|a = 1\nb = \n|a = 1\na = 2|[names|a = 'x\n'";
    std::vector<std::string> texts = split(short_texts, '|');
    for (const auto& [begin, part] :
         {std::pair{"a = ", "1"}, {"", "a."}, {"[", "a . "}, {"a=", "["}, {"a=", "{a="}}) {
        texts.emplace_back(begin);
        for (int i = 0; i < 250000; ++i)
            texts.back() += part;
    }
    std::string out;
    for (const std::string& text : texts) {
        for (const char c : text.substr(0, 30))
            out += c >= ' ' ? std::string(1, c) : formatted("\\x%02X", static_cast<unsigned char>(c));
        out += "| " + read_text(text);
        EXPECT_EQ(status_, -1) << out;
    }
    expect_recorded("ParameterFile", "WhatIsWrongAndWhere", out);
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
