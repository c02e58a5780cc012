// The data formats: one row for each, with its names and its decoder.
//
// A format is added by a row here and, where no decoder fits, a module for its decoder beside this one. The
// row's place is the format's data type number, `format_NAME`; number 0 is the unknown format.
#pragma once

#include "decode/data_record.h"
#include "decode/sample_cursor.h"

#include <cstdint>
#include <span>

// Each row X gives
//   NAME      for its number in the code
//   seed      the family name as volumes write it (blockette 030, field 3)
//   css       the CSS 3.0 datatype of the decoded output
//   size      bytes of decoded output for each sample instant
//   convert   the decoder
//   raw_size  raw bytes of a sample instant, for a decoder that ignores `nbytes`; 0 for one that does not
//   encoding  the encoding format of blockette 1000 (field 3) that means this format, or -1
#define QUARRY_DATA_FORMATS(X)                                                                               \
    X(unknown, "", "**", 0, decode_unknown, 0, -1)                                                           \
    X(integer_32, "32-Bit Integer Format", "t4", 4, decode_32bit, 4, 3)                                      \
    X(sun_integer, "SUN IEEE integer", "t4", 4, decode_32bit, 4, -1)                                         \
    X(asro, "ASRO Gain-Ranged Format", "t4", 4, decode_asro, 2, -1)                                          \
    X(sro, "SRO Gain-Ranged Format", "t4", 4, decode_sro, 2, -1)                                             \
    X(cdsn, "CDSN Gain-Ranged Format", "t4", 4, decode_cdsn, 2, 16)                                          \
    X(sun_short, "DWWSSN SUN IEEE short integer", "t4", 4, decode_dwwssn, 2, 1)                              \
    X(dwwssn, "DWWSSN Integer Format", "t4", 4, decode_dwwssn, 2, -1)                                        \
    X(steim1, "Steim Integer Compression Format", "t4", 4, decode_steim, 0, 10)                              \
    X(steim2, "Steim2 Integer Compression Format", "t4", 4, decode_steim2, 0, 11)                            \
    X(ieee_float, "IEEE single precision real", "t4", 4, decode_ieeefloat, 4, 4)                             \
    X(sun_float, "SUN IEEE single precision real", "t4", 4, decode_ieeefloat, 4, -1)                         \
    X(demultiplexed_short, "DWWSSN demultiplexed short (16 bit) 68000 integer", "t4", 4, decode_dwwssn, 2,   \
      -1)                                                                                                    \
    X(geoscope_3bit, "Geoscope gain-range on 3 bits", "t4", 12, decode_geo1, 6, -1)                          \
    X(geoscope_3byte, "Geoscope-3 byte (switched gain)", "t4", 12, decode_geo2, 9, -1)                       \
    X(geoscope_4bit, "Geoscope gain range on 4 bits", "t4", 12, decode_geo3, 6, -1)                          \
    X(ascii, "ASCII RefTek Log Files, State of Health", "as", 1, decode_ascii, 1, -1)                        \
    X(usnsn, "USNSN Integer Compression", "t4", 4, decode_usnsn, 0, 15)

namespace quarry {

// The data type numbers.
enum DataFormat : int {
#define QUARRY_FORMAT_NUMBER(NAME, ...) format_##NAME,
    QUARRY_DATA_FORMATS(QUARRY_FORMAT_NUMBER)
#undef QUARRY_FORMAT_NUMBER
};

struct SeedFormat {
    const char* seed;
    const char* css;
    std::int32_t size;
    Decoder convert;
    std::int32_t raw_size;
    int encoding;
};

// The rows by data type number.
extern const std::span<const SeedFormat> seed_format_map;
extern const int seed_format_count;

// The format names by encoding format of blockette 1000, in order of the codes.
extern const std::span<const Xlat> seedname;
extern const int nseedname;

// A Decoder that does not decode: points the cursor at the raw bytes themselves and returns -1.
std::int32_t decode_unknown(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

// A Decoder of text: copies `nsamples` bytes, ignoring `nbytes`, to where the cursor points, and does not
// move the cursor. Returns 1.
std::int32_t decode_ascii(char* data, std::int32_t nsamples, std::int32_t nbytes, int byteswap);

} // namespace quarry
