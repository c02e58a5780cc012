// SPDX-License-Identifier: Apache-2.0
// The objects of assembled headers that quarry json writes: volumes, station epochs, and channel epochs with
// their responses and the data found.
#pragma once

#include "commands/json_lines.h"
#include "commands/selection.h"
#include "inventory/contents.h"

#include <functional>

namespace quarry {

// A default header is that of a volume without one.
void write_volume(const VolumeHeader& header, JsonLines* lines);

// `after_line` is called after each line.
void write_stations(const Contents& contents, const Selection& selection, JsonLines* lines,
                    const std::function<void()>& after_line);
void write_findings(const Contents& contents, JsonLines* lines, const std::function<void()>& after_line);
void write_channels(const Contents& contents, const Selection& selection, JsonLines* lines,
                    const std::function<void()>& after_line);

} // namespace quarry
