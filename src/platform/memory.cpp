#include "platform/memory.h"

#include "platform/message_log.h"

#include <cerrno>

namespace quarry {

void out_of_memory(AllocationSite site, unsigned long count, const char* what) {
    errno = ENOMEM;
    log_die(1, "Out of memory in %s at line %d of '%s'\n\tCan't malloc %lu bytes for %s\n", site.function,
            site.line, site.module, count, what);
}

} // namespace quarry
