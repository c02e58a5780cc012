// SPDX-License-Identifier: Apache-2.0
#include "fuzz.h"

#include "platform/end_process.h"
#include "platform/message_log.h"

#include <cstdio>
#include <cstdlib>

namespace quarry {

// In the place of the library's own.
void end_process(int status) {
    throw fuzz::ProcessEnd{status};
}

namespace fuzz {

namespace {

// Only the streams are turned away: sanitizers report to the descriptor.
bool silence_streams() {
    stdout = std::fopen("/dev/null", "w");
    stderr = std::fopen("/dev/null", "w");
    return stdout != nullptr && stderr != nullptr;
}

} // namespace

void run_to_its_end(void (*body)(std::string_view), std::string_view input) {
    static const bool silent = silence_streams();
    promise(silent, "the standard streams go nowhere");
    try {
        body(input);
    } catch (const ProcessEnd& end) {
        promise(end.status == EXIT_FAILURE, "a fatal message ends with status 1");
    }
    log_flush(1);
}

void promise(bool kept, const char* what) {
    if (kept)
        return;
    std::FILE* terminal = fdopen(2, "w");
    std::fprintf(terminal, "broken promise: %s\n", what);
    std::fflush(terminal);
    std::abort();
}

} // namespace fuzz

} // namespace quarry
