#include "report/ordered_output.h"

#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace quarry {

// Only the thread whose turn it is comes here, so the descriptor needs no lock.
void OrderedOutput::write_out(std::string* text) {
    std::string_view rest = *text;
    if (!rest.empty())
        before_write_();
    while (!rest.empty() && error_ == 0) {
        const ssize_t written = write(descriptor_, rest.data(), rest.size());
        pollfd writable{descriptor_, POLLOUT, 0};
        if (written >= 0)
            rest.remove_prefix(static_cast<std::size_t>(written));
        else if (errno == EAGAIN)
            poll(&writable, 1, -1);
        else if (errno != EINTR)
            error_ = errno;
    }
    text->clear();
}

void OrderedOutput::settle(std::size_t number, std::string* text) {
    std::unique_lock lock(mutex_);
    if (turn_ != number && backlog_size_ + text->size() <= largest_backlog) {
        backlog_size_ += text->size();
        backlog_[number] += *text;
        text->clear();
        return;
    }
    turn_changed_.wait(lock, [&] { return turn_ == number; });
    const auto kept = backlog_.extract(number);
    if (!kept.empty())
        backlog_size_ -= kept.mapped().size();
    lock.unlock();
    if (!kept.empty())
        write_out(&kept.mapped());
    write_out(text);
}

// Gives the turn on, over all parts that have ended before it came to them.
void OrderedOutput::end(std::size_t number, std::string* text) {
    settle(number, text);
    std::unique_lock lock(mutex_);
    ended_[number] = true;
    while (ended_.contains(turn_)) {
        const auto kept = backlog_.extract(turn_);
        if (!kept.empty()) {
            backlog_size_ -= kept.mapped().size();
            write_out(&kept.mapped());
        }
        ended_.erase(turn_++);
    }
    turn_changed_.notify_all();
}

int OrderedOutput::error() {
    const std::lock_guard lock(mutex_);
    return error_;
}

} // namespace quarry
