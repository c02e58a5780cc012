#include "check/words.h"

#include <array>
#include <charconv>

namespace quarry {

namespace {

template <class Number>
void add_number(std::string* text, Number number) {
    std::array<char, 32> digits; // NOLINT(*-member-init): to_chars fills it
    text->append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

} // namespace

void add_word(std::string* text, std::string_view word) {
    *text += word;
}
void add_word(std::string* text, double number) {
    add_number(text, number);
}
void add_word(std::string* text, std::int64_t number) {
    add_number(text, number);
}

} // namespace quarry
