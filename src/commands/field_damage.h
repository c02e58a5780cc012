// SPDX-License-Identifier: Apache-2.0
// Damage of the fields of blockettes, which the reader leaves to those who decode them.
#pragma once

#include "quarry/fields.h"
#include "quarry/volume.h"

#include <string>

namespace quarry {

// Visits what is wrong with the fields of a decoded control blockette.
template <class Visit>
void for_each_damage(const std::string& input, const ControlBlockette& blockette, const Fields& fields,
                     Visit visit) {
    for (const FieldProblem& problem : fields.problems)
        visit(damage_of(input, blockette, problem));
}

// Visits what is wrong with the data blockettes of a record. The fields are memory to decode them in.
template <class Visit>
void for_each_damage(const std::string& input, const DataRecord& record, Fields* fields, Visit visit) {
    for (const DataBlocketteExtent& blockette : record.blockettes) {
        if (is_sound_by_size(blockette.type, text_of(record, blockette).size()))
            continue;
        decode_blockette(blockette.type, text_of(record, blockette), record.header_order, fields);
        for (const FieldProblem& problem : fields->problems)
            visit(damage_of(input, record, blockette, problem));
    }
}

} // namespace quarry
