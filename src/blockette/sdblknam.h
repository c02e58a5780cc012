// SPDX-License-Identifier: Apache-2.0
// What the listing knows of the catalogue (decode/catalogue.h).
#pragma once

#include <span>

namespace quarry {

struct Sdinfo {
    int id;    // blockette type, -1 for data records
    int minsz; // smallest length in bytes
    const char* name;
};

// The rows in order of type, and their count. Some names end in a blank, which shows in the listing.
extern const std::span<const Sdinfo> sdinfo;
extern const int Nseed;

// The name given for a type that is not in the catalogue.
extern const char* const Unknown;

// Name and smallest length of a type; one that is not in the catalogue leaves a note and gives Unknown and 0.
const char* sdblknam(int type);
int sdminsz(int type);

} // namespace quarry
