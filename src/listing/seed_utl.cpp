// SPDX-License-Identifier: Apache-2.0
#include "listing/seed_utl.h"

#include "platform/calendar.h"
#include "platform/text.h"

#include <algorithm>
#include <climits>
#include <cstdio>

namespace quarry {

namespace {

// How many of the five fields a text of this length is read for.
int fields_of_length(std::size_t length) {
    switch (length) {
    case 4:
        return 1;
    case 8:
        return 2;
    case 11:
        return 3;
    case 14:
        return 4;
    default:
        return 5;
    }
}

// Reads the number at the front of the text, if there is one.
bool take_integer(std::string_view* text, int* value) {
    const ParsedInteger parsed = parse_integer(*text);
    if (parsed.length == 0)
        return false;
    *value = static_cast<int>(std::clamp<long>(parsed.value, INT_MIN, INT_MAX));
    text->remove_prefix(parsed.length);
    return true;
}

bool take_separator(std::string_view* text, char separator) {
    if (!text->starts_with(separator))
        return false;
    text->remove_prefix(1);
    return true;
}

} // namespace

void parse_time(std::string_view time, int* year, int* doy, int* hour, int* minutes, double* sec) {
    time = up_to_nul(time);
    *year = *doy = *hour = *minutes = 0;
    *sec = 0.0;

    const int fields = fields_of_length(time.size());
    if (!take_integer(&time, year) || fields < 2)
        return;
    if (!take_separator(&time, ',') || !take_integer(&time, doy) || fields < 3)
        return;
    if (!take_separator(&time, ',') || !take_integer(&time, hour) || fields < 4)
        return;
    if (!take_separator(&time, ':') || !take_integer(&time, minutes) || fields < 5)
        return;
    if (take_separator(&time, ':'))
        *sec = parse_real(time).value;
}

void parse_start(std::string_view time, int* year, int* doy, int* hour, int* minutes, double* sec) {
    parse_time(time, year, doy, hour, minutes, sec);
}

void parse_end(std::string_view time, int* year, int* doy, int* hour, int* minutes, double* sec) {
    parse_time(time, year, doy, hour, minutes, sec);
}

void seed2epoch(std::string_view time, double* epoch) {
    if (up_to_nul(time).empty()) {
        *epoch = end_of_time;
        return;
    }
    int year, doy, hour, minutes;
    double sec;
    parse_time(time, &year, &doy, &hour, &minutes, &sec);
    *epoch = human_to_epoch(year, doy, hour, minutes, sec);
}

void start_epoch(std::string_view time, double* epoch) {
    seed2epoch(time, epoch);
    if (up_to_nul(time).empty())
        *epoch = beginning_of_time;
}

void end_epoch(std::string_view time, double* epoch) {
    seed2epoch(time, epoch);
}

char comp_time(std::string_view time1, std::string_view time2) {
    int fields1[4];
    int fields2[4];
    double sec1, sec2;
    parse_time(time1, &fields1[0], &fields1[1], &fields1[2], &fields1[3], &sec1);
    parse_time(time2, &fields2[0], &fields2[1], &fields2[2], &fields2[3], &sec2);
    for (int i = 0; i < 4; ++i)
        if (fields1[i] != fields2[i])
            return fields1[i] > fields2[i] ? '>' : '<';
    if (sec1 == sec2)
        return '=';
    return sec1 > sec2 ? '>' : '<';
}

void epoch2seed(double epoch, std::span<char> time) {
    const HumanTime human = epoch_to_human(epoch);
    std::snprintf(time.data(), time.size(), "%04i,%03i,%02i:%02i:%7.4lf", human.year, human.doy, human.hour,
                  human.minutes, human.sec);
}

} // namespace quarry
