// Byte input: compressed and plain, from memory, files, pipes and sockets, whole and damaged.

#include "exhaustible_memory.h"
#include "support.h"

#include "platform/byte_source.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>

namespace quarry {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Kind = ByteError::Kind;

struct Delivered {
    std::string bytes;
    std::vector<std::string> errors;
    bool ended;
};

// Reads to the end, in pieces of up to `room` bytes.
Delivered drain(ByteSource source, std::size_t room = 30000) {
    Delivered all{};
    std::vector<char> piece(room);
    for (int failures = 0; failures < 3;) {
        const ssize_t count = source.read(piece);
        all.ended = count == 0;
        if (all.ended)
            break;
        if (count > 0)
            all.bytes.append(piece.data(), static_cast<std::size_t>(count));
        else
            all.errors.push_back(describe(source.error()));
        failures += count < 0 ? 1 : 0;
    }
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
    const char* name;
    bool checked; // the data tell their end and have a checksum
};
constexpr std::array tools{Tool{"gzip -c", "gzip", true},          Tool{"compress -fc", "compress", false},
                           Tool{"bzip2 -1c", "bzip2", true},       Tool{"xz -c", "xz", true},
                           Tool{"zstd -qc --check", "zstd", true}, Tool{"lzip -c", "lzip", true}};

TEST(Compressed, IsReadWholeThroughAnyRoom) {
    const std::string content = sample(400000);
    for (const Tool& tool : tools) {
        SCOPED_TRACE(tool.command);
        const std::string packed = compressed(tool.command, content);
        for (const std::size_t room : {std::size_t{1}, std::size_t{4096}, std::size_t{1000000}}) {
            const Delivered all = drain(packed, room);
            EXPECT_TRUE(all.bytes == content && all.ended) << room;
            EXPECT_THAT(all.errors, IsEmpty());
        }
        std::array<char, 1> byte{};
        ByteSource source = ByteSource::of_memory(packed);
        EXPECT_EQ(source.read(byte), 1);
        EXPECT_STREQ(source.compression(), tool.name);
        const Delivered none = drain(compressed(tool.command, ""));
        EXPECT_EQ(none.bytes, "");
        EXPECT_THAT(none.errors, IsEmpty());
    }
    for (const char* widths :
         {"compress -b10 -c", "compress -b11 -c", "compress -b12 -c", "compress -b15 -c"})
        EXPECT_TRUE(drain(compressed(widths, content)).bytes == content) << widths;
    // The table is cleared when the content changes.
    const std::string changing = sample(300000) + std::string(300000, 'z') + sample(900000);
    EXPECT_TRUE(drain(compressed("compress -c", changing)).bytes == changing);
}

TEST(Compressed, MembersPaddingAndWhatFollows) {
    const std::string content = sample(1000);
    for (const Tool& tool : tools) {
        if (!tool.checked)
            continue;
        SCOPED_TRACE(tool.command);
        const std::string one = compressed(tool.command, content);
        const std::string nothing = compressed(tool.command, "");
        const Delivered several =
            drain(one + nothing + one + std::string(70000, '\0') + one + std::string(3, '\0'));
        EXPECT_EQ(several.bytes, content + content + content);
        EXPECT_THAT(several.errors, IsEmpty());
        const std::string other = compressed(tool.name == tools[0].name ? "xz -c" : "gzip -c", content);
        for (const std::string& garbage : {std::string("garbage"), std::string("\x1f"), other}) {
            const Delivered followed = drain(one + garbage);
            EXPECT_EQ(followed.bytes, content);
            EXPECT_THAT(followed.errors, ElementsAre("decompression OK, trailing garbage ignored"));
            EXPECT_TRUE(followed.ended);
        }
    }
    // Frames that zstd passes over come first or last in the files of some of its tools.
    const std::string passed_over("\x5e\x2a\x4d\x18\x03\0\0\0abc", 11);
    const std::string frame = compressed("zstd -qc", content);
    EXPECT_EQ(drain(passed_over + frame + passed_over).bytes, content);
    EXPECT_THAT(drain(passed_over + frame + passed_over).errors, IsEmpty());
}

TEST(Compressed, CutInputDeliversAllBeforeTheCut) {
    const std::string content = sample(400000);
    for (const Tool& tool : tools) {
        SCOPED_TRACE(tool.command);
        const std::string packed = compressed(tool.command, content);
        std::size_t before = 0;
        for (std::size_t length = 6; length < packed.size(); length += length < 40 ? 1U : 4999U) {
            const Delivered cut = drain(std::string_view(packed).substr(0, length));
            ASSERT_TRUE(content.starts_with(cut.bytes)) << length;
            ASSERT_GE(cut.bytes.size(), before) << length;
            before = cut.bytes.size();
            ASSERT_TRUE(cut.ended);
            if (tool.checked) {
                ASSERT_THAT(cut.errors, ElementsAre("unexpected end of file")) << length;
            }
        }
        // Blocks are at most 128 KiB.
        EXPECT_GT(before, content.size() - 150000);
    }
    EXPECT_THAT(drain("\x1f\x8b").errors, ElementsAre("unexpected end of file"));
    EXPECT_THAT(drain("\x1f\x9d").errors, ElementsAre("unexpected end of file"));
    EXPECT_EQ(drain(compressed("gzip -c | head -c 1500", sample(20000))).bytes.substr(0, 300),
              content.substr(0, 300));
}

TEST(Compressed, DamageIsReportedOnceAndNeverDeliveredAsSound) {
    const std::string content = sample(400000);
    for (const Tool& tool : tools) {
        SCOPED_TRACE(tool.command);
        const std::string packed = compressed(tool.command, content);
        for (std::size_t at = 6; at < packed.size(); at += at < 30 || at + 30 > packed.size() ? 1U : 4999U) {
            std::string damaged = packed;
            damaged[at] = static_cast<char>(damaged[at] ^ 0x10);
            const Delivered all = drain(damaged, 1000000);
            ASSERT_TRUE(all.ended);
            ASSERT_LE(all.errors.size(), 1U) << at;
            if (tool.checked && all.errors.empty()) {
                ASSERT_TRUE(all.bytes == content) << at;
            }
            // All but the damaged block, of at most 128 KiB, is delivered.
            ASSERT_GT(all.bytes.size() + 135000, content.size() * at / packed.size()) << at;
        }
    }
    std::string packed = compressed("gzip -c", content);
    packed[packed.size() - 1] ^= 1;
    const Delivered longer = drain(packed, 1000000);
    EXPECT_TRUE(longer.bytes == content);
    EXPECT_THAT(longer.errors, ElementsAre("invalid compressed data--length error"));
    packed[packed.size() - 6] ^= 1;
    EXPECT_THAT(drain(packed).errors, ElementsAre("invalid compressed data--crc error"));
    packed[2] = 7;
    EXPECT_THAT(drain(packed).errors, ElementsAre("invalid compressed data--format violated"));
    EXPECT_THAT(drain("\x1f\x9d\x91 ab").errors, ElementsAre("invalid compressed data--format violated"));
    // A first code beyond the bytes, and one that is not defined yet.
    EXPECT_THAT(drain("\x1f\x9d\x90\xff\x01").errors,
                ElementsAre("invalid compressed data--format violated"));
    EXPECT_THAT(drain("\x1f\x9d\x90\x41\xfe\xff").errors,
                ElementsAre("invalid compressed data--format violated"));
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

// --- plain input -----------------------------------------------------------------------------------------

TEST(Plain, BeginningsOfMagicsAreDelivered) {
    for (const std::string_view text :
         {"", "0", "000001V 010", "B", "BZ", "BZx and more", "\x1f", "\x1f\x8c", "LZI",
          "\xfd"
          "7zXY",
          "\x28\xb5\x2f", "\x28\xb5\x2f\x28\xb5\x2f\xfd"})
        for (const std::size_t room : {std::size_t{1}, std::size_t{2}, std::size_t{100}}) {
            const Delivered all = drain(text, room);
            EXPECT_EQ(all.bytes, text) << room;
            EXPECT_THAT(all.errors, IsEmpty());
            EXPECT_TRUE(all.ended);
        }
}

TEST(Plain, ReadsAfterTheEndSeeAFileGrow) {
    const TemporaryDirectory directory;
    const std::string path = directory.file("growing", "");
    ByteSource source = ByteSource::of_path(path.c_str());
    std::array<char, 100> piece{};
    EXPECT_EQ(source.read(piece), 0);
    std::ofstream(path, std::ios::app) << "B";
    EXPECT_EQ(source.read(piece), 1);
    EXPECT_EQ(source.read(piece), 0);
    std::ofstream(path, std::ios::app) << "ZZ";
    EXPECT_EQ(source.read(piece), 2);
}

TEST(Plain, MessagesAreReadOneByOneWhateverTheyBeginWith) {
    std::array<int, 2> ends{};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends.data()), 0);
    const std::string packed = compressed("gzip -c", "text");
    const std::array<std::string, 3> messages{"B", packed, "000001V "};
    for (const std::string& message : messages)
        ASSERT_EQ(write(ends[0], message.data(), message.size()), static_cast<ssize_t>(message.size()));
    close(ends[0]);
    ByteSource source = ByteSource::of_descriptor(ends[1]);
    std::array<char, 100> piece{};
    for (const std::string& message : messages) {
        ASSERT_EQ(source.read(piece), static_cast<ssize_t>(message.size()));
        EXPECT_EQ(std::string_view(piece.data(), message.size()), message);
    }
    EXPECT_EQ(source.read(piece), 0);
    close(ends[1]);
}

// --- pipes, files, descriptors ---------------------------------------------------------------------------

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

TEST(Files, WhatCannotBeOpenedOrReadSaysWhy) {
    const TemporaryDirectory directory;
    std::array<char, 10> piece{};
    ByteSource missing = ByteSource::of_path((directory.path() + "/missing").c_str());
    EXPECT_EQ(missing.error().number, ENOENT);
    EXPECT_EQ(missing.read(piece), -1);
    EXPECT_EQ(describe(missing.error()), "No such file or directory");
    ByteSource folder = ByteSource::of_path(directory.path().c_str());
    EXPECT_EQ(folder.error().kind, Kind::none);
    EXPECT_EQ(folder.read(piece), -1);
    EXPECT_EQ(folder.error().kind, Kind::system);
    EXPECT_EQ(describe(folder.error()), "Is a directory");
}

TEST(Files, EverythingOpenedIsReleasedAndNothingElse) {
    const TemporaryDirectory directory;
    const std::string plain = directory.file("plain", "0123");
    const std::string packed = directory.file("packed", compressed("gzip -c", "0123"));
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit few{64, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    const int own = open(plain.c_str(), O_RDONLY);
    std::array<char, 10> piece{};
    ByteSource kept;
    EXPECT_EQ(kept.read(piece), 0);
    for (int i = 0; i < 10000; ++i) {
        ByteSource source = ByteSource::of_path((i % 2 == 0 ? plain : packed).c_str());
        ASSERT_EQ(source.error().kind, Kind::none) << i;
        kept = std::move(source);
        ASSERT_EQ(kept.read(piece), 4) << i;
        const ByteSource borrowed = ByteSource::of_descriptor(own);
    }
    EXPECT_EQ(drain(ByteSource::of_descriptor(own)).bytes, "0123");
    close(own);
    setrlimit(RLIMIT_NOFILE, &before);
}

TEST(Files, ExhaustedMemoryIsAnError) {
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

TEST(Threads, SourcesDoNotAffectEachOther) {
    const std::string content = sample(300000);
    std::vector<std::string> inputs{content};
    for (const Tool& tool : tools)
        inputs.push_back(compressed(tool.command, content));
    std::atomic<int> good = 0;
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < 8; ++i)
        threads.emplace_back([&, i] {
            for (std::size_t k = 0; k < inputs.size(); ++k)
                good += drain(inputs[(i + k) % inputs.size()], 5000).bytes == content ? 1 : 0;
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(good, 8 * 7);
}

} // namespace
} // namespace quarry
