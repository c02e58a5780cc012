// SPDX-License-Identifier: Apache-2.0
// Completion of data headers: sample rate, start time text and epoch, record length and data format.
#pragma once

#include "blockette/data_header.h"
#include "listing/epoch_lists.h"

namespace quarry {

// A 16-bit value widened to an int with its sign.
int word_comp(int value);

// Sets `samp_rate` from the sample rate factor and multiplier (both sign-extended, and 0 if either is) and
// `start_time` from the time fields, without the time correction. The two orders are not used.
void fix_dh(blk_dh_t* header, int long_order, int word_order);

// Completes a header as parsed: fix_dh, then the time correction unless the activity flags say that it has
// been applied, the epoch, and record length and format from the channel's epoch in the record list. A
// channel without one gets 4096 bytes and, where a database is open, the format that its table seedformat
// gives; a record without a row there is reported.
void complete_header(blk_dh_t* header, const SortedSet<rec_len_t>& rec_list);

} // namespace quarry
