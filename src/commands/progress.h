// The progress line: how many volumes are done, on standard error if that is a terminal and the work takes
// longer than two seconds. It is gone at the end.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace quarry {

class Progress {
public:
    explicit Progress(const std::vector<std::string>& volumes);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    // The volume of that number is done. May be called in any thread, as may hide.
    void finish(std::size_t volume);

    // Removes the line, before something else is written on the terminal.
    void hide();

private:
    void show_now_and_then(const std::stop_token& stop);
    void show(double seconds);

    std::vector<std::int64_t> sizes_ = {}; // bytes; empty if nothing is shown
    std::int64_t all_bytes_ = 0;
    std::mutex mutex_ = {};
    std::condition_variable_any wake_ = {};
    std::int64_t done_bytes_ = 0;
    std::size_t done_ = 0;
    bool is_shown_ = false;
    std::jthread thread_ = {}; // last: it uses the others
};

} // namespace quarry
