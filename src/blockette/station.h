// SPDX-License-Identifier: Apache-2.0
// Station and channel blockettes: 050 station identifier, 051 station comment, 052 channel identifier.
//
// The last station and channel records are kept process-wide: every later station- or channel-level
// blockette takes its station, network, channel, dates, sample rate and instrument from them, even across
// tape files. Times are SEED time text as read.
#pragma once

#include "blockette/types.h"

namespace quarry {

struct blk_050_t {
    int type;
    int length;
    char station[16];
    double lat;    // degrees
    double lon;    // degrees
    double elev;   // metres
    int num_chans; // stays 0: the two counts are skipped
    int num_comm;
    char name[61]; // of the site
    int net_id;
    int long_order; // 32-bit word order
    int word_order; // 16-bit word order
    char start_date[23];
    char end_date[23];
    char update;
    char network_code[3]; // untrimmed
};

struct blk_051_t {
    int type;
    int length;
    char beg_time[23];
    char end_time[23];
    int comment_key;
    int comment_level;
    char station[16];
    char network_code[3];
};

struct blk_052_t {
    int type;
    int length;
    char loc_id[3];
    char chan_id[4];
    int subchan_id;
    int instr_id; // key of an abbreviation (033)
    char comment[31];
    int units_signal; // keys of units (034)
    int units_cal;
    double lat;         // degrees
    double lon;         // degrees
    double elev;        // metres
    double depth;       // metres
    double azimuth;     // degrees
    double dip;         // degrees
    int format_id;      // key of a data format (030)
    int record_length;  // as a power of two
    double sample_rate; // samples per second
    double max_drift;
    int num_comments;
    char chan_flags[27];
    char start_date[23];
    char end_date[23];
    char update;
    char station[16]; // from here on: not on the wire
    char network_code[3];
    char channel[15]; // combined name, by fix_channel
    int changroup;    // kept for the interface, unused here
};

// Copies of the last 050 and 052 parsed, all zero before there is one.
extern blk_050_t blk_050;
extern blk_052_t blk_052;

QUARRY_BLOCKETTE_FUNCTIONS(050)
QUARRY_BLOCKETTE_FUNCTIONS(051)
QUARRY_BLOCKETTE_FUNCTIONS(052)

// Builds the combined channel name from the channel and location codes; for a multiplexed channel (subchannel
// number above 0) it ends in the letter of the sensor's orientation, which is also filed in
// Geoscope_channels. An orientation that fits no letter is reported, and the name keeps the subchannel digit.
void fix_channel(blk_052_t* blk);

} // namespace quarry
