// SPDX-License-Identifier: Apache-2.0
// A volume as its parts, which tests change one by one before it is written.
//
// Of itself the volume stays consistent: fields name the logical record in which another part stands instead
// of giving its sequence number. "<DEM1>" is that of the station header of DEM1, "<SPAN>" that of the time
// span, "<DAT0>" that of the first data record.
#pragma once

#include "volume_builder.h"

#include <string>
#include <vector>

namespace quarry {

struct Part {
    char letter;        // of its control header
    int type;           // of the blockette; 0 for a blank logical record
    std::string fields; // behind type and length
};

struct Draft {
    int record_size = 1024; // of logical records with headers
    std::vector<Part> headers = {};
    std::vector<RecordFields> records = {};
};

std::string volume_of(const Draft& draft);

// The demonstration volume's.
Draft demonstration_draft();

} // namespace quarry
