// SPDX-License-Identifier: Apache-2.0
#include "inventory/dictionary.h"

#include "inventory/field_values.h"

#include <algorithm>

namespace quarry {

namespace {

std::vector<std::string> decoder_keys(std::span<const Field> fields) {
    std::vector<std::string> keys;
    for (const Field& field : rows_of(fields, "number_of_decoder_keys").fields())
        keys.emplace_back(field.raw);
    return keys;
}

std::vector<BeamComponent> beam_components(std::span<const Field> fields) {
    std::vector<BeamComponent> components;
    for (const auto row : rows_of(fields, "number_of_components"))
        components.push_back({text_value(row, "station_identifier"), text_value(row, "location_identifier"),
                              text_value(row, "channel_identifier"),
                              integer_field(row, "subchannel_identifier"),
                              integer_field(row, "component_weight")});
    return components;
}

template <class Entry>
void sort_entries(std::vector<Entry>* entries) {
    std::stable_sort(entries->begin(), entries->end(), [](const Entry& one, const Entry& other) {
        return definition(one).key < definition(other).key;
    });
}

} // namespace

void add_texts(const Place& place, const Fields& blockette, Dictionary* dictionary) {
    const std::span<const Field> fields = blockette.fields;
    const auto text = [fields](std::string_view name) { return text_value(fields, name); };
    const auto integer = [fields](std::string_view name) { return integer_field(fields, name); };
    switch (blockette.type) {
    case 30:
        dictionary->formats.push_back({place, integer("data_format_identifier_code"),
                                       text("short_descriptive_name"), integer("data_family_type"),
                                       decoder_keys(fields)});
        break;
    case 31:
        dictionary->comments.push_back({place, integer("comment_code_key"), text("comment_class_code"),
                                        text("description_of_comment"), integer("units_of_comment_level")});
        break;
    case 32:
        dictionary->sources.push_back({place, integer("source_lookup_code"),
                                       text("name_of_publication_author"), text("date_published_catalog"),
                                       text("publisher_name")});
        break;
    case 33:
        dictionary->abbreviations.push_back(
            {place, integer("abbreviation_lookup_code"), text("abbreviation_description")});
        break;
    case 34:
        dictionary->units.push_back(
            {place, integer("unit_lookup_code"), text("unit_name"), text("unit_description")});
        break;
    case 35:
        dictionary->beams.push_back({place, integer("beam_lookup_code"), beam_components(fields)});
        break;
    default:
        break;
    }
}

void sort_by_key(Dictionary* dictionary) {
    sort_entries(&dictionary->formats);
    sort_entries(&dictionary->comments);
    sort_entries(&dictionary->sources);
    sort_entries(&dictionary->abbreviations);
    sort_entries(&dictionary->units);
    sort_entries(&dictionary->beams);
    sort_entries(&dictionary->responses);
}

} // namespace quarry
