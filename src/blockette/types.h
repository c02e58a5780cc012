// SPDX-License-Identifier: Apache-2.0
// The blockette types that are parsed, listed and released. Every dispatch by type is made from this list.
//
// To add a type:
//   1. a row X (type number, name) here
//   2. its row in the catalogue (decode/catalogue.h); if there is one already, its `false` goes
//   3. the record `blk_NAME_t` and the line QUARRY_BLOCKETTE_FUNCTIONS (NAME) in the header of its theme
//      (volume.h, station.h, response.h, timespan.h)
//   4. `init_NAME` and `parse_NAME` in the theme's .cpp; `new_NAME` and `free_NAME` make themselves
//   5. `list_NAME` in the theme's printers (listing/pbrief_*.cpp)
//   6. what the blockette says about later records, if anything: apply_blockette (seedio/seed.cpp)
// Without one of the first five the program does not build.
//
// The fixed header of a data record has type -1 everywhere.
#pragma once

#include <string_view>

#define QUARRY_BLOCKETTE_TYPES(X)                                                                            \
    X(-1, dh)                                                                                                \
    X(10, 010)                                                                                               \
    X(11, 011)                                                                                               \
    X(12, 012)                                                                                               \
    X(30, 030)                                                                                               \
    X(31, 031)                                                                                               \
    X(32, 032)                                                                                               \
    X(33, 033)                                                                                               \
    X(34, 034)                                                                                               \
    X(50, 050)                                                                                               \
    X(51, 051)                                                                                               \
    X(52, 052)                                                                                               \
    X(53, 053)                                                                                               \
    X(54, 054)                                                                                               \
    X(57, 057)                                                                                               \
    X(58, 058)                                                                                               \
    X(59, 059)                                                                                               \
    X(61, 061)                                                                                               \
    X(70, 070)                                                                                               \
    X(71, 071)                                                                                               \
    X(72, 072)                                                                                               \
    X(73, 073)                                                                                               \
    X(74, 074)

// Declares the four functions that every type has:
//   new_NAME    allocates a zeroed record, puts its defaults in place and hands it to the caller; exhausted
//               memory is fatal
//   init_NAME   puts the type's defaults in place
//   parse_NAME  fills the record from the blockette's text, which begins with its type (for dh: with the
//               station code at byte 8 of the data record); a field that the text lacks is empty or zero
//   free_NAME   releases the record with all that it owns
#define QUARRY_BLOCKETTE_FUNCTIONS(NAME)                                                                     \
    blk_##NAME##_t* new_##NAME();                                                                            \
    void init_##NAME(blk_##NAME##_t* blk);                                                                   \
    void parse_##NAME(blk_##NAME##_t* blk, std::string_view buff);                                           \
    void free_##NAME(blk_##NAME##_t* ptr);

namespace quarry {

inline constexpr int data_record_type = -1;

} // namespace quarry
