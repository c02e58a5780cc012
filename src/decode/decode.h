// Data formats: the table of encodings, their identification by name, and the dispatch to their decoders.
//
// The row index in the table is the format's data type number; row 0 is the unknown format. One thread: the
// output cursor and the alias map are process-wide.
#pragma once

#include "blockette/data_header.h"
#include "decode/sample_cursor.h"
#include "platform/seed_record.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace quarry {

struct SeedFormat {
    const char* seed;  // family name, as written in blockette 030, field 3
    const char* css;   // CSS 3.0 datatype of the decoded output
    std::int32_t size; // bytes of decoded output for each sample instant
    Decoder convert;
    std::int32_t raw_size; // raw bytes of a sample instant that `convert` takes whatever `nbytes` says, or 0
                           // if it keeps to the record's bytes by itself
};

extern const std::span<const SeedFormat> seed_format_map;
extern const int seed_format_count;

// Names of the encoding formats of blockette 1000, field 3.
extern const std::span<const Xlat> seedname;
extern const int nseedname;

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
// Returns the decoder's status, or -1 with a complaint where the record holds fewer samples than it tells.
// For an unknown format, complained of, the output is a copy of the raw bytes, the datatype is "**" and the
// status -1. Exhausted memory is fatal.
std::int32_t decode_data(blk_dh_t* dh, char** output, const char** csstype);

// A Decoder that does not decode: points the cursor at the raw bytes themselves and returns -1.
std::int32_t decode_unknown(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

// A Decoder of text: copies `nsamples` bytes, whatever `nbytes` says, to where the cursor points and leaves
// it there. Returns 1.
std::int32_t decode_ascii(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

} // namespace quarry
