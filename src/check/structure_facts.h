// How the logical records of a volume stand to each other, and what its indices say of them.
#pragma once

#include "quarry/volume.h"

#include <string>
#include <vector>

namespace quarry {

struct StructureFacts {
    std::vector<Damage> damages; // the first ones of each kind
};

class StructureGatherer {
public:
    void add(const LogicalHeader&) {}
    void add(const Damage& damage) { facts_.damages.push_back(damage); }
    void add(const ControlBlockette&, const Fields&) {}
    void add(const DataRecord&) {}

    StructureFacts finish() && { return std::move(facts_); }

private:
    StructureFacts facts_ = {};
};

} // namespace quarry
