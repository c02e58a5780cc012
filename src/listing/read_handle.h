// The reader handle: the open input and what its control headers have declared so far. Made and used by the
// reader (seedio/seed.h); the header fix-up reads its lists.
#pragma once

#include "listing/epoch_lists.h"

namespace quarry {

struct SeedInput;

struct read_handle_t {
    SeedInput* logical; // owned
    int seq_num;        // sequence number of the logical record of the last data record read
    int sub_seq_num;    // counts from 1 the data records read while that number repeats
    SortedSet<rec_len_t> rec_list;
    SortedSet<order_t> order_list;
    List<blk_030_t> fmt_list; // by data format identifier code
    char stn[16];             // station code of the last blockette 050 read
};

} // namespace quarry
