// SPDX-License-Identifier: Apache-2.0
#include "blockette/scan.h"

#include "platform/message_log.h"
#include "platform/text.h"
#include "state.h"

#include <algorithm>
#include <string>

namespace quarry {

namespace {

// Takes `len` characters off the cursor.
std::string_view take(std::string_view* str, int len) {
    const std::size_t width = std::min(static_cast<std::size_t>(std::max(len, 0)), str->size());
    const std::string_view field = str->substr(0, width);
    str->remove_prefix(width);
    return field;
}

std::string_view trim_front(std::string_view text) {
    while (!text.empty() && is_white(text.front()))
        text.remove_prefix(1);
    return text;
}

std::string_view trim_back(std::string_view text) {
    while (!text.empty() && is_white(text.back()))
        text.remove_suffix(1);
    return text;
}

int precision_of(std::string_view text) {
    return static_cast<int>(text.size());
}

} // namespace

int scan_int(std::string_view* str, int len) {
    const std::string_view field = take(str, len);
    const ParsedInteger parsed = parse_integer(field);
    if (parsed.length == 0 && !is_blank(field)) {
        log_note("Could not convert '%.*s' to an integer\n", precision_of(field), field.data());
        Bad_blkflag = 1;
    }
    return static_cast<int>(parsed.value);
}

double scan_double(std::string_view* str, int len) {
    const std::string_view field = take(str, len);
    if (const ParsedReal parsed = parse_short_real(field, true); parsed.length > 0)
        return parsed.value;
    if (is_blank(field))
        return 0.0;
    const std::string text = with_signed_exponent(field);
    const ParsedReal parsed = parse_real(text);
    if (parsed.length == 0) {
        log_note("Couldn't convert '%s' to a real number.\n", text.c_str());
        Bad_blkflag = 1;
    }
    return parsed.value;
}

void scan_str(std::string_view* str, int len, std::span<char> destination) {
    copy_text(destination, trim_back(trim_front(up_to_nul(take(str, len)))));
}

char* scan_var_str(std::string_view* source, std::span<char> destination) {
    std::string_view& text = *source;
    if (!text.starts_with('~'))
        text = trim_front(text);
    const auto* end = std::find_if(text.begin(), text.end(), [](char c) { return c == '~' || c == '\0'; });
    const auto length = static_cast<std::size_t>(end - text.begin());

    if (length >= destination.size()) {
        const std::string_view kept = text.substr(0, destination.size() - 1);
        copy_text(destination, kept);
        const std::string_view shown = up_to_nul(text).substr(0, 80); // the later fields too: for context
        log_complain(0, "variable string '%s' exceeded %d characters at %.*s\n", destination.data(),
                     static_cast<int>(destination.size()), precision_of(shown), shown.data());
        Bad_blkflag = 1;
        text.remove_prefix(length);
        if (text.starts_with('~'))
            text.remove_prefix(1);
        return destination.data() + kept.size();
    }
    const std::string_view field = trim_back(text.substr(0, length));
    copy_text(destination, field);
    text.remove_prefix(length);
    if (text.starts_with('~'))
        text.remove_prefix(1);
    return destination.data() + field.size();
}

char scan_char(std::string_view* str) {
    if (str->empty())
        return '\0';
    const char character = str->front();
    str->remove_prefix(1);
    return character;
}

void scan_skip(std::string_view* str, int len) {
    take(str, len);
}

} // namespace quarry
