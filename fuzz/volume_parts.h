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

// What can be told of the volume, however damaged: what is no blockette is a part as it is. `record_size`
// becomes that of the control headers.
std::vector<VolumePart> take_apart(std::string_view volume, int* record_size);

// The parts in logical records of the given size; data records keep their own.
std::string put_together(const std::vector<VolumePart>& parts, int record_size);

} // namespace quarry::fuzz
