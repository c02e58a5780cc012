// SPDX-License-Identifier: Apache-2.0
// Process-wide state: the options and settings of a run, and what earlier blockettes say about later ones.
// One thread, unguarded.
//
// The last station and channel records (blk_050, blk_052) are kept by blockette/station.h, the decoders'
// output cursor by quarry/decoders.h.
#pragma once

#include "platform/containers.h"
#include "platform/parameter_file.h"
#include "platform/store.h"

#include <string>

namespace quarry {

// Set by the command driver.
extern std::string Program_Name; // argv[0]
extern ParameterFile Parameters; // quarry.pf
extern StorePointer Db;          // the database of -d, or store_invalid ()
extern int Simplify;             // number of options -S
extern int Verbose_Flag;         // number of options -v; from 2 on every logical record is announced
extern int File_No;              // argument of -f
extern int File_Flag;            // 1 once -f was given
extern int Tapefile;             // number of the tape file being read

// Orientation letter of each multiplexed channel, by "STATION:CHANNEL" with the subchannel digit.
extern Map<char> Geoscope_channels;

// Dictionaries by their codes: comments (blockette 031), abbreviations (033), unit names (034).
extern List<std::string> Tbl_031;
extern List<std::string> Tbl_033;
extern List<std::string> Tbl_034;

// Set to 1 by any field of a blockette that fails to convert; cleared before each blockette is parsed.
extern int Bad_blkflag;

} // namespace quarry
