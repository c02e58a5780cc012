// SPDX-License-Identifier: Apache-2.0
// Words of a record in the host's order: unaligned, so reached through their bytes.
#pragma once

#include "platform/bytes.h"

namespace quarry {

// The word at `place` in the host's order, its bytes reversed where `swap` is set. If the bytes are not
// constant, they are reversed there, too, and stay so.
template <class Word, class Byte>
Word load_after_swap(Byte* place, bool swap) {
    const auto word = load_swapped<Word>(place, swap);
    if constexpr (!std::is_const_v<Byte>)
        if (swap)
            store(place, word);
    return word;
}

} // namespace quarry
