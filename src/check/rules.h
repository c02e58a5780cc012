// SPDX-License-Identifier: Apache-2.0
// The rules: what each asks of a volume, the severity of a breach, and the function that looks for one.
//
// To add a rule: its row here, and its function in the file of its family (src/check/FAMILY.cpp; rules about
// single data records are in records.cpp, those about filters in filters.cpp). What a function looks at is in
// the facts; a rule that needs more of them adds to a gatherer.
#pragma once

#include "check/facts.h"
#include "check/findings.h"

#include <span>
#include <string_view>

namespace quarry {

// Family, name, function, severity, and what the rule asks.
#define QUARRY_CHECK_RULES(RULE)                                                                                                         \
    RULE(structure, "damage", check_damage, error,                                                                                       \
         "The volume can be read without skipping what is damaged.")                                                                     \
    RULE(structure, "field", check_fields, error,                                                                                        \
         "A field holds a value of its kind, and as many as its count says.")                                                            \
    RULE(structure, "text", check_texts, warning,                                                                                        \
         "A variable text is closed by ~ and no longer than its limit.")                                                                 \
    RULE(structure, "declared-length", check_declared_length, error,                                                                     \
         "Records are as long as the volume header (010) or their blockette 1000 says.")                                                 \
    RULE(structure, "blockette-length", check_blockette_length, error,                                                                   \
         "A blockette is at least as long as the smallest one of its type.")                                                             \
    RULE(structure, "sequence", check_sequence, warning,                                                                                 \
         "The sequence numbers of a volume with headers count up by one.")                                                               \
    RULE(                                                                                                                                \
        structure, "order", check_order, warning,                                                                                        \
        "Headers stand in the order V, A, S, T, the volume header in front, data behind those of their time span.")                      \
    RULE(structure, "volume-header", check_volume_header, error,                                                                         \
         "A volume with headers begins with a volume header (010, 005, 008).")                                                           \
    RULE(structure, "station-index", check_station_index, warning,                                                                       \
         "The station index (011) leads to the records that begin with the stations (050).")                                             \
    RULE(structure, "span-index", check_span_index, warning,                                                                             \
         "The index of time spans (012) leads to the records with their headers (070).")                                                 \
    RULE(structure, "data-index", check_data_index, warning,                                                                             \
         "The indices of data (073, 074) lead to records of their channels and times.")                                                  \
    RULE(structure, "station-count", check_station_count, warning,                                                                       \
         "The station index (011) has as many stations as the volume.")                                                                  \
    RULE(structure, "channel-count", check_channel_count, warning,                                                                       \
         "A station (050) says how many channels (052) it has.")                                                                         \
    RULE(structure, "comment-count", check_comment_count, warning,                                                                       \
         "Stations (050) and channels (052) say how many comments (051, 059) they have.")                                                \
    RULE(dictionaries, "key-undefined", check_undefined_keys, error,                                                                     \
         "The dictionaries of a volume define each key that its blockettes use.")                                                        \
    RULE(dictionaries, "key-unused", check_unused_keys, note, "Each key that is defined is used.")                                       \
    RULE(dictionaries, "key-redefined", check_redefined_keys, error,                                                                     \
         "A key that is defined twice has the same content both times.")                                                                 \
    RULE(                                                                                                                                \
        epochs, "codes", check_codes, warning,                                                                                           \
        "Codes are upper-case letters and digits: 1 to 2 for a network, 1 to 5 for a station, up to 2 for a location, 3 for a channel.") \
    RULE(epochs, "epoch-ends", check_epoch_ends, error, "Epochs and comments do not end before they start.")                             \
    RULE(epochs, "station-overlap", check_station_overlaps, warning,                                                                     \
         "The epochs of a station do not overlap.")                                                                                      \
    RULE(epochs, "channel-overlap", check_channel_overlaps, error,                                                                       \
         "The epochs of a channel do not overlap.")                                                                                      \
    RULE(epochs, "epoch-outside-station", check_epochs_within_station, warning,                                                          \
         "The epochs of a channel are within those of its station.")                                                                     \
    RULE(epochs, "data-outside-epochs", check_data_outside_epochs, error,                                                                \
         "Data begin in an epoch of their channel.")                                                                                     \
    RULE(epochs, "data-without-channel", check_data_without_channel, error,                                                              \
         "If a volume has headers, they describe each channel that has data.")                                                           \
    RULE(epochs, "channel-without-data", check_channels_without_data, note,                                                              \
         "In a volume with data, each channel epoch within its time spans has some.")                                                    \
    RULE(epochs, "data-outside-volume", check_data_outside_volume, warning,                                                              \
         "Data are within the times of the volume (010) and of a time span (070).")                                                      \
    RULE(formats, "format", check_format, warning,                                                                                       \
         "The data format of a channel (030) is that of its records (1000).")                                                            \
    RULE(formats, "record-length", check_record_length, warning,                                                                         \
         "The record length of a channel (052) is that of its records.")                                                                 \
    RULE(formats, "rate", check_channel_rate, error,                                                                                     \
         "The sample rate of a channel (052) is that of its records, within 0.1 %.")                                                     \
    RULE(formats, "rate-of-record", check_stated_rate, error,                                                                            \
         "A record states one sample rate, in its header and in blockette 100, within 0.1 %.")                                           \
    RULE(formats, "rate-of-times", check_pace, warning,                                                                                  \
         "Records follow each other as fast as their sample rate says, within 0.1 %.")                                                   \
    RULE(formats, "encoding", check_encoding, warning, "The encoding of a record is known.")                                             \
    RULE(response, "response-missing", check_response_missing, error,                                                                    \
         "A channel whose sample rate is not 0 has a response.")                                                                         \
    RULE(response, "response-of-no-rate", check_response_of_no_rate, note,                                                               \
         "A channel whose sample rate is 0 has no response.")                                                                            \
    RULE(response, "stage-numbers", check_stage_numbers, error, "The stages of a response count up from 1.")                             \
    RULE(response, "stage-order", check_stage_order, warning,                                                                            \
         "The stages of a response stand in the order of their numbers.")                                                                \
    RULE(response, "unit-chain", check_unit_chain, error,                                                                                \
         "A stage takes in the units that the stage before gives out.")                                                                  \
    RULE(response, "unit-last", check_last_unit, warning, "The last stage ends in counts.")                                              \
    RULE(                                                                                                                                \
        response, "unit-first", check_first_unit, warning,                                                                               \
        "The first stage of a seismometer (second letter H or L) begins in M/S, that of an accelerometer (N) in M/S**2.")                \
    RULE(response, "unit-unknown", check_unknown_units, warning, "Units are those in common use.")                                       \
    RULE(response, "unit-spelling", check_unit_spelling, note, "Units are written as usual.")                                            \
    RULE(response, "rate-chain", check_rate_chain, error,                                                                                \
         "A decimation takes in the rate that the decimation before leaves.")                                                            \
    RULE(response, "rate-last", check_last_rate, error,                                                                                  \
         "The last decimation leaves the sample rate of the channel.")                                                                   \
    RULE(response, "decimation-missing", check_no_decimation, warning, "A response has a decimation.")                                   \
    RULE(response, "decimation-of-digital", check_digital_stage, error, "A digital stage has a decimation.")                             \
    RULE(response, "decimation-stray", check_stray_decimation, warning,                                                                  \
         "Only a digital stage with a filter has a decimation.")                                                                         \
    RULE(response, "delay", check_delay, note,                                                                                           \
         "The delay that was corrected is the delay that was estimated.")                                                                \
    RULE(response, "response-list", check_response_list_alone, warning,                                                                  \
         "A response list is not the only stage.")                                                                                       \
    RULE(response, "gain-missing", check_gain_missing, error, "A stage has a gain.")                                                     \
    RULE(response, "gain-zero", check_gain_zero, error, "The gain of a stage is not 0.")                                                 \
    RULE(response, "gain-negative", check_gain_negative, warning, "The gain of a stage is positive.")                                    \
    RULE(response, "sensitivity-missing", check_sensitivity_missing, error,                                                              \
         "A response without a polynomial has a sensitivity.")                                                                           \
    RULE(response, "sensitivity-zero", check_sensitivity_zero, error, "The sensitivity is not 0.")                                       \
    RULE(response, "sensitivity-frequency", check_sensitivity_frequency, error,                                                          \
         "The sensitivity is for a frequency below half the sample rate.")                                                               \
    RULE(response, "sensitivity-near", check_sensitivity_near, warning,                                                                  \
         "The sensitivity is within 2 % of the amplitude of all stages at its frequency.")                                               \
    RULE(response, "sensitivity-off", check_sensitivity_off, error,                                                                      \
         "The sensitivity is within 5 % of the amplitude of all stages at its frequency.")                                               \
    RULE(response, "zero-frequency", check_zero_frequency, error,                                                                        \
         "A stage with zeros at the origin is not normalized at a frequency of 0.")                                                      \
    RULE(response, "a0", check_a0, warning,                                                                                              \
         "A0 makes the amplitude 1 at the normalization frequency, within 1 %.")                                                         \
    RULE(response, "poles", check_unstable_poles, error,                                                                                 \
         "Poles are in the left half-plane, those of digital filters within the unit circle.")                                           \
    RULE(response, "symmetry", check_symmetry, warning,                                                                                  \
         "The coefficients of a FIR filter are as symmetric as its code says.")                                                          \
    RULE(response, "coefficient-sum", check_coefficient_sum, warning,                                                                    \
         "The coefficients of a digital filter sum up to 1, or to the gain of the stage, within 2 %.")                                   \
    RULE(position, "range", check_ranges, error,                                                                                         \
         "Coordinates, elevation, azimuth and dip are within their limits.")                                                             \
    RULE(position, "distance", check_distances, warning,                                                                                 \
         "A channel is within 1 km of its station, and within 1 km in elevation.")                                                       \
    RULE(position, "orientation-missing", check_orientation_missing, warning,                                                            \
         "A seismometer or accelerometer has an azimuth and a dip.")                                                                     \
    RULE(                                                                                                                                \
        position, "component", check_component, warning,                                                                                 \
        "A channel whose third letter is N, E or Z points north, east or up within 5 degrees, or the opposite way.")                     \
    RULE(position, "right-angles", check_right_angles, note,                                                                             \
         "The components 1, 2 and 3 of a sensor are at right angles, within 5 degrees.")                                                 \
    RULE(position, "sensor", check_sensor, note, "A blockette 033 describes the sensor of a channel.")                                   \
    RULE(data, "timing-quality", check_timing_quality, note,                                                                             \
         "The timing quality of a record is at least 50 %.")                                                                             \
    RULE(data, "quality-flags", check_quality_flags, note,                                                                               \
         "The data quality flags of a record are not set.")                                                                              \
    RULE(data, "correction", check_correction, note, "The time correction of a record is applied.")                                      \
    RULE(data, "duplicate", check_duplicates, warning, "No data are stored twice.")                                                      \
    RULE(data, "overlap", check_overlaps, warning, "Data do not overlap.")                                                               \
    RULE(samples, "samples-missing", check_missing_samples, error,                                                                       \
         "A record holds as many samples as it says.")                                                                                   \
    RULE(samples, "last-sample", check_last_sample, error,                                                                               \
         "The last sample of Steim is the one that the record states.")                                                                  \
    RULE(samples, "word-order", check_word_order, warning,                                                                               \
         "Samples are not far smoother in the other word order.")                                                                        \
    RULE(samples, "samples-differ", check_differing_samples, error,                                                                      \
         "Data of the same times have the same samples.")

struct Rule {
    std::string_view family;
    std::string_view name;
    Severity severity;
    std::string_view sentence;
    void (*check)(const Facts& facts, Findings* findings);
};

#define QUARRY_DECLARE_RULE(FAMILY, NAME, FUNCTION, SEVERITY, SENTENCE)                                      \
    void FUNCTION(const Facts& facts, Findings* findings);
QUARRY_CHECK_RULES(QUARRY_DECLARE_RULE)
#undef QUARRY_DECLARE_RULE

// True for a rule of the family that looks at decoded samples.
inline bool needs_samples(const Rule& rule) {
    return rule.family == "samples";
}

// All of them, by family.
std::span<const Rule> check_rules();

} // namespace quarry
