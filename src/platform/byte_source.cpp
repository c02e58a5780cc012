// SPDX-License-Identifier: Apache-2.0
#include "platform/byte_source.h"

#include "platform/decompressor.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <new>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace quarry {

namespace {

constexpr std::size_t compressed_piece = 65536;

// Looking at the first bytes of a tape or of a message could need a second read(2), which takes the next
// record.
bool keeps_records_apart(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0)
        return false;
    int type = SOCK_STREAM;
    socklen_t size = sizeof type;
    if (S_ISSOCK(status.st_mode))
        getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &size);
    return S_ISCHR(status.st_mode) || type != SOCK_STREAM;
}

bool is_pipe_or_stream(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode)) &&
           !keeps_records_apart(descriptor);
}

// An interrupted read is repeated; where a descriptor has nothing yet, this waits.
ssize_t read_descriptor(int descriptor, std::span<char> out) {
    for (;;) {
        const ssize_t result = read(descriptor, out.data(), out.size());
        if (result >= 0 || (errno != EINTR && errno != EAGAIN))
            return result;
        pollfd waiting{descriptor, POLLIN, 0};
        if (errno == EAGAIN)
            poll(&waiting, 1, -1);
    }
}

ssize_t read_memory(std::span<const char>* memory, std::span<char> out) {
    const std::size_t count = std::min(memory->size(), out.size());
    std::copy_n(memory->data(), count, out.data());
    *memory = memory->subspan(count);
    return static_cast<ssize_t>(count);
}

ByteError system_error(int number) {
    return {ByteError::Kind::system, number, {}};
}

ByteError decompression_error(Step fault) {
    return fault == Step::no_memory ? system_error(ENOMEM)
                                    : ByteError{ByteError::Kind::damaged, 0, fault_text(fault)};
}

} // namespace

std::string describe(const ByteError& error) {
    return error.kind == ByteError::Kind::system ? std::generic_category().message(error.number)
                                                 : std::string(error.reason);
}

// --- opening and releasing -------------------------------------------------------------------------------

ByteSource::Descriptor::Descriptor(Descriptor&& other) noexcept
    : number(std::exchange(other.number, -1)), owned(std::exchange(other.owned, false)) {}

ByteSource::Descriptor& ByteSource::Descriptor::operator=(Descriptor&& other) noexcept {
    std::swap(number, other.number);
    std::swap(owned, other.owned);
    return *this;
}

ByteSource::Descriptor::~Descriptor() {
    if (owned)
        close(number);
}

ByteSource::ByteSource() = default;
ByteSource::ByteSource(ByteSource&& other) noexcept = default;
ByteSource& ByteSource::operator=(ByteSource&& other) noexcept = default;
ByteSource::~ByteSource() = default;

ByteSource::ByteSource(Descriptor descriptor)
    : descriptor_(std::move(descriptor)),
      stage_(keeps_records_apart(descriptor_.number) ? Stage::plain : Stage::first) {}

ByteSource ByteSource::of_path(const char* path) {
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC);
    if (descriptor >= 0)
        return ByteSource(Descriptor(descriptor, true));
    ByteSource source;
    source.error_ = system_error(errno);
    source.stage_ = Stage::failed;
    return source;
}

ByteSource ByteSource::of_descriptor(int descriptor) {
    return ByteSource(Descriptor(descriptor, false));
}

ByteSource ByteSource::of_memory(std::span<const char> bytes) {
    ByteSource source;
    source.memory_ = bytes;
    return source;
}

bool ByteSource::would_wait() const {
    if (begin_ != end_ || input_ended_ || !is_pipe_or_stream(descriptor_.number))
        return false;
    pollfd readable{descriptor_.number, POLLIN, 0};
    return poll(&readable, 1, 0) == 0;
}

std::int64_t ByteSource::input_bytes() const {
    return std::atomic_ref(input_bytes_).load(std::memory_order_relaxed);
}

const char* ByteSource::compression() const {
    return compression_ == nullptr ? nullptr : compression_->name;
}

// --- reading ---------------------------------------------------------------------------------------------

ssize_t ByteSource::read(std::span<char> out) try { return read_stage(out); } catch (const std::bad_alloc&) {
    error_ = system_error(ENOMEM);
    stage_ = Stage::failed;
    return -1;
}

ssize_t ByteSource::read_stage(std::span<char> out) {
    switch (stage_) {
    case Stage::first:
        return read_first(out);
    case Stage::given_back:
        return read_given_back(out);
    case Stage::plain:
        return read_input(out);
    case Stage::between_members:
    case Stage::in_member:
        return read_decompressed(out);
    case Stage::over:
        return 0;
    case Stage::failed:
        break;
    }
    return -1;
}

ssize_t ByteSource::read_input(std::span<char> out) {
    if (descriptor_.number < 0)
        return read_memory(&memory_, out);
    const ssize_t count = read_descriptor(descriptor_.number, out);
    if (count < 0)
        error_ = system_error(errno);
    else
        std::atomic_ref(input_bytes_).store(input_bytes_ + count, std::memory_order_relaxed);
    return count;
}

// Plain input is mostly known by its first byte, and then stays where it was read to.
ssize_t ByteSource::read_first(std::span<char> out) {
    Recognised looked_at{};
    ssize_t count = 0;
    do {
        count = read_input(out);
        if (count < 0 || (count == 0 && end_ == 0))
            return count;
        const std::span<const char> piece = out.first(static_cast<std::size_t>(count));
        if (end_ == 0 && recognise_compression(piece).resemblance == Resemblance::none) {
            stage_ = Stage::plain;
            return count;
        }
        keep(piece);
        looked_at = recognise_compression(unread());
    } while (looked_at.resemblance == Resemblance::undecided && count > 0);

    compression_ = looked_at.compression;
    stage_ = compression_ == nullptr ? Stage::given_back : Stage::between_members;
    return read_stage(out);
}

ssize_t ByteSource::read_given_back(std::span<char> out) {
    std::span<const char> rest = unread();
    const ssize_t count = read_memory(&rest, out);
    begin_ += static_cast<std::size_t>(count);
    if (begin_ == end_)
        stage_ = Stage::plain;
    return count;
}

ssize_t ByteSource::read_decompressed(std::span<char> out) {
    while (stage_ != Stage::over) {
        if (pending_.kind != ByteError::Kind::none)
            return report_pending();
        if (stage_ == Stage::between_members) {
            if (!begin_member())
                return -1;
            continue;
        }
        if (const std::size_t count = step_member(out); count > 0)
            return static_cast<ssize_t>(count);
        if (stage_ != Stage::in_member || pending_.kind != ByteError::Kind::none || !unread().empty())
            continue;
        if (input_ended_)
            pending_ = {ByteError::Kind::damaged, 0, "unexpected end of file"};
        else if (!refill())
            return -1;
    }
    return 0;
}

// --- compressed input ------------------------------------------------------------------------------------

std::span<const char> ByteSource::unread() const {
    return std::span(buffer_).first(end_).subspan(begin_);
}

void ByteSource::keep(std::span<const char> piece) {
    buffer_.resize(end_);
    buffer_.insert(buffer_.end(), piece.begin(), piece.end());
    end_ = buffer_.size();
}

// Adds a piece of input to the unread bytes, which are few. False where the read failed.
bool ByteSource::refill() {
    const std::span<const char> rest = unread();
    std::copy(rest.begin(), rest.end(), buffer_.begin());
    end_ = rest.size();
    begin_ = 0;
    buffer_.resize(compressed_piece);
    const ssize_t count = read_input(std::span(buffer_).subspan(end_));
    if (count < 0)
        return false;
    input_ended_ = count == 0;
    end_ += static_cast<std::size_t>(count);
    return true;
}

// Goes towards the next member, over the zeros that tapes and disks pad with. False where a read failed.
bool ByteSource::begin_member() {
    while (begin_ < end_ && buffer_[begin_] == 0)
        begin_ += 1;
    const Recognised next = recognise_compression(unread());
    if (next.resemblance == Resemblance::undecided && !input_ended_)
        return refill();
    if (unread().empty()) {
        stage_ = Stage::over;
        return true;
    }
    if (next.compression == nullptr || next.compression->make != compression_->make) {
        pending_ = {ByteError::Kind::trailing, 0, "decompression OK, trailing garbage ignored"};
        return true;
    }
    if (decompressor_ == nullptr)
        decompressor_ = compression_->make();
    const Step started = decompressor_->start();
    if (started != Step::going)
        pending_ = decompression_error(started);
    stage_ = Stage::in_member;
    return true;
}

// Decompresses what it can without a read and returns how many bytes came of it.
std::size_t ByteSource::step_member(std::span<char> out) {
    Flow flow{unread(), out, input_ended_};
    const Step step = decompressor_->step(flow);
    begin_ = end_ - flow.in.size();
    if (step == Step::member_end)
        stage_ = Stage::between_members;
    else if (step != Step::going)
        pending_ = decompression_error(step);
    return out.size() - flow.out.size();
}

ssize_t ByteSource::report_pending() {
    error_ = pending_;
    stage_ = error_.kind == ByteError::Kind::system ? Stage::failed : Stage::over;
    return -1;
}

} // namespace quarry
