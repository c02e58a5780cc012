// SPDX-License-Identifier: Apache-2.0
#include "quarry/version.h"

namespace quarry {

#define QUARRY_QUOTED(NUMBER) #NUMBER
#define QUARRY_NUMBER(NAME) QUARRY_QUOTED(NAME)
static_assert(QUARRY_VERSION == std::string_view(QUARRY_NUMBER(QUARRY_VERSION_MAJOR) "." QUARRY_NUMBER(
                                    QUARRY_VERSION_MINOR) "." QUARRY_NUMBER(QUARRY_VERSION_PATCH)));

std::string_view library_version() {
    return QUARRY_VERSION;
}

} // namespace quarry
