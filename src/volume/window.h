// SPDX-License-Identifier: Apache-2.0
// A window on an input that is read once from front to end: the bytes around the reader's place.
#pragma once

#include "platform/byte_source.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace quarry {

class Window {
public:
    explicit Window(ByteSource source) : source_(std::move(source)), error_(source_.error()) {}

    // The `count` bytes at `offset`, fewer where the input ends. Valid until the next call. `offset` is not
    // before the place given to release().
    std::string_view at(std::int64_t offset, std::size_t count) {
        const std::int64_t end = offset + static_cast<std::int64_t>(count);
        if (end > end_) [[unlikely]]
            fill(end);
        const std::int64_t length = std::min(end, end_) - offset;
        return length <= 0
                   ? std::string_view()
                   : std::string_view(buffer_.data() + (offset - begin_), static_cast<std::size_t>(length));
    }

    // The bytes before `offset` are not needed any more.
    void release(std::int64_t offset) { needed_ = offset; }

    // Why the input could not be opened, or what ended it; of kind none for its end.
    const ByteError& error() const { return error_; }

    std::int64_t input_bytes() const { return source_.input_bytes(); }

private:
    void fill(std::int64_t end);
    void make_room(std::int64_t end);

    ByteSource source_;
    std::vector<char> buffer_;
    std::int64_t begin_ = 0;  // offsets in the input: of the buffer,
    std::int64_t end_ = 0;    // behind its last byte,
    std::int64_t needed_ = 0; // of the first byte that is needed
    bool over_ = false;
    ByteError error_ = {};
};

} // namespace quarry
