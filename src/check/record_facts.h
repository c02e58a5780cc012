// What is notable about the data records of each channel.
#pragma once

#include "quarry/volume.h"

#include <vector>

namespace quarry {

struct ChannelRecords {};

class RecordGatherer {
public:
    explicit RecordGatherer(bool) {}

    void add(const DataRecord&) {}

    std::vector<ChannelRecords> finish() && { return {}; }
};

} // namespace quarry
