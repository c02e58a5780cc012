// SPDX-License-Identifier: Apache-2.0
// The lines of empty elements of a list.
//
// A few bytes of a damaged volume can declare thousands of elements that are missing. They are listed all the
// same, in lines that differ only in their numbers, so these lines are made once.
#pragma once

#include "platform/line_format.h"

#include <algorithm>
#include <string_view>
#include <type_traits>

namespace quarry {

// The number of bytes before the zeros at the end.
std::size_t filled_bytes(std::string_view bytes);

// For lists of the same length that are listed element by element: how many of the first `count` elements
// have to be looked at. All elements behind those are zero bytes in every list. (A real number that is -0 is
// not all zero bytes, nor is an empty text with something behind its NUL.)
template <typename... Lists>
std::size_t filled_elements(std::size_t count, const Lists&... lists) {
    const auto filled = [count](const auto& list) {
        using Element = std::remove_cvref_t<decltype(list[0])>;
        static_assert(std::is_trivially_copyable_v<Element>);
        const auto* bytes = reinterpret_cast<const char*>(std::data(list));
        return (filled_bytes({bytes, count * sizeof(Element)}) + sizeof(Element) - 1) / sizeof(Element);
    };
    return std::max({filled(lists)...});
}

// Appends a line for each number from `first` to `end` - 1. The format has the number first, then the values.
template <FormatText format, typename... Values>
void print_each(LineBuffer& out, std::size_t first, std::size_t end, const Values&... values) {
    for (std::size_t i = first; i < end; ++i)
        print_line<format>(out, static_cast<int>(i), values...);
}

// The same for values that do not change from call to call. Below `limit` all lines have the same length.
template <FormatText format, std::size_t limit, typename... Values>
void print_numbered(LineBuffer& out, std::size_t first, std::size_t end, const Values&... values) {
    constexpr std::size_t few = 64; // are not worth all lines
    if (end - first > few && end <= limit) {
        static const LineBuffer lines = [&] {
            LineBuffer all;
            print_each<format>(all, 0, limit, values...);
            return all;
        }();
        const std::size_t length = lines.text().size() / limit;
        return out.append_lasting(lines.text().substr(first * length, (end - first) * length));
    }
    print_each<format>(out, first, end, values...);
}

} // namespace quarry
