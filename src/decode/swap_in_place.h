// Words of a record in the host's order, swapped in place: unaligned, so reached through their bytes.
#pragma once

#include "platform/bytes.h"

namespace quarry {

// The word at `place`. Where `swap` is set, its bytes are first reversed there, and stay so.
template <class Word>
Word load_after_swap(char* place, bool swap) {
    const auto word = load_swapped<Word>(place, swap);
    if (swap)
        store(place, word);
    return word;
}

} // namespace quarry
