// SPDX-License-Identifier: Apache-2.0
#include "inventory/overlaps.h"

#include "inventory/field_values.h"

#include <algorithm>
#include <map>
#include <utility>

namespace quarry {

namespace {

Integer subchannel(const StationEpoch&) {
    return std::nullopt;
}
Integer subchannel(const ChannelEpoch& epoch) {
    return epoch.subchannel;
}

// The number of the volume that the place is in.
std::ptrdiff_t volume_of(const Inventory& inventory, const Place& place) {
    return std::upper_bound(
               inventory.volumes.begin(), inventory.volumes.end(), place.offset,
               [](std::int64_t offset, const VolumeHeader& volume) { return offset < volume.place.offset; }) -
           inventory.volumes.begin();
}

template <class Epoch>
void add_overlaps_of(const std::vector<Epoch>& epochs, FindingKind kind, Inventory* inventory) {
    // Of those so far, by volume and subchannel: the one that ends last.
    std::map<std::pair<std::ptrdiff_t, Integer>, const Epoch*> latest;
    for (const Epoch& epoch : epochs) {
        const auto [place, is_first] =
            latest.try_emplace({volume_of(*inventory, epoch.place), subchannel(epoch)}, &epoch);
        const Epoch*& before = place->second;
        if (is_first)
            continue;
        if (span_of(epoch).start < span_of(*before).end) {
            const bool is_later = epoch.place.offset > before->place.offset;
            inventory->findings.push_back(
                {kind, is_later ? epoch.place : before->place, is_later ? before->place : epoch.place, {}});
        }
        if (span_of(epoch).end > span_of(*before).end)
            before = &epoch;
    }
}

} // namespace

void add_overlaps(Inventory* inventory) {
    for (const Network& network : inventory->networks)
        for (const Station& station : network.stations) {
            add_overlaps_of(station.epochs, FindingKind::station_epochs_overlap, inventory);
            for (const Channel& channel : station.channels)
                add_overlaps_of(channel.epochs, FindingKind::channel_epochs_overlap, inventory);
        }
}

} // namespace quarry
