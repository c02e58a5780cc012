// SPDX-License-Identifier: Apache-2.0
#include "quarry/version.h"

namespace quarry {

std::string_view library_version() {
    return QUARRY_VERSION;
}

} // namespace quarry
