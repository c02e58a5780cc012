// Output of several threads in a fixed order: part 0 first, each part unbroken.
//
// The part whose turn it is goes straight to the descriptor. Later ones are kept, up to a few MiB together;
// then their writers wait until it is their turn. Each part must be made by some thread, in order.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

namespace quarry {

class OrderedOutput {
public:
    // The end of its life is the end of the part.
    class Part {
    public:
        Part(OrderedOutput* output, std::size_t number) : output_(*output), number_(number) {}
        Part(const Part&) = delete;
        Part& operator=(const Part&) = delete;
        ~Part() { output_.end(number_, &text_); }

        std::size_t number() const { return number_; }

        // Text to be added to; `settle` is called now and then, after whole lines.
        std::string& text() { return text_; }
        void settle() {
            if (text_.size() >= piece_size)
                output_.settle(number_, &text_);
        }
        void write(std::string_view text) {
            text_ += text;
            settle();
        }

    private:
        OrderedOutput& output_;
        std::size_t number_;
        std::string text_ = {};
    };

    // `before_write` is called before each write.
    explicit OrderedOutput(int descriptor, std::function<void()> before_write)
        : descriptor_(descriptor), before_write_(std::move(before_write)) {}

    Part part(std::size_t number) { return Part(this, number); }

    // The errno of the first write that failed, after which nothing is written; 0 if none failed.
    int error();

private:
    static constexpr std::size_t piece_size = std::size_t{1} << 16;
    static constexpr std::size_t largest_backlog = std::size_t{4} << 20;

    void settle(std::size_t number, std::string* text);
    void end(std::size_t number, std::string* text);
    void write_out(std::string* text);

    int descriptor_;
    std::function<void()> before_write_;
    std::mutex mutex_ = {};
    std::condition_variable turn_changed_ = {};
    std::size_t turn_ = 0;
    std::map<std::size_t, std::string> backlog_ = {}; // of parts whose turn has not come
    std::size_t backlog_size_ = 0;
    std::map<std::size_t, bool> ended_ = {}; // parts of it that are complete
    int error_ = 0;
};

} // namespace quarry
