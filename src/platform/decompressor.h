// SPDX-License-Identifier: Apache-2.0
// Decompressors: one kind of compressed data each, a piece of input to a piece of output at a time.
//
// The compression libraries are driven directly, so that every byte that can be decompressed comes out before
// a fault is reported, and as soon as its input is there. Each works in this process, keeps no state outside
// its object and bounds its memory.
#pragma once

#include <memory>
#include <span>
#include <string_view>

namespace quarry {

// Data that need a larger window (xz, lzip, zstd) are refused; the rest of a decompressor is under 8 MiB.
inline constexpr unsigned largest_window_power = 27;

// How one step of a decompressor ended.
enum class Step {
    going,      // the input or the room for output is used up
    member_end, // a complete piece of compressed data was read; what follows may be a further one
    // The faults; no further step may follow.
    bad_data,
    bad_checksum, // of data already given out
    bad_length,
    too_large, // a window beyond the largest
    no_memory
};

// What is wrong, in plain words; empty for steps that are not faults.
std::string_view fault_text(Step step);

// What a step works on; each step takes what it used off the fronts.
struct Flow {
    std::span<const char> in;
    std::span<char> out; // not empty
    bool last;           // no input follows `in`
};

class Decompressor {
public:
    Decompressor() = default;
    Decompressor(const Decompressor&) = delete;
    Decompressor& operator=(const Decompressor&) = delete;
    virtual ~Decompressor() = default;

    // Gets ready for data from its first byte on, anew for each member. Returns going or no_memory.
    virtual Step start() = 0;
    virtual Step step(Flow& flow) = 0;
};

// One kind of compressed data. `mask` is applied to the first byte before it is compared.
struct Compression {
    const char* name;
    std::string_view magic;
    unsigned char mask;
    std::unique_ptr<Decompressor> (*make)();
};

enum class Resemblance { none, undecided, found };

struct Recognised {
    Resemblance resemblance;
    const Compression* compression; // with `found`
};

// Looks at the first bytes of an input: undecided where they are the beginning of a magic.
Recognised recognise_compression(std::span<const char> first);

} // namespace quarry
