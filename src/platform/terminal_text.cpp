// SPDX-License-Identifier: Apache-2.0
#include "platform/terminal_text.h"

#include <algorithm>

namespace quarry {

namespace {

unsigned char byte_at(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
}

bool is_continuation(std::string_view text, std::size_t at) {
    return at < text.size() && (byte_at(text, at) & 0xC0) == 0x80;
}

// The bytes of the harmless character that the text begins with; 0 for a control or for no character. Of
// UTF-8, overlong forms of controls (C0, C1, E0 80, F0 80) do not count as characters either.
std::size_t harmless_length(std::string_view text) {
    const unsigned char first = byte_at(text, 0);
    if (first < 0x80)
        return first >= 0x20 && first != 0x7f ? 1 : 0;
    const std::size_t length = first >= 0xF5 || first < 0xC2 ? 0 : first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    for (std::size_t at = 1; at < length; ++at)
        if (!is_continuation(text, at))
            return 0;
    const bool is_control_or_overlong = (first == 0xC2 && byte_at(text, 1) < 0xA0) ||
                                        (first == 0xE0 && byte_at(text, 1) < 0xA0) ||
                                        (first == 0xF0 && byte_at(text, 1) < 0x90);
    return length > 0 && is_control_or_overlong ? 0 : length;
}

} // namespace

std::string shown_on_terminal(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string shown;
    while (!text.empty()) {
        const std::size_t harmless = harmless_length(text);
        if (harmless > 0) {
            shown += text.substr(0, harmless);
        } else {
            shown += "\\x";
            shown += digits[byte_at(text, 0) >> 4];
            shown += digits[byte_at(text, 0) & 0xF];
        }
        text.remove_prefix(std::max<std::size_t>(harmless, 1));
    }
    return shown;
}

bool has_controls(std::string_view text) {
    while (!text.empty()) {
        const std::size_t harmless = harmless_length(text);
        if (harmless == 0)
            return true;
        text.remove_prefix(harmless);
    }
    return false;
}

} // namespace quarry
