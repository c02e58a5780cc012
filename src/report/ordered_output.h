// SPDX-License-Identifier: Apache-2.0
// Output of several threads in a fixed order: part 0 first, each part unbroken.
//
// The part whose turn it is goes straight to the descriptor. Later parts are kept, up to a few MiB together.
// Beyond that the threads that make them wait, and meanwhile do jobs that the thread of the part in turn has
// deferred. Threads that have no part left do the same. Each part must be made by some thread, in order.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace quarry {

class OrderedOutput {
public:
    // Appends text, in any thread.
    using Job = std::function<void(std::string* text)>;

    // The end of its life is the end of the part.
    class Part {
    public:
        Part(OrderedOutput* output, std::size_t number) : output_(*output), number_(number) {}
        Part(const Part&) = delete;
        Part& operator=(const Part&) = delete;
        ~Part() { output_.end(number_, &text_); }

        std::size_t number() const { return number_; }

        // Text to be added to. After whole lines call `flush_if_large`, which passes the text on once enough
        // has come together.
        std::string& text() { return text_; }
        void flush_if_large() {
            if (text_.size() >= piece_size)
                output_.flush(number_, &text_);
        }
        void write(std::string_view text) {
            text_ += text;
            flush_if_large();
        }

        // To be called before something is written on another stream: hides the line that shows the progress.
        void before_other_stream() { output_.before_write_(); }

        // Where the part is given up in the middle of a line.
        void drop_unfinished_line() { text_.resize(text_.rfind('\n') + 1); }

        // True if there are other threads, which may make text for this part.
        bool is_shared() const { return output_.threads_ > 1; }
        // What the job writes follows the text so far. `finish` returns once all jobs are done. Both
        // throw what a job throws.
        void defer(Job job) { output_.defer(number_, &text_, std::move(job)); }
        void finish() { output_.finish(number_); }

    private:
        OrderedOutput& output_;
        std::size_t number_;
        std::string text_ = {};
    };

    // For that many threads. `before_write` is called before each write.
    OrderedOutput(int descriptor, std::size_t threads, std::function<void()> before_write)
        : descriptor_(descriptor), threads_(threads), before_write_(std::move(before_write)) {}

    Part part(std::size_t number) { return Part(this, number); }

    // Does jobs of other threads until that many parts are complete.
    void help(std::size_t parts);

    // The errno of the first write that failed, after which nothing is written; 0 if none failed.
    int error();

private:
    // A piece of the part whose turn it is: text, or a job that will be text.
    struct Piece {
        enum class State { waiting, taken, done };
        State state;
        Job job;
        std::string text;
        std::exception_ptr trouble = {};
    };
    using Lock = std::unique_lock<std::mutex>;

    static constexpr std::size_t piece_size = std::size_t{1} << 16;
    static constexpr std::size_t largest_backlog = std::size_t{2} << 20;
    static constexpr std::size_t pieces_a_thread = 4;

    void flush(std::size_t number, std::string* text);
    void defer(std::size_t number, std::string* text, Job job);
    void finish(std::size_t number);
    void end(std::size_t number, std::string* text);

    void begin_turn(Lock* lock);
    void add_piece(Piece piece);
    void write_pieces(Lock* lock, std::size_t left);
    bool do_a_job(Lock* lock);
    void write_out(Lock* lock, const std::string& text);

    int descriptor_;
    std::size_t threads_;
    std::function<void()> before_write_;
    std::mutex mutex_ = {};
    std::condition_variable changed_ = {}; // whose turn it is, and the state of pieces
    std::size_t turn_ = 0;
    std::deque<std::shared_ptr<Piece>> pieces_ = {};  // in order
    std::map<std::size_t, std::string> backlog_ = {}; // of parts whose turn has not come
    std::size_t backlog_size_ = 0;
    std::set<std::size_t> ended_ = {}; // parts that are complete, before their turn
    int error_ = 0;
};

} // namespace quarry
