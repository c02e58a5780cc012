// SPDX-License-Identifier: Apache-2.0
#include "draft.h"

#include <map>

namespace quarry {

namespace {

using Sequences = std::map<std::string, std::string>; // by name, six characters each

// The name of the logical record that a header begins; empty if no field names it.
std::string name_of(const Part& part) {
    return part.type == 70 ? "<SPAN>" : part.type == 50 ? "<" + part.fields.substr(0, 4) + ">" : "";
}

std::string with_sequences(std::string fields, const Sequences& sequences) {
    for (const auto& [name, digits] : sequences)
        for (std::size_t at = 0; (at = fields.find(name, at)) != std::string::npos;)
            fields.replace(at, name.size(), digits);
    return fields;
}

// The names of logical records get the sequence numbers that they have in the volume.
VolumeBuilder build(const Draft& draft, const Sequences& sequences, Sequences* found) {
    VolumeBuilder builder(draft.record_size);
    const auto next_sequence = [&] {
        return static_cast<int>(builder.bytes().size()) / draft.record_size + 1;
    };
    for (const Part& part : draft.headers) {
        if (const std::string name = name_of(part); !name.empty())
            found->emplace(name, digits(next_sequence(), 6));
        if (part.type == 0)
            builder.blank_record(part.letter);
        else
            builder.control(part.letter, blockette(part.type, with_sequences(part.fields, sequences)));
    }
    const int first = next_sequence();
    for (std::size_t i = 0; i < draft.records.size(); ++i) {
        found->emplace(formatted("<DAT%zu>", i), digits(first + static_cast<int>(i), 6));
        builder.data(draft.records[i]);
    }
    return builder;
}

} // namespace

std::string volume_of(const Draft& draft) {
    Sequences sequences;
    build(draft, {}, &sequences);
    Sequences same;
    return build(draft, sequences, &same).bytes();
}

} // namespace quarry
