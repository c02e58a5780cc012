// SPDX-License-Identifier: Apache-2.0
// Damaged data areas through every decoder: decoder_storm ROUNDS [SEED]
//
// Every round gives the fuzz target of the decoders one data area, noise or a record that was sound before it
// was cut and damaged, with a count of samples that may be anything the decoder has to bear. The target
// aborts at a broken promise. The rounds are the same for the same seed.

#include "damaged_volumes.h"
#include "decode/formats.h"
#include "decoder_promises.h"
#include "fuzz.h"
#include "quarry/decoders.h"
#include "sample_encoders.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

using namespace quarry;

bool one_in(Random* random, std::size_t rounds) {
    return below(random, rounds) == 0;
}

// Sound records of every encoder and of many widths.
std::vector<std::string> sound_areas() {
    std::vector<std::string> areas;
    for (std::uint32_t bits = 2; bits <= 28; ++bits)
        for (const std::size_t size : {64U, 192U, 640U}) {
            const std::vector<std::int32_t> walk = random_walk(1500, static_cast<int>(bits), bits);
            const Order order = bits % 2 == 0 ? Order::big : Order::little;
            areas.push_back(encode_steim1(walk, size, order).bytes);
            areas.push_back(encode_steim2(walk, size, order).bytes);
            areas.push_back(encode_usnsn(walk, size == 192 && bits % 4 == 0 ? 4096 : size, order).bytes);
        }
    return areas;
}

std::string data_area(Random* random) {
    static const std::vector<std::string> sound = sound_areas();
    if (one_in(random, 2))
        return noise(random, below(random, one_in(random, 50) ? 4100 : 400));
    std::string area = sound[below(random, sound.size())];
    if (one_in(random, 3))
        area.resize(below(random, area.size() + 1));
    for (std::size_t changes = below(random, 6); changes > 0 && !area.empty(); --changes)
        area[below(random, area.size())] = static_cast<char>(below(random, 256));
    return area;
}

// The target takes those from 0 to 4095 and other multiples of 8 as they are.
std::int32_t any_count(Random* random) {
    switch (below(random, 500)) {
    case 0:
        return INT_MIN;
    case 1:
        return 100000;
    case 2:
        return -8 * static_cast<std::int32_t>(below(random, 9000));
    default:
        return static_cast<std::int32_t>(below(random, one_in(random, 10) ? 4000 : 300));
    }
}

void decode(Random* random) {
    constexpr std::size_t compressed[] = {format_steim1, format_steim2, format_usnsn};
    const std::size_t type = one_in(random, 2) ? compressed[below(random, 3)] : below(random, 20);
    std::string input(6, '\0'); // how to decode, the word order, the count of samples
    input[0] = static_cast<char>(4 * type + below(random, 4));
    input[1] = static_cast<char>(below(random, 2));
    const std::int32_t count = any_count(random);
    std::memcpy(&input[2], &count, sizeof count);
    input += data_area(random);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s ROUNDS [SEED]\n", argv[0]);
        return 1;
    }
    std::FILE* const report = stdout; // the target turns the standard streams away
    const long rounds = std::atol(argv[1]);
    Random random(argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 1);
    for (long round = 0; round < rounds; ++round) {
        decode(&random);
        if (round % 1000 == 0) // more samples than the record itself can count
            fuzz::promise(keeps_to_its_bytes(decode_usnsn, data_area(&random), INT_MAX, 0, 1 << 16), "USNSN");
    }
    std::fprintf(report, "%ld damaged data areas decoded\n", rounds);
    return 0;
}
