// SPDX-License-Identifier: Apache-2.0
#include "platform/memory.h"

#include "platform/message_log.h"

#include <array>
#include <cstdio>

namespace quarry {

void out_of_memory(AllocationSite site, unsigned long count, const char* what) {
    static std::array<char, 512> text;
    std::snprintf(text.data(), text.size(),
                  "Out of memory in %s at line %d of '%s'\n\tCan't malloc %lu bytes for %s", site.function,
                  site.line, site.module, count, what);
    log_die_without_memory(text.data());
}

} // namespace quarry
