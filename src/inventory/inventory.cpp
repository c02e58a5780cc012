// SPDX-License-Identifier: Apache-2.0
#include "quarry/inventory.h"

#include "platform/text.h"

#include <array>

namespace quarry {

namespace {

struct KindRow {
    std::string_view name;
    std::string_view text;
};
constexpr std::array kinds{
    KindRow{"key_defined_twice", "is defined twice"},
    KindRow{"key_not_defined", "is not defined"},
    KindRow{"key_not_used", "is not used"},
    KindRow{"station_epochs_overlap", "overlaps another epoch of the station"},
    KindRow{"channel_epochs_overlap", "overlaps another epoch of the channel"},
    KindRow{"no_station", "follows no station"},
    KindRow{"no_channel", "follows no channel"},
};
static_assert(kinds.size() == static_cast<std::size_t>(FindingKind::no_channel) + 1);

std::string in_words(const Place& place) {
    return "blockette " + three_digits(place.blockette) + " at byte " + std::to_string(place.offset);
}

} // namespace

std::string_view name_of(FindingKind kind) {
    return kinds[static_cast<std::size_t>(kind)].name;
}

std::string_view describe(FindingKind kind) {
    return kinds[static_cast<std::size_t>(kind)].text;
}

std::string what_is_wrong(const Finding& finding) {
    std::string text;
    if (finding.dictionary != 0)
        text += "key " + std::to_string(finding.key) + " of " + three_digits(finding.dictionary) + " ";
    text += describe(finding.kind);
    if (!finding.field.empty())
        text += " (" + std::string(finding.field) + ")";
    if (finding.is_changed)
        text += " with different content";
    return text;
}

std::string describe(const Finding& finding) {
    const std::string text = in_words(finding.place) + ": " + what_is_wrong(finding);
    return finding.other.blockette != 0 ? text + ", see " + in_words(finding.other) : text;
}

std::string_view abbreviation(const Inventory& inventory, Integer key, const Place& use) {
    const auto* found = find_definition(inventory.dictionary.abbreviations, key, use.offset);
    return found != nullptr ? std::string_view(found->text) : "";
}

std::string_view unit_name(const Inventory& inventory, Integer key, const Place& use) {
    const auto* found = find_definition(inventory.dictionary.units, key, use.offset);
    return found != nullptr ? std::string_view(found->name) : "";
}

const Stage* find_stage(const ChannelEpoch& epoch, std::int64_t number) {
    for (const Stage& stage : epoch.stages)
        if (stage.number == number)
            return &stage;
    return nullptr;
}

} // namespace quarry
