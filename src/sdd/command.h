// The command that lists a volume: its options, the parameter file and the database; the work is sdd's.
#pragma once

namespace quarry {

// Lists the volume that the arguments of the program name. Returns the exit status.
int listing_command(int argc, char** argv);

} // namespace quarry
