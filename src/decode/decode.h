// Data formats: the table of encodings, their identification by name, and the dispatch to their decoders.
//
// The row index in the table is the format's data type number; row 0 is the unknown format. One thread: the
// output cursor and the alias map are process-wide.
#pragma once

#include "platform/seed_record.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace quarry {

// A decoder turns `nsamples` encoded samples out of `nbytes` raw bytes into floats of the host's order,
// written through seismic_data_ptr, which it advances. `byteswap` is non-zero when the data's byte order is
// not the host's; the raw words are then swapped in place. Returns a status, negative for a failure.
using Decoder = std::int32_t (*)(char *data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

struct SeedFormat {
    const char *seed;  // family name, as written in blockette 030, field 3
    const char *css;   // CSS 3.0 datatype of the decoded output
    std::int32_t size; // bytes of decoded output for each sample instant
    Decoder convert;
};

extern const std::span<const SeedFormat> seed_format_map;
extern const int seed_format_count;

// Names of the encoding formats of blockette 1000, field 3.
extern const std::span<const Xlat> seedname;
extern const int nseedname;

// The data type number of a format name, after the aliases of the parameter file's table
// "data_type_aliases"; 0 when the name is not known.
int sd_data_type(std::string_view name);

} // namespace quarry
