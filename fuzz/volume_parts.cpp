// SPDX-License-Identifier: Apache-2.0
#include "volume_parts.h"

#include "volume_builder.h"

#include <algorithm>
#include <cstdlib>

namespace quarry::fuzz {

namespace {

constexpr std::size_t header_size = 8;
constexpr std::size_t type_and_length_size = 7;

bool is_data_letter(char letter) {
    return letter == 'D' || letter == 'R' || letter == 'Q' || letter == 'M';
}

std::size_t number_at(std::string_view text, std::size_t at, std::size_t width) {
    return at >= text.size() ? 0 : std::strtoul(std::string(text.substr(at, width)).c_str(), nullptr, 10);
}

// 2 to the given power, if it is a plausible record length.
std::size_t record_size_of(std::size_t power, std::size_t otherwise) {
    return power >= 7 && power <= 16 ? std::size_t{1} << power : otherwise;
}

// The length of a data record, from a blockette 1000 in the usual place.
std::size_t data_record_size(std::string_view record, std::size_t otherwise) {
    constexpr std::size_t power_at = 54;
    return record.size() <= power_at
               ? otherwise
               : record_size_of(static_cast<unsigned char>(record[power_at]), otherwise);
}

// Moves the blockettes of consecutive records, whose payload this is, to the parts.
void split_payload(char letter, std::string_view payload, std::vector<VolumePart>* parts) {
    while (!payload.empty() && payload.find_first_not_of(' ') != std::string_view::npos) {
        const std::size_t declared = number_at(payload, 3, 4);
        const std::size_t length = declared < type_and_length_size ? type_and_length_size : declared;
        parts->push_back({letter, std::string(payload.substr(0, length))});
        payload.remove_prefix(parts->back().bytes.size());
        // Padding up to the end of a record.
        if (payload.substr(0, type_and_length_size).find_first_not_of(' ') == std::string_view::npos)
            payload.remove_prefix(std::min(payload.find_first_not_of(' '), payload.size()));
    }
}

} // namespace

bool is_data(const VolumePart& part) {
    return is_data_letter(part.letter);
}

std::vector<VolumePart> take_apart(std::string_view volume, int* record_size) {
    constexpr std::size_t default_size = 512;
    constexpr std::size_t power_at = header_size + type_and_length_size + 4; // of a blockette 010
    const std::size_t size = record_size_of(number_at(volume, power_at, 2), default_size);
    *record_size = static_cast<int>(size);
    std::vector<VolumePart> parts;
    char letter = '\0';
    std::string payload;
    while (volume.size() > header_size) {
        const char next = volume[6];
        if (next != letter) {
            split_payload(letter, payload, &parts);
            payload.clear();
            letter = next;
        }
        const std::string_view record =
            volume.substr(0, is_data_letter(next) ? data_record_size(volume, size) : size);
        if (is_data_letter(next))
            parts.push_back({next, std::string(record)});
        else
            payload += record.substr(header_size);
        volume.remove_prefix(record.size());
    }
    split_payload(letter, payload, &parts);
    return parts;
}

std::string put_together(const std::vector<VolumePart>& parts, int record_size) {
    const auto size = static_cast<std::size_t>(record_size);
    std::string volume;
    int sequence = 0;
    char letter = '\0';
    std::size_t room = 0;
    const auto begin_record = [&](char continuation) {
        volume += digits(++sequence, 6) + letter + continuation;
        room = size - header_size;
    };
    for (const VolumePart& part : parts) {
        if (is_data(part) || part.letter != letter) {
            volume.append(room, ' ');
            room = 0;
            letter = is_data(part) ? '\0' : part.letter;
        }
        if (is_data(part)) {
            volume += part.bytes;
            continue;
        }
        if (room < type_and_length_size) {
            volume.append(room, ' ');
            begin_record(' ');
        }
        for (std::string_view rest = part.bytes; !rest.empty();) {
            if (room == 0)
                begin_record('*');
            const std::string_view piece = rest.substr(0, room);
            volume += piece;
            room -= piece.size();
            rest.remove_prefix(piece.size());
        }
    }
    return volume.append(room, ' ');
}

} // namespace quarry::fuzz
