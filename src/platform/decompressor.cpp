// SPDX-License-Identifier: Apache-2.0
#include "platform/decompressor.h"

#include <algorithm>
#include <array>
#include <bzlib.h>
#include <cstdint>
#include <limits>
#include <lzma.h>
#include <vector>
#include <zlib.h>
#include <zstd.h>
#include <zstd_errors.h>

namespace quarry {

namespace {

constexpr std::size_t largest_window = std::size_t{1} << largest_window_power;

// The libraries count pieces in unsigned int.
unsigned int piece_size(std::size_t size) {
    return static_cast<unsigned int>(std::min<std::size_t>(size, std::numeric_limits<unsigned int>::max()));
}

// Their input is a pointer to mutable bytes of one type or another, which they do not write to.
template <typename Byte>
Byte* input_bytes(std::span<const char> in) {
    return reinterpret_cast<Byte*>(const_cast<char*>(in.data()));
}

void advance(Flow& flow, std::size_t read, std::size_t written) {
    flow.in = flow.in.subspan(read);
    flow.out = flow.out.subspan(written);
}

// --- gzip ------------------------------------------------------------------------------------------------

class Gzip : public Decompressor {
public:
    Gzip() = default;
    Gzip(const Gzip&) = delete;
    Gzip& operator=(const Gzip&) = delete;
    ~Gzip() override { inflateEnd(&stream_); }

    Step start() override {
        constexpr int gzip_only = 16 + MAX_WBITS;
        const int result =
            stream_.state == nullptr ? inflateInit2(&stream_, gzip_only) : inflateReset(&stream_);
        return result == Z_OK ? Step::going : Step::no_memory;
    }

    Step step(Flow& flow) override {
        stream_.next_in = input_bytes<Bytef>(flow.in);
        stream_.avail_in = piece_size(flow.in.size());
        stream_.next_out = reinterpret_cast<Bytef*>(flow.out.data());
        stream_.avail_out = piece_size(flow.out.size());
        const unsigned int in = stream_.avail_in;
        const unsigned int out = stream_.avail_out;
        const int result = inflate(&stream_, Z_NO_FLUSH);
        advance(flow, in - stream_.avail_in, out - stream_.avail_out);
        return outcome(result);
    }

private:
    Step outcome(int result) const {
        switch (result) {
        case Z_OK:
        case Z_BUF_ERROR: // no progress without more input
            return Step::going;
        case Z_STREAM_END:
            return Step::member_end;
        case Z_MEM_ERROR:
            return Step::no_memory;
        default: {
            const std::string_view message = stream_.msg == nullptr ? "" : stream_.msg;
            return message == "incorrect data check"     ? Step::bad_checksum
                   : message == "incorrect length check" ? Step::bad_length
                                                         : Step::bad_data;
        }
        }
    }

    z_stream stream_{};
};

// --- bzip2 -----------------------------------------------------------------------------------------------

class Bzip2 : public Decompressor {
public:
    Bzip2() = default;
    Bzip2(const Bzip2&) = delete;
    Bzip2& operator=(const Bzip2&) = delete;
    ~Bzip2() override { BZ2_bzDecompressEnd(&stream_); }

    Step start() override {
        BZ2_bzDecompressEnd(&stream_);
        stream_ = {};
        return BZ2_bzDecompressInit(&stream_, 0, 0) == BZ_OK ? Step::going : Step::no_memory;
    }

    // If a block has damaged runs, the library does not report what it has written. So each call writes
    // little.
    Step step(Flow& flow) override {
        constexpr std::size_t little = 4096;
        stream_.next_in = input_bytes<char>(flow.in);
        stream_.avail_in = piece_size(flow.in.size());
        stream_.next_out = flow.out.data();
        stream_.avail_out = piece_size(std::min(flow.out.size(), little));
        const unsigned int in = stream_.avail_in;
        const unsigned int out = stream_.avail_out;
        const int result = BZ2_bzDecompress(&stream_);
        advance(flow, in - stream_.avail_in, out - stream_.avail_out);
        return result == BZ_OK           ? Step::going
               : result == BZ_STREAM_END ? Step::member_end
               : result == BZ_MEM_ERROR  ? Step::no_memory
                                         : Step::bad_data;
    }

private:
    bz_stream stream_{};
};

// --- xz and lzip -----------------------------------------------------------------------------------------

using LzmaStart = lzma_ret(lzma_stream*, std::uint64_t memory_limit, std::uint32_t flags);

template <LzmaStart* begin>
class Lzma : public Decompressor {
public:
    Lzma() = default;
    Lzma(const Lzma&) = delete;
    Lzma& operator=(const Lzma&) = delete;
    ~Lzma() override { lzma_end(&stream_); }

    Step start() override {
        constexpr std::uint64_t beside_window = 1 << 20;
        return begin(&stream_, largest_window + beside_window, 0) == LZMA_OK ? Step::going : Step::no_memory;
    }

    Step step(Flow& flow) override {
        stream_.next_in = input_bytes<std::uint8_t>(flow.in);
        stream_.avail_in = flow.in.size();
        stream_.next_out = reinterpret_cast<std::uint8_t*>(flow.out.data());
        stream_.avail_out = flow.out.size();
        const lzma_ret result = lzma_code(&stream_, LZMA_RUN);
        advance(flow, flow.in.size() - stream_.avail_in, flow.out.size() - stream_.avail_out);
        return outcome(result);
    }

private:
    static Step outcome(lzma_ret result) {
        switch (result) {
        case LZMA_OK:
        case LZMA_BUF_ERROR: // no progress without more input
            return Step::going;
        case LZMA_STREAM_END:
            return Step::member_end;
        case LZMA_MEM_ERROR:
            return Step::no_memory;
        case LZMA_MEMLIMIT_ERROR:
            return Step::too_large;
        default:
            return Step::bad_data;
        }
    }

    lzma_stream stream_ = LZMA_STREAM_INIT;
};

// --- zstd ------------------------------------------------------------------------------------------------

class Zstd : public Decompressor {
public:
    Zstd() = default;
    Zstd(const Zstd&) = delete;
    Zstd& operator=(const Zstd&) = delete;
    ~Zstd() override { ZSTD_freeDCtx(context_); }

    Step start() override {
        if (context_ == nullptr && (context_ = ZSTD_createDCtx()) == nullptr)
            return Step::no_memory;
        ZSTD_DCtx_reset(context_, ZSTD_reset_session_only);
        ZSTD_DCtx_setParameter(context_, ZSTD_d_windowLogMax, largest_window_power);
        wanted_ = 1;
        holds_output_ = false;
        return Step::going;
    }

    // A call that fails does not report what it wrote before. So each gets at most the rest of one block,
    // never the header behind it, and nothing at all while there may be more to write.
    Step step(Flow& flow) override {
        constexpr std::size_t block_header = 3;
        const std::size_t piece = wanted_ > block_header ? wanted_ - block_header : wanted_;
        ZSTD_inBuffer in{flow.in.data(), holds_output_ ? 0 : std::min(flow.in.size(), piece), 0};
        ZSTD_outBuffer out{flow.out.data(), flow.out.size(), 0};
        const std::size_t result = ZSTD_decompressStream(context_, &out, &in);
        advance(flow, in.pos, out.pos);
        if (ZSTD_isError(result) != 0)
            return fault(ZSTD_getErrorCode(result));
        wanted_ = result;
        holds_output_ = out.pos == out.size;
        return result == 0 ? Step::member_end : Step::going;
    }

private:
    static Step fault(ZSTD_ErrorCode code) {
        switch (code) {
        case ZSTD_error_checksum_wrong:
            return Step::bad_checksum;
        case ZSTD_error_frameParameter_windowTooLarge:
            return Step::too_large;
        case ZSTD_error_memory_allocation:
            return Step::no_memory;
        default:
            return Step::bad_data;
        }
    }

    ZSTD_DCtx* context_ = nullptr;
    std::size_t wanted_ = 1; // bytes of input that the next call hopes for
    bool holds_output_ = false;
};

// --- compress --------------------------------------------------------------------------------------------

// Lempel-Ziv-Welch codes, least significant bit first. A code stands for a text: itself (below 256), or
// that of an earlier code and one byte more. Each code after the first defines the next free one: the text of
// the code before it, and the first byte of its own text. Codes are 9 bits wide and become wider as the table
// fills; they are written in groups of eight, and a change of width leaves the rest of a group unused.
class Lzw : public Decompressor {
public:
    Lzw() { text_.reserve(1U << widest); }

    Step start() override { return Step::going; } // once: the data have no mark at their end

    Step step(Flow& flow) override {
        if (!read_header(flow))
            return Step::going;
        // compress -b9 itself writes codes that need a tenth bit.
        if (width_limit() <= narrowest || width_limit() > widest)
            return Step::bad_data;
        for (;;) {
            give_out(flow);
            if (flow.out.empty())
                return Step::going;
            const int code = next_code(flow);
            if (code < 0)
                return flow.last ? Step::member_end : Step::going;
            if (!take(static_cast<unsigned>(code)))
                return Step::bad_data;
        }
    }

private:
    static constexpr unsigned narrowest = 9;
    static constexpr unsigned widest = 16;
    static constexpr unsigned clear_code = 256;
    static constexpr unsigned none = 1U << widest;

    unsigned width_limit() const { return header_[2] % 32; }
    bool has_clear_code() const { return header_[2] >= 128; }

    bool read_header(Flow& flow) {
        while (header_length_ < header_.size() && !flow.in.empty()) {
            header_[header_length_++] = static_cast<unsigned char>(flow.in.front());
            flow.in = flow.in.subspan(1);
            if (header_length_ == header_.size())
                clear_table();
        }
        return header_length_ == header_.size();
    }

    void clear_table() {
        free_ = has_clear_code() ? clear_code + 1 : clear_code;
        before_ = none;
        width_ = narrowest;
        in_group_ = 0;
    }

    void skip_rest_of_group() {
        to_skip_ = (8 - in_group_) % 8 * width_;
        in_group_ = 0;
    }

    // The next code, or -1 when the input is used up.
    int next_code(Flow& flow) {
        for (;;) {
            const unsigned skipped = std::min(to_skip_, held_);
            bits_ >>= skipped;
            held_ -= skipped;
            to_skip_ -= skipped;
            if (to_skip_ == 0 && held_ >= width_)
                break;
            if (flow.in.empty())
                return -1;
            bits_ |= std::uint32_t{static_cast<unsigned char>(flow.in.front())} << held_;
            held_ += 8;
            flow.in = flow.in.subspan(1);
        }
        const unsigned code = bits_ & ((1U << width_) - 1);
        bits_ >>= width_;
        held_ -= width_;
        in_group_ = (in_group_ + 1) % 8;
        return static_cast<int>(code);
    }

    // Turns the code into text_ and defines the next one. False for a code that is not defined.
    bool take(unsigned code) {
        if (code == clear_code && has_clear_code()) {
            skip_rest_of_group();
            clear_table();
            return true;
        }
        if (before_ == none ? code > 255 : code > free_)
            return false;
        if (code == free_) // the code being defined: its text begins and ends with the same byte
            text_.push_back(first_);
        for (unsigned rest = code == free_ ? before_ : code;; rest = prefix_[rest]) {
            text_.push_back(rest < 256 ? static_cast<char>(rest) : last_byte_[rest]);
            if (rest < 256)
                break;
        }
        first_ = text_.back();
        define_next();
        before_ = code;
        return true;
    }

    unsigned table_size() const { return 1U << width_limit(); }

    void define_next() {
        if (before_ == none || free_ >= table_size())
            return;
        prefix_[free_] = static_cast<std::uint16_t>(before_);
        last_byte_[free_] = first_;
        free_ += 1;
        if (free_ == 1U << width_ && width_ < width_limit()) {
            skip_rest_of_group();
            width_ += 1;
        }
    }

    // text_ holds the bytes of a code from the last to the first.
    void give_out(Flow& flow) {
        const std::size_t count = std::min(text_.size(), flow.out.size());
        std::copy_n(text_.rbegin(), count, flow.out.begin());
        text_.resize(text_.size() - count);
        flow.out = flow.out.subspan(count);
    }

    std::array<unsigned char, 3> header_{}; // two of magic, then widest code and (128) whether one clears
    std::size_t header_length_ = 0;
    std::uint32_t bits_ = 0;
    unsigned held_ = 0;    // valid bits in bits_
    unsigned to_skip_ = 0; // bits that belong to no code
    unsigned width_ = narrowest;
    unsigned in_group_ = 0; // codes read of the current group
    unsigned free_ = clear_code;
    unsigned before_ = none; // the code before this one
    char first_ = 0;         // first byte of its text
    std::vector<std::uint16_t> prefix_ = std::vector<std::uint16_t>(1U << widest);
    std::vector<char> last_byte_ = std::vector<char>(1U << widest);
    std::vector<char> text_;
};

// --- their table -----------------------------------------------------------------------------------------

template <typename Kind>
std::unique_ptr<Decompressor> make() {
    return std::make_unique<Kind>();
}

constexpr std::array compressions{
    Compression{"gzip", "\x1f\x8b", 0xff, make<Gzip>},
    Compression{"compress", "\x1f\x9d", 0xff, make<Lzw>},
    Compression{"bzip2", "BZh", 0xff, make<Bzip2>},
    Compression{"xz",
                {"\xfd"
                 "7zXZ\0",
                 6},
                0xff,
                make<Lzma<lzma_stream_decoder>>},
    Compression{"zstd", "\x28\xb5\x2f\xfd", 0xff, make<Zstd>},
    Compression{"zstd", "\x50\x2a\x4d\x18", 0xf0, make<Zstd>}, // frames to be passed over
    Compression{"lzip", "LZIP", 0xff, make<Lzma<lzma_lzip_decoder>>},
};

} // namespace

std::string_view fault_text(Step step) {
    switch (step) {
    case Step::going:
    case Step::member_end:
        break;
    case Step::bad_data:
        return "invalid compressed data--format violated";
    case Step::bad_checksum:
        return "invalid compressed data--crc error";
    case Step::bad_length:
        return "invalid compressed data--length error";
    case Step::too_large:
        return "decompression needs more than 128 MiB of memory";
    case Step::no_memory:
        return "out of memory";
    }
    return "";
}

Recognised recognise_compression(std::span<const char> first) {
    Recognised recognised{Resemblance::none, nullptr};
    for (const Compression& c : compressions) {
        const std::size_t length = std::min(first.size(), c.magic.size());
        const auto same = [&](std::size_t i) {
            const int mask = i == 0 ? c.mask : 0xff;
            return ((first[i] ^ c.magic[i]) & mask) == 0;
        };
        std::size_t i = 0;
        while (i < length && same(i))
            i += 1;
        if (i == c.magic.size())
            return {Resemblance::found, &c};
        if (i == first.size())
            recognised.resemblance = Resemblance::undecided;
    }
    return recognised;
}

} // namespace quarry
