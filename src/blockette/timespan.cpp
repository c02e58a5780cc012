// SPDX-License-Identifier: Apache-2.0
#include "blockette/timespan.h"

#include "blockette/scan.h"
#include "state.h"

#include <algorithm>

namespace quarry {

void init_070(blk_070_t* blk) {
    *blk = {};
    blk->type = 70;
    blk->span_flag = 'P';
}

// 1 type              int 3
// 2 length            int 4
// 3 time span flag    char
// 4 beginning time    var 23
// 5 end time          var 23
void parse_070(blk_070_t* blk, std::string_view buff) {
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    blk->span_flag = scan_char(&buff);
    scan_var_str(&buff, blk->beg_time);
    scan_var_str(&buff, blk->end_time);
}

void init_071(blk_071_t* blk) {
    *blk = {};
    blk->type = 71;
}

//  1 type                      int 3
//  2 length                    int 4
//  3 origin time               var 23
//  4 hypocenter source key     int 2
//  5 latitude                  real 10
//  6 longitude                 real 11
//  7 depth                     real 7
//  8 number of magnitudes      int 2
//    for each magnitude:
//  9   magnitude               real 5
// 10   type                    var 11
// 11   source key              int 2
// 12 seismic region number     int 3
// 13 seismic location number   int 4
// 14 region name               var 41
void parse_071(blk_071_t* blk, std::string_view buff) {
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    scan_var_str(&buff, blk->origin_time);
    blk->source_id = scan_int(&buff, 2);
    blk->lat = scan_double(&buff, 10);
    blk->lon = scan_double(&buff, 11);
    blk->depth = scan_double(&buff, 7);
    blk->num_mags = scan_int(&buff, 2);
    for (int i = 0; i < std::min(blk->num_mags, max_magnitudes); ++i) {
        blk->mag[i] = scan_double(&buff, 5);
        scan_var_str(&buff, blk->mag_type[i]);
        blk->mag_source[i] = scan_int(&buff, 2);
    }
    blk->grn = scan_int(&buff, 3);
    blk->srn = scan_int(&buff, 4);
    scan_var_str(&buff, blk->gregion);
}

void init_072(blk_072_t* blk) {
    *blk = {};
    blk->type = 72;
}

//  1 type                    int 3
//  2 length                  int 4
//  3 station                 text 5
//  4 location                text 2
//  5 channel                 text 3
//  6 arrival time            var 23
//  7 amplitude               real 10
//  8 period                  real 10
//  9 signal-to-noise ratio   real 10
// 10 phase name              var 21
// 11 source key              int 2
// 12 network                 text 2
void parse_072(blk_072_t* blk, std::string_view buff) {
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    scan_str(&buff, 5, blk->stn_id);
    scan_str(&buff, 2, blk->loc_id);
    scan_str(&buff, 3, blk->chan_id);
    scan_var_str(&buff, blk->arr_time);
    blk->amp = scan_double(&buff, 10);
    blk->period = scan_double(&buff, 10);
    blk->snr = scan_double(&buff, 10);
    scan_var_str(&buff, blk->phase);
    blk->source = scan_int(&buff, 2);
    scan_str(&buff, 2, blk->network_code);
}

void init_073(blk_073_t* blk) {
    *blk = {};
    blk->type = 73;
}

// 1 type                     int 3
// 2 length                   int 4
// 3 number of data pieces    int 4
//   for each piece:
// 4   station                text 5
// 5   location               text 2
// 6   channel                text 3
// 7   start time             var 23
// 8   sequence number        int 6
// 9   sub-sequence number    int 2
void parse_073(blk_073_t* blk, std::string_view buff) {
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    blk->num_segs = scan_int(&buff, 4);
    if (has_too_many_segments(*blk)) {
        Bad_blkflag = 1;
        return;
    }
    for (int i = 0; i < blk->num_segs && !buff.empty(); ++i) {
        scan_str(&buff, 5, blk->stn_id[i]);
        scan_str(&buff, 2, blk->loc_id[i]);
        scan_str(&buff, 3, blk->chan_id[i]);
        scan_var_str(&buff, blk->series_start_time[i]);
        blk->seq_num[i] = scan_int(&buff, 6);
        blk->sub_seq_num[i] = scan_int(&buff, 2);
    }
}

void init_074(blk_074_t* blk) {
    *blk = {};
    blk->type = 74;
    blk->first_sub_seq_num = 1;
    blk->last_sub_seq_num = 1;
}

//  1 type                          int 3
//  2 length                        int 4
//  3 station                       text 5
//  4 location                      text 2
//  5 channel                       text 3
//  6 series start time             var 23
//  7 first sequence number         int 6
//  8 first sub-sequence number     int 2
//  9 series end time               var 23
// 10 last sequence number          int 6
// 11 last sub-sequence number      int 2
// 12 number of repeats             int 3
//    for each repeat:
// 13   record start time           var 23
// 14   sequence number             int 6
// 15   sub-sequence number         int 2
// 16 network                       text 2
void parse_074(blk_074_t* blk, std::string_view buff) {
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    scan_str(&buff, 5, blk->stn_id);
    scan_str(&buff, 2, blk->loc_id);
    scan_str(&buff, 3, blk->chan_id);
    scan_var_str(&buff, blk->series_start_time);
    blk->first_seq_num = scan_int(&buff, 6);
    blk->first_sub_seq_num = scan_int(&buff, 2);
    scan_var_str(&buff, blk->series_end_time);
    blk->last_seq_num = scan_int(&buff, 6);
    blk->last_sub_seq_num = scan_int(&buff, 2);
    blk->num_repeats = scan_int(&buff, 3);
    for (int i = 0; i < std::min(blk->num_repeats, max_repeats); ++i) {
        scan_var_str(&buff, blk->rec_start_time[i]);
        blk->req_seq_num[i] = scan_int(&buff, 6);
        blk->req_sub_seq_num[i] = scan_int(&buff, 2);
    }
    scan_str(&buff, 2, blk->network_code);
}

} // namespace quarry
