// SPDX-License-Identifier: Apache-2.0
// The reader handle: the open input, what its control headers have declared so far, and the record being
// read. Made and used by the reader (seedio/seed.h).
#pragma once

#include "listing/epoch_lists.h"

#include <string_view>
#include <vector>

namespace quarry {

struct SeedInput;

// Called with a record that has a field in error, before it is delivered: a field that does not convert, a
// text that is too long, a 073 with more segments than it can hold. The record is null for an unknown type;
// `text` is the blockette's, up to a NUL.
using BadBlocketteHook = void (*)(const void* record, int type, std::string_view text);

struct read_handle_t {
    SeedInput* logical; // owned
    int seq_num;        // sequence number of the logical record of the last data record read
    int sub_seq_num;    // counts from 1 the data records read while that number repeats
    SortedSet<rec_len_t> rec_list;
    SortedSet<order_t> order_list;
    List<blk_030_t> fmt_list; // by data format identifier code
    char stn[16];             // station code of the last blockette 050 read

    BadBlocketteHook bad_blockette; // report_bad_blockette, unless the program sets another
    std::vector<char> image;        // of the record read last
    int bufflength;                 // how many bytes behind the image's header that record used
};

} // namespace quarry
