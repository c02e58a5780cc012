// SPDX-License-Identifier: Apache-2.0
// How a fatal fault ends the process. This stands in a module of its own, so that a program which must go on
// (one that lists many damaged volumes) can link another end_process in its place.
#pragma once

namespace quarry {

// Exits with the status.
[[noreturn]] void end_process(int status);

} // namespace quarry
