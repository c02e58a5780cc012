// The samples of a data record: which data format a name means, and the dispatch to its decoder.
//
// One thread: the decoders' output cursor and the alias map are process-wide.
#pragma once

#include "blockette/data_header.h"
#include "decode/formats.h"

#include <cstdint>
#include <string_view>

namespace quarry {

// The data type number of a format name, after the aliases of the parameter file's table
// "data_type_aliases" (read by the program into Parameters, with param_read); 0 when the name is not known.
int sd_data_type(std::string_view name);

// Decodes the samples of a data record by its `type`, from the `length` - `beg_data` bytes at `data`, whose
// words are swapped in place where `byteswap` is set: a record decodes once.
//
// `*output` receives the samples: `nsamps` floats of the host's order, three times as many for the Geoscope
// formats (the second component begins at index `nsamps`), or `nsamps` bytes of text for the format "as". The
// caller releases them with free. What the record lacks is zero; a negative `nsamps` counts as 0.
// `*csstype` receives the format's CSS 3.0 datatype, a constant.
//
// Returns the decoder's status, or -1 with a complaint where the record holds fewer samples than its header
// says. An unknown format gives a complaint, a copy of the raw bytes, the datatype "**" and the status -1.
// Exhausted memory is fatal.
std::int32_t decode_data(blk_dh_t* dh, char** output, const char** csstype);

} // namespace quarry
