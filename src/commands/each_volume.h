// SPDX-License-Identifier: Apache-2.0
// The loop over the volumes of a command: in threads, output in the order of the arguments.
#pragma once

#include "commands/command_line.h"
#include "quarry/volume.h"
#include "report/ordered_output.h"

#include <functional>

namespace quarry {

// What a command does with a volume: reads it to its end and writes what it has to say. Returns true if the
// volume is sound. It may be called in several threads at once.
using VolumeWork = std::function<bool(VolumeReader& reader, OrderedOutput::Part& out)>;

// Does it for each volume. Reports what cannot be read or holds no SEED, and goes on. `front` is written
// before all the rest. Returns the command's exit status.
ExitStatus for_each_volume(const CommandLine& line, const VolumeWork& work, std::string_view front = {},
                           Framing framing = Framing::hidden);

} // namespace quarry
