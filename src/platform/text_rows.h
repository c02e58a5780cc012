// SPDX-License-Identifier: Apache-2.0
// Rows of texts, packed: each text follows its length, and blocks of rows have one allocation, so that a row
// of short texts takes little more memory than their characters.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quarry {

class TextRows {
public:
    // `columns`: the number of texts in a row, at least 1.
    explicit TextRows(std::size_t columns) : columns_(columns) {}

    // Adds the next text, column after column and row after row.
    void add(std::string_view text);

    // The number of whole rows.
    std::size_t size() const { return texts_ / columns_; }

    // A whole row, for text_at. Valid until the next text is added.
    const char* row(std::size_t number) const;

    // The text of a row in the column.
    static std::string_view text_at(const char* row, std::size_t column);

private:
    std::size_t columns_;
    std::size_t texts_ = 0;
    std::vector<std::string> blocks_;
    std::string unfinished_; // the last block while it is not full
};

} // namespace quarry
