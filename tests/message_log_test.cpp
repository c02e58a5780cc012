// SPDX-License-Identifier: Apache-2.0
// The message log; records of every type, new and when the memory is exhausted.
#include "support.h"

#include "exhaustible_memory.h"

#include "blockette/blockette.h"
#include "blockette/sdblknam.h"
#include "listing/count.h"
#include "listing/pbrief.h"
#include "platform/memory.h"
#include "platform/message_log.h"
#include "sdd/sdd.h"

#include <array>
#include <new>
#include <regex>
#include <sys/wait.h>
#include <unistd.h>

// A process that ends for want of memory leaves behind what it had.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
    return "detect_leaks=0";
}

namespace quarry {
namespace {

TEST(MessageLog, NotesWaitForTheNextComplaint) {
    name_the_log();
    testing::internal::CaptureStderr();
    log_note("first %d\n", 1);
    log_note("second");
    errno = ENOENT;
    log_complain(1, "complaint\nof two lines\n");
    EXPECT_EQ(
        testing::internal::GetCapturedStderr(),
        "quarry: first 1\nquarry: second\nquarry: complaint\nof two lines: No such file or directory\n");
    testing::internal::CaptureStderr();
    for (int i = 0; i < log_register_limit - 1; ++i)
        log_note("%s", std::string(3000, 'x').c_str());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    testing::internal::CaptureStderr();
    log_note("the hundredth");
    EXPECT_EQ(testing::internal::GetCapturedStderr().size(),
              99 * 3009 + sizeof "quarry: the hundredth\n" - 1);
    testing::internal::CaptureStderr();
    log_note("stays");
    log_flush(0);
    sdblknam(98);
    log_flush(1);
    log_flush(1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "quarry: stays\nquarry: stays\nquarry: sdblknam: Unknown blockette type 98\n");
    EXPECT_EXIT(log_die(0, "the end"), testing::ExitedWithCode(1), "^quarry: the end\n$");
}

// Runs the work in a process whose allocations fail from the given one on, and ends it as the command does.
template <class Work>
[[noreturn]] void end_without_memory(int allocations, Work work) {
    allocations_left = allocations;
    try {
        work();
    } catch (const std::bad_alloc&) {
        out_of_memory(QUARRY_SITE("main"), 1, "working storage");
    }
    _exit(0);
}

// What is reported when the memory ends at the first allocation, at the second and so on, with the exit
// status.
std::string exhaustions(int type, const std::string& text) {
    std::string said;
    for (int allocations = 0;; ++allocations) {
        std::array<int, 2> ends;
        EXPECT_EQ(pipe(ends.data()), 0);
        const pid_t child = fork();
        if (child == 0) {
            dup2(ends[1], STDERR_FILENO);
            end_without_memory(allocations, [&] { parse_blk(text, type); });
        }
        close(ends[1]);
        std::array<char, 1000> message;
        const ssize_t length = read(ends[0], message.data(), message.size());
        close(ends[0]);
        int status = 0;
        waitpid(child, &status, 0);
        if (status == 0)
            return said;
        said += "exit status " + std::to_string(WEXITSTATUS(status)) + ": " +
                std::string(message.data(), static_cast<std::size_t>(length));
    }
}

TEST(Memory, ExhaustionIsFatal) {
    name_the_log();
    const std::map<int, std::string> fields{
        {11, "002AAAAA000001BBBBB000002"},
        {30, "Name~000100002Key~Key~"},
        {53, "A01001002" + padded("", 24) + "002" + padded("", 96) + "003"},
        {54, "D01001002   2" + padded("", 48) + "   3"},
        {61, "01Name~A001002   2"}};
    RunResult result{"", "", 0};
#define QUARRY_TYPE(TYPE, NAME) TYPE,
    for (const int type : {QUARRY_BLOCKETTE_TYPES(QUARRY_TYPE)})
#undef QUARRY_TYPE
        result.err +=
            exhaustions(type, blockette(std::abs(type), fields.contains(type) ? fields.at(type) : ""));
    result.err = std::regex_replace(result.err, std::regex("line [0-9]+"), "line N");
    expect_recorded("Memory", "ExhaustionIsFatal", result);
}

TEST(Memory, EveryAllocationOfARunMayFail) {
    name_the_log();
    const TemporaryDirectory directory;
    const std::string volume = directory.file("demo", demonstration_volume());
    const std::string messages = directory.path() + "/messages";
    int status = 1;
    int allocations = 0;
    for (; status != 0 && allocations < 100000; ++allocations) {
        const pid_t child = fork();
        if (child == 0) {
            if (std::freopen(messages.c_str(), "w", stderr) == nullptr ||
                std::freopen("/dev/null", "w", stdout) == nullptr)
                _exit(2);
            end_without_memory(allocations, [&] { sdd(volume.c_str(), 0); });
        }
        waitpid(child, &status, 0);
        const std::string said = content_of(messages);
        const std::regex last("(^|[^]*\n)quarry: Out of memory in [^]*: Cannot allocate memory\n$");
        ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) <= 1) << allocations << ": " << said;
        ASSERT_EQ(status != 0, std::regex_match(said, last)) << allocations << ": " << said;
    }
    EXPECT_GT(allocations, 100);
}

// The defaults of a new record, and of a used one that is made ready anew.
TEST(Defaults, OfEveryType) {
    name_the_log();
    const std::string ones = std::string(99, '1');
    RunResult result{"", "", 0};
    testing::internal::CaptureStderr();
#define QUARRY_COMPARE(TYPE, NAME)                                                                           \
    {                                                                                                        \
        const auto print = [](std::FILE* stream, void* record) { pbrief_blk(stream, record, TYPE); };        \
        const BlockettePointer fresh(new_##NAME(), {TYPE});                                                  \
        const BlockettePointer used(parse_blk(blockette(std::abs(TYPE), TYPE == 73 ? "0001" : ones), TYPE),  \
                                    {TYPE});                                                                 \
        init_##NAME(static_cast<blk_##NAME##_t*>(used.get()));                                               \
        result.out += written([&](std::FILE* stream) { print(stream, fresh.get()); });                       \
        result.out += written([&](std::FILE* stream) { print(stream, used.get()); });                        \
    }
    QUARRY_BLOCKETTE_TYPES(QUARRY_COMPARE)
#undef QUARRY_COMPARE
    testing::internal::GetCapturedStderr();
    expect_recorded("Defaults", "OfEveryType", result);
}

TEST(MessageLog, UnknownTypes) {
    name_the_log();
    testing::internal::CaptureStderr();
    errno = ENOENT;
    count_blk(nullptr, 499); // a message about the content, without the error that was before
    int untouched = 7;
    free_blk(&untouched, 99);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "quarry: Unknown block type = 499: Success\nquarry: Unknown blockette:    99\n");
}

} // namespace
} // namespace quarry
