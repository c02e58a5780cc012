// SPDX-License-Identifier: Apache-2.0
// The way through the response stages of channels, for the rules about them.
#pragma once

#include "check/response_value.h"
#include "check/rules.h"

#include <algorithm>
#include <cmath>

namespace quarry {

// Visits each channel epoch that the headers describe.
template <class Visit>
void for_each_epoch(const Facts& facts, Visit visit) {
    for_each_row(facts.contents, [&](const ChannelRow& row) {
        if (row.epoch != nullptr)
            visit(row, *row.epoch);
    });
}

// True for a stage of the channel, false for stage 0, the whole channel, and without a number.
inline bool is_numbered(const Stage& stage) {
    return stage.number.value_or(0) > 0;
}

// Visits each numbered stage.
template <class Visit>
void for_each_stage(const Facts& facts, Visit visit) {
    for_each_epoch(facts, [&](const ChannelRow& row, const ChannelEpoch& epoch) {
        for (const Stage& stage : epoch.stages)
            if (is_numbered(stage))
                visit(row, stage);
    });
}

// Visits each response of the kind in a stage, with its place in the channel.
template <class Part, class Visit>
void for_each_part(const Facts& facts, Visit visit) {
    for_each_stage(facts, [&](const ChannelRow& row, const Stage& stage) {
        for (const StageResponse& one : stage.responses)
            if (const Part* part = one.response ? std::get_if<Part>(&one.response->part) : nullptr)
                visit(row, stage, one, *part);
    });
}

// True if a stage of the channel is a polynomial (062): it has no sensitivity then.
inline bool has_polynomial(const ChannelEpoch& epoch) {
    return std::any_of(epoch.stages.begin(), epoch.stages.end(),
                       [](const Stage& stage) { return find_part<Polynomial>(stage) != nullptr; });
}

// Where the stage begins.
inline const Place& place_of(const Stage& stage) {
    return stage.responses.front().place;
}

inline bool are_close(double one, double other, double tolerance) {
    return std::abs(one - other) <= tolerance * std::max(std::abs(one), std::abs(other));
}

} // namespace quarry
