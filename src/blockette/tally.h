// SPDX-License-Identifier: Apache-2.0
// The tally of an input file: how many blockettes of each type it holds, and how many bytes they have.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace quarry {

// Types -1 (data records) to 498 are counted one by one: entry type + 1 belongs to a type.
inline constexpr int tally_entries = 500;

struct Tally {
    std::int64_t nblks; // blockettes of any type
    std::array<std::int64_t, tally_entries> blk_cnt;
    std::array<std::int64_t, tally_entries> tot_siz; // bytes
};

// True if the type has an entry of its own.
constexpr bool has_tally_entry(int type) {
    return type >= -1 && type < tally_entries - 1;
}

// Counts a blockette of the type, which has an entry, with its size in bytes.
inline void tally_blockette(Tally* tally, int type, int size) {
    const auto entry = static_cast<std::size_t>(type + 1);
    tally->blk_cnt[entry] += 1;
    tally->tot_siz[entry] += size;
}

// How the bytes of an input file divide: parameter information is the sum of the declared lengths of the
// control blockettes, data the full lengths of the data records, waste all else that was read.
struct Shares {
    std::int64_t parameter;
    std::int64_t data;
    std::int64_t wasted;
};

// The shares of a file of `size` bytes.
Shares shares_of(const Tally& tally, std::int64_t size);

} // namespace quarry
