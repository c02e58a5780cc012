// SPDX-License-Identifier: Apache-2.0
// SVG: elements appended to a text, each on a line.
//
//     SvgWriter svg(&text);
//     svg.begin("g", {{"class", "row"}});
//     svg.element("rect", {{"x", 10.0}, {"y", 2.5}, {"width", 80.0}, {"height", 7.0}});
//     svg.text_element("text", {{"x", 10.0}, {"y", 20.0}}, "a < b");
//     svg.end("g");
//
// Texts and values are UTF-8. What XML keeps for itself is escaped; control characters, and bytes that have
// not the form of UTF-8, are shown as their codes. Numbers have two decimals at most.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>

namespace quarry {

struct SvgAttribute {
    std::string_view name;
    std::variant<std::string_view, double> value;
};

class SvgWriter {
public:
    using Attributes = std::initializer_list<SvgAttribute>;

    // Appends to the text, which outlives the writer.
    explicit SvgWriter(std::string* out) : out_(*out) {}

    void begin(std::string_view name, Attributes attributes = {});
    void end(std::string_view name);
    void element(std::string_view name, Attributes attributes);
    void text_element(std::string_view name, Attributes attributes, std::string_view text);

    // As it stands: of our own making.
    void raw(std::string_view text) { out_ += text; }

private:
    void write_head(std::string_view name, Attributes attributes);
    void write_text(std::string_view text);

    std::string& out_;
};

// A stroke down and a rectangle as pieces of the value of a path's `d`, appended to it.
void add_stroke(double x, double y, double height, std::string* path);
void add_rectangle(double x, double y, double width, double height, std::string* path);

// A number with two decimals at most, appended to the text.
void add_number(double number, std::string* text);

} // namespace quarry
