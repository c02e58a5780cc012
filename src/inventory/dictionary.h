// SPDX-License-Identifier: Apache-2.0
// The dictionaries of texts: blockettes 030 to 035.
#pragma once

#include "quarry/inventory.h"

namespace quarry {

// Adds what the blockette defines, if it is one of these, behind the definitions before it.
void add_texts(const Place& place, const Fields& blockette, Dictionary* dictionary);

// Brings all definitions into the order of their keys, those of one key as they are.
void sort_by_key(Dictionary* dictionary);

} // namespace quarry
