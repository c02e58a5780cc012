// SPDX-License-Identifier: Apache-2.0
#include "report/svg_writer.h"

#include "platform/terminal_text.h"

#include <array>
#include <charconv>

namespace quarry {

void add_number(double number, std::string* text) {
    std::array<char, 64> digits; // for numbers up to 1e50
    const char* const begin = digits.data();
    const char* end =
        std::to_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed, 2).ptr;
    while (end[-1] == '0')
        --end;
    text->append(begin, end[-1] == '.' ? end - 1 : end);
}

namespace {

void add_command(char command, double number, std::string* path) {
    *path += command;
    add_number(number, path);
}

} // namespace

void add_stroke(double x, double y, double height, std::string* path) {
    add_command('M', x, path);
    add_command(' ', y, path);
    add_command('v', height, path);
}

void add_rectangle(double x, double y, double width, double height, std::string* path) {
    add_command('M', x, path);
    add_command(' ', y, path);
    add_command('h', width, path);
    add_command('v', height, path);
    add_command('h', -width, path);
    *path += 'z';
}

void SvgWriter::write_text(std::string_view text) {
    for (const char character : shown_on_terminal(text))
        switch (character) {
        case '&':
            out_ += "&amp;";
            break;
        case '<':
            out_ += "&lt;";
            break;
        case '>':
            out_ += "&gt;";
            break;
        case '"':
            out_ += "&quot;";
            break;
        default:
            out_ += character;
        }
}

void SvgWriter::write_head(std::string_view name, Attributes attributes) {
    out_.append("<").append(name);
    for (const SvgAttribute& attribute : attributes) {
        out_.append(" ").append(attribute.name).append("=\"");
        if (const double* number = std::get_if<double>(&attribute.value))
            add_number(*number, &out_);
        else
            write_text(std::get<std::string_view>(attribute.value));
        out_ += '"';
    }
}

void SvgWriter::begin(std::string_view name, Attributes attributes) {
    write_head(name, attributes);
    out_ += ">\n";
}

void SvgWriter::end(std::string_view name) {
    out_.append("</").append(name).append(">\n");
}

void SvgWriter::element(std::string_view name, Attributes attributes) {
    write_head(name, attributes);
    out_ += "/>\n";
}

void SvgWriter::text_element(std::string_view name, Attributes attributes, std::string_view text) {
    write_head(name, attributes);
    out_ += ">";
    write_text(text);
    end(name);
}

} // namespace quarry
