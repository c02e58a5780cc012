// SPDX-License-Identifier: Apache-2.0
// What stands at a place of a volume: the beginnings of logical records and of control blockettes.
#pragma once

#include "decode/catalogue.h"
#include "decode/data_record.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quarry::framing {

// Sizes in bytes.
inline constexpr std::size_t header_size = logical_header_size;
inline constexpr std::size_t head_size = blockette_head_size;
inline constexpr std::size_t look = 64;        // what is needed to recognize a beginning
inline constexpr std::int64_t usual_step = 64; // all lengths of records are multiples of it
inline constexpr int smallest_power = shortest_record_power;
inline constexpr int largest_power = 20;               // of a data record's length
inline constexpr int largest_control_power = 16;       // of the length of other logical records
inline constexpr std::size_t usual_record_size = 4096; // where nothing gives it

// A size to add to an offset.
constexpr std::int64_t signed_size(std::size_t size) {
    return static_cast<std::int64_t>(size);
}

// True if all is blanks and zeros; how many of them are in front.
bool is_blank(std::string_view bytes);
std::size_t blanks_in_front(std::string_view bytes);

// The number that the text is, with blanks on its left or right; -1 for any other text.
int number_of(std::string_view text);

// Type and length of a control blockette.
struct Head {
    int type;
    std::size_t length;
};

// The head in the first 7 bytes: two numbers, the length at least those 7 bytes.
std::optional<Head> blockette_head(std::string_view bytes);
// True if the type is known and the length enough for it.
bool is_sound(const Head& head);
bool begins_sound_blockette(std::string_view bytes);

// The byte order in which the time makes sense in a record's front, of at least fixed_header_size bytes; none
// if there is no such order or the bytes are fewer.
std::optional<std::endian> header_order(std::string_view front);

// The kind of logical record that begins with the bytes, of which `look` are given unless the input ends
// before. A plausible beginning is enough where a record should begin; anywhere else it has to be a sound
// one. A number followed by blanks begins a control record, too: one that holds nothing.
enum class Kind { none, blank, data, control };
Kind plausible_beginning(std::string_view front);
Kind sound_beginning(std::string_view front);

// Where a sound beginning may be in the bytes: the first place, in steps, that a quick look does not rule
// out, or npos.
std::size_t find_candidate(std::string_view bytes, std::size_t step);

} // namespace quarry::framing
