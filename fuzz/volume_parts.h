// SPDX-License-Identifier: Apache-2.0
// A volume taken apart into its blockettes and data records, and put together again, for the mutator and the
// seeds of the reader.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quarry::fuzz {

struct VolumePart {
    char letter;       // of the logical record that it begins in
    std::string bytes; // a blockette, or a whole data record
};

bool is_data(const VolumePart& part);

// The parts of a volume, which may be damaged: bytes that are not a blockette are a part as they stand.
// `record_size` becomes the length of the logical records of the control headers.
std::vector<VolumePart> take_apart(std::string_view volume, int* record_size);

// The parts in logical records of the given size; data records keep their own.
std::string put_together(const std::vector<VolumePart>& parts, int record_size);

} // namespace quarry::fuzz
