// SPDX-License-Identifier: Apache-2.0
// The least that a listing of data records costs: each is read and copied once, and the listing's own line
// for it is put together by hand and written, 64 KiB at a time.
//
// It knows what the generator writes: numbers without a sign, whole sample rates below 100,000 a second, no
// time corrections.
#include "volume_records.h"

#include <array>
#include <charconv>

namespace {

constexpr std::size_t write_size = 64 * 1024;
constexpr std::size_t longest_line = 512;

class Text {
public:
    void literal(std::string_view text) {
        std::memcpy(end_, text.data(), text.size());
        end_ += text.size();
    }

    // A code, which is padded with blanks behind, with the blanks before it.
    void code(const char* at, std::size_t size, std::size_t width) {
        std::size_t length = size;
        while (length > 0 && at[length - 1] == ' ')
            --length;
        std::memset(end_, ' ', width - length);
        std::memcpy(end_ + width - length, at, length);
        end_ += width;
    }

    void number(unsigned value, std::size_t width, char fill = ' ') {
        std::array<char, 10> digits;
        std::size_t at = digits.size();
        do
            digits[--at] = static_cast<char>('0' + value % 10);
        while ((value /= 10) != 0);
        for (std::size_t length = digits.size() - at; length < width; ++length)
            *end_++ = fill;
        literal({digits.data() + at, digits.size() - at});
    }

    void labelled(std::string_view label, unsigned value, std::size_t width = 5) {
        literal(label);
        number(value, width);
    }

    void flags(std::string_view label, unsigned value) {
        literal(label);
        end_ = std::to_chars(end_, end_ + 8, value, 16).ptr;
    }

    // Writes what has come together if there is that much of it.
    void write_from(std::size_t enough) {
        const auto size = static_cast<std::size_t>(end_ - buffer_.data());
        if (size < enough)
            return;
        for (std::size_t done = 0; done < size;) {
            const ssize_t wrote = write(STDOUT_FILENO, buffer_.data() + done, size - done);
            if (wrote < 0)
                std::exit(EXIT_FAILURE);
            done += static_cast<std::size_t>(wrote);
        }
        end_ = buffer_.data();
    }

private:
    std::vector<char> buffer_ = std::vector<char>(write_size + longest_line);
    char* end_ = buffer_.data();
};

void add_start(Text* text, const char* record) {
    const auto part = [text](unsigned value, std::size_t width, std::string_view separator) {
        text->number(value, width, '0');
        text->literal(separator);
    };
    part(floors::two(record + 20), 4, ",");
    part(floors::two(record + 22), 3, ",");
    part(floors::one(record + 24), 2, ":");
    part(floors::one(record + 25), 2, ":");
    part(floors::one(record + 26), 2, ".");
    part(floors::two(record + 28), 4, "");
}

void add_line(Text* text, const char* record) {
    const unsigned factor = floors::two(record + 32);
    const unsigned multiplier = floors::two(record + 34);
    text->literal("DATA Net: ");
    text->code(record + 18, 2, 2);
    text->literal(" Sta: ");
    text->code(record + 8, 5, 5);
    text->literal(" Loc: ");
    text->code(record + 13, 2, 2);
    text->literal(" Chan: ");
    text->code(record + 15, 3, 4);
    text->literal(" Start:");
    add_start(text, record);
    text->labelled(" #samples: ", floors::two(record + 30));
    text->labelled(" sample rate factor: ", factor);
    text->labelled(" multiplier: ", multiplier);
    text->labelled(" Sample_rate: ", factor * multiplier, 10);
    text->flags(" Activity: ", floors::one(record + 36));
    text->flags(" I/O: ", floors::one(record + 37));
    text->flags(" Quality: ", floors::one(record + 38));
    text->labelled(" #blks after: ", floors::one(record + 39));
    text->labelled(" time correction: ", floors::four(record + 40));
    text->labelled(" first data byte: ", floors::two(record + 44));
    text->labelled(" first blockette: ", floors::two(record + 46));
    text->literal(" <data blockette>\n");
}

} // namespace

int main(int argc, char** argv) {
    const std::size_t size = floors::record_size_argument(argc, argv);
    std::vector<char> copy(size);
    Text text;
    floors::for_each_record(argv[1], size, [&](const char* record) {
        if (!floors::is_data(record))
            return;
        std::memcpy(copy.data(), record, size);
        add_line(&text, copy.data());
        text.write_from(write_size);
    });
    text.write_from(1);
    return 0;
}
