#include "platform/text.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <clocale>
#include <cstdlib>
#include <limits>
#include <unistd.h>

namespace quarry {

bool is_white(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

std::string_view up_to_nul(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

bool is_blank(std::string_view text) {
    text = up_to_nul(text);
    return std::all_of(text.begin(), text.end(), is_white);
}

namespace {

std::size_t skip_white(std::string_view text) {
    return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), is_white) - text.begin());
}

// std::from_chars leaves the value alone when it is out of range; strtod tells overflow from underflow.
double out_of_range_real(const std::string& number) {
    static const locale_t c_locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return strtod_l(number.c_str(), nullptr, c_locale);
}

} // namespace

ParsedInteger parse_integer(std::string_view text) {
    std::size_t at = skip_white(text);
    if (at < text.size() && text[at] == '+' && !text.substr(at + 1).starts_with('-'))
        ++at;
    long value = 0;
    const auto [end, error] = std::from_chars(text.data() + at, text.data() + text.size(), value);
    if (error == std::errc::invalid_argument)
        return {0, 0};
    if (error == std::errc::result_out_of_range)
        value = text[at] == '-' ? LONG_MIN : LONG_MAX;
    return {value, static_cast<std::size_t>(end - text.data())};
}

int integer_value(std::string_view text) {
    const long value = parse_integer(text).value;
    return static_cast<int>(std::clamp<long>(value, INT_MIN, INT_MAX));
}

ParsedReal parse_real(std::string_view text) {
    std::size_t at = skip_white(text);
    if (at < text.size() && text[at] == '+' && !text.substr(at + 1).starts_with('-'))
        ++at;
    double value = 0.0;
    const char* begin = text.data() + at;
    const auto [end, error] = std::from_chars(begin, text.data() + text.size(), value);
    if (error == std::errc::invalid_argument)
        return {0.0, 0};
    if (error == std::errc::result_out_of_range)
        value = out_of_range_real(std::string(begin, end));
    return {value, static_cast<std::size_t>(end - text.data())};
}

void copy_text(std::span<char> destination, std::string_view text) {
    if (destination.empty())
        return;
    text = up_to_nul(text).substr(0, destination.size() - 1);
    std::copy(text.begin(), text.end(), destination.begin());
    destination[text.size()] = '\0';
}

std::string program_path() {
    std::string path(4096, '\0');
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    path.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return path;
}

} // namespace quarry
