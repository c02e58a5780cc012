// SPDX-License-Identifier: Apache-2.0
#include "blockette/blockette.h"

#include "blockette/data_header.h"
#include "blockette/response.h"
#include "blockette/station.h"
#include "blockette/timespan.h"
#include "blockette/types.h"
#include "blockette/volume.h"
#include "platform/memory.h"
#include "platform/message_log.h"
#include "state.h"

namespace quarry {

// The number in the message is a count of records, so always 1.
#define QUARRY_DEFINE_NEW(TYPE, NAME)                                                                        \
    blk_##NAME##_t* new_##NAME() {                                                                           \
        auto* blk = new_zeroed<blk_##NAME##_t>(QUARRY_SITE("blockette"), 1, "new_blk");                      \
        init_##NAME(blk);                                                                                    \
        return blk;                                                                                          \
    }
QUARRY_BLOCKETTE_TYPES(QUARRY_DEFINE_NEW)
#undef QUARRY_DEFINE_NEW

void* parse_blk(std::string_view text, int blk_type) {
    Bad_blkflag = 0;
    switch (blk_type) {
#define QUARRY_PARSE_CASE(TYPE, NAME)                                                                        \
    case TYPE: {                                                                                             \
        blk_##NAME##_t* blk = new_##NAME();                                                                  \
        parse_##NAME(blk, text);                                                                             \
        return blk;                                                                                          \
    }
        QUARRY_BLOCKETTE_TYPES(QUARRY_PARSE_CASE)
#undef QUARRY_PARSE_CASE
    default:
        log_complain(0, "WARNING(parse_blk) - Unknown blockette: %i\n", blk_type);
        return nullptr;
    }
}

int block_size(const void* blk, int blk_type) {
    switch (blk_type) {
#define QUARRY_SIZE_CASE(TYPE, NAME)                                                                         \
    case TYPE:                                                                                               \
        return static_cast<const blk_##NAME##_t*>(blk)->length;
        QUARRY_BLOCKETTE_TYPES(QUARRY_SIZE_CASE)
#undef QUARRY_SIZE_CASE
    default:
        log_complain(0, "Block size: unknown blockette: %5d\n", blk_type);
        return 0;
    }
}

} // namespace quarry
