// SPDX-License-Identifier: Apache-2.0
// Volumes, stations, channels and comments out of their blockettes: 005, 008, 010, 050, 051, 052, 059.
#pragma once

#include "quarry/inventory.h"

namespace quarry {

VolumeHeader read_volume_header(const Place& place, const Fields& fields);
StationEpoch read_station(const Place& place, const Fields& fields);
ChannelEpoch read_channel(const Place& place, const Fields& fields, std::int64_t station);
Comment read_comment(const Place& place, const Fields& fields);

} // namespace quarry
