// SPDX-License-Identifier: Apache-2.0
// Byte input: the bytes of a file, a descriptor or a piece of memory, decompressed where they are compressed.
//
// Compressed data are recognized by their first bytes, whatever the name: gzip, compress, bzip2, xz, zstd and
// lzip, of one member or several. Pipes and stream sockets may be compressed too. Character devices (tapes)
// and sockets that keep messages apart are always plain: there each read is one read(2).
//
//     ByteSource source = ByteSource::of_path("volume.seed.gz");
//     std::array<char, 65536> piece;
//     ssize_t count = 0;
//     while ((count = source.read(piece)) > 0)
//         use(std::span(piece).first(static_cast<std::size_t>(count)));
//     if (count < 0)
//         report(describe(source.error()));
//
// A source keeps no state outside itself and prints nothing: sources in different threads do not affect each
// other.
#pragma once

#include "quarry/byte_error.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <sys/types.h>
#include <vector>

namespace quarry {

class Decompressor;
struct Compression;

class ByteSource {
public:
    // A source of no bytes.
    ByteSource();
    ByteSource(ByteSource&& other) noexcept;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;
    ByteSource& operator=(ByteSource&& other) noexcept;
    ~ByteSource();

    // Opens the file. Where that fails, error() says why, and so does every read.
    static ByteSource of_path(const char* path);
    // Reads a descriptor of the caller's (standard input), which stays open.
    static ByteSource of_descriptor(int descriptor);
    // Reads bytes of the caller's, which outlive the source.
    static ByteSource of_memory(std::span<const char> bytes);

    // Reads some bytes into `out`, which has room for at least one, and returns their number as soon as there
    // are any; 0 at the end; -1 with error() set. Plain input goes from read(2) straight to `out`, and a
    // read after its end tries again (a growing file, a tape's next file). Damaged and trailing data are
    // reported once, and then the end. A failed read(2) may be tried again, exhausted memory stays so.
    ssize_t read(std::span<char> out);

    // True if a read would now wait for the writer of a pipe or a stream socket.
    bool would_wait() const;

    // What the last call that failed says.
    const ByteError& error() const { return error_; }

    // The kind of compression ("gzip"), or null for plain input and before the first read.
    const char* compression() const;

    // Bytes taken from the input so far, compressed ones where it is compressed. May be called in another
    // thread than the reads.
    std::int64_t input_bytes() const;

    // The descriptor that is read from; -1 without one.
    int descriptor() const { return descriptor_.number; }

private:
    struct Descriptor {
        Descriptor() = default;
        Descriptor(int descriptor, bool is_owned) : number(descriptor), owned(is_owned) {}
        Descriptor(Descriptor&& other) noexcept;
        Descriptor(const Descriptor&) = delete;
        Descriptor& operator=(const Descriptor&) = delete;
        Descriptor& operator=(Descriptor&& other) noexcept;
        ~Descriptor();

        int number = -1;
        bool owned = false;
    };
    enum class Stage { first, given_back, plain, between_members, in_member, over, failed };

    explicit ByteSource(Descriptor descriptor);
    ssize_t read_stage(std::span<char> out);
    ssize_t read_input(std::span<char> out);
    ssize_t read_first(std::span<char> out);
    ssize_t read_given_back(std::span<char> out);
    ssize_t read_decompressed(std::span<char> out);
    std::span<const char> unread() const;
    void keep(std::span<const char> piece);
    bool refill();
    bool begin_member();
    std::size_t step_member(std::span<char> out);
    ssize_t report_pending();

    Descriptor descriptor_ = {};
    mutable std::int64_t input_bytes_ = 0; // atomic
    std::span<const char> memory_ = {};    // what is left to read of it
    Stage stage_ = Stage::first;
    std::vector<char> buffer_ = {}; // bytes looked at, then pieces to be decompressed
    std::size_t begin_ = 0;         // of its unread bytes
    std::size_t end_ = 0;
    bool input_ended_ = false;
    const Compression* compression_ = nullptr;
    std::unique_ptr<Decompressor> decompressor_;
    ByteError pending_ = {}; // met, and to be reported by the next read
    ByteError error_ = {};
};

} // namespace quarry
