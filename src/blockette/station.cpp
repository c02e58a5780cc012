// SPDX-License-Identifier: Apache-2.0
#include "blockette/station.h"

#include "blockette/scan.h"
#include "platform/message_log.h"
#include "platform/text.h"
#include "state.h"

#include <cmath>
#include <string>

namespace quarry {

blk_050_t blk_050{};
blk_052_t blk_052{};

void init_050(blk_050_t* blk) {
    *blk = {};
    blk->type = 50;
    blk->long_order = 3210;
    blk->word_order = 10;
    blk->update = 'N';
    copy_text(blk->network_code, "  ");
}

//  1 type                             int 3
//  2 length                           int 4
//  3 station code                     text 5
//  4 latitude                         real 10
//  5 longitude                        real 11
//  6 elevation                        real 7
//  7 numbers of channels, comments    skip 7
//  8 site name                        var 61
//  9 network identifier               int 3
// 10 32-bit word order                int 4
// 11 16-bit word order                int 2
// 12 start date                       var 23
// 13 end date                         var 23
// 14 update flag                      char
// 15 network code                     2 characters as they stand
void parse_050(blk_050_t* blk, std::string_view buff) {
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    scan_str(&buff, 5, blk->station);
    blk->lat = scan_double(&buff, 10);
    blk->lon = scan_double(&buff, 11);
    blk->elev = scan_double(&buff, 7);
    scan_skip(&buff, 7);
    scan_var_str(&buff, blk->name);
    blk->net_id = scan_int(&buff, 3);
    blk->long_order = scan_int(&buff, 4);
    blk->word_order = scan_int(&buff, 2);
    scan_var_str(&buff, blk->start_date);
    scan_var_str(&buff, blk->end_date);
    blk->update = scan_char(&buff);
    copy_text(blk->network_code, buff);
    blk_050 = *blk;
}

void init_051(blk_051_t* blk) {
    *blk = {};
    blk->type = 51;
}

// 1 type               int 3
// 2 length             int 4
// 3 beginning time     var 23
// 4 end time           var 23
// 5 comment code key   int 4
// 6 comment level      int 6
void parse_051(blk_051_t* blk, std::string_view buff) {
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    scan_var_str(&buff, blk->beg_time);
    scan_var_str(&buff, blk->end_time);
    blk->comment_key = scan_int(&buff, 4);
    blk->comment_level = scan_int(&buff, 6);
    copy_text(blk->station, member_text(blk_050.station));
    copy_text(blk->network_code, member_text(blk_050.network_code));
}

void init_052(blk_052_t* blk) {
    *blk = {};
    blk->type = 52;
    copy_text(blk->loc_id, "  ");
    copy_text(blk->chan_id, "   ");
    blk->record_length = 12;
    blk->update = 'N';
}

namespace {

constexpr int shortest_record_exponent = 8;
constexpr int standard_record_exponent = 12;

void check_record_length(blk_052_t* blk) {
    const int exponent = blk->record_length;
    if (exponent == standard_record_exponent)
        return;
    if (exponent >= shortest_record_exponent && exponent < standard_record_exponent) {
        log_complain(0, "%s:%s has a non-standard block length %d\n", blk->station, blk->chan_id, exponent);
        return;
    }
    log_complain(0, "%s:%s block length is %d which is out of the legal range 8-12: setting to 12\n",
                 blk->station, blk->chan_id, exponent);
    blk->record_length = standard_record_exponent;
}

} // namespace

//  1 type                          int 3
//  2 length                        int 4
//  3 location                      text 2
//  4 channel                       text 3
//  5 subchannel                    int 4
//  6 instrument key                int 3
//  7 optional comment              var 31
//  8 units of signal response key  int 3
//  9 units of calibration key      int 3
// 10 latitude                      real 10
// 11 longitude                     real 11
// 12 elevation                     real 7
// 13 local depth                   real 5
// 14 azimuth                       real 5
// 15 dip                           real 5
// 16 data format key               int 4
// 17 data record length exponent   int 2
// 18 sample rate                   real 10
// 19 maximum clock drift           real 10
// 20 number of comments            int 4
// 21 channel flags                 var 27
// 22 start date                    var 23
// 23 end date                      var 23
// 24 update flag                   char
void parse_052(blk_052_t* blk, std::string_view buff) {
    blk->type = scan_int(&buff, 3);
    blk->length = scan_int(&buff, 4);
    scan_str(&buff, 2, blk->loc_id);
    scan_str(&buff, 3, blk->chan_id);
    blk->subchan_id = scan_int(&buff, 4);
    blk->instr_id = scan_int(&buff, 3);
    scan_var_str(&buff, blk->comment);
    blk->units_signal = scan_int(&buff, 3);
    blk->units_cal = scan_int(&buff, 3);
    blk->lat = scan_double(&buff, 10);
    blk->lon = scan_double(&buff, 11);
    blk->elev = scan_double(&buff, 7);
    blk->depth = scan_double(&buff, 5);
    blk->azimuth = scan_double(&buff, 5);
    blk->dip = scan_double(&buff, 5);
    blk->format_id = scan_int(&buff, 4);
    blk->record_length = scan_int(&buff, 2);
    blk->sample_rate = scan_double(&buff, 10);
    blk->max_drift = scan_double(&buff, 10);
    blk->num_comments = scan_int(&buff, 4);
    scan_var_str(&buff, blk->chan_flags);
    scan_var_str(&buff, blk->start_date);
    scan_var_str(&buff, blk->end_date);
    blk->update = scan_char(&buff);

    copy_text(blk->station, member_text(blk_050.station));
    copy_text(blk->network_code, member_text(blk_050.network_code));
    fix_channel(blk);
    check_record_length(blk);
    blk_052 = *blk;
}

namespace {

bool near(double value, double target, double tolerance) {
    return std::fabs(value - target) < tolerance;
}

// Letter of a sensor's orientation, or NUL if it fits none. The order of the cases and the wider tolerances
// (10 degrees of azimuth about south for N, 10 degrees of dip for E) are part of the naming scheme.
char orientation_letter(double dip, double azimuth) {
    const double incline = std::fabs(dip);
    if (near(incline, 90, 2) && near(azimuth, 0, 2))
        return 'Z';
    if (near(incline, 0, 2) && (near(azimuth, 180, 10) || near(azimuth, 0, 2)))
        return 'N';
    if (near(incline, 0, 10) && (near(azimuth, 90, 2) || near(azimuth, 270, 2)))
        return 'E';
    if (near(incline, 60, 2) && (near(azimuth, 0, 2) || near(azimuth, 180, 2)))
        return 'A';
    if (near(incline, 60, 2) && (near(azimuth, 120, 2) || near(azimuth, 300, 2)))
        return 'B';
    if (near(incline, 60, 2) && (near(azimuth, 240, 2) || near(azimuth, 60, 2)))
        return 'C';
    return '\0';
}

bool is_letter_or_digit(char character) {
    return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
           (character >= 'a' && character <= 'z');
}

// The text up to its first character that is not a letter or digit.
std::string_view alphanumeric_head(std::string_view text) {
    std::size_t length = 0;
    while (length < text.size() && is_letter_or_digit(text[length]))
        ++length;
    return text.substr(0, length);
}

} // namespace

void fix_channel(blk_052_t* blk) {
    std::string name(alphanumeric_head(member_text(blk->chan_id)));
    name += alphanumeric_head(member_text(blk->loc_id));
    if (blk->subchan_id > 0) {
        // One character even for numbers above 9.
        name += static_cast<char>('0' + blk->subchan_id);
        const std::string key = std::string(member_text(blk->station)) + ":" +
                                name.c_str(); // NOLINT(readability-redundant-string-cstr): cut at a NUL
        if (const char letter = orientation_letter(blk->dip, blk->azimuth); letter != '\0')
            name.back() = letter;
        else
            log_complain(0, "Warning... Azimuth and Dip out of Range on %s,%s\n", blk->station, name.c_str());
        Geoscope_channels.set(key, name.back());
    }
    copy_text(blk->channel, name);
}

} // namespace quarry
