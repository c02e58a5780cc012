// SPDX-License-Identifier: Apache-2.0
#include "commands/progress.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

namespace quarry {

namespace {

constexpr auto patience = std::chrono::seconds(2);
constexpr auto interval = std::chrono::milliseconds(500);
constexpr double megabyte = 1e6;

std::optional<std::int64_t> size_of(const std::string& name) {
    struct stat status {};
    const int result = name == "-" ? fstat(STDIN_FILENO, &status) : stat(name.c_str(), &status);
    return result == 0 && S_ISREG(status.st_mode) ? std::optional<std::int64_t>(status.st_size)
                                                  : std::nullopt;
}

} // namespace

Progress::Progress(const std::vector<std::string>& volumes) : volumes_(volumes.size()) {
    if (isatty(STDERR_FILENO) != 1)
        return;
    for (const std::string& name : volumes) {
        const std::optional<std::int64_t> size = sizes_.emplace_back(size_of(name));
        all_bytes_ = all_bytes_ && size ? std::optional(*all_bytes_ + *size) : std::nullopt;
    }
    thread_ = std::jthread([this](const std::stop_token& stop) { show_now_and_then(stop); });
}

Progress::~Progress() {
    if (!thread_.joinable())
        return;
    thread_.request_stop();
    thread_.join();
    hide();
}

Progress::Volume::Volume(Progress* progress, std::size_t number, const VolumeReader& reader)
    : progress_(*progress), number_(number), reader_(reader) {
    const std::lock_guard lock(progress_.mutex_);
    progress_.readers_.insert(&reader_);
}

Progress::Volume::~Volume() {
    const std::lock_guard lock(progress_.mutex_);
    progress_.readers_.erase(&reader_);
    ++progress_.done_;
    const bool has_size = number_ < progress_.sizes_.size() && progress_.sizes_[number_];
    progress_.done_bytes_ += has_size ? *progress_.sizes_[number_] : reader_.input_bytes();
}

void Progress::hide() {
    const std::lock_guard lock(mutex_);
    if (is_shown_)
        std::fputs("\r\33[K", stderr);
    is_shown_ = false;
}

void Progress::show_now_and_then(const std::stop_token& stop) {
    const auto begin = std::chrono::steady_clock::now();
    std::unique_lock lock(mutex_);
    const auto stopped = [&stop] { return stop.stop_requested(); };
    for (auto next = begin + patience; !wake_.wait_until(lock, stop, next, stopped) && !stopped();
         next += interval)
        show(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
}

double Progress::bytes_read() const {
    std::int64_t bytes = done_bytes_;
    for (const VolumeReader* reader : readers_)
        bytes += reader->input_bytes();
    return static_cast<double>(bytes);
}

// The speed is mostly that of the last seconds: volumes differ in it. Of what has no size, such as a pipe,
// nobody knows how long it takes.
void Progress::show(double seconds) {
    constexpr double newest = 0.2;
    const double bytes = bytes_read();
    const double all = static_cast<double>(all_bytes_.value_or(0));
    const double speed = (bytes - shown_bytes_) / (seconds - shown_seconds_);
    speed_ = is_first_ ? speed : (1 - newest) * speed_ + newest * speed;
    is_first_ = false;
    shown_bytes_ = bytes;
    shown_seconds_ = seconds;
    std::fprintf(stderr, "\r\33[K%zu of %zu %s, %.0f", done_, volumes_, volumes_ == 1 ? "volume" : "volumes",
                 bytes / megabyte);
    if (all_bytes_)
        std::fprintf(stderr, " of %.0f", all / megabyte);
    std::fprintf(stderr, " MB, %.1f MB/s", speed_ / megabyte);
    if (all_bytes_ && speed_ > 0)
        std::fprintf(stderr, ", %.0f s left", std::max(0.0, all - bytes) / speed_);
    std::fflush(stderr);
    is_shown_ = true;
}

} // namespace quarry
