// SPDX-License-Identifier: Apache-2.0
// JSON Lines: one object a line, appended to a text. Every line is valid JSON in UTF-8.
//
//     JsonWriter json(&text);
//     json.begin_object();
//     json.field("name", "B\xfcro");
//     json.field("gain", 0.1);
//     json.end_object();
//     json.end_line();
//
// Texts are bytes of a volume: those beyond ASCII count as Latin-1. Control characters are always escaped, so
// that a line does no harm on a terminal. Numbers are in the shortest text that reads back to the same one.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace quarry {

class JsonWriter {
public:
    // Appends to the text, which outlives the writer.
    explicit JsonWriter(std::string* out);
    ~JsonWriter();
    JsonWriter(const JsonWriter&) = delete;
    JsonWriter& operator=(const JsonWriter&) = delete;

    void begin_object();
    void end_object();
    void begin_array();
    void end_array();
    void end_line(); // after the outermost object

    void key(std::string_view name);
    void value(std::string_view text);
    void value(const char* text) { value(std::string_view(text)); }
    void value(std::int64_t number);
    void value(int number) { value(std::int64_t{number}); }
    void value(double number); // null for what is not finite
    void value(bool truth);
    // Text that is UTF-8 already (a file's name), else taken as Latin-1.
    void utf8_value(std::string_view text);

    template <class T>
    void field(std::string_view name, T content) {
        key(name);
        value(content);
    }

private:
    class Engine;
    std::unique_ptr<Engine> engine_;
};

} // namespace quarry
