// The fixed data header of a data record, which has blockette type -1.
//
// Its binary fields are widened with their sign, also the 8-bit flag bytes: their users mask them. The reader
// fills in what the header itself does not say.
#pragma once

#include "blockette/types.h"

namespace quarry {

struct blk_dh_t {
    char stn_id[16];
    char loc_id[3];
    char chan_id[4];
    char channel[15]; // kept for the interface, unused here
    char network_code[3];
    char start_time[23]; // SEED time text, built by fix_dh
    int year;
    int doy;
    int hour;
    int minutes;
    int sec_int;
    int sec_frac; // 0.0001 s
    int length;   // of the record in bytes, set by the reader
    int nsamps;
    int rate_f; // sample rate factor
    int rate_m; // sample rate multiplier
    int activity;
    int io_flags;
    int quality;
    int blks_fol;     // number of blockettes that follow
    int time_cor;     // 0.0001 s
    int beg_data;     // byte offset of the first sample in the record
    int beg_blks;     // byte offset of the first data blockette in the record
    char* data;       // the samples, at beg_data of `raw`; null where that lies outside the record
    char* raw;        // the record, in the reader's buffer: both are valid until the next one is read
    double samp_rate; // samples per second, set by fix_dh
    int byteswap;     // 0 if the binary fields were in the host's order, -1 if they were swapped
    double epoch;     // start in epoch seconds, corrected, set by fixup_dh
    char format[51];  // data format name
    int seq_num;
    int sub_seq_num; // counts records that share a sequence number
    int type;        // data type number
};

QUARRY_BLOCKETTE_FUNCTIONS(dh)

// Signed numbers from unaligned wire bytes, swapped first where `swap` is non-zero, sign-extended. The
// source holds 4, 2 or 1 bytes.
void int2int(int* dest, const char* src, int swap);
void short2int(int* dest, const char* src, int swap);
void char2int(int* dest, const char* src);

} // namespace quarry
