// SPDX-License-Identifier: Apache-2.0
#include "listing/element_lines.h"

#include <array>

namespace quarry {

std::size_t filled_bytes(std::string_view bytes) {
    static constexpr std::array<char, 512> zeros{};
    while (bytes.ends_with(std::string_view(zeros.data(), zeros.size())))
        bytes.remove_suffix(zeros.size());
    return bytes.find_last_not_of('\0') + 1; // 0 where none is found
}

} // namespace quarry
