// SPDX-License-Identifier: Apache-2.0
// SEED time values: time text to its fields and to epoch seconds, and back.
//
// A time text is YYYY,DDD,HH:MM:SS.FFFF (day of year from 1) and may end after any field. Nothing here fails:
// what cannot be read stays 0.
#pragma once

#include <span>
#include <string_view>

namespace quarry {

// Epochs that stand for a time not given.
inline constexpr double end_of_time = 9999999999.999;
inline constexpr double beginning_of_time = -9999999999.999;

// A time text's fields. The text's exact length says how many are looked for (4, 8, 11 and 14 characters:
// one to four of them; any other length: all five); reading stops at the first mismatch.
void parse_time(std::string_view time, int* year, int* doy, int* hour, int* minutes, double* sec);

// The same for the start and for the end of a validity range.
void parse_start(std::string_view time, int* year, int* doy, int* hour, int* minutes, double* sec);
void parse_end(std::string_view time, int* year, int* doy, int* hour, int* minutes, double* sec);

// Epoch seconds of a time text. An empty text is the end of time, for start_epoch the beginning of time.
void seed2epoch(std::string_view time, double* epoch);
void start_epoch(std::string_view time, double* epoch);
void end_epoch(std::string_view time, double* epoch);

// Compares two time texts field by field: '<', '=' or '>' (a NaN second compares as '<').
char comp_time(std::string_view time1, std::string_view time2);

// Writes the epoch as YYYY,DDD,HH:MM:SS.FFFF, its seconds padded with a blank below 10, into the buffer,
// which should hold 23 characters; what does not fit is cut.
void epoch2seed(double epoch, std::span<char> time);

} // namespace quarry
