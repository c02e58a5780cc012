// SPDX-License-Identifier: Apache-2.0
// Tables of a report: for people in columns, as wide as the terminal, and for programs with tabs.
//
//     constexpr std::array columns{Column{"station", 1}, Column{"site", 3, Column::Kind::text, 8}};
//     Table table(columns, [&](const Table::Take& take) { take({"XX.DEM1", site}); });
//     table.write_text("stations\n", 80, &text);
//
// Cells are bytes of a volume: those beyond ASCII count as Latin-1, control characters are shown as their
// codes. What is written is UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quarry {

struct Column {
    enum class Kind : std::uint8_t {
        text,
        number, // stands on the right
        time,   // ISO 8601, which may be cut to the second, the minute or, if all else fails, the day
    };
    std::string_view title;
    int rank; // columns of the highest rank are the first that a narrow terminal leaves out
    Kind kind = Kind::text;
    std::size_t least = 0; // characters to which a text may be cut; 0: it is never cut
};

class Table {
public:
    // Takes a row: a cell for each column. Throws std::logic_error if there are more or fewer.
    using Take = std::function<void(const std::vector<std::string>& row)>;
    // Gives all rows, each time it is called: a table may be long, and keeps none of them.
    using Rows = std::function<void(const Take& take)>;

    // The columns outlive the table. `after_line` is called after each line.
    Table(
        std::span<const Column> columns, Rows rows, std::function<void()> after_line = [] {})
        : columns_(columns), rows_(std::move(rows)), after_line_(std::move(after_line)) {}

    // Titles and rows in columns, none longer than the width; 0: as wide as need be. Columns without any
    // content are not shown; those that had no room are named at the end. `front` stands before it all.
    // Without any row nothing is written, and false is returned.
    bool write_text(std::string_view front, std::size_t width, std::string* out) const;

    // Rows with a tab after the first cell, which all of them share, and between the others.
    void write_rows(std::string_view first, std::string* out) const;

    // Titles and rows with commas.
    void write_csv(std::string* out) const;

private:
    using Widths = std::vector<std::size_t>; // of each column, 0 for one that is not shown
    struct Measures {
        Widths natural;
        Widths needed; // narrower for times of whole days or minutes
    };
    void for_each_row(const Take& take) const;
    Measures measured() const;
    Widths fitting_widths(const Widths& needed, std::size_t limit) const;
    Widths least_widths(const Widths& needed, std::size_t least_time, std::size_t limit,
                        std::span<const std::size_t> to_leave_out) const;
    void write_left_out(const Widths& natural, const Widths& shown, std::size_t width,
                        std::string* out) const;

    std::span<const Column> columns_;
    Rows rows_;
    std::function<void()> after_line_;
};

// The titles of the rows for programs, a line.
std::string titles_of(std::string_view first, std::span<const Column> columns);

// Bytes of a volume as UTF-8, control characters as their codes.
std::string shown_text(std::string_view bytes);

// The number of columns that a text takes on a terminal, at most. The text cut to a number of columns, its
// end marked.
std::size_t text_width(std::string_view text);
std::string cut_text(std::string_view text, std::size_t width);

// The width of the terminal that standard output goes to: COLUMNS where that is set; 0 without a terminal.
std::size_t terminal_width();

} // namespace quarry
