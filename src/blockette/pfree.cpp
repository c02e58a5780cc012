// SPDX-License-Identifier: Apache-2.0
// Release of blockette records, for each type and by type number.

#include "blockette/blockette.h"
#include "blockette/data_header.h"
#include "blockette/response.h"
#include "blockette/station.h"
#include "blockette/timespan.h"
#include "blockette/types.h"
#include "blockette/volume.h"
#include "platform/message_log.h"

namespace quarry {

// The arrays that a record owns go with it.
#define QUARRY_DEFINE_FREE(TYPE, NAME)                                                                       \
    void free_##NAME(blk_##NAME##_t* ptr) {                                                                  \
        delete ptr;                                                                                          \
    }
QUARRY_BLOCKETTE_TYPES(QUARRY_DEFINE_FREE)
#undef QUARRY_DEFINE_FREE

void free_blk(void* blk, int blk_type) {
    switch (blk_type) {
#define QUARRY_FREE_CASE(TYPE, NAME)                                                                         \
    case TYPE:                                                                                               \
        return free_##NAME(static_cast<blk_##NAME##_t*>(blk));
        QUARRY_BLOCKETTE_TYPES(QUARRY_FREE_CASE)
#undef QUARRY_FREE_CASE
    default:
        log_complain(0, "Unknown blockette: %5d\n", blk_type);
    }
}

} // namespace quarry
