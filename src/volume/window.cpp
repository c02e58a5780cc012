// SPDX-License-Identifier: Apache-2.0
#include "volume/window.h"

#include <algorithm>

namespace quarry {

namespace {

constexpr std::int64_t usual_size = 1 << 18;

} // namespace

// Makes room for the bytes up to `end`, dropping those that are not needed.
void Window::make_room(std::int64_t end) {
    const auto size = static_cast<std::int64_t>(buffer_.size());
    if (end - begin_ <= size)
        return;
    const std::int64_t drop = std::clamp(needed_ - begin_, std::int64_t{0}, end_ - begin_);
    std::copy(buffer_.begin() + drop, buffer_.begin() + (end_ - begin_), buffer_.begin());
    begin_ += drop;
    const std::int64_t wanted = std::max(usual_size, (end - begin_) * 5 / 4);
    if (wanted > size)
        buffer_.resize(static_cast<std::size_t>(wanted));
}

void Window::fill(std::int64_t end) {
    while (end_ < end && !over_) {
        make_room(end);
        const ssize_t count =
            source_.read(std::span(buffer_).subspan(static_cast<std::size_t>(end_ - begin_)));
        over_ = count <= 0;
        if (count < 0)
            error_ = source_.error();
        end_ += std::max<std::int64_t>(count, 0);
    }
}

} // namespace quarry
