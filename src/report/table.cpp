// SPDX-License-Identifier: Apache-2.0
#include "report/table.h"

#include "platform/terminal_text.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <numeric>
#include <stdexcept>
#include <sys/ioctl.h>
#include <unistd.h>

namespace quarry {

namespace {

constexpr std::size_t between = 2;                      // blanks between columns
constexpr std::array<std::size_t, 3> times{10, 16, 19}; // characters of a day, of a minute, of a second
constexpr std::string_view ellipsis = "\xe2\x80\xa6";

// The bytes of the character of UTF-8 that the text begins with.
std::size_t character_size(std::string_view text) {
    std::size_t size = 1;
    while (size < text.size() && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80)
        ++size;
    return size;
}

// Scripts with wide characters begin at U+1100, which UTF-8 writes E1 84 80.
std::size_t character_width(std::string_view character) {
    return character.size() > 2 && character != ellipsis && character >= "\xe1\x84\x80" ? 2 : 1;
}

std::size_t least_width(const Column& column, std::size_t needed, std::size_t least_time) {
    const std::size_t least = column.kind == Column::Kind::time ? least_time : column.least;
    return least > 0 ? std::min(needed, std::max(least, column.title.size())) : needed;
}

// The characters that are left of a cell where nothing but zeros of a time may be cut.
std::size_t needed_width(const Column& column, std::string_view cell) {
    const bool is_time = column.kind == Column::Kind::time && cell.size() == times[2] + 1;
    if (is_time && cell.ends_with("T00:00:00Z"))
        return times[0];
    return is_time && cell.ends_with(":00Z") ? times[1] : text_width(shown_text(cell));
}

// How much of the room a column that has `width` can use.
std::size_t growth(const Column& column, std::size_t width, std::size_t natural, std::size_t room) {
    std::size_t grown = std::min(natural, width + room);
    if (column.kind == Column::Kind::time && grown < natural)
        grown = std::max(width, *(std::upper_bound(times.begin(), times.end(), grown) - 1));
    return grown - width;
}

// With the blanks between those that are shown.
std::size_t whole_width(const std::vector<std::size_t>& widths) {
    std::size_t whole = 0;
    for (const std::size_t width : widths)
        whole += width > 0 ? width + (whole > 0 ? between : 0) : 0;
    return whole;
}

std::string fitted(const Column& column, std::string_view cell, std::size_t width) {
    if (text_width(cell) <= width)
        return std::string(cell);
    const bool is_ascii = text_width(cell) == cell.size();
    return column.kind == Column::Kind::time && is_ascii ? std::string(cell.substr(0, width))
                                                         : cut_text(cell, width);
}

template <class CellOf>
void write_line(std::span<const Column> columns, const std::vector<std::size_t>& widths,
                const CellOf& cell_of, std::string* out) {
    std::size_t blanks = 0;
    bool is_first = true;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (widths[i] == 0)
            continue;
        blanks += is_first ? 0 : between;
        is_first = false;
        const std::string cell = fitted(columns[i], std::string(cell_of(i)), widths[i]);
        const std::size_t padding = widths[i] - text_width(cell);
        const bool is_right = columns[i].kind == Column::Kind::number;
        if (!cell.empty())
            out->append(blanks + (is_right ? padding : 0), ' ').append(cell);
        blanks = cell.empty() ? blanks + widths[i] : is_right ? 0 : padding;
    }
    *out += '\n';
}

} // namespace

std::string shown_text(std::string_view bytes) {
    std::string text;
    for (const char character : bytes) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte >= 0xA0)
            text += static_cast<char>(0xC0 | byte >> 6);
        text += byte >= 0xA0 ? static_cast<char>(0x80 | (byte & 0x3F)) : character;
    }
    return has_controls(text) ? shown_on_terminal(text) : text;
}

std::size_t text_width(std::string_view text) {
    std::size_t width = 0;
    while (!text.empty()) {
        const std::size_t size = character_size(text);
        width += character_width(text.substr(0, size));
        text.remove_prefix(size);
    }
    return width;
}

std::string cut_text(std::string_view text, std::size_t width) {
    if (text_width(text) <= width)
        return std::string(text);
    std::string cut;
    for (std::size_t used = 1; width > 0;) { // by the mark
        const std::string_view character = text.substr(0, character_size(text));
        used += character_width(character);
        if (used > width)
            return cut.append(ellipsis);
        cut += character;
        text.remove_prefix(character.size());
    }
    return cut;
}

void Table::for_each_row(const Take& take) const {
    rows_([&](const std::vector<std::string>& row) {
        if (row.size() != columns_.size())
            throw std::logic_error("a row of " + std::to_string(row.size()) + " cells for " +
                                   std::to_string(columns_.size()) + " columns");
        take(row);
    });
}

Table::Measures Table::measured() const {
    const Widths none(columns_.size(), 0);
    Measures measures{none, none};
    for_each_row([&](const std::vector<std::string>& row) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (row[i].empty())
                continue;
            auto& [natural, needed] = measures;
            natural[i] = std::max({natural[i], text_width(shown_text(row[i])), columns_[i].title.size()});
            needed[i] = std::max({needed[i], needed_width(columns_[i], row[i]), columns_[i].title.size()});
        }
    });
    return measures;
}

// Leaves out columns, the last of the list first, until the others fit with their least widths or the list
// is used up.
Table::Widths Table::least_widths(const Widths& needed, std::size_t least_time, std::size_t limit,
                                  std::span<const std::size_t> to_leave_out) const {
    Widths widths(columns_.size());
    for (std::size_t i = 0; i < widths.size(); ++i)
        widths[i] = least_width(columns_[i], needed[i], least_time);
    for (auto i = to_leave_out.rbegin(); i != to_leave_out.rend() && whole_width(widths) > limit; ++i)
        widths[*i] = 0;
    return widths;
}

// Times keep their minutes if it is enough to leave out columns of higher rank than theirs. What is left of
// the room is for times and numbers first, then for texts.
Table::Widths Table::fitting_widths(const Widths& needed, std::size_t limit) const {
    std::vector<std::size_t> order(columns_.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [this](std::size_t one, std::size_t other) {
        return columns_[one].rank < columns_[other].rank;
    });
    const auto is_time = [this](std::size_t i) { return columns_[i].kind == Column::Kind::time; };
    const auto behind_times = std::find_if(order.rbegin(), order.rend() - 1, is_time).base();
    Widths widths = least_widths(needed, times[1], limit, std::span(behind_times, order.end()));
    if (whole_width(widths) > limit)
        widths = least_widths(needed, times[0], limit, std::span(order).subspan(1));
    if (whole_width(widths) > limit)
        widths[order[0]] = limit;
    std::stable_partition(order.begin(), order.end(),
                          [this](std::size_t i) { return columns_[i].kind != Column::Kind::text; });
    for (const std::size_t i : order)
        if (widths[i] > 0)
            widths[i] += growth(columns_[i], widths[i], needed[i], limit - whole_width(widths));
    return widths;
}

bool Table::write_text(std::string_view front, std::size_t width, std::string* out) const {
    const auto [natural, needed] = measured();
    if (whole_width(natural) == 0)
        return false;
    const bool has_room = width == 0 || whole_width(natural) <= width;
    const Widths widths = has_room ? natural : fitting_widths(needed, width);
    out->append(front);
    write_line(
        columns_, widths, [this](std::size_t i) { return columns_[i].title; }, out);
    for_each_row([&](const std::vector<std::string>& row) {
        write_line(
            columns_, widths, [&row](std::size_t i) { return shown_text(row[i]); }, out);
        after_line_();
    });
    write_left_out(natural, widths, width, out);
    return true;
}

// In lines of the width. Titles are ASCII.
void Table::write_left_out(const Widths& natural, const Widths& shown, std::size_t width,
                           std::string* out) const {
    std::string line;
    for (std::size_t i = 0; i < shown.size(); ++i) {
        if (shown[i] > 0 || natural[i] == 0)
            continue;
        const std::string_view title = columns_[i].title;
        line += line.empty() ? "(no room: " : ", ";
        if (line.find_last_not_of(' ') + 3 + title.size() > width) {
            *out += cut_text(line.substr(0, line.find_last_not_of(' ') + 1), width) + "\n";
            line = " ";
        }
        line += title;
    }
    if (!line.empty())
        *out += cut_text(line + ")", width) + "\n";
}

void Table::write_rows(std::string_view first, std::string* out) const {
    for_each_row([&](const std::vector<std::string>& row) {
        *out += first;
        for (const std::string& cell : row)
            out->append("\t").append(shown_text(cell));
        *out += '\n';
        after_line_();
    });
}

std::string titles_of(std::string_view first, std::span<const Column> columns) {
    std::string line(first);
    for (const Column& column : columns)
        line.append("\t").append(column.title);
    return line + "\n";
}

void Table::write_csv(std::string* out) const {
    const auto write = [out](std::string_view cell, bool is_first) {
        *out += is_first ? "" : ",";
        const bool is_plain = cell.find_first_of(",\"") == std::string_view::npos;
        *out += is_plain ? "" : "\"";
        for (const char byte : cell)
            out->append(byte == '"' ? 2 : 1, byte);
        *out += is_plain ? "" : "\"";
    };
    for (const Column& column : columns_)
        write(column.title, &column == columns_.data());
    *out += '\n';
    for_each_row([&](const std::vector<std::string>& row) {
        for (const std::string& cell : row)
            write(shown_text(cell), &cell == row.data());
        *out += '\n';
        after_line_();
    });
}

std::size_t terminal_width() {
    constexpr std::size_t usual = 80;
    constexpr std::size_t largest = 10'000;
    if (isatty(STDOUT_FILENO) != 1)
        return 0;
    const char* columns = std::getenv("COLUMNS");
    const std::size_t set = columns != nullptr ? std::strtoul(columns, nullptr, 10) : 0;
    if (set > 0)
        return std::min(set, largest);
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usual;
}

} // namespace quarry
