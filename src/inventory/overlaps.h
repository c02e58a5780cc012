// SPDX-License-Identifier: Apache-2.0
// Epochs of one station or channel that overlap.
#pragma once

#include "quarry/inventory.h"

namespace quarry {

// Adds a finding for each epoch that begins before an earlier one of the same volume ends. Epochs are sorted.
// A missing start or end means an open epoch; subchannels are compared separately.
void add_overlaps(Inventory* inventory);

} // namespace quarry
