// SPDX-License-Identifier: Apache-2.0
// The fixed data header of a data record (blk_dh_t), which has blockette type -1.
#pragma once

#include "blockette/types.h"
#include "quarry/decoders.h"

namespace quarry {

QUARRY_BLOCKETTE_FUNCTIONS(dh)

// Signed numbers from unaligned wire bytes, swapped first where `swap` is non-zero, sign-extended. The
// source holds 4, 2 or 1 bytes.
void int2int(int* dest, const char* src, int swap);
void short2int(int* dest, const char* src, int swap);
void char2int(int* dest, const char* src);

} // namespace quarry
