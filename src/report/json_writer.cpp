// SPDX-License-Identifier: Apache-2.0
#include "report/json_writer.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <rapidjson/writer.h>

namespace quarry {

namespace {

// What the library's writer writes to.
struct TextStream {
    using Ch = char;
    void Put(char character) const { text->push_back(character); }
    void Flush() {}
    std::string* text;
};

bool is_plain(char character) {
    return character >= ' ' && character < '\x7f' && character != '"' && character != '\\';
}

bool is_utf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = utf8_length(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

// A byte of Latin-1 that is not plain, as it stands between quotation marks.
void append_escaped(char character, std::string* out) {
    constexpr std::string_view digits = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(character);
    if (character == '"' || character == '\\') {
        *out += '\\';
        *out += character;
    } else if (byte >= 0xA0) {
        *out += static_cast<char>(0xC0 | byte >> 6);
        *out += static_cast<char>(0x80 | (byte & 0x3F));
    } else {
        *out += "\\u00";
        *out += digits[byte >> 4];
        *out += digits[byte & 0xF];
    }
}

// A whole character of UTF-8. Those of two bytes below U+00A0 are controls.
void append_character(std::string_view character, std::string* out) {
    const bool is_short = character.size() == 1;
    const bool is_control =
        !is_short && character[0] == '\xC2' && static_cast<unsigned char>(character[1]) < 0xA0;
    if (is_control || (is_short && !is_plain(character[0])))
        append_escaped(character.back(), out);
    else
        *out += character;
}

} // namespace

// The library's writer keeps the structure: commas, colons and nesting. Texts and numbers come ready.
class JsonWriter::Engine : public rapidjson::Writer<TextStream> {
public:
    explicit Engine(std::string* out) : rapidjson::Writer<TextStream>(stream), stream{out} {}

    std::string* begin_text() {
        Prefix(rapidjson::kStringType);
        *stream.text += '"';
        return stream.text;
    }
    void end_text() const { *stream.text += '"'; }
    void number(std::string_view digits) {
        Prefix(rapidjson::kNumberType);
        *stream.text += digits;
    }
    void end_line() {
        *stream.text += '\n';
        Reset(stream);
    }

    TextStream stream;
};

JsonWriter::JsonWriter(std::string* out) : engine_(std::make_unique<Engine>(out)) {}
JsonWriter::~JsonWriter() = default;

void JsonWriter::begin_object() {
    engine_->StartObject();
}
void JsonWriter::end_object() {
    engine_->EndObject();
}
void JsonWriter::begin_array() {
    engine_->StartArray();
}
void JsonWriter::end_array() {
    engine_->EndArray();
}
void JsonWriter::end_line() {
    engine_->end_line();
}

// Names are ours: they need no escapes.
void JsonWriter::key(std::string_view name) {
    *engine_->begin_text() += name;
    engine_->end_text();
}

void JsonWriter::value(std::string_view text) {
    std::string* out = engine_->begin_text();
    while (!text.empty()) {
        const auto plain =
            static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), is_plain) - text.begin());
        *out += text.substr(0, plain);
        if (plain < text.size())
            append_escaped(text[plain], out);
        text.remove_prefix(std::min(plain + 1, text.size()));
    }
    engine_->end_text();
}

void JsonWriter::utf8_value(std::string_view text) {
    if (std::all_of(text.begin(), text.end(), is_plain) || !is_utf8(text))
        return value(text);
    std::string* out = engine_->begin_text();
    while (!text.empty()) {
        const std::size_t length = utf8_length(text);
        append_character(text.substr(0, length), out);
        text.remove_prefix(length);
    }
    engine_->end_text();
}

void JsonWriter::value(std::int64_t number) {
    std::array<char, 24> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    engine_->number({digits.data(), end});
}

void JsonWriter::value(double number) {
    if (!std::isfinite(number)) {
        engine_->Null();
        return;
    }
    std::array<char, 32> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    engine_->number({digits.data(), end});
}

void JsonWriter::value(bool truth) {
    engine_->Bool(truth);
}

} // namespace quarry
