// SPDX-License-Identifier: Apache-2.0
// The data formats: one row for each, with its names and its decoder.
//
// A format is added by a row here and, where no decoder fits, a module for its decoder beside this one. The
// row's place is the format's data type number, `format_NAME`; number 0 is the unknown format.
#pragma once

#include "quarry/decoders.h"

// Each row X gives the name for its number in the code, then what SeedFormat holds of it.
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

} // namespace quarry
