// SPDX-License-Identifier: Apache-2.0
#include "platform/text_rows.h"

namespace quarry {

namespace {

constexpr std::size_t rows_in_block = 16;

// A length is written in digits of 7 bits, the lowest first; all but the last have their top bit set.
void append_length(std::string* block, std::size_t length) {
    for (; length >= 0x80; length >>= 7)
        block->push_back(static_cast<char>(length | 0x80));
    block->push_back(static_cast<char>(length));
}

// The text whose length stands at `at`.
std::string_view text_from(const char* at) {
    std::size_t length = 0;
    unsigned digit;
    int shift = 0;
    do {
        digit = static_cast<unsigned char>(*at++);
        length |= std::size_t{digit & 0x7F} << shift;
        shift += 7;
    } while ((digit & 0x80) != 0);
    return {at, length};
}

const char* skip_texts(const char* at, std::size_t count) {
    for (; count > 0; --count) {
        const std::string_view text = text_from(at);
        at = text.data() + text.size();
    }
    return at;
}

} // namespace

void TextRows::add(std::string_view text) {
    append_length(&unfinished_, text.size());
    unfinished_.append(text);
    if (++texts_ % (columns_ * rows_in_block) != 0)
        return;
    blocks_.emplace_back(unfinished_); // a copy has no spare room
    unfinished_.clear();
}

const char* TextRows::row(std::size_t number) const {
    const std::size_t block = number / rows_in_block;
    const std::string& rows = block < blocks_.size() ? blocks_[block] : unfinished_;
    return skip_texts(rows.data(), number % rows_in_block * columns_);
}

std::string_view TextRows::text_at(const char* row, std::size_t column) {
    return text_from(skip_texts(row, column));
}

} // namespace quarry
