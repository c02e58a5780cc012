// SPDX-License-Identifier: Apache-2.0
#include "blockette/tally.h"

#include "blockette/types.h"

#include <numeric>

namespace quarry {

#define QUARRY_HAS_ENTRY(TYPE, NAME)                                                                         \
    static_assert(has_tally_entry(TYPE), "blockettes of the type would be reported as unknown");
QUARRY_BLOCKETTE_TYPES(QUARRY_HAS_ENTRY)
#undef QUARRY_HAS_ENTRY

Shares shares_of(const Tally& tally, std::int64_t size) {
    const std::int64_t data = tally.tot_siz[0];
    const std::int64_t parameter =
        std::accumulate(tally.tot_siz.begin() + 1, tally.tot_siz.end(), std::int64_t{0});
    return {parameter, data, size - parameter - data};
}

} // namespace quarry
