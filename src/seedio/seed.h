// SPDX-License-Identifier: Apache-2.0
// The blockette reader: a volume as a sequence of records, one a call.
//
// A record is a control blockette (type 10 to 74, of the volume, dictionary, station and time span headers)
// or a data record, delivered as type -1 with its parsed and completed fixed header. The type letter
// of the logical record alone decides which of the two follows. A blockette runs on into the next logical
// records as far as its length says.
#pragma once

#include "blockette/data_header.h"
#include "decode/data_record.h"
#include "seedio/read_handle.h"

#include <span>
#include <string_view>

namespace quarry {

// Longest blockette or data record that is accepted, in bytes.
inline constexpr int largest_blockette = 10000;

// Opens the named input (standard input for an empty name or "-"; fatal if it cannot be opened) and returns
// a new handle, released with free_handle. The records of all its tape files share the handle's lists.
read_handle_t* seed_read(const char* name);

// Releases the handle with its input's state and lists; the input's descriptor is left open.
void free_handle(read_handle_t* handle);

// Empties the handle's lists. Returns 0.
int reinit_handle(read_handle_t* handle);

// Delivers the next record, which the caller releases with free_blk, and its type. The record is null for an
// unknown type. Returns 1, or 0 at the end of the input; an end within a record is reported.
// A record's `data` and `raw` point into the handle's image and are valid until the next call.
//
// A record with a field in error goes to the handle's hook `bad_blockette` and is delivered all the same; a
// length above largest_blockette is fatal.
int read_blk(read_handle_t* handle, void** record, int* type);

// The hook of a new handle: reports the blockette's type and text on the message log.
void report_bad_blockette(const void* record, int type, std::string_view text);

// Completes a data header from the handle's record list: see complete_header (listing/fixup_dh.h).
void fixup_dh(blk_dh_t* header, const read_handle_t* handle);

// The sample type number of the record's blockette 1000 (0 when it has none or one that is not understood),
// its format name (null for an encoding without one), encoding format and word order, and the decoder state.
// `raw` is the record from its sequence number on. Where it cannot be read, only the state is handed out.
int parse_b1000(std::span<const char> raw, const char** name, int* format, int* order, const Steim** state);

// Reports, once for each channel, that the declared and the found data format of its records differ.
void b030_problem(const blk_dh_t& dh, const char* declared, const char* found);

} // namespace quarry
