// SPDX-License-Identifier: Apache-2.0
// Calendar: epoch seconds from year, day of year and time of day, and back.
//
// The proleptic Gregorian calendar in UTC, without leap seconds. Fields may be out of their usual range and
// count arithmetically from 1 January of the year; there is no loop over years and no time zone.
#pragma once

#include <cstdint>

namespace quarry {

// A moment by its fields; `doy` counts from 1.
struct HumanTime {
    int year;
    int doy;
    int hour;
    int minutes;
    double sec;
};

// Seconds since 1970-01-01 00:00:00. The first form is exact.
std::int64_t seconds_since_1970(int year, int doy, int hour, int minutes, int sec);
double human_to_epoch(int year, int doy, int hour, int minutes, double sec);

// The fields of an epoch, each in its usual range. An epoch whose year does not fit into an int
// gives the nearest moment that does; a NaN gives all zeros.
HumanTime epoch_to_human(double epoch);

} // namespace quarry
