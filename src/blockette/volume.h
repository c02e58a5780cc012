// SPDX-License-Identifier: Apache-2.0
// Volume index and abbreviation dictionary blockettes: 010 volume identifier, 011 station header index,
// 012 time span index, 030 data format, 031 comment, 032 cited source, 033 abbreviation, 034 units.
//
// Times are SEED time text as read. A count is kept as read, but at most as many elements as the record can
// hold are read and listed.
#pragma once

#include "blockette/types.h"

#include <array>
#include <vector>

namespace quarry {

struct blk_010_t {
    int type;
    int length;
    double version; // of the SEED format
    int rec_len;    // logical record length as a power of two
    char beg_time[23];
    char end_time[23];
    char volume_time[23];
    char originating_org[81];
    char label[81];
};

struct blk_011_t {
    int type;
    int length;
    int num_stn;
    std::vector<std::array<char, 6>> stn_id; // station codes
    std::vector<int> seq_num;                // sequence number of each station's header
};

inline constexpr int max_spans = 999;

struct blk_012_t {
    int type;
    int length;
    int num_span; // as read; at most max_spans are kept
    char beg_span[max_spans][23];
    char end_span[max_spans][23];
    int seq_num[max_spans];
};

inline constexpr int decode_key_capacity = 200;

struct blk_030_t {
    int type;
    int length;
    char name[51];
    int format_id;
    int data_type; // family
    int num_keys;
    std::vector<std::vector<char>> decode_key; // each of decode_key_capacity characters
};

struct blk_031_t {
    int type;
    int length;
    int comment_id;
    char class_code;
    char comment[71];
    int units; // of the comment level
};

struct blk_032_t {
    int type;
    int length;
    int source_id;
    char author[71];
    char catalog[71];
    char publisher[51];
};

struct blk_033_t {
    int type;
    int length;
    int abbrev_id;
    char abbrev[51];
};

struct blk_034_t {
    int type;
    int length;
    int unit_id;
    char unit_name[21];
    char unit_desc[51];
};

QUARRY_BLOCKETTE_FUNCTIONS(010)
QUARRY_BLOCKETTE_FUNCTIONS(011)
QUARRY_BLOCKETTE_FUNCTIONS(012)
QUARRY_BLOCKETTE_FUNCTIONS(030)
QUARRY_BLOCKETTE_FUNCTIONS(031)
QUARRY_BLOCKETTE_FUNCTIONS(032)
QUARRY_BLOCKETTE_FUNCTIONS(033)
QUARRY_BLOCKETTE_FUNCTIONS(034)

} // namespace quarry
