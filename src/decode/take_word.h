// Words of a record in the host's order, swapped in place: unaligned, so reached through their bytes.
#pragma once

#include "decode/swap_2byte.h"
#include "decode/swap_4byte.h"
#include "platform/bytes.h"

#include <cstdint>

namespace quarry {

constexpr std::uint16_t swapped(std::uint16_t word) {
    return swap_2byte(word);
}
constexpr std::uint32_t swapped(std::uint32_t word) {
    return swap_4byte(word);
}

// The word at `place`, which is left there swapped where `swap` is set.
template <class Word>
Word take_word(char* place, bool swap) {
    auto word = load<Word>(place);
    if (swap) {
        word = swapped(word);
        store(place, word);
    }
    return word;
}

} // namespace quarry
