// SPDX-License-Identifier: Apache-2.0
#include "volume/framing.h"

#include "decode/catalogue.h"
#include "quarry/fields.h"

#include <algorithm>

namespace quarry::framing {

namespace {

constexpr std::size_t letter_offset = 6;
constexpr std::size_t continuation_offset = 7;
constexpr std::size_t sequence_size = 6;

bool is_blank(char byte) {
    return byte == ' ' || byte == '\0';
}

bool is_control_letter(char letter) {
    return letter == 'V' || letter == 'A' || letter == 'S' || letter == 'T';
}

bool is_digit_or_blank(char byte) {
    return (byte >= '0' && byte <= '9') || byte == ' ';
}

bool is_printable_or_nul(char byte) {
    return byte == '\0' || (byte >= ' ' && byte <= '~');
}

template <class Is>
bool all(std::string_view bytes, Is is) {
    return std::all_of(bytes.begin(), bytes.end(), is);
}

FixedHeader header_in(std::string_view front, std::endian order) {
    return decode_fixed_header(front, order != std::endian::native);
}

bool makes_sense(const FixedHeader& header) {
    return header.year >= 1900 && header.year <= 2100 && header.day_of_year >= 1 &&
           header.day_of_year <= 366 && header.hour <= 23 && header.minute <= 59 && header.second <= 60;
}

// The year 2056 and some days read the same in both orders; the rest of the header then decides.
int sense_of_the_rest(const FixedHeader& header) {
    const auto leads_behind_the_header = [](std::uint16_t offset) {
        return offset == 0 || offset == fixed_header_size || offset == 56 || offset == 64 || offset == 128;
    };
    return (header.fraction <= 9999 ? 1 : 0) + (leads_behind_the_header(header.blockette_offset) ? 1 : 0) +
           (leads_behind_the_header(header.data_offset) ? 1 : 0);
}

bool continues(char continuation) {
    return continuation == '*';
}

bool is_continuation_character(char character) {
    return is_blank(character) || continues(character);
}

bool is_numbered(std::string_view front) {
    return all(front.substr(0, sequence_size), is_digit_or_blank) &&
           !framing::is_blank(front.substr(0, sequence_size));
}

bool has_control_letter(std::string_view front) {
    return front.size() >= header_size && is_control_letter(front[letter_offset]) &&
           is_continuation_character(front[continuation_offset]);
}

// Blockettes, or none at all.
bool has_control_body(std::string_view front) {
    const std::string_view body = front.substr(header_size);
    return begins_sound_blockette(body) || framing::is_blank(body);
}

// Six digits and nothing else.
bool is_numbered_blank(std::string_view front) {
    return front.find(' ') == sequence_size && number_of(front.substr(0, sequence_size)) >= 0 &&
           framing::is_blank(front.substr(sequence_size));
}

bool is_plausible_data(std::string_view front) {
    return front.size() >= fixed_header_size && is_ok_quality(front[letter_offset]) && header_order(front);
}

} // namespace

bool is_blank(std::string_view bytes) {
    return blanks_in_front(bytes) == bytes.size();
}

std::size_t blanks_in_front(std::string_view bytes) {
    return static_cast<std::size_t>(
        std::find_if_not(bytes.begin(), bytes.end(), [](char byte) { return is_blank(byte); }) -
        bytes.begin());
}

int number_of(std::string_view text) {
    const std::size_t begin = std::min(text.find_first_not_of(' '), text.size());
    const std::size_t end = text.find_last_not_of(' ') + 1;
    int value = begin < end ? 0 : -1;
    for (std::size_t i = begin; i < end; ++i) {
        if (text[i] < '0' || text[i] > '9')
            return -1;
        value = value * 10 + (text[i] - '0');
    }
    return value;
}

std::optional<Head> blockette_head(std::string_view bytes) {
    if (bytes.size() < head_size)
        return std::nullopt;
    const int type = number_of(bytes.substr(0, 3));
    const int length = number_of(bytes.substr(3, 4));
    if (type < 0 || length < static_cast<int>(head_size))
        return std::nullopt;
    return Head{type, static_cast<std::size_t>(length)};
}

bool is_sound(const Head& head) {
    const BlocketteSpec* spec = head.type < first_data_blockette ? blockette_spec(head.type) : nullptr;
    return spec != nullptr && head.length >= static_cast<std::size_t>(spec->smallest);
}

bool begins_sound_blockette(std::string_view bytes) {
    const std::optional<Head> head = blockette_head(bytes);
    return head && is_sound(*head);
}

std::optional<std::endian> header_order(std::string_view front) {
    if (front.size() < fixed_header_size)
        return std::nullopt;
    const bool is_big = makes_sense(header_in(front, std::endian::big));
    const bool is_little = makes_sense(header_in(front, std::endian::little));
    if (is_big && is_little)
        return sense_of_the_rest(header_in(front, std::endian::little)) >
                       sense_of_the_rest(header_in(front, std::endian::big))
                   ? std::endian::little
                   : std::endian::big;
    if (is_big)
        return std::endian::big;
    return is_little ? std::optional(std::endian::little) : std::nullopt;
}

Kind plausible_beginning(std::string_view front) {
    if (is_blank(front))
        return Kind::blank;
    if (is_plausible_data(front))
        return Kind::data;
    const bool is_control = has_control_letter(front) && (is_numbered(front) || has_control_body(front));
    return is_control || is_numbered_blank(front) ? Kind::control : Kind::none;
}

Kind sound_beginning(std::string_view front) {
    if (is_blank(front))
        return Kind::blank;
    if (!is_numbered(front))
        return Kind::none;
    if (has_control_letter(front))
        return continues(front[continuation_offset]) || has_control_body(front) ? Kind::control : Kind::none;
    if (is_plausible_data(front))
        return is_continuation_character(front[continuation_offset]) &&
                       all(front.substr(codes_offset, codes_size), is_printable_or_nul)
                   ? Kind::data
                   : Kind::none;
    return is_numbered_blank(front) ? Kind::control : Kind::none;
}

std::size_t find_candidate(std::string_view bytes, std::size_t step) {
    for (std::size_t at = 0; at + header_size <= bytes.size(); at += step) {
        const char letter = bytes[at + letter_offset];
        if ((is_ok_quality(letter) || is_control_letter(letter) || letter == ' ') &&
            is_continuation_character(bytes[at + continuation_offset]) && is_numbered(bytes.substr(at)))
            return at;
    }
    return std::string_view::npos;
}

} // namespace quarry::framing
