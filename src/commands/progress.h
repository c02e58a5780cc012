// SPDX-License-Identifier: Apache-2.0
// The progress line: how many volumes are done and how much of the others, on standard error if that is a
// terminal and the work takes longer than two seconds. It is gone at the end.
#pragma once

#include "quarry/volume.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <set>
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

    // A volume being read, by its number: done when this ends. In any thread.
    class Volume {
    public:
        Volume(Progress* progress, std::size_t number, const VolumeReader& reader);
        Volume(const Volume&) = delete;
        Volume& operator=(const Volume&) = delete;
        ~Volume();

    private:
        Progress& progress_;
        std::size_t number_;
        const VolumeReader& reader_;
    };

    // Removes the line, before something else is written on the terminal. May be called in any thread.
    void hide();

private:
    void show_now_and_then(const std::stop_token& stop);
    void show(double seconds);
    double bytes_read() const;

    std::size_t volumes_;
    std::vector<std::optional<std::int64_t>> sizes_ = {}; // of regular files; empty if nothing is shown
    std::optional<std::int64_t> all_bytes_ = 0;           // none if the size of a volume is not known
    std::mutex mutex_ = {};
    std::condition_variable_any wake_ = {};
    std::int64_t done_bytes_ = 0;
    std::size_t done_ = 0;
    std::set<const VolumeReader*> readers_ = {}; // of the volumes being read
    bool is_shown_ = false;
    bool is_first_ = true; // line to be shown; what the last one showed:
    double shown_bytes_ = 0;
    double shown_seconds_ = 0; // since the beginning
    double speed_ = 0;         // bytes a second
    std::jthread thread_ = {}; // last: it uses the others
};

} // namespace quarry
