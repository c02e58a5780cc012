// SPDX-License-Identifier: Apache-2.0
// Lines of text from formats in the style of printf that are checked and taken apart at compile time.
//
//     print_line<"B%03i %3i Id#%4i <%s>\n">(out, type, length, id, name);
//
// appends the bytes that printf would write in the C locale, whatever the locale is. A format holds plain
// text and these conversions:
//
//     %[-+0][width]i, d            a signed or unsigned integer
//     %[-0][width]x                an unsigned integer
//     %[-+0][width].precision f, e, E, g    a double; the precision is 1 to 17
//     %[-][width]s                 a text: a std::string_view as it stands, a char array or a pointer up to
//                                  the NUL (an array needs none)
//     %[-][width]c                 a char as it stands, NUL too
//
// Any other conversion, "%%" among them, and arguments of another type or number do not compile.
#pragma once

#include "platform/digits.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace quarry {

// Characters one after another in one flat piece of memory that grows as needed and is kept by clear().
class LineBuffer {
public:
    std::string_view text() const { return {storage_.data(), size_}; }
    void clear() { size_ = 0; }

    // For a terminal: the values of %s and %c show their control characters as codes (terminal_text.h).
    void set_for_terminal(bool is_for_terminal) { for_terminal_ = is_for_terminal; }
    bool is_for_terminal() const { return for_terminal_; }

    // What append_lasting calls with a long text: it writes what the buffer holds and then the text to the
    // stream, and empties the buffer.
    using Write = void (*)(LineBuffer& line, std::FILE* stream, std::string_view text);
    void set_stream(Write write, std::FILE* stream) {
        write_ = write;
        stream_ = stream;
    }

    // Called before the characters move to a larger piece of memory; may remove a prefix.
    void set_before_growth(void (*before_growth)()) { before_growth_ = before_growth; }
    void remove_prefix(std::size_t count) {
        std::memmove(storage_.data(), storage_.data() + count, size_ - count);
        size_ -= count;
    }

    void append(std::string_view text) {
        if (!text.empty())
            std::memcpy(extend(text.size()).data(), text.data(), text.size());
    }

    // The same for a text that stays as it is until the process ends.
    void append_lasting(std::string_view text);

    // The place of the next character, with room for `count` of them. The caller says where they end.
    char* room(std::size_t count) {
        make_room(count);
        return storage_.data() + size_;
    }
    void end_at(const char* end) { size_ = static_cast<std::size_t>(end - storage_.data()); }

    // Room for `count` more characters, which the caller fills before anything else is appended.
    std::span<char> extend(std::size_t count) {
        make_room(count);
        size_ += count;
        return {storage_.data() + size_ - count, count};
    }

    // The same, with blanks in at least the first `blanks` of them. (Few blanks are written as many at once,
    // beyond the room if it is small.)
    std::span<char> extend(std::size_t count, std::size_t blanks) {
        make_room(count + quick_blanks);
        char* room = storage_.data() + size_;
        std::memset(room, ' ', quick_blanks);
        if (blanks > quick_blanks)
            std::memset(room, ' ', blanks);
        size_ += count;
        return {room, count};
    }

private:
    static constexpr std::size_t quick_blanks = 16;

    void make_room(std::size_t count) {
        if (count > storage_.size() - size_) [[unlikely]]
            grow(count);
    }
    void grow(std::size_t count);

    std::vector<char> storage_;
    std::size_t size_ = 0;
    bool for_terminal_ = false;
    Write write_ = nullptr;
    std::FILE* stream_ = nullptr;
    void (*before_growth_)() = nullptr;
};

// One conversion, with the place in the format of the plain text before it.
struct Conversion {
    char type = 0; // the letter that ends it
    bool left = false;
    bool plus = false;
    bool zeros = false;
    std::uint8_t width = 0;
    std::uint8_t precision = 0;
    std::uint16_t text_begin = 0;
    std::uint16_t text_end = 0;
};

// Each appends one value. Real numbers are rounded as printf rounds: from the exact binary value, ties to
// the even digit.
void append_value(LineBuffer& out, const Conversion& conversion, std::int64_t value);
void append_value(LineBuffer& out, const Conversion& conversion, std::uint64_t value);
void append_value(LineBuffer& out, const Conversion& conversion, double value);
void append_value(LineBuffer& out, const Conversion& conversion, std::string_view text);
void append_value(LineBuffer& out, const Conversion& conversion, char character);

// What append_value takes for an argument of print_line.
template <typename T>
auto line_value(const T& argument) {
    if constexpr (std::is_same_v<T, char>)
        return argument;
    else if constexpr (std::is_integral_v<T>)
        return std::conditional_t<std::is_signed_v<T>, std::int64_t, std::uint64_t>{argument};
    else if constexpr (std::is_floating_point_v<T>)
        return double{argument};
    else if constexpr (std::is_array_v<T>)
        return member_text(argument);
    else
        return std::string_view(argument);
}

// The letters that may convert a T.
template <typename T>
constexpr std::string_view conversions_of() {
    if constexpr (std::is_same_v<T, char>)
        return "c";
    else if constexpr (std::is_integral_v<T>)
        return std::is_same_v<T, bool> ? "" : std::is_signed_v<T> ? "id" : "idx";
    else if constexpr (std::is_same_v<T, double> || std::is_same_v<T, float>)
        return "feEg";
    else
        return std::is_convertible_v<const T&, std::string_view> ? "s" : "";
}

constexpr bool is_one_of(std::string_view letters, char letter) {
    return std::any_of(letters.begin(), letters.end(), [letter](char one) { return one == letter; });
}

// Takes a format apart, one conversion at a time.
class FormatReader {
public:
    constexpr explicit FormatReader(std::string_view format) : format_(format) {}

    // The next conversion and the plain text before it; one without a type at the end of the format.
    constexpr Conversion next() {
        Conversion conversion;
        conversion.text_begin = static_cast<std::uint16_t>(at_);
        while (at_ < format_.size() && format_[at_] != '%')
            ++at_;
        conversion.text_end = static_cast<std::uint16_t>(at_);
        if (take('%')) {
            read_flags(&conversion);
            conversion.width = number();
            if (take('.'))
                conversion.precision = number();
            conversion.type = at_ < format_.size() ? format_[at_++] : '?';
        }
        return conversion;
    }

private:
    constexpr bool take(char wanted) {
        const bool found = at_ < format_.size() && format_[at_] == wanted;
        at_ += found ? 1 : 0;
        return found;
    }
    constexpr void read_flags(Conversion* conversion) {
        for (bool more = true; more;) {
            const bool left = take('-'), plus = take('+'), zeros = take('0');
            conversion->left |= left;
            conversion->plus |= plus;
            conversion->zeros |= zeros;
            more = left || plus || zeros;
        }
    }
    constexpr std::uint8_t number() { // more than 99 is cut, which leaves a digit where the type should be
        int value = 0;
        for (int digits = 0; digits < 2 && at_ < format_.size() && is_digit(format_[at_]); ++digits)
            value = 10 * value + (format_[at_++] - '0');
        return static_cast<std::uint8_t>(value);
    }
    static constexpr bool is_digit(char character) { return character >= '0' && character <= '9'; }

    std::string_view format_;
    std::size_t at_ = 0;
};

// True if the conversion exists as it stands.
constexpr bool is_sound(const Conversion& conversion) {
    const bool real = is_one_of("feEg", conversion.type);
    const bool number = real || conversion.type == 'i' || conversion.type == 'd';
    const bool precision_fits =
        real ? conversion.precision >= 1 && conversion.precision <= 17 : conversion.precision == 0;
    return precision_fits && (number || !conversion.plus) &&
           (number || conversion.type == 'x' || !conversion.zeros);
}

// A format for a known number of arguments.
template <std::size_t count>
struct ParsedFormat {
    std::array<Conversion, count> conversions{};
    Conversion end{};  // only its plain text
    bool fits = false; // the conversions are sound and are those of the arguments
};

template <typename... Arguments>
constexpr auto parse_format(std::string_view text) {
    constexpr std::array<std::string_view, sizeof...(Arguments)> accepted{conversions_of<Arguments>()...};
    ParsedFormat<sizeof...(Arguments)> parsed;
    parsed.fits = text.size() <= UINT16_MAX;
    FormatReader reader(text);
    for (std::size_t i = 0; i < accepted.size(); ++i) {
        const Conversion conversion = parsed.conversions[i] = reader.next();
        parsed.fits = parsed.fits && is_sound(conversion) && is_one_of(accepted[i], conversion.type);
    }
    parsed.end = reader.next();
    parsed.fits = parsed.fits && parsed.end.type == 0;
    return parsed;
}

// A string literal as a template's argument.
template <std::size_t size>
struct FormatText {
    consteval FormatText(const char (&literal)[size]) { std::copy_n(literal, size, characters); }
    constexpr std::string_view text() const { return {characters, size - 1}; }

    char characters[size]{};
};

// Whether LineWriter has a quick way to convert a T, and the most characters that this writes.
template <typename T>
constexpr bool is_quick(const Conversion& conversion) {
    constexpr bool integer = std::is_integral_v<T> && !std::is_same_v<T, char>;
    return (integer || is_one_of(conversions_of<T>(), 's')) && (integer || sizeof(T) <= 24) &&
           (integer || std::is_array_v<T>)&&!conversion.left && !conversion.plus;
}
template <typename T>
constexpr std::size_t most_characters(const Conversion& conversion) {
    constexpr std::size_t longest_integer = 20;
    return is_quick<T>(conversion) ? conversion.width + std::max(longest_integer, sizeof(T)) : 0;
}

// Appends the parts of one line to a buffer. The room for the whole line is made once, at the beginning; only
// values without a quick way ask for room of their own.
class LineWriter {
public:
    LineWriter(LineBuffer* line, std::size_t room)
        : line_(*line), room_(room), for_terminal_(line->is_for_terminal()), at_(line->room(room)) {}
    LineWriter(const LineWriter&) = delete;
    LineWriter& operator=(const LineWriter&) = delete;
    ~LineWriter() { line_.end_at(at_); }

    void append_plain(std::string_view text) {
        std::memcpy(at_, text.data(), text.size());
        at_ += text.size();
    }

    template <Conversion conversion, typename T>
    void append(const T& argument) {
        if constexpr (!is_quick<T>(conversion))
            return append_by_function(conversion, argument);
        else if constexpr (std::is_array_v<T>)
            return append_text<conversion>(argument);
        else if (!std::is_signed_v<T> || argument >= 0) [[likely]]
            return append_integer<conversion>(static_cast<std::uint64_t>(argument));
        append_by_function(conversion, argument);
    }

private:
    // Room for a body of that length, behind the padding.
    template <Conversion conversion>
    char* open_field(std::size_t length) {
        std::memset(at_, conversion.zeros ? '0' : ' ', conversion.width);
        at_ += std::max<std::size_t>(conversion.width, length);
        return at_ - length;
    }

    template <Conversion conversion>
    void append_integer(std::uint64_t value) {
        if constexpr (conversion.type == 'x') {
            const std::size_t length = hexadecimal_digit_count(value);
            write_hexadecimal_digits({open_field<conversion>(length), length}, value);
        } else {
            const std::size_t length = digit_count(value);
            write_digits({open_field<conversion>(length), length}, value);
        }
    }

    template <Conversion conversion, std::size_t size>
    void append_text(const char (&text)[size]) {
        if (for_terminal_) [[unlikely]]
            return append_by_function(conversion, text);
        const std::size_t length = member_text(text).size();
        std::memcpy(open_field<conversion>(length), text, size); // what is behind it is written over
    }

    template <typename T>
    void append_by_function(const Conversion& conversion, const T& argument) {
        line_.end_at(at_);
        append_value(line_, conversion, line_value(argument));
        at_ = line_.room(room_);
    }

    LineBuffer& line_;
    const std::size_t room_;
    const bool for_terminal_;
    char* at_;
};

// Appends one line, or any other text, to `out`.
template <FormatText format, typename... Arguments>
void print_line(LineBuffer& out, const Arguments&... arguments) {
    static constexpr auto parsed = parse_format<Arguments...>(format.text());
    static_assert(parsed.fits, "a conversion does not exist, or does not fit its argument");
    constexpr auto plain_text = [](const Conversion& before) {
        return format.text().substr(before.text_begin, before.text_end - before.text_begin);
    };
    [&]<std::size_t... at>(std::index_sequence<at...>) {
        LineWriter end(&out,
                       (format.text().size() + ... + most_characters<Arguments>(parsed.conversions[at])));
        (..., (end.append_plain(plain_text(parsed.conversions[at])),
               end.append<parsed.conversions[at]>(arguments)));
        end.append_plain(plain_text(parsed.end));
    }
    (std::index_sequence_for<Arguments...>());
}

// An empty buffer for short use, the same one each time in a thread.
LineBuffer& scratch_line();

// The same into a fixed-capacity member: cut to what fits, always with a NUL at its end.
template <FormatText format, typename... Arguments>
void print_text(std::span<char> destination, const Arguments&... arguments) {
    LineBuffer& line = scratch_line();
    print_line<format>(line, arguments...);
    copy_text(destination, line.text());
}

} // namespace quarry
