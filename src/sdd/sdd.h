// SPDX-License-Identifier: Apache-2.0
// The volume loop: every blockette and data record of an input on its line, and a summary of each tape file.
#pragma once

namespace quarry {

struct read_handle_t;

// Lists the named input (standard input for an empty name or "-") on standard output, one pass for each tape
// file until a pass delivers nothing or, with option -f, after one. With `summary_only` non-zero only the
// summaries are printed. Returns 0.
int sdd(const char* input_name, int summary_only);

// The same for an open handle, whose hooks it sets; the file numbers go on from Tapefile.
void list_volume(read_handle_t* handle, int summary_only);

// Does nothing and returns 0: stations keep their names. Kept for the interface, nothing calls it.
int rename_station(const char* net, const char* sta);

// Ends the process with the system's error text if a flush of standard output has failed; quietly if its
// reader has gone away.
void check_standard_output();

} // namespace quarry
