// SPDX-License-Identifier: Apache-2.0
// The least that a summary of control headers costs: their blockettes are put together over the logical
// records, each copied once, and counted.
//
// Prints for each type its number, how many there are and their bytes.
#include "volume_records.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::size_t longest_blockette = 9999;
constexpr std::size_t type_and_length_size = 7;

struct Count {
    long number;
    long bytes;
};

std::array<Count, 1000> counts{};

class Assembler {
public:
    // Takes what a control record holds behind its header.
    void take(std::string_view content) {
        content.remove_prefix(append(content));
        while (content.size() >= type_and_length_size && content[0] != ' ') {
            type_ = floors::digits(content.substr(0, 3));
            missing_ = static_cast<std::size_t>(floors::digits(content.substr(3, 4)));
            content.remove_prefix(append(content));
        }
    }

private:
    // Copies what belongs to the blockette in hand; returns how much that is.
    std::size_t append(std::string_view content) {
        if (missing_ == 0)
            return 0;
        const std::size_t size = std::min(missing_, content.size());
        std::memcpy(blockette_.data() + held_, content.data(), size);
        held_ += size;
        missing_ -= size;
        if (missing_ == 0) {
            floors::use(blockette_.data());
            Count& count = counts[static_cast<std::size_t>(type_)];
            count.number += 1;
            count.bytes += static_cast<long>(held_);
            held_ = 0;
        }
        return size;
    }

    std::vector<char> blockette_ = std::vector<char>(longest_blockette);
    std::size_t held_ = 0;
    std::size_t missing_ = 0;
    int type_ = 0;
};

} // namespace

int main(int argc, char** argv) {
    const std::size_t size = floors::record_size_argument(argc, argv);
    Assembler assembler;
    floors::for_each_record(argv[1], size, [&](const char* record) {
        if (!floors::is_data(record))
            assembler.take({record + floors::logical_header_size, size - floors::logical_header_size});
    });
    for (std::size_t type = 0; type < counts.size(); ++type)
        if (counts[type].number != 0)
            std::printf("%03zu %ld %ld\n", type, counts[type].number, counts[type].bytes);
    return 0;
}
