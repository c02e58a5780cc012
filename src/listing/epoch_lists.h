// SPDX-License-Identifier: Apache-2.0
// What a volume's control headers say about its data records: the data formats by code (blockettes 030),
// the record length and format of every channel epoch (050 and 052), the word orders of every station epoch
// (050).
//
// The lists are filled by the reader and asked by the header fix-up; they grow over a whole run.
#pragma once

#include "blockette/data_header.h"
#include "blockette/station.h"
#include "blockette/volume.h"
#include "platform/containers.h"
#include "platform/sorted_set.h"

#include <array>
#include <compare>
#include <cstdint>

namespace quarry {

// A channel epoch.
struct rec_len_t {
    char stn[6];
    char loc_id[3];
    char chan_id[4];
    double start; // epoch seconds
    double end;
    int len;         // data record length in bytes
    char format[51]; // data format name, empty when unknown
};

// A station epoch.
struct order_t {
    char stn[6];
    double start; // epoch seconds
    double end;
    int long_order; // 32-bit word order
    int word_order; // 16-bit word order
};

// Three-way comparisons of a sought element with a stored one: by the codes, then by the times. Where all
// codes are equal, a sought start inside the stored epoch (start inclusive, end exclusive) is equal; the
// sought element's end is never looked at. They define which elements are equal in the lists below. The
// lists do not call them: they do not define an order that a search could follow.
int rec_len_cmp(const rec_len_t& test, const rec_len_t& base);
int order_cmp(const order_t& test, const order_t& base);

// The codes of a channel or a station, packed to be small and compared fast: equal where the comparisons call
// all codes equal.
struct EpochGroup {
    std::array<std::uint32_t, 3> words;

    auto operator<=>(const EpochGroup&) const = default;
};

EpochGroup group_of(const rec_len_t& epoch);
EpochGroup group_of(const order_t& epoch);

inline std::uint64_t hash_of(const EpochGroup& group) {
    // Odd factors carry every bit into the upper ones.
    const std::uint64_t station_and_channel = std::uint64_t{group.words[0]} << 32 | group.words[1];
    return station_and_channel * 0x9E3779B97F4A7C15 + group.words[2] * 0xC2B2AE3D27D4EB4F;
}

// Empty lists of epochs.
SortedSet<rec_len_t> new_rec_list();
SortedSet<order_t> new_order_list();

// Files a copy of a data format under its code. A code used before is reported; the new format replaces the
// old one.
void update_fmt_list(List<blk_030_t>* fmt_list, const blk_030_t& b030);

// Files a channel epoch of the station; a format code without a blockette 030 is reported and leaves
// the format's name empty.
void update_rec_list(SortedSet<rec_len_t>* rec_list, const char* stn, const List<blk_030_t>& fmt_list,
                     const blk_052_t& b052);

// Files a station epoch.
void update_order_list(SortedSet<order_t>* order_list, const blk_050_t& b050);

// Fills in `length` and `format` of a data header from the channel epoch that holds its `epoch`, of
// overlapping ones from the one that starts first. Returns 1, or 0 without a change if there is none.
int lookup_rec_list(const SortedSet<rec_len_t>& rec_list, blk_dh_t* dh);

// The word orders of the station epoch that holds the header's start time text. Returns 1 or 0.
int lookup_order_list(const SortedSet<order_t>& order_list, const blk_dh_t& dh, int* long_order,
                      int* word_order);

} // namespace quarry
