// SPDX-License-Identifier: Apache-2.0
// What one damaged byte of a data record costs: which other records of the volume are lost.

#include "damaged_volumes.h"
#include "support.h"
#include "test_volumes.h"

#include "quarry/volume.h"

#include <algorithm>

namespace quarry {
namespace {

std::vector<Extent> data_records(const std::string& volume) {
    std::vector<Extent> records;
    VolumeReader reader = VolumeReader::of_memory(volume, "volume");
    while (const Item* item = reader.next())
        if (const auto* record = std::get_if<DataRecord>(item))
            records.push_back({record->offset, static_cast<std::int64_t>(record->length)});
    return records;
}

struct Cost {
    std::int64_t mutations = 0;
    std::int64_t touched = 0; // times that the touched record was not found with its length
    std::int64_t others = 0;  // other records lost
    std::int64_t most = 0;    // of them by one mutation
};

void damage(const std::string& volume, const std::vector<Extent>& records, const Extent& touched,
            std::size_t at, char byte, Cost* cost) {
    std::string mutation = volume;
    mutation[at] = byte;
    const std::vector<Extent> found = data_records(mutation);
    const auto is_lost = [&](const Extent& record) { return std::ranges::count(found, record) == 0; };
    const std::int64_t others = std::ranges::count_if(records, is_lost) - (is_lost(touched) ? 1 : 0);
    EXPECT_TRUE(others == 0 || is_lost(touched)) << "byte " << at;
    ++cost->mutations;
    cost->touched += is_lost(touched) ? 1 : 0;
    cost->others += others;
    cost->most = std::max(cost->most, others);
}

// Each byte of the header and of the blockettes, and some of the data.
Cost cost_of_bytes(const std::string& volume, std::uint64_t seed) {
    constexpr std::size_t head = 64;
    constexpr std::size_t rounds = 8;
    Random random(seed);
    Cost cost;
    const std::vector<Extent> records = data_records(volume);
    for (const Extent& record : records)
        for (std::size_t i = 0; i < rounds * (head + 8); ++i) {
            const std::size_t within = i / rounds;
            const auto room = volume.size() - static_cast<std::size_t>(record.offset);
            const std::size_t at =
                static_cast<std::size_t>(record.offset) +
                (within < head ? within
                               : below(&random, std::min(room, static_cast<std::size_t>(record.length))));
            // Small numbers are other lengths.
            const char byte = i % 2 == 0 ? static_cast<char>(below(&random, 24)) : damaging_byte(&random);
            if (byte != volume[at])
                damage(volume, records, record, at, byte, &cost);
        }
    return cost;
}

// Others are lost only with the touched record, and at most one. Most of them come before a record that is
// damaged and have no length of their own, so that the next sound record tells it.
TEST(LostRecords, OfOneDamagedByte) {
    const std::map<std::string, std::int64_t> largest_loss{
        {"garbage-between", 146}, {"mixed-lengths", 136}, {"no-1000", 1014}};
    for (const auto& [name, volume] : test_volumes()) {
        if (name.starts_with("damaged"))
            continue;
        SCOPED_TRACE(name);
        const Cost cost = cost_of_bytes(volume, 7);
        std::printf("%s: %ld bytes damaged, %ld times the record lost, %ld others lost\n", name.c_str(),
                    cost.mutations, cost.touched, cost.others);
        EXPECT_LE(cost.most, 1);
        EXPECT_LE(cost.others, largest_loss.contains(name) ? largest_loss.at(name) : 0);
        EXPECT_GT(cost.mutations, 500);
    }
}

} // namespace
} // namespace quarry
