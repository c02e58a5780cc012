// SPDX-License-Identifier: Apache-2.0
// Prints the samples of a volume, a line for each data record and then one for each sample:
//
//     print_samples VOLUME
#include <quarry/samples.h>
#include <quarry/time.h>
#include <quarry/volume.h>

#include <array>
#include <charconv>
#include <iostream>

namespace {

// With as many digits as tell the value from any other.
template <class Number>
void print(const std::vector<Number>& values) {
    std::array<char, 32> text;
    for (const Number value : values) {
        const char* end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
        std::cout.write(text.data(), end - text.data()) << '\n';
    }
}

void print(const std::string& text) {
    std::cout << text << '\n';
}

void print(const quarry::DataRecord& record) {
    std::cout << record.network << '.' << record.station << '.' << record.location << '.' << record.channel
              << ' ' << quarry::IsoTime(record.start).text() << ' ' << record.header.samples << " samples\n";
    const std::optional<quarry::Samples> samples = quarry::samples_of(record);
    if (!samples) {
        std::cerr << "byte " << record.offset << ": no known encoding\n";
        return;
    }
    std::visit([](const auto& values) { print(values); }, samples->values);
    if (samples->missing > 0)
        std::cerr << "byte " << record.offset << ": " << samples->missing << " samples are missing\n";
    if (samples->last_agrees == false)
        std::cerr << "byte " << record.offset << ": the last sample is not the one that the record states\n";
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: " << argv[0] << " VOLUME\n";
        return 2;
    }
    quarry::VolumeReader reader = quarry::VolumeReader::of_path(argv[1]);
    while (const quarry::Item* item = reader.next()) {
        if (const auto* record = std::get_if<quarry::DataRecord>(item))
            print(*record);
        else if (const auto* damage = std::get_if<quarry::Damage>(item))
            std::cerr << quarry::describe(*damage) << '\n';
    }
    if (reader.error().kind != quarry::ByteError::Kind::none) {
        std::cerr << argv[1] << ": " << quarry::describe(reader.error()) << '\n';
        return 2;
    }
    return std::cout.flush() ? 0 : 2;
}
