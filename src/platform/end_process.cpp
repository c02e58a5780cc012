// SPDX-License-Identifier: Apache-2.0
#include "platform/end_process.h"

#include <cstdlib>

namespace quarry {

void end_process(int status) {
    std::exit(status);
}

} // namespace quarry
