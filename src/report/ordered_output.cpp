// SPDX-License-Identifier: Apache-2.0
#include "report/ordered_output.h"

#include "platform/standard_output.h"

#include <algorithm>

namespace quarry {

namespace {

// The text, which is empty afterwards and has room for as much again.
std::string taken(std::string* text) {
    std::string all;
    all.reserve(text->capacity());
    std::swap(all, *text);
    return all;
}

} // namespace

// Only the thread whose turn it is comes here. The others go on while it writes.
void OrderedOutput::write_out(Lock* lock, const std::string& text) {
    if (text.empty() || error_ != 0)
        return;
    lock->unlock();
    before_write_();
    const int error = write_all(descriptor_, text);
    lock->lock();
    error_ = error;
}

// Writes what was kept of the part whose turn it is.
void OrderedOutput::begin_turn(Lock* lock) {
    const auto kept = backlog_.extract(turn_);
    if (kept.empty())
        return;
    backlog_size_ -= kept.mapped().size();
    write_out(lock, kept.mapped());
}

void OrderedOutput::add_piece(Piece piece) {
    pieces_.push_back(std::make_shared<Piece>(std::move(piece)));
    changed_.notify_all();
}

// Does the first job that nobody has taken. Returns false if there is none.
bool OrderedOutput::do_a_job(Lock* lock) {
    const auto found = std::find_if(pieces_.begin(), pieces_.end(),
                                    [](const auto& piece) { return piece->state == Piece::State::waiting; });
    if (found == pieces_.end())
        return false;
    const std::shared_ptr<Piece> piece = *found;
    piece->state = Piece::State::taken;
    lock->unlock();
    try {
        piece->job(&piece->text);
    } catch (...) {
        piece->trouble = std::current_exception();
    }
    lock->lock();
    piece->state = Piece::State::done;
    changed_.notify_all();
    return true;
}

// Writes the pieces in front that are done, and does jobs itself, until no more than `left` pieces are left.
void OrderedOutput::write_pieces(Lock* lock, std::size_t left) {
    while (!pieces_.empty()) {
        const std::shared_ptr<Piece> first = pieces_.front();
        if (first->state == Piece::State::done) {
            pieces_.pop_front();
            if (first->trouble)
                std::rethrow_exception(first->trouble);
            write_out(lock, first->text);
        } else if (pieces_.size() <= left) {
            return;
        } else if (!do_a_job(lock)) {
            changed_.wait(*lock);
        }
    }
}

void OrderedOutput::flush(std::size_t number, std::string* text) {
    Lock lock(mutex_);
    if (turn_ != number && backlog_size_ + text->size() <= largest_backlog) {
        backlog_size_ += text->size();
        backlog_[number] += *text;
        text->clear();
        return;
    }
    while (turn_ != number)
        if (!do_a_job(&lock))
            changed_.wait(lock);
    begin_turn(&lock);
    add_piece({Piece::State::done, {}, taken(text)});
    write_pieces(&lock, threads_ * pieces_a_thread);
}

void OrderedOutput::defer(std::size_t number, std::string* text, Job job) {
    Lock lock(mutex_);
    if (turn_ != number) {
        lock.unlock();
        job(text);
        return;
    }
    begin_turn(&lock);
    add_piece({Piece::State::done, {}, taken(text)});
    add_piece({Piece::State::waiting, std::move(job), {}});
    write_pieces(&lock, threads_ * pieces_a_thread);
}

void OrderedOutput::finish(std::size_t number) {
    Lock lock(mutex_);
    if (turn_ == number)
        write_pieces(&lock, 0);
}

// Passes the turn to the next part that has not ended. Jobs are left only if the part was given up before
// `finish`; what they throw is then ignored.
void OrderedOutput::end(std::size_t number, std::string* text) {
    const auto regardless = [](const auto& what) {
        try {
            what();
        } catch (const std::exception&) {
        }
    };
    regardless([&] { flush(number, text); });
    Lock lock(mutex_);
    while (turn_ == number && !pieces_.empty())
        regardless([&] { write_pieces(&lock, 0); });
    ended_.insert(number);
    for (; ended_.erase(turn_) > 0; ++turn_)
        begin_turn(&lock);
    changed_.notify_all();
}

void OrderedOutput::help(std::size_t parts) {
    Lock lock(mutex_);
    while (turn_ < parts)
        if (!do_a_job(&lock))
            changed_.wait(lock);
}

int OrderedOutput::error() {
    const std::lock_guard lock(mutex_);
    return error_;
}

} // namespace quarry
