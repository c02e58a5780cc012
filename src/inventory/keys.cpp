// SPDX-License-Identifier: Apache-2.0
#include "inventory/keys.h"

#include "decode/catalogue.h"
#include "fields/layouts.h"
#include "inventory/response.h"

#include <algorithm>
#include <array>
#include <functional>

namespace quarry {

namespace {

constexpr int responses = 41; // stands for 041 to 048, whose keys are of one kind

// A field that holds a key of a dictionary; responses have further ones.
struct KeyField {
    int type;
    std::string_view name;
    int dictionary;
    bool defines = false;
};

constexpr auto key_fields = std::to_array<KeyField>({
    {30, "data_format_identifier_code", 30, true},
    {31, "comment_code_key", 31, true},
    {31, "units_of_comment_level", 34},
    {32, "source_lookup_code", 32, true},
    {33, "abbreviation_lookup_code", 33, true},
    {34, "unit_lookup_code", 34, true},
    {35, "beam_lookup_code", 35, true},
    {50, "network_identifier_code", 33},
    {51, "comment_code_key", 31},
    {52, "instrument_identifier", 33},
    {52, "units_of_signal_response", 34},
    {52, "units_of_calibration_input", 34},
    {52, "data_format_identifier_code", 30},
    {59, "comment_code_key", 31},
    {60, response_key, responses},
    {71, "hypocenter_source_identifier", 32},
    {71, "magnitude_source", 32},
    {72, "source", 32},
});
static_assert(std::all_of(key_fields.begin(), key_fields.end(),
                          [](const KeyField& row) { return layout::has_field(row.type, row.name); }),
              "a blockette has no field of that name");

} // namespace

void KeyBook::add(const Place& place, const Fields& fields, bool continues) {
    for (const KeyField& row : key_fields) {
        if (row.type != fields.type)
            continue;
        if (row.defines)
            add_definition(place, fields, row.name, row.dictionary, continues);
        else
            add_uses(place, fields, row.name, row.dictionary);
    }
    if (is_dictionary_response(fields.type))
        add_definition(place, fields, response_key, responses, continues);
    for (const std::string_view name : unit_fields(fields.type))
        add_uses(place, fields, name, 34);
}

void KeyBook::add_uses(const Place& place, const Fields& fields, std::string_view name, int dictionary) {
    for (const Field& field : fields.fields)
        if (field.spec->name == name)
            add_use(place, field, dictionary);
}

void KeyBook::add_definition(const Place& place, const Fields& fields, std::string_view name, int dictionary,
                             bool continues) {
    constexpr std::size_t factor = 31;
    const auto key = integer_field(fields.fields, name);
    if (!key)
        return;
    auto& definitions = entries_[{dictionary, *key}].definitions;
    const std::size_t content = std::hash<std::string_view>()(fields.text.substr(blockette_head_size));
    if (continues && !definitions.empty())
        definitions.back().content = definitions.back().content * factor + content;
    else
        definitions.push_back({place, content});
}

// In many volumes a key of 0 means that there is no key.
void KeyBook::add_use(const Place& place, const Field& field, int dictionary) {
    const auto* key = std::get_if<std::int64_t>(&field.value);
    if (key == nullptr || *key == 0)
        return;
    Entry& entry = entries_[{dictionary, *key}];
    if (entry.first_use.empty())
        entry.first_use.push_back({place, field.spec->name});
}

void KeyBook::report(const Key& key, const Entry& entry, std::vector<Finding>* findings) {
    // Sources and beams are used outside the headers of stations, too.
    const bool uses_are_known = key.first != 32 && key.first != 35;
    const auto& definitions = entry.definitions;
    if (definitions.empty())
        findings->push_back({FindingKind::key_not_defined,
                             entry.first_use[0].place,
                             {},
                             entry.first_use[0].field,
                             key.first,
                             key.second});
    else if (entry.first_use.empty() && uses_are_known)
        findings->push_back({FindingKind::key_not_used, definitions[0].place, {}, {}, key.first, key.second});
    for (std::size_t i = 1; i < definitions.size(); ++i)
        findings->push_back({FindingKind::key_defined_twice,
                             definitions[i].place,
                             definitions[0].place,
                             {},
                             key.first,
                             key.second,
                             definitions[i].content != definitions[0].content});
}

void KeyBook::end_volume(std::vector<Finding>* findings) {
    for (const auto& [key, entry] : entries_)
        report(key, entry, findings);
    entries_.clear();
}

} // namespace quarry
