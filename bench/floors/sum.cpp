// SPDX-License-Identifier: Apache-2.0
// The least that totals of the channels cost: each data record is read and copied once, its fixed header is
// decoded, and samples, records, first and last start are kept for each channel.
//
// Prints for each channel its codes, records, samples, first and last start (year, day, time of day in
// 0.0001 s).
#include "volume_records.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::size_t codes_size = 12; // station, location, channel, network

struct Header {
    std::array<char, codes_size> codes;
    std::uint64_t start; // year, day and 0.0001 s of the day, in that order of weight
    unsigned samples;
    unsigned rate_factor, rate_multiplier;
    unsigned activity, io_flags, quality, blockettes;
    std::uint32_t time_correction;
    unsigned data, first_blockette;
};

constexpr std::uint64_t ticks_a_day = 864'000'000;

Header decode(const char* record) {
    Header header;
    std::memcpy(header.codes.data(), record + 8, codes_size);
    const std::uint64_t seconds =
        (floors::one(record + 24) * 60 + floors::one(record + 25)) * 60 + floors::one(record + 26);
    header.start = (floors::two(record + 20) * 1000ULL + floors::two(record + 22)) * ticks_a_day +
                   seconds * 10'000 + floors::two(record + 28);
    header.samples = floors::two(record + 30);
    header.rate_factor = floors::two(record + 32);
    header.rate_multiplier = floors::two(record + 34);
    header.activity = floors::one(record + 36);
    header.io_flags = floors::one(record + 37);
    header.quality = floors::one(record + 38);
    header.blockettes = floors::one(record + 39);
    header.time_correction = floors::four(record + 40);
    header.data = floors::two(record + 44);
    header.first_blockette = floors::two(record + 46);
    return header;
}

struct Totals {
    std::array<char, codes_size> codes;
    long records;
    long samples;
    std::uint64_t first, last;
};

// Channels by their codes; more places than any volume of the benchmark has channels.
constexpr std::size_t places = 4096;
std::vector<Totals> totals(places);

Totals& totals_of(const std::array<char, codes_size>& codes) {
    std::uint64_t head;
    std::uint32_t tail;
    std::memcpy(&head, codes.data(), sizeof head);
    std::memcpy(&tail, codes.data() + sizeof head, sizeof tail);
    std::size_t place = (head ^ tail) * 0x9E3779B97F4A7C15 >> 52;
    while (totals[place].records != 0 && totals[place].codes != codes)
        place = (place + 1) % places;
    return totals[place];
}

void add(const Header& header) {
    Totals& channel = totals_of(header.codes);
    if (channel.records == 0)
        channel = {header.codes, 0, 0, header.start, header.start};
    channel.records += 1;
    channel.samples += header.samples;
    channel.first = std::min(channel.first, header.start);
    channel.last = std::max(channel.last, header.start);
}

} // namespace

int main(int argc, char** argv) {
    const std::size_t size = floors::record_size_argument(argc, argv);
    std::vector<char> copy(size);
    floors::for_each_record(argv[1], size, [&](const char* record) {
        if (!floors::is_data(record))
            return;
        std::memcpy(copy.data(), record, size);
        const Header header = decode(copy.data());
        floors::use(&header);
        add(header);
    });
    for (const Totals& channel : totals)
        if (channel.records != 0)
            std::printf("%.12s|%ld|%ld|%lu|%lu\n", channel.codes.data(), channel.records, channel.samples,
                        channel.first, channel.last);
    return 0;
}
