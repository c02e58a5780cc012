// SPDX-License-Identifier: Apache-2.0
// Byte input: compressed and plain, from memory and pipes, whole and damaged.

#include "exhaustible_memory.h"
#include "support.h"

#include "platform/byte_source.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>

namespace quarry {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Delivered {
    std::string bytes;
    std::vector<std::string> errors;
};

// Reads to the end, in pieces of up to `room` bytes.
Delivered drain(ByteSource source, std::size_t room = 30000) {
    Delivered all{};
    std::vector<char> piece(room);
    for (ssize_t count; (count = source.read(piece)) != 0 && all.errors.size() < 3;)
        if (count > 0)
            all.bytes.append(piece.data(), static_cast<std::size_t>(count));
        else
            all.errors.push_back(describe(source.error()));
    return all;
}

Delivered drain(std::string_view bytes, std::size_t room = 30000) {
    return drain(ByteSource::of_memory(bytes), room);
}

// Bytes of which some compress well and some hardly, more than a block of each compression.
std::string sample(std::size_t size) {
    std::string bytes;
    std::uint32_t noise = 1;
    while (bytes.size() < size) {
        bytes += digits(static_cast<int>(bytes.size() % 1000000), 6) + "D " + std::string(40, 'x');
        for (int i = 0; i < 40; ++i)
            bytes += static_cast<char>((noise = noise * 1664525 + 1013904223) >> 24);
    }
    bytes.resize(size);
    return bytes;
}

struct Tool {
    const char* command;
    bool checked; // the data tell their end and have a checksum
};
constexpr std::array tools{Tool{"gzip -c", true}, Tool{"compress -fc", false},    Tool{"bzip2 -1c", true},
                           Tool{"xz -c", true},   Tool{"zstd -qc --check", true}, Tool{"lzip -c", true}};

TEST(Compressed, IsReadWhole) {
    const std::string content = sample(400000);
    for (const Tool& tool : tools) {
        const std::string packed = compressed(tool.command, content);
        for (const std::size_t room : {std::size_t{1}, std::size_t{1000000}}) {
            const Delivered all = drain(packed, room);
            EXPECT_TRUE(all.bytes == content && all.errors.empty()) << tool.command << room;
        }
    }
    // The codes of compress become wider; its table is cleared when the content changes.
    const std::string changing = sample(300000) + std::string(300000, 'z') + sample(900000);
    for (const int width : {10, 11, 12, 15, 16})
        EXPECT_TRUE(drain(compressed("compress -c -b" + std::to_string(width), changing)).bytes == changing)
            << width;
}

TEST(Compressed, MembersPaddingAndWhatFollows) {
    const std::string content = sample(1000);
    const std::string other = compressed("compress -c", content);
    for (const Tool& tool : tools) {
        SCOPED_TRACE(tool.command);
        const std::string one = compressed(tool.command, content);
        if (!tool.checked)
            continue;
        const Delivered several =
            drain(one + compressed(tool.command, "") + one + std::string(70000, '\0') + one + '\0');
        EXPECT_EQ(several.bytes, content + content + content);
        EXPECT_THAT(several.errors, IsEmpty());
        for (const std::string& garbage : {std::string("garbage"), std::string("\x1f"), other}) {
            const Delivered followed = drain(one + garbage);
            EXPECT_EQ(followed.bytes, content);
            EXPECT_THAT(followed.errors, ElementsAre("decompression OK, trailing garbage ignored"));
        }
    }
    // Frames that zstd passes over come first or last in the files of some of its tools.
    const std::string passed_over("\x5e\x2a\x4d\x18\x03\0\0\0abc", 11);
    const Delivered framed = drain(passed_over + compressed("zstd -qc", content) + passed_over);
    EXPECT_EQ(framed.bytes, content);
    EXPECT_THAT(framed.errors, IsEmpty());
}

// Cut everywhere, then damaged everywhere: all but a block is delivered.
TEST(Compressed, WhatPrecedesDamageIsDelivered) {
    constexpr std::size_t block = 170000;
    const std::string content = sample(400000);
    for (const Tool& tool : tools) {
        const std::string packed = compressed(tool.command, content);
        for (std::size_t at = 6; at < packed.size(); at += at < 30 || at + 30 > packed.size() ? 1U : 4999U) {
            SCOPED_TRACE(tool.command + std::string(" at ") + std::to_string(at));
            const std::size_t before = content.size() * at / packed.size();
            const Delivered cut = drain(std::string_view(packed).substr(0, at));
            ASSERT_TRUE(content.starts_with(cut.bytes) && cut.bytes.size() + block > before);
            ASSERT_TRUE(!tool.checked || cut.errors == std::vector<std::string>{"unexpected end of file"});
            std::string damaged = packed;
            damaged[at] = static_cast<char>(damaged[at] ^ 0x10);
            const Delivered all = drain(damaged, 1000000);
            ASSERT_LE(all.errors.size(), 1U);
            ASSERT_TRUE(!tool.checked || !all.errors.empty() || all.bytes == content);
            ASSERT_GT(all.bytes.size() + block, before);
        }
    }
    std::string packed = compressed("gzip -c", content);
    packed[packed.size() - 1] ^= 1;
    EXPECT_THAT(drain(packed, 1000000).errors, ElementsAre("invalid compressed data--length error"));
    packed[packed.size() - 6] ^= 1;
    EXPECT_THAT(drain(packed).errors, ElementsAre("invalid compressed data--crc error"));
    EXPECT_THAT(drain("\x1f\x9d\x91 ab").errors, ElementsAre("invalid compressed data--format violated"));
    EXPECT_THAT(drain("\x1f\x9d").errors, ElementsAre("unexpected end of file"));
}

TEST(Compressed, WindowsOfHalfAGibibyteAreRefused) {
    constexpr std::string_view xz(
        "\xfd\x37\x7a\x58\x5a\x00\x00\x04\xe6\xd6\xb4\x46\x02\x00\x21\x01\x22\x00\x00\x00"
        "\x82\x40\xac\xdc\x01\x00\x00",
        27);
    for (const std::string_view hostile : {std::string_view("\x28\xb5\x2f\xfd\x00\x98\x00\x00\x00", 9),
                                           std::string_view("LZIP\x01\x1d\x00\x00\x00", 9), xz})
        EXPECT_THAT(drain(hostile).errors, ElementsAre("decompression needs more than 128 MiB of memory"));
}

TEST(Compressed, ExhaustedMemoryIsAnError) {
    const std::string content = sample(1000);
    for (const Tool& tool : tools) {
        const std::string packed = compressed(tool.command, content);
        std::vector<char> piece(5000);
        for (int successes = 0;; ++successes) {
            ByteSource source = ByteSource::of_memory(packed);
            allocations_left = successes;
            const ssize_t count = source.read(piece);
            allocations_left = -1;
            if (count > 0)
                break;
            ASSERT_EQ(source.error().number, ENOMEM) << tool.command;
            ASSERT_EQ(source.read(piece), -1);
        }
    }
}

// --- pipes -----------------------------------------------------------------------------------------------

struct Pipe {
    explicit Pipe(int flags = 0) { EXPECT_EQ(pipe2(ends.data(), flags), 0); }
    ~Pipe() { close(ends[0]); }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    std::array<int, 2> ends{};
};

TEST(Pipes, WhatArrivedIsDeliveredAtOnce) {
    const std::string content = sample(1000);
    std::array<char, 5000> piece{};
    for (const Tool& tool : tools) {
        SCOPED_TRACE(tool.command);
        // What compress wrote has no members: plain bytes take its turn.
        const std::string packed = tool.checked ? compressed(tool.command, content) : content;
        const Pipe pipe;
        ByteSource source = ByteSource::of_descriptor(pipe.ends[0]);
        for (int member = 0; member < 3; ++member) {
            ASSERT_EQ(write(pipe.ends[1], packed.data(), packed.size()), static_cast<ssize_t>(packed.size()));
            ASSERT_EQ(source.read(piece), 1000); // and does not wait for the next member
        }
        close(pipe.ends[1]);
        EXPECT_EQ(source.read(piece), 0);
    }
}

TEST(Pipes, ByteByByteThroughInterruptionsAndEmptiness) {
    const std::string content = sample(3000);
    struct sigaction ignore {};
    ignore.sa_handler = [](int) {};
    struct sigaction before {};
    sigaction(SIGALRM, &ignore, &before); // interrupts a read, as SA_RESTART is missing
    const itimerval often{{0, 500}, {0, 500}};
    setitimer(ITIMER_REAL, &often, nullptr);
    for (const int flags : {0, O_NONBLOCK})
        for (const std::string& packed :
             {content, compressed("gzip -c", content), compressed("xz -c", content)}) {
            const Pipe pipe(flags);
            std::thread writer([&] {
                for (std::size_t i = 0; i < packed.size();
                     i += write(pipe.ends[1], &packed[i], 1) == 1 ? 1U : 0U)
                    if (i % 100 == 0)
                        usleep(1000);
                close(pipe.ends[1]);
            });
            const Delivered all = drain(ByteSource::of_descriptor(pipe.ends[0]));
            writer.join();
            EXPECT_EQ(all.bytes, content);
            EXPECT_THAT(all.errors, IsEmpty());
        }
    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
    sigaction(SIGALRM, &before, nullptr);
}

} // namespace
} // namespace quarry
