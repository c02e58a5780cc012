// SPDX-License-Identifier: Apache-2.0
// Time span and event blockettes: 070 time span identifier, 071 hypocenter, 072 event phases, 073 time span
// data start index, 074 time series index.
//
// The lists are held inside the records. A count is kept as read, but at most as many elements as the record
// can hold are read and listed; of a 073 with more segments, none is read. Times are SEED time text as read.
// Sub-sequence numbers count from 1 the records that share a sequence number.
#pragma once

#include "blockette/types.h"

namespace quarry {

struct blk_070_t {
    int type;
    int length;
    char span_flag;
    char beg_time[23];
    char end_time[23];
};

inline constexpr int max_magnitudes = 20;

struct blk_071_t {
    int type;
    int length;
    char origin_time[23];
    int source_id;
    double lat;   // degrees
    double lon;   // degrees
    double depth; // kilometres
    int num_mags;
    double mag[max_magnitudes];
    char mag_type[max_magnitudes][11];
    int mag_source[max_magnitudes];
    char span_start[23]; // kept for the interface, unused here, as is the next
    char span_end[23];
    int grn; // seismic region number
    int srn; // seismic location number
    char gregion[41];
};

struct blk_072_t {
    int type;
    int length;
    char stn_id[16];
    char loc_id[3];
    char chan_id[4];
    char arr_time[23];
    double amp;
    double period;
    double snr;
    char phase[21];
    double lat; // kept for the interface, unused here, as are the next three
    double lon;
    double depth;
    char event_time[23];
    int source;
    char network_code[3];
};

inline constexpr int max_segments = 250;

struct blk_073_t {
    int type;
    int length;
    int num_segs;
    char stn_id[max_segments][16];
    char loc_id[max_segments][3];
    char chan_id[max_segments][4];
    char series_start_time[max_segments][23];
    int seq_num[max_segments];
    int sub_seq_num[max_segments];
};

// True for an index that the record cannot hold. The lister goes no further in such a volume.
constexpr bool has_too_many_segments(const blk_073_t& blk) {
    return blk.num_segs > max_segments;
}

inline constexpr int max_repeats = 64;

struct blk_074_t {
    int type;
    int length;
    char network_code[3];
    char stn_id[16];
    char loc_id[3];
    char chan_id[4];
    char series_start_time[23];
    int first_seq_num;
    int first_sub_seq_num;
    char series_end_time[23];
    int last_seq_num;
    int last_sub_seq_num;
    int num_repeats;
    char rec_start_time[max_repeats][23];
    int req_seq_num[max_repeats];
    int req_sub_seq_num[max_repeats];
};

QUARRY_BLOCKETTE_FUNCTIONS(070)
QUARRY_BLOCKETTE_FUNCTIONS(071)
QUARRY_BLOCKETTE_FUNCTIONS(072)
QUARRY_BLOCKETTE_FUNCTIONS(073) // above max_segments, parse_073 reads no segment and sets Bad_blkflag
QUARRY_BLOCKETTE_FUNCTIONS(074)

} // namespace quarry
