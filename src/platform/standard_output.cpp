#include "platform/standard_output.h"

#include <cerrno>

namespace quarry {

namespace {
int first_error = 0;
}

void write_text(std::FILE* stream, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stream);
}

void flush_output(std::FILE* stream) {
    const bool failed = std::fflush(stream) != 0 || std::ferror(stream) != 0;
    if (failed && stream == stdout && first_error == 0)
        first_error = errno != 0 ? errno : EIO;
}

int output_error() {
    return first_error;
}

} // namespace quarry
