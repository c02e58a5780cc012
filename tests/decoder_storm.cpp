// Damaged data areas through every decoder: decoder_storm ROUNDS [SEED]
//
// Every round decodes one data area, noise or a record that was sound before it was cut and damaged, with
// a count of samples that may be anything the decoder has to bear, and checks what the decoders promise. The
// rounds are the same for the same seed.

#include "decode/formats.h"
#include "decoder_promises.h"
#include "platform/text.h"
#include "quarry/decoders.h"
#include "sample_encoders.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace {

class Random {
public:
    explicit Random(unsigned long seed) : engine_(seed) {}

    std::int32_t below(std::int32_t limit) {
        return static_cast<std::int32_t>(engine_() % static_cast<std::uint64_t>(std::max(limit, 1)));
    }
    bool one_in(std::int32_t rounds) { return below(rounds) == 0; }

    std::string noise(std::int32_t size) {
        std::string bytes;
        for (std::uint64_t word = 0; size > 0; --size, word >>= 8) {
            if (size % 8 == 0 || bytes.empty())
                word = engine_();
            bytes.push_back(static_cast<char>(word & 0xFF));
        }
        return bytes;
    }

private:
    std::mt19937_64 engine_;
};

// Sound records of every encoder and of many widths.
std::vector<std::string> sound_areas() {
    std::vector<std::string> areas;
    for (std::uint32_t bits = 2; bits <= 28; ++bits)
        for (const std::size_t size : {64U, 192U, 640U}) {
            const std::vector<std::int32_t> walk = quarry::random_walk(1500, static_cast<int>(bits), bits);
            const quarry::Order order = bits % 2 == 0 ? quarry::Order::big : quarry::Order::little;
            areas.push_back(quarry::encode_steim1(walk, size, order).bytes);
            areas.push_back(quarry::encode_steim2(walk, size, order).bytes);
            areas.push_back(
                quarry::encode_usnsn(walk, size == 192 && bits % 4 == 0 ? 4096 : size, order).bytes);
        }
    return areas;
}

std::string damaged(std::string area, Random* random) {
    if (random->one_in(3))
        area.resize(static_cast<std::size_t>(random->below(static_cast<std::int32_t>(area.size()) + 1)));
    for (std::int32_t changes = random->below(6); changes > 0 && !area.empty(); --changes)
        area[static_cast<std::size_t>(random->below(static_cast<std::int32_t>(area.size())))] =
            static_cast<char>(random->below(256));
    return area;
}

std::string data_area(Random* random) {
    static const std::vector<std::string> sound = sound_areas();
    if (random->one_in(2))
        return damaged(
            sound[static_cast<std::size_t>(random->below(static_cast<std::int32_t>(sound.size())))], random);
    return random->noise(random->below(random->one_in(50) ? 4100 : 400));
}

std::int32_t any_count(Random* random) {
    switch (random->below(500)) {
    case 0:
        return INT_MIN;
    case 1:
        return 100000;
    case 2:
        return -random->below(70000);
    default:
        return random->below(random->one_in(10) ? 4000 : 300);
    }
}

// Any count of samples.
bool decode_bounded(Random* random) {
    const std::string area = data_area(random);
    const bool usnsn = random->one_in(3);
    std::int32_t nsamples = any_count(random);
    std::int32_t room = INT32_MAX;
    if (usnsn && random->one_in(200)) {
        nsamples = INT_MAX;
        room = 1 << 16; // more than its count of samples can tell
    }
    const quarry::Decoder steim = random->one_in(2) ? quarry::decode_steim : quarry::decode_steim2;
    return quarry::keeps_to_its_bytes(usnsn ? quarry::decode_usnsn : steim, area, nsamples, random->below(2),
                                      room);
}

// A count that the bytes hold.
bool decode_trusting(Random* random) {
    const quarry::SeedFormat& format =
        quarry::seed_format_map[static_cast<std::size_t>(random->below(quarry::seed_format_count))];
    if (format.raw_size == 0)
        return true;
    const std::string area = data_area(random);
    const auto nbytes = static_cast<std::int32_t>(area.size());
    std::int32_t nsamples = random->below(nbytes / format.raw_size + 1);
    if (random->one_in(10))
        nsamples = nbytes / format.raw_size;
    if (random->one_in(100))
        nsamples = -nsamples;
    return quarry::keeps_to_its_count(format, area, nsamples, random->below(2));
}

bool decode_header(Random* random) {
    const std::string area = data_area(random);
    quarry::blk_dh_t dh{};
    quarry::copy_text(dh.stn_id, "STORM");
    quarry::copy_text(dh.format, "noise");
    dh.type = random->below(quarry::seed_format_count + 3) - 1;
    dh.byteswap = -random->below(2);
    dh.nsamps = random->one_in(100) ? random->below(65536) - 32768 : random->below(300);
    dh.beg_data = random->below(300);
    dh.length = dh.beg_data + static_cast<std::int32_t>(area.size());
    if (random->one_in(20)) {
        dh.beg_data = random->one_in(2) ? -1 - random->below(32768) : 32767;
        dh.length = random->below(4096);
    }
    return quarry::decodes_header(dh, area);
}

// Complaints come by the million. Only the stream is turned away: sanitizers report to the descriptor.
bool silence_complaints() {
    quarry::dcmpbr();
    stderr = std::fopen("/dev/null", "w");
    return stderr != nullptr;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s ROUNDS [SEED]\n", argv[0]);
        return 1;
    }
    const long rounds = std::atol(argv[1]);
    const unsigned long seed = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 1;
    if (!silence_complaints())
        return 1;
    constexpr std::array storms{decode_bounded, decode_bounded, decode_trusting, decode_header};
    Random random(seed);
    for (long round = 0; round < rounds; ++round)
        if (!storms[static_cast<std::size_t>(random.below(4))](&random)) {
            std::printf("in round %ld of seed %lu\n", round, seed);
            return 1;
        }
    std::printf("%ld damaged data areas decoded\n", rounds);
    return 0;
}
