// SPDX-License-Identifier: Apache-2.0
#include "inventory/station.h"

#include "inventory/field_values.h"

namespace quarry {

namespace {

// The fields of a blockette by name.
struct Reader {
    std::span<const Field> fields;

    Integer integer(std::string_view name) const { return integer_field(fields, name); }
    Real real(std::string_view name) const { return real_field(fields, name); }
    std::string text(std::string_view name) const { return text_value(fields, name); }
    Moment moment(std::string_view name) const { return moment_value(fields, name); }
};

} // namespace

VolumeHeader read_volume_header(const Place& place, const Fields& fields) {
    const Reader of{fields.fields};
    const bool is_010 = place.blockette == 10;
    VolumeHeader volume;
    volume.place = place;
    volume.version = written_value(fields.fields, "version_of_format");
    volume.record_length = of.integer("logical_record_length");
    volume.start = of.moment(is_010 ? "beginning_time" : "beginning_of_volume");
    volume.end = of.moment(is_010 ? "end_time" : "end_of_volume");
    volume.written = of.moment("volume_time");
    volume.organization = of.text("originating_organization");
    volume.label = of.text("label");
    return volume;
}

StationEpoch read_station(const Place& place, const Fields& fields) {
    const Reader of{fields.fields};
    StationEpoch epoch;
    epoch.place = place;
    epoch.latitude = of.real("latitude");
    epoch.longitude = of.real("longitude");
    epoch.elevation = of.real("elevation");
    epoch.channel_count = of.integer("number_of_channels");
    epoch.comment_count = of.integer("number_of_station_comments");
    epoch.site = of.text("site_name");
    epoch.network_name = of.integer("network_identifier_code");
    epoch.word_order_32 = of.integer("word_order_32bit");
    epoch.word_order_16 = of.integer("word_order_16bit");
    epoch.start = of.moment("start_effective_date");
    epoch.end = of.moment("end_effective_date");
    epoch.update = letter_value(fields.fields, "update_flag");
    return epoch;
}

ChannelEpoch read_channel(const Place& place, const Fields& fields, std::int64_t station) {
    const Reader of{fields.fields};
    ChannelEpoch epoch;
    epoch.place = place;
    epoch.station = station;
    epoch.subchannel = of.integer("subchannel_identifier");
    epoch.instrument = of.integer("instrument_identifier");
    epoch.comment = of.text("optional_comment");
    epoch.signal_units = of.integer("units_of_signal_response");
    epoch.calibration_units = of.integer("units_of_calibration_input");
    epoch.latitude = of.real("latitude");
    epoch.longitude = of.real("longitude");
    epoch.elevation = of.real("elevation");
    epoch.depth = of.real("local_depth");
    epoch.azimuth = of.real("azimuth");
    epoch.dip = of.real("dip");
    epoch.format = of.integer("data_format_identifier_code");
    epoch.record_length = of.integer("data_record_length");
    epoch.rate = of.real("sample_rate");
    epoch.clock_drift = of.real("max_clock_drift");
    epoch.comment_count = of.integer("number_of_comments");
    epoch.flags = of.text("channel_flags");
    epoch.start = of.moment("start_date");
    epoch.end = of.moment("end_date");
    epoch.update = letter_value(fields.fields, "update_flag");
    return epoch;
}

Comment read_comment(const Place& place, const Fields& fields) {
    const Reader of{fields.fields};
    const bool is_051 = place.blockette == 51;
    return {place, of.moment(is_051 ? "beginning_effective_time" : "beginning_of_effective_time"),
            of.moment("end_effective_time"), of.integer("comment_code_key"), of.integer("comment_level")};
}

} // namespace quarry
