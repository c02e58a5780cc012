// SPDX-License-Identifier: Apache-2.0
// Which headers and data a selection takes.
#pragma once

#include "check/findings.h"
#include "commands/selection.h"
#include "inventory/contents.h"

#include <functional>

namespace quarry {

bool takes(const Selection& selection, const DataRecord& record);

// A start or an end that is missing or is not a time leaves the span open on its side.
bool takes_span(const Selection& selection, const Moment& start, const Moment& end);

bool takes(const Selection& selection, const Subject& subject);

// Visits the channel rows that it takes. Data in them have been selected record by record.
void for_each_row(const Contents& contents, const Selection& selection,
                  const std::function<void(const ChannelRow& row)>& visit);

} // namespace quarry
