// SPDX-License-Identifier: Apache-2.0
#include "commands/each_volume.h"

#include "commands/progress.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <new>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace quarry {

namespace {

VolumeReader reader_of(const std::string& name, Framing framing) {
    return name == "-" ? VolumeReader::of_descriptor(STDIN_FILENO, "standard input", framing)
                       : VolumeReader::of_path(name, framing);
}

class VolumeLoop {
public:
    VolumeLoop(const CommandLine& line, const VolumeWork& work, std::string_view front, Framing framing)
        : line_(line), work_(work), front_(front), framing_(framing),
          output_(STDOUT_FILENO, static_cast<std::size_t>(line.jobs), [this] { progress_.hide(); }),
          progress_(line.volumes) {}

    ExitStatus run() {
        {
            const std::vector<std::jthread> others = start_threads();
            work_off();
        }
        if (const int error = output_.error(); error != 0)
            raise(failed, std::string("standard output: ") + std::generic_category().message(error));
        return static_cast<ExitStatus>(status_.load());
    }

private:
    // As many as the system allows: this thread alone does all the work, if it must.
    std::vector<std::jthread> start_threads() {
        std::vector<std::jthread> threads;
        try {
            for (int i = 1; i < line_.jobs; ++i)
                threads.emplace_back([this] { work_off(); });
        } catch (const std::system_error&) {
        }
        return threads;
    }

    // Takes one volume after the other until none is left, then helps with the rest.
    void work_off() {
        for (std::size_t i = next_++; i < line_.volumes.size(); i = next_++) {
            OrderedOutput::Part out = output_.part(i);
            if (i == 0)
                out.write(front_);
            try {
                treat(line_.volumes[i], out);
            } catch (const std::bad_alloc&) {
                out.drop_unfinished_line();
                raise(failed, line_.volumes[i] + ": " + std::generic_category().message(ENOMEM));
            } catch (const std::exception& error) {
                out.drop_unfinished_line();
                raise(failed, line_.volumes[i] + ": " + error.what());
            }
        }
        output_.help(line_.volumes.size());
    }

    void treat(const std::string& name, OrderedOutput::Part& out) {
        VolumeReader reader = reader_of(name, framing_);
        const Progress::Volume shown(&progress_, out.number(), reader);
        const bool is_sound = work_(reader, out);
        if (reader.error().kind == ByteError::Kind::system)
            raise(failed, name + ": " + describe(reader.error()));
        else if (!reader.totals().holds_seed())
            raise(failed, name + ": holds no SEED");
        else if (!is_sound)
            raise(some_damaged, "");
    }

    void raise(ExitStatus status, const std::string& trouble) {
        const std::lock_guard lock(mutex_);
        status_ = std::max<int>(status_, status);
        if (trouble.empty())
            return;
        progress_.hide();
        report_trouble(line_.command, trouble);
    }

    const CommandLine& line_;
    const VolumeWork& work_;
    std::string_view front_;
    Framing framing_;
    OrderedOutput output_;
    Progress progress_;
    std::mutex mutex_ = {};
    std::atomic<std::size_t> next_ = 0;
    std::atomic<int> status_ = all_sound;
};

} // namespace

ExitStatus for_each_volume(const CommandLine& line, const VolumeWork& work, std::string_view front,
                           Framing framing) {
    const ExitStatus status = VolumeLoop(line, work, front, framing).run();
    return line.list_failed ? failed : status;
}

} // namespace quarry
