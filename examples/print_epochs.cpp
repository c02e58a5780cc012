// SPDX-License-Identifier: Apache-2.0
// Prints the channel epochs of a volume, the stages of their responses, and what does not fit together:
//
//     print_epochs VOLUME
#include <quarry/inventory.h>

#include <array>
#include <iostream>

namespace {

constexpr std::array<const char*, std::variant_size_v<quarry::ResponsePart>> part_names{
    "poles and zeros", "coefficients", "list", "generic response", "decimation", "gain", "FIR", "polynomial"};

std::string size_of(const quarry::ResponsePart& part) {
    if (const auto* roots = std::get_if<quarry::PolesAndZeros>(&part))
        return std::to_string(roots->zeros.size()) + " zeros, " + std::to_string(roots->poles.size()) +
               " poles";
    if (const auto* fir = std::get_if<quarry::Fir>(&part))
        return std::to_string(fir->coefficients.size()) + " coefficients, symmetry " + fir->symmetry;
    if (const auto* both = std::get_if<quarry::Coefficients>(&part))
        return std::to_string(both->numerators.size()) + " numerators, " +
               std::to_string(both->denominators.size()) + " denominators";
    if (const auto* gain = std::get_if<quarry::Gain>(&part))
        return gain->value ? std::to_string(*gain->value) : "not a number";
    if (const auto* decimation = std::get_if<quarry::Decimation>(&part))
        return std::to_string(decimation->input_rate.value_or(0)) + " by " +
               std::to_string(decimation->factor.value_or(0));
    return "";
}

void print(const quarry::Inventory& inventory, const quarry::Stage& stage) {
    for (const quarry::StageResponse& use : stage.responses) {
        std::cout << "  stage " << stage.number.value_or(-1) << ", byte " << use.place.offset << ": ";
        if (use.response == nullptr) {
            std::cout << "key " << use.key.value_or(-1) << " is not defined\n";
            continue;
        }
        const quarry::Response& response = *use.response;
        std::cout << part_names[response.part.index()] << ' ' << size_of(response.part);
        if (response.input_units)
            std::cout << ", " << quarry::unit_name(inventory, response.input_units, response.place) << " to "
                      << quarry::unit_name(inventory, response.output_units, response.place);
        std::cout << " (" << response.place.blockette << " at " << response.place.offset << ", "
                  << response.continued.size() << " continued)\n";
    }
}

void print(const quarry::Inventory& inventory, const std::string& station, const quarry::Channel& channel) {
    for (const quarry::ChannelEpoch& epoch : channel.epochs) {
        std::cout << station << '.' << channel.location << '.' << channel.code << ' ' << epoch.start.text
                  << " - " << epoch.end.text << ", " << epoch.rate.value_or(0) << " Hz, "
                  << quarry::abbreviation(inventory, epoch.instrument, epoch.place) << '\n';
        for (const quarry::Stage& stage : epoch.stages)
            print(inventory, stage);
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: " << argv[0] << " VOLUME\n";
        return 2;
    }
    quarry::VolumeReader reader = quarry::VolumeReader::of_path(argv[1]);
    const quarry::Inventory inventory = quarry::read_inventory(&reader);
    for (const quarry::Network& network : inventory.networks)
        for (const quarry::Station& station : network.stations)
            for (const quarry::Channel& channel : station.channels)
                print(inventory, network.code + '.' + station.code, channel);
    for (const quarry::Finding& finding : inventory.findings)
        std::cout << quarry::describe(finding) << '\n';
    if (reader.error().kind == quarry::ByteError::Kind::none)
        return 0;
    std::cerr << argv[1] << ": " << quarry::describe(reader.error()) << '\n';
    return 2;
}
