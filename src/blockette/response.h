// SPDX-License-Identifier: Apache-2.0
// Channel response blockettes: 053 poles and zeros, 054 coefficients, 057 decimation, 058 sensitivity or
// gain, 059 channel comment, 061 FIR response.
//
// Each record has a copy of the station and channel of the last blockettes 050 and 052, so that it can be
// printed or stored by itself. The lists of 053, 054 and 061 have their declared count. When a field of the
// blockette does not convert, reading stops before the next element, with a note: elements that were not read
// are zero, lists that were not reached are empty and have count 0.
#pragma once

#include "blockette/types.h"

#include <vector>

namespace quarry {

struct Complex_t {
    double real;
    double imag;
};

struct blk_053_t {
    int type;
    int length;
    char func_type; // transfer function type
    int stage_num;
    int input_units; // keys of units (034)
    int output_units;
    double normal_factor; // normalization
    double normal_freq;   // Hz
    int num_zeros;
    std::vector<Complex_t> zero;
    std::vector<Complex_t> zero_error;
    int num_poles;
    std::vector<Complex_t> pole;
    std::vector<Complex_t> pole_error;
    char station[16];
    char network_code[3];
    char channel[15];
    char start_date[23];
    char end_date[23];
    double sample_rate;
    int instr_id;
    int changroup; // kept for the interface, unused here
};

struct blk_054_t {
    int type;
    int length;
    char func_type;
    int stage_num;
    int input_units;
    int output_units;
    int num_numer;
    std::vector<double> numer_coef;
    std::vector<double> numer_error;
    int num_denom;
    std::vector<double> denom_coef;
    std::vector<double> denom_error;
    char station[16];
    char network_code[3];
    char channel[15];
    char start_date[23];
    char end_date[23];
    double sample_rate;
    int instr_id;
    int changroup;
};

struct blk_057_t {
    int type;
    int length;
    int stage_num;
    double samprate; // input, samples per second
    int dec_factor;
    int dec_offset;
    double delay;      // estimated, seconds
    double correction; // applied, seconds
    char station[16];
    char network_code[3];
    char channel[15];
    char start_date[23];
    char end_date[23];
    int instr_id;
    int changroup;
};

struct blk_058_t {
    int type;
    int length;
    int stage_num; // 0 for the sensitivity of the whole channel
    double gain;
    double freq; // Hz
    char station[16];
    char network_code[3];
    char channel[15];
    char start_date[23];
    char end_date[23];
    double sample_rate;
    int instr_id;
    int units_signal;
    int changroup;
};

struct blk_059_t {
    int type;
    int length;
    char beg_time[23];
    char end_time[23];
    int comment_key;
    int comment_level;
    char station[16];
    char network_code[3];
    char channel[15];
    char start_date[23];
    char end_date[23];
    double sample_rate;
    int instr_id;
};

struct blk_061_t {
    int type;
    int length;
    int stage_num;
    char response_name[26];
    char symmetry;
    int input_units;
    int output_units;
    int num_coef;
    std::vector<double> coef;
    char station[16];
    char network_code[3];
    char channel[15];
    char start_date[23];
    char end_date[23];
    double sample_rate;
    int instr_id;
    int changroup;
};

QUARRY_BLOCKETTE_FUNCTIONS(053)
QUARRY_BLOCKETTE_FUNCTIONS(054)
QUARRY_BLOCKETTE_FUNCTIONS(057)
QUARRY_BLOCKETTE_FUNCTIONS(058)
QUARRY_BLOCKETTE_FUNCTIONS(059)
QUARRY_BLOCKETTE_FUNCTIONS(061)

} // namespace quarry
