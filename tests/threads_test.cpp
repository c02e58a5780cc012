// SPDX-License-Identifier: Apache-2.0
// Readers in many threads: threads_test [FILE...]
//
// Eight threads read all test volumes and the files with all that the library makes of them, each beginning
// with another one; what they find is what one thread finds. Built with -fsanitize=thread it also shows that
// they share nothing.

#include "test_volumes.h"

#include "quarry/data_found.h"
#include "quarry/inventory.h"
#include "quarry/samples.h"
#include "quarry/time.h"

#include <cstdio>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>
#include <thread>

namespace {

using quarry::VolumeReader;

std::string text_of(const quarry::Fields& fields) {
    std::ostringstream text;
    text << fields.type << ' ' << fields.fields.size() << ' ' << fields.problems.size();
    for (const quarry::Field& field : fields.fields)
        text << ' ' << field.spec->name << '=' << field.raw;
    return text.str();
}

std::string text_of(const quarry::DataRecord& record) {
    std::ostringstream text;
    text << record.offset << ' ' << record.length << ' ' << quarry::IsoTime(record.start).text();
    for (const quarry::DataBlocketteExtent& blockette : record.blockettes)
        text << text_of(quarry::decode_blockette(blockette.type, quarry::text_of(record, blockette),
                                                 record.header_order));
    if (const auto samples = quarry::samples_of(record))
        std::visit(
            [&](const auto& values) {
                for (const auto value : values)
                    text << ' ' << value;
            },
            samples->values);
    return text.str();
}

std::string text_of(const quarry::Inventory& inventory) {
    std::ostringstream text;
    for (const quarry::Network& network : inventory.networks)
        for (const quarry::Station& station : network.stations)
            for (const quarry::Channel& channel : station.channels)
                for (const quarry::ChannelEpoch& epoch : channel.epochs)
                    text << network.code << station.code << channel.code << epoch.start.text
                         << epoch.stages.size()
                         << quarry::abbreviation(inventory, epoch.instrument, epoch.place);
    for (const quarry::Finding& finding : inventory.findings)
        text << quarry::describe(finding);
    return text.str();
}

// All that is in the volume, by its hash.
std::size_t digest_of(const std::string& volume) {
    std::string text;
    quarry::DataFound found;
    VolumeReader reader = VolumeReader::of_memory(volume, "memory", quarry::Framing::shown);
    while (const quarry::Item* item = reader.next()) {
        if (const auto* blockette = std::get_if<quarry::ControlBlockette>(item)) {
            text += text_of(quarry::decode_blockette(blockette->type, blockette->text));
        } else if (const auto* record = std::get_if<quarry::DataRecord>(item)) {
            text += text_of(*record);
            found.add(*record);
        } else if (const auto* damage = std::get_if<quarry::Damage>(item)) {
            text += quarry::describe(*damage);
        }
    }
    for (const quarry::ChannelData& channel : found.channels())
        text += channel.station + channel.channel + std::to_string(channel.data.front().samples);
    text += std::to_string(reader.totals().bytes());
    VolumeReader again = VolumeReader::of_memory(volume, "memory");
    return std::hash<std::string>()(text + text_of(quarry::read_inventory(&again)));
}

} // namespace

int main(int argc, char** argv) {
    std::vector<std::string> volumes;
    for (auto& [name, bytes] : quarry::test_volumes())
        volumes.push_back(std::move(bytes));
    for (int i = 1; i < argc; ++i) {
        std::ifstream file(argv[i], std::ios::binary);
        volumes.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }

    constexpr std::size_t thread_count = 8;
    std::vector<std::vector<std::size_t>> digests(thread_count, std::vector<std::size_t>(volumes.size()));
    {
        std::vector<std::jthread> threads;
        for (std::size_t t = 0; t < thread_count; ++t)
            threads.emplace_back([&, t] {
                for (std::size_t i = 0; i < volumes.size(); ++i) {
                    const std::size_t place = (i + t) % volumes.size();
                    digests[t][place] = digest_of(volumes[place]);
                }
            });
    }
    std::size_t different = 0;
    for (std::size_t i = 0; i < volumes.size(); ++i)
        for (const auto& of_thread : digests)
            different += of_thread[i] != digest_of(volumes[i]) ? 1U : 0U;
    std::printf("%zu volumes in %zu threads, %zu results differ from those of one thread\n", volumes.size(),
                thread_count, different);
    return different == 0 ? 0 : 1;
}
