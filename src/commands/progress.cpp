#include "commands/progress.h"

#include <chrono>
#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

namespace quarry {

namespace {

constexpr auto patience = std::chrono::seconds(2);
constexpr auto interval = std::chrono::milliseconds(500);
constexpr double megabyte = 1e6;

std::int64_t size_of(const std::string& name) {
    struct stat status {};
    return stat(name.c_str(), &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : 0;
}

} // namespace

Progress::Progress(const std::vector<std::string>& volumes) {
    if (isatty(STDERR_FILENO) != 1)
        return;
    for (const std::string& name : volumes)
        all_bytes_ += sizes_.emplace_back(size_of(name));
    thread_ = std::jthread([this](const std::stop_token& stop) { show_now_and_then(stop); });
}

Progress::~Progress() {
    if (!thread_.joinable())
        return;
    thread_.request_stop();
    thread_.join();
    hide();
}

void Progress::finish(std::size_t volume) {
    const std::lock_guard lock(mutex_);
    ++done_;
    done_bytes_ += volume < sizes_.size() ? sizes_[volume] : 0;
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

void Progress::show(double seconds) {
    const double speed = static_cast<double>(done_bytes_) / seconds;
    std::fprintf(stderr, "\r\33[K%zu of %zu volumes, %.0f of %.0f MB, %.1f MB/s", done_, sizes_.size(),
                 static_cast<double>(done_bytes_) / megabyte, static_cast<double>(all_bytes_) / megabyte,
                 speed / megabyte);
    if (speed > 0)
        std::fprintf(stderr, ", %.0f s left", static_cast<double>(all_bytes_ - done_bytes_) / speed);
    std::fflush(stderr);
    is_shown_ = true;
}

} // namespace quarry
