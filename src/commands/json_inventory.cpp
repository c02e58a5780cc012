// SPDX-License-Identifier: Apache-2.0
#include "commands/json_inventory.h"

#include "commands/selected.h"
#include "inventory/field_values.h"
#include "quarry/time.h"

#include <limits>

namespace quarry {

namespace {

// --- members -------------------------------------------------------------------------------------------
// What the volume lacks is absent.

template <class Number>
void add(JsonWriter* json, std::string_view name, Maybe<Number> number) {
    if (number)
        json->field(name, *number);
}

void add(JsonWriter* json, std::string_view name, std::string_view text) {
    if (!text.empty())
        json->field(name, text);
}

void add(JsonWriter* json, std::string_view name, char letter) {
    if (letter != 0)
        json->field(name, std::string_view(&letter, 1));
}

void add(JsonWriter* json, std::string_view name, const Moment& moment) {
    add(json, name, moment.text);
    if (moment.microseconds)
        json->field(std::string(name) + "_iso", IsoTime(*moment.microseconds).text());
}

// Bytes, of which the volume states the power of two.
void add_length(JsonWriter* json, std::string_view name, const Integer& power) {
    add(json, name, bytes_of_power(power));
}

template <class Items, class Write>
void add_array(JsonWriter* json, std::string_view name, const Items& items, Write write) {
    json->key(name);
    json->begin_array();
    for (const auto& item : items)
        write(item);
    json->end_array();
}

template <class Items, class Write>
void add_objects(JsonWriter* json, std::string_view name, const Items& items, Write write) {
    add_array(json, name, items, [&](const auto& item) {
        json->begin_object();
        write(item);
        json->end_object();
    });
}

// --- responses -----------------------------------------------------------------------------------------

void add_roots(JsonWriter* json, std::string_view name, const std::vector<Root>& roots) {
    add_objects(json, name, roots, [json](const Root& root) {
        add(json, "real", root.real);
        add(json, "imaginary", root.imaginary);
        add(json, "real_error", root.real_error);
        add(json, "imaginary_error", root.imaginary_error);
    });
}

void add_coefficients(JsonWriter* json, std::string_view name, const std::vector<Coefficient>& coefficients) {
    add_objects(json, name, coefficients, [json](const Coefficient& coefficient) {
        add(json, "value", coefficient.value);
        add(json, "error", coefficient.error);
    });
}

void add_part(JsonWriter* json, const PolesAndZeros& part) {
    json->field("response", "poles_and_zeros");
    add(json, "response_type", part.type);
    add(json, "a0", part.a0);
    add(json, "normalization_frequency", part.normalization_frequency);
    add_roots(json, "zeros", part.zeros);
    add_roots(json, "poles", part.poles);
}

void add_part(JsonWriter* json, const Coefficients& part) {
    json->field("response", "coefficients");
    add(json, "response_type", part.type);
    add_coefficients(json, "numerators", part.numerators);
    add_coefficients(json, "denominators", part.denominators);
}

void add_part(JsonWriter* json, const ResponseList& part) {
    json->field("response", "list");
    add_objects(json, "responses", part.responses, [json](const ListedResponse& one) {
        add(json, "frequency", one.frequency);
        add(json, "amplitude", one.amplitude);
        add(json, "amplitude_error", one.amplitude_error);
        add(json, "phase", one.phase);
        add(json, "phase_error", one.phase_error);
    });
}

void add_part(JsonWriter* json, const GenericResponse& part) {
    json->field("response", "generic");
    add_objects(json, "corners", part.corners, [json](const Corner& corner) {
        add(json, "frequency", corner.frequency);
        add(json, "slope", corner.slope);
    });
}

void add_part(JsonWriter* json, const Decimation& part) {
    json->field("response", "decimation");
    add(json, "input_rate", part.input_rate);
    add(json, "factor", part.factor);
    add(json, "decimation_offset", part.offset);
    add(json, "delay", part.delay);
    add(json, "correction", part.correction);
}

void add_part(JsonWriter* json, const Gain& part) {
    json->field("response", "gain");
    add(json, "value", part.value);
    add(json, "frequency", part.frequency);
    add_objects(json, "calibrations", part.calibrations, [json](const Calibration& one) {
        add(json, "sensitivity", one.sensitivity);
        add(json, "frequency", one.frequency);
        add(json, "time", one.time);
    });
}

void add_part(JsonWriter* json, const Fir& part) {
    json->field("response", "fir");
    add(json, "symmetry", part.symmetry);
    add_array(json, "coefficients", part.coefficients, [json](Real coefficient) {
        json->value(coefficient.value_or(std::numeric_limits<double>::quiet_NaN())); // null keeps its place
    });
}

void add_part(JsonWriter* json, const Polynomial& part) {
    json->field("response", "polynomial");
    add(json, "response_type", part.type);
    add(json, "approximation", part.approximation);
    add(json, "frequency_unit", part.frequency_unit);
    add(json, "lowest_frequency", part.lowest_frequency);
    add(json, "highest_frequency", part.highest_frequency);
    add(json, "lowest_approximation", part.lowest_approximation);
    add(json, "highest_approximation", part.highest_approximation);
    add(json, "largest_error", part.largest_error);
    add_coefficients(json, "coefficients", part.coefficients);
}

// --- the lines -----------------------------------------------------------------------------------------

class InventoryLines {
public:
    InventoryLines(const Inventory& inventory, JsonWriter* json) : inventory_(inventory), json_(json) {}

    void station(const StationEpoch& epoch) {
        add(json_, "site", epoch.site);
        add(json_, "network_name", abbreviation(inventory_, epoch.network_name, epoch.place));
        add_position(epoch);
        add_span(epoch);
        add_comments(epoch.comments);
    }

    void channel(const ChannelEpoch& epoch) {
        add_position(epoch);
        add(json_, "depth", epoch.depth);
        add(json_, "azimuth", epoch.azimuth);
        add(json_, "dip", epoch.dip);
        add(json_, "rate", epoch.rate);
        add(json_, "clock_drift", epoch.clock_drift);
        add(json_, "subchannel", epoch.subchannel);
        add(json_, "instrument", abbreviation(inventory_, epoch.instrument, epoch.place));
        add(json_, "comment", epoch.comment);
        add(json_, "flags", epoch.flags);
        add_unit("signal_units", epoch.signal_units, epoch.place);
        add_unit("calibration_units", epoch.calibration_units, epoch.place);
        if (const auto* format =
                find_definition(inventory_.dictionary.formats, epoch.format, epoch.place.offset))
            add(json_, "format", format->name);
        add_length(json_, "record_length", epoch.record_length);
        add_span(epoch);
        add_comments(epoch.comments);
        add_objects(json_, "stages", epoch.stages, [this](const Stage& stage) {
            add(json_, "stage", stage.number);
            add_objects(json_, "responses", stage.responses,
                        [this](const StageResponse& one) { add_response(one); });
        });
    }

    void data(const EpochData& data) {
        json_->key("data");
        json_->begin_object();
        json_->field("first", IsoTime(data.first).text());
        json_->field("last", IsoTime(data.last).text());
        json_->field("records", data.records);
        json_->field("samples", data.samples);
        json_->field("gaps", data.gaps);
        json_->field("overlaps", data.overlaps);
        json_->field("rate", data.rate);
        add_array(json_, "encodings", data.encodings, [this](int encoding) {
            if (encoding >= 0)
                json_->value(encoding);
        });
        add_array(json_, "record_lengths", data.lengths,
                  [this](std::size_t length) { json_->value(static_cast<std::int64_t>(length)); });
        json_->end_object();
    }

private:
    template <class Epoch>
    void add_position(const Epoch& epoch) {
        add(json_, "latitude", epoch.latitude);
        add(json_, "longitude", epoch.longitude);
        add(json_, "elevation", epoch.elevation);
    }

    template <class Epoch>
    void add_span(const Epoch& epoch) {
        add(json_, "start", epoch.start);
        add(json_, "end", epoch.end);
        add(json_, "update", epoch.update);
    }

    void add_unit(const char* name, Integer key, const Place& place) {
        add(json_, name, unit_name(inventory_, key, place));
    }

    void add_comments(const std::vector<Comment>& comments) {
        add_objects(json_, "comments", comments, [this](const Comment& comment) {
            add(json_, "start", comment.start);
            add(json_, "end", comment.end);
            add(json_, "key", comment.key);
            add(json_, "level", comment.level);
            const auto* text =
                find_definition(inventory_.dictionary.comments, comment.key, comment.place.offset);
            if (text != nullptr) {
                add(json_, "class", text->comment_class);
                add(json_, "text", text->text);
                add_unit("level_units", text->level_units, comment.place);
            }
        });
    }

    void add_response(const StageResponse& one) {
        json_->field("blockette", one.place.blockette);
        json_->field("offset", one.place.offset);
        add(json_, "key", one.key);
        if (one.response == nullptr)
            return;
        const Response& response = *one.response;
        add(json_, "name", response.name);
        add_unit("input_units", response.input_units, response.place);
        add_unit("output_units", response.output_units, response.place);
        std::visit([this](const auto& part) { add_part(json_, part); }, response.part);
    }

    const Inventory& inventory_;
    JsonWriter* json_;
};

} // namespace

void write_volume(const VolumeHeader& header, JsonLines* lines) {
    const bool has_header = header.place.blockette != 0;
    JsonWriter& json = has_header
                           ? lines->begin(volume_kind, header.place.offset, header.place.logical_record)
                           : lines->begin(volume_kind);
    add(&json, "version", header.version);
    add_length(&json, "record_length", header.record_length);
    add(&json, "start", header.start);
    add(&json, "end", header.end);
    add(&json, "written", header.written);
    add(&json, "organization", header.organization);
    add(&json, "label", header.label);
    lines->end();
}

void write_stations(const Contents& contents, const Selection& selection, JsonLines* lines,
                    const std::function<void()>& after_line) {
    for (const Network& network : contents.inventory.networks)
        for (const Station& station : network.stations)
            for (const StationEpoch& epoch : station.epochs) {
                if (!selection.takes_station(network.code, station.code) ||
                    !takes_span(selection, epoch.start, epoch.end))
                    continue;
                JsonWriter& json = lines->begin(station_kind, epoch.place.offset, epoch.place.logical_record);
                json.field("network", std::string_view(network.code));
                json.field("station", std::string_view(station.code));
                InventoryLines(contents.inventory, &json).station(epoch);
                lines->end();
                after_line();
            }
}

void write_channels(const Contents& contents, const Selection& selection, JsonLines* lines,
                    const std::function<void()>& after_line) {
    for_each_row(contents, selection, [&](const ChannelRow& row) {
        const ChannelEpoch* epoch = row.epoch;
        JsonWriter& json = epoch != nullptr
                               ? lines->begin(channel_kind, epoch->place.offset, epoch->place.logical_record)
                               : lines->begin(channel_kind);
        lines->write_codes(row.network, row.station, row.location, row.channel);
        if (epoch != nullptr)
            InventoryLines(contents.inventory, &json).channel(*epoch);
        if (row.data != nullptr)
            InventoryLines(contents.inventory, &json).data(*row.data);
        lines->end();
        after_line();
    });
}

void write_findings(const Contents& contents, JsonLines* lines, const std::function<void()>& after_line) {
    for (const Finding& finding : contents.inventory.findings) {
        JsonWriter& json = lines->begin(finding_kind, finding.place.offset, finding.place.logical_record);
        json.field("finding", name_of(finding.kind));
        json.field("blockette", finding.place.blockette);
        if (finding.dictionary != 0) {
            json.field("dictionary", finding.dictionary);
            json.field("key", finding.key);
        }
        add(&json, "field", finding.field);
        if (finding.kind == FindingKind::key_defined_twice)
            json.field("is_changed", finding.is_changed);
        if (finding.other.blockette != 0) {
            json.field("other_offset", finding.other.offset);
            json.field("other_logical_record", finding.other.logical_record);
            json.field("other_blockette", finding.other.blockette);
        }
        json.field("text", std::string_view(what_is_wrong(finding)));
        lines->end();
        after_line();
    }
}

} // namespace quarry
