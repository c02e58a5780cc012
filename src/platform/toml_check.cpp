// SPDX-License-Identifier: Apache-2.0
#include "platform/toml_check.h"

#include "platform/text.h"

#include <algorithm>
#include <regex>
#include <string>
#include <utility>

namespace quarry {

namespace {

bool is_beyond_ascii(std::string_view text) {
    return !text.empty() && static_cast<unsigned char>(text.front()) >= 0x80 && utf8_length(text) != 0;
}

bool is_one_of(char character, std::string_view characters) {
    return characters.find(character) != std::string_view::npos;
}

bool begins_name(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || is_one_of(character, "_-\"'");
}

// A number, a truth value, a date or a time.
bool is_bare_value(std::string_view value) {
    static const std::regex pattern("true|false|[+-]?(inf|nan)|"
                                    "[+-]?[0-9](_?[0-9])*(\\.[0-9](_?[0-9])*)?([eE][+-]?[0-9](_?[0-9])*)?|"
                                    "0x[0-9A-Fa-f](_?[0-9A-Fa-f])*|0o[0-7](_?[0-7])*|0b[01](_?[01])*|"
                                    "([0-9]{4}-[0-9]{2}-[0-9]{2}[Tt ])?[0-9]{2}:[0-9]{2}:[0-9]{2}(\\.[0-9]+)?"
                                    "([Zz]|[+-][0-9]{2}:[0-9]{2})?|[0-9]{4}-[0-9]{2}-[0-9]{2}");
    constexpr std::size_t longest = 100; // the pattern's recursion, too, is as deep as the text is long
    return value.size() <= longest && std::regex_match(value.begin(), value.end(), pattern);
}

// Walks over the text, token by token: comments, quoted texts and single characters outside of both.
class TomlWalk {
public:
    explicit TomlWalk(std::string_view text) : rest_(text) {}

    std::optional<TomlFault> find_fault() {
        constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
        if (rest_.starts_with(byte_order_mark))
            rest_.remove_prefix(byte_order_mark.size());
        while (!rest_.empty() && !fault_)
            pass_token();
        return fault_;
    }

private:
    void report(const char* reason) {
        if (!fault_)
            fault_ = TomlFault{line_, column_, reason};
    }

    char front() const { return rest_.empty() ? '\0' : rest_.front(); }

    // Passes one character; after a fault nothing is left.
    void pass() {
        if (rest_.empty())
            return;
        const std::size_t length = utf8_length(rest_);
        if (length == 0)
            report("this is not UTF-8");
        const bool line_ends = front() == '\n';
        line_ = line_ends ? line_ + 1 : line_;
        column_ = line_ends ? 1 : column_ + 1;
        rest_.remove_prefix(length == 0 ? rest_.size() : length);
    }

    void pass(std::size_t count) {
        for (; count > 0; --count)
            pass();
    }

    // Passes what stands before the next line.
    void pass_comment() {
        while (!rest_.empty() && front() != '\n')
            pass();
    }

    // Passes a character of a quoted text, or what a backslash begins. The library looks for white space
    // after a backslash, and confuses it with other characters beyond ASCII.
    void pass_quoted_character(char quote) {
        const bool escape = quote == '"' && front() == '\\';
        pass();
        if (!escape)
            return;
        const std::size_t next = std::min(rest_.find_first_not_of(" \t\r\n"), rest_.size());
        if (is_beyond_ascii(rest_.substr(next)))
            report("a character beyond ASCII after a backslash");
        pass();
    }

    // Passes a quoted text on one line; one without an end is left for the library at its line's end.
    void pass_quoted(char quote) {
        pass();
        while (!rest_.empty() && front() != quote && front() != '\n')
            pass_quoted_character(quote);
        if (front() == quote)
            pass();
    }

    // Passes a quoted text of several lines. Its last characters may be two more quotes.
    void pass_quoted_lines(char quote) {
        const std::string end(3, quote);
        pass(3);
        while (!rest_.empty() && !rest_.starts_with(end))
            pass_quoted_character(quote);
        pass(std::min<std::size_t>(5, std::min(rest_.find_first_not_of(quote), rest_.size())));
    }

    // What follows the bracket that begins a table's line.
    void check_table_name() {
        std::string_view name = rest_.substr(rest_.starts_with("[[") ? 2 : 1);
        name.remove_prefix(std::min(name.find_first_not_of(" \t"), name.size()));
        if (!name.empty() && name.front() != ']' && !begins_name(name.front()))
            report("a table without a name");
    }

    void open(char bracket) {
        open_brackets_ += bracket == '[' ? ']' : '}';
        if (open_brackets_.size() > toml_depth_limit)
            report("nested too deep");
    }

    void close(char bracket) {
        if (open_brackets_.empty() || open_brackets_.back() != bracket)
            report("a closing bracket without an opening one");
        else
            open_brackets_.pop_back();
    }

    void count_dot() {
        if (++dots_ > toml_depth_limit)
            report("nested too deep");
    }

    // Passes a value that is neither quoted nor bracketed. A blank may stand between a date and a time.
    void pass_bare_value() {
        constexpr std::string_view ends = " \t\r\n,]}#";
        constexpr std::size_t date_length = 10;
        std::size_t length = std::min(rest_.find_first_of(ends), rest_.size());
        if (length == date_length && is_digit_at(date_length + 1) && rest_[date_length] == ' ')
            length = std::min(rest_.find_first_of(ends, date_length + 1), rest_.size());
        if (!is_bare_value(rest_.substr(0, length)))
            report("this is not a value");
        pass(length);
    }

    bool is_digit_at(std::size_t at) const {
        return at < rest_.size() && rest_[at] >= '0' && rest_[at] <= '9';
    }

    void pass_token() {
        const char character = front();
        if (character == '#')
            return pass_comment();
        const bool line_begins = std::exchange(line_begins_, line_begins_ && is_one_of(character, " \t"));
        if (is_one_of(character, "\"'"))
            return rest_.starts_with(std::string(3, character)) ? pass_quoted_lines(character)
                                                                : pass_quoted(character);
        if (in_value_ && !is_one_of(character, " \t\r\n,[]{}"))
            return pass_bare_value();
        if (is_beyond_ascii(rest_))
            report("a character beyond ASCII outside of quotes");
        if (character == '[' && line_begins && open_brackets_.empty())
            begin_table_line();
        check_structure(character);
        pass();
    }

    void begin_table_line() {
        check_table_name();
        in_table_line_ = true;
    }

    void check_structure(char character) {
        if (is_one_of(character, "[{"))
            open(character);
        else if (is_one_of(character, "]}"))
            close(character);
        else if (character == '.')
            count_dot();
        else if (character == '\n') {
            line_begins_ = true;
            in_table_line_ = false;
        }
        if (is_one_of(character, "=,[]{}\n")) {
            dots_ = 0;
            in_value_ = character == '=' || (open_brackets_.ends_with(']') && !in_table_line_);
        }
    }

    std::string_view rest_;
    unsigned line_ = 1;
    unsigned column_ = 1;
    std::string open_brackets_;  // what closes them
    std::size_t dots_ = 0;       // in the name that is being passed
    bool line_begins_ = true;    // only blanks since
    bool in_table_line_ = false; // a bracket begins the line
    bool in_value_ = false;      // not in a name
    std::optional<TomlFault> fault_;
};

} // namespace

std::optional<TomlFault> find_toml_fault(std::string_view text) {
    return TomlWalk(text).find_fault();
}

} // namespace quarry
