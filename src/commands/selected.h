// Which headers and data a selection takes.
#pragma once

#include "commands/selection.h"
#include "inventory/contents.h"

#include <vector>

namespace quarry {

bool takes(const Selection& selection, const DataRecord& record);

// A start or an end that is missing or is not a time leaves the span open on its side.
bool takes_span(const Selection& selection, const Moment& start, const Moment& end);

// The channel rows that it takes. Data in them have been selected record by record.
std::vector<ChannelRow> selected_rows(const Contents& contents, const Selection& selection);

} // namespace quarry
