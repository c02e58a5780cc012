// SPDX-License-Identifier: Apache-2.0
// The objects that quarry json writes: the lines for volumes, blockettes, data records and damage.
#pragma once

#include "quarry/volume.h"
#include "report/json_writer.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quarry {

enum Kind : unsigned {
    volume_kind,
    blockette_kind,
    data_kind,
    damage_kind,
    summary_kind,
    station_kind,
    channel_kind,
    finding_kind
};
inline constexpr std::array<std::string_view, 8> kind_names{"volume",  "blockette", "data",    "damage",
                                                            "summary", "station",   "channel", "finding"};

struct JsonOptions {
    unsigned kinds; // bits
    bool with_samples;
    std::string file; // name of the volume

    bool shows(Kind kind) const { return (kinds >> kind & 1U) != 0; }
};

// Writes objects of one volume, those of kinds that are shown.
class JsonLines {
public:
    // Appends to the text. Both outlive the lines.
    JsonLines(const JsonOptions& options, std::string* out) : options_(options), json_(out) {}

    void blockette(const ControlBlockette& blockette, const Fields& fields);
    void damage(const Damage& damage);

    // The record, and what is wrong with its blockettes, of which the number is returned.
    std::int64_t record(const DataRecord& record);

    // For further kinds: the members that all objects begin with. `end` ends the line.
    JsonWriter& begin(Kind kind);
    JsonWriter& begin(Kind kind, std::int64_t offset, std::int64_t logical_record);
    void end();

    void write_codes(std::string_view network, std::string_view station, std::string_view location,
                     std::string_view channel);

private:
    void write_record(const DataRecord& record);
    void write_blockettes(const DataRecord& record);
    void write_blockette(int type, std::size_t length, const Fields& fields);
    void write_fields(std::span<const Field> fields);
    void write_field(const Field& field);
    void write_binary_time(std::span<const Field> fields);
    void write_value(const Field& field);
    std::size_t write_values(std::span<const Field> fields);
    void write_group(const FieldSpec& count, const GroupRows& rows);
    void write_samples(const DataRecord& record);
    void decode(const DataRecord& record, const DataBlocketteExtent& blockette);

    const JsonOptions& options_;
    JsonWriter json_;
    Fields fields_ = {};                // of a data blockette
    std::vector<Damage> problems_ = {}; // of the data record
    std::string source_ = {};
};

// Members: the codes of a channel and its FDSN source identifier. The room is memory to write that in.
void write_codes(std::string_view network, std::string_view station, std::string_view location,
                 std::string_view channel, JsonWriter* json, std::string* room);

} // namespace quarry
