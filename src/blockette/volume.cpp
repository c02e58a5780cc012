// SPDX-License-Identifier: Apache-2.0
#include "blockette/volume.h"

#include "blockette/scan.h"
#include "platform/memory.h"

#include <algorithm>

namespace quarry {

void init_010(blk_010_t* blk) {
    *blk = {};
    blk->type = 10;
    blk->version = 2.3;
    blk->rec_len = 12;
}

// 1 type                      int 3
// 2 length                    int 4
// 3 version of format         real 4
// 4 logical record length     int 2
// 5 beginning time            var 23
// 6 end time                  var 23
// 7 volume time               var 23
// 8 originating organization  var 81
// 9 label                     var 81
void parse_010(blk_010_t* blk, std::string_view buff) {
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    blk->version = scan_double(&buff, 4);
    blk->rec_len = scan_int(&buff, 2);
    scan_var_str(&buff, blk->beg_time);
    scan_var_str(&buff, blk->end_time);
    scan_var_str(&buff, blk->volume_time);
    scan_var_str(&buff, blk->originating_org);
    scan_var_str(&buff, blk->label);
}

void init_011(blk_011_t* blk) {
    *blk = {};
    blk->type = 11;
}

// 1 type                         int 3
// 2 length                       int 4
// 3 number of stations           int 3
//   for each station:
// 4   station code               text 5
// 5   sequence number of header  int 6
void parse_011(blk_011_t* blk, std::string_view buff) {
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    blk->num_stn = scan_int(&buff, 3);
    allocate_zeroed(blk->stn_id, blk->num_stn, QUARRY_SITE("blockette"), blk->num_stn * 6, "blk->stn_id");
    allocate_zeroed(blk->seq_num, blk->num_stn, QUARRY_SITE("blockette"), blk->num_stn, "blk->seq_num");
    for (std::size_t i = 0; i < blk->stn_id.size() && !buff.empty(); ++i) {
        scan_str(&buff, 5, blk->stn_id[i]);
        blk->seq_num[i] = scan_int(&buff, 6);
    }
}

void init_012(blk_012_t* blk) {
    *blk = {};
    blk->type = 12;
}

// 1 type                        int 3
// 2 length                      int 4
// 3 number of spans             int 4
//   for each span:
// 4   beginning                 var 23
// 5   end                       var 23
// 6   sequence number of index  int 6
void parse_012(blk_012_t* blk, std::string_view buff) {
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    blk->num_span = scan_int(&buff, 4);
    for (int i = 0; i < std::min(blk->num_span, max_spans) && !buff.empty(); ++i) {
        scan_var_str(&buff, blk->beg_span[i]);
        scan_var_str(&buff, blk->end_span[i]);
        blk->seq_num[i] = scan_int(&buff, 6);
    }
}

void init_030(blk_030_t* blk) {
    *blk = {};
    blk->type = 30;
    blk->data_type = -1;
}

// 1 type                          int 3
// 2 length                        int 4
// 3 short descriptive name        var 51
// 4 data format identifier code   int 4
// 5 data family type              int 3
// 6 number of decoder keys        int 2
//   for each key:
// 7   decoder key                 var 80
void parse_030(blk_030_t* blk, std::string_view buff) {
    constexpr std::size_t key_limit = 80; // in the volume; the member has more room
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    scan_var_str(&buff, blk->name);
    blk->format_id = scan_int(&buff, 4);
    blk->data_type = scan_int(&buff, 3);
    blk->num_keys = scan_int(&buff, 2);
    allocate_zeroed(blk->decode_key, blk->num_keys, QUARRY_SITE("blockette"), blk->num_keys,
                    "blk->decode_key");
    for (std::vector<char>& key : blk->decode_key) {
        allocate_zeroed(key, decode_key_capacity, QUARRY_SITE("blockette"), decode_key_capacity,
                        "blk->decode_key[key]");
        scan_var_str(&buff, std::span(key).first(key_limit));
    }
}

void init_031(blk_031_t* blk) {
    *blk = {};
    blk->type = 31;
    blk->class_code = ' ';
}

// 1 type                     int 3
// 2 length                   int 4
// 3 comment code key         int 4
// 4 comment class code       char
// 5 description of comment   var 71
// 6 units of comment level   int 3
void parse_031(blk_031_t* blk, std::string_view buff) {
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    blk->comment_id = scan_int(&buff, 4);
    blk->class_code = scan_char(&buff);
    scan_var_str(&buff, blk->comment);
    blk->units = scan_int(&buff, 3);
}

void init_032(blk_032_t* blk) {
    *blk = {};
    blk->type = 32;
}

// 1 type                            int 3
// 2 length                          int 4
// 3 source lookup code              int 2
// 4 name of publication or author   var 71
// 5 date published or catalog       var 71
// 6 publisher                       var 51
void parse_032(blk_032_t* blk, std::string_view buff) {
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    blk->source_id = scan_int(&buff, 2);
    scan_var_str(&buff, blk->author);
    scan_var_str(&buff, blk->catalog);
    scan_var_str(&buff, blk->publisher);
}

void init_033(blk_033_t* blk) {
    *blk = {};
    blk->type = 33;
}

// 1 type                       int 3
// 2 length                     int 4
// 3 abbreviation lookup code   int 3
// 4 abbreviation description   var 51
void parse_033(blk_033_t* blk, std::string_view buff) {
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    blk->abbrev_id = scan_int(&buff, 3);
    scan_var_str(&buff, blk->abbrev);
}

void init_034(blk_034_t* blk) {
    *blk = {};
    blk->type = 34;
}

// 1 type               int 3
// 2 length             int 4
// 3 unit lookup code   int 3
// 4 unit name          var 21
// 5 unit description   var 51
void parse_034(blk_034_t* blk, std::string_view buff) {
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    blk->unit_id = scan_int(&buff, 3);
    scan_var_str(&buff, blk->unit_name);
    scan_var_str(&buff, blk->unit_desc);
}

} // namespace quarry
