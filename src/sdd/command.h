// SPDX-License-Identifier: Apache-2.0
// The command that lists a volume: its options, the parameter file and the database; the work is sdd's.
#pragma once

namespace quarry {

// Lets std::terminate report exhausted memory: where not even an exception can be thrown, the runtime library
// calls it.
void report_exhausted_memory();

// Lists the volume that the arguments of the program name. Returns the exit status.
int listing_command(int argc, char** argv);

} // namespace quarry
