// The message log, and what it says when the memory is exhausted.
#include "support.h"

#include "exhaustible_memory.h"

#include "blockette/blockette.h"
#include "blockette/sdblknam.h"
#include "blockette/volume.h"
#include "platform/message_log.h"

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
    sdblknam(98);
    log_flush(1);
    log_flush(1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "quarry: sdblknam: Unknown blockette type 98\n");
    EXPECT_EXIT(log_die(0, "the end"), testing::ExitedWithCode(1), "^quarry: the end\n$");
}

TEST(Memory, ExhaustionIsFatal) {
    name_the_log();
    const std::string rest = ": Cannot allocate memory\n$";
    EXPECT_EXIT(
        {
            allocations_left = 0;
            new_010();
        },
        testing::ExitedWithCode(1),
        "^quarry: Out of memory in new_010 at line [0-9]+ of 'blockette'\n\tCan't malloc 1 bytes for "
        "new_blk" +
            rest);
    for (const auto& [left, what] :
         {std::pair{1, "12 bytes for blk->stn_id"}, {2, "2 bytes for blk->seq_num"}})
        EXPECT_EXIT(
            {
                allocations_left = left;
                parse_blk("0110032002AAAAA000001BBBBB000002", 11);
            },
            testing::ExitedWithCode(1),
            std::string(
                "^quarry: Out of memory in parse_011 at line [0-9]+ of 'blockette'\n\tCan't malloc ") +
                what + rest);
}

TEST(Release, UnknownType) {
    name_the_log();
    testing::internal::CaptureStderr();
    int untouched = 7;
    free_blk(&untouched, 99);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "quarry: Unknown blockette:    99\n");
}

} // namespace
} // namespace quarry
