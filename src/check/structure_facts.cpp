// SPDX-License-Identifier: Apache-2.0
#include "check/structure_facts.h"

#include "decode/catalogue.h"
#include "decode/data_record.h"

namespace quarry {

namespace {

constexpr std::int64_t header_size = logical_header_size;
constexpr int last_sequence = 999999; // then they begin anew

// The text of a field, if it is short enough to be shown.
std::string shown(const Field& field) {
    constexpr std::size_t longest = 30;
    return is_binary_number(field.spec->kind) || field.raw.size() > longest ? ""
                                                                            : words(": '", field.raw, "'");
}

bool is_of_text(FieldFault fault) {
    return fault == FieldFault::not_closed || fault == FieldFault::too_long;
}

// True for a blockette that ends with a list, and the list is empty.
bool ends_with_empty_list(const Fields& fields) {
    if (fields.fields.empty() || !fields.problems.empty())
        return false;
    const Field& last = fields.fields.back();
    const std::int64_t* const count = std::get_if<std::int64_t>(&last.value);
    return count != nullptr && *count == 0 && last.spec + last.spec->repeats == &fields.spec->fields.back() &&
           last.spec->repeats > 0;
}

bool is_too_short(std::size_t length, const Fields& fields) {
    return fields.spec != nullptr && length < static_cast<std::size_t>(fields.spec->smallest);
}

std::string how_short(std::size_t length, const Fields& fields) {
    return words("the length is ", length, ", the smallest one is ", fields.spec->smallest);
}

std::string what_is_wrong(const Damage& damage) {
    return words(describe(damage.kind), damage.detail.empty() ? "" : ": ", damage.detail,
                 damage.bytes > 0 ? words("; ", damage.bytes, " bytes are skipped") : "");
}

} // namespace

// --- damage --------------------------------------------------------------------------------------------

// The sequence numbers of the records behind a hole say nothing.
void StructureGatherer::add(const Damage& damage) {
    if (damage.kind == DamageKind::no_record || damage.kind == DamageKind::input_ends)
        sequence_ = -1;
    const StructureFault kind =
        damage.kind == DamageKind::record_length ? StructureFault::declared_length : StructureFault::damage;
    faults_.add(kind, {damage.blockette, damage.offset, damage.logical_record}, what_is_wrong(damage));
}

// What is wrong with the fields of a blockette, of headers or of a data record.
void StructureGatherer::add_problems(const Fields& fields, const Place& place,
                                     const ControlBlockette* blockette, const DataRecord* record) {
    for (const FieldProblem& problem : fields.problems) {
        const Field& field = problem.field;
        const StructureFault kind = is_of_text(problem.fault) ? StructureFault::text : StructureFault::field;
        Place at = place;
        at.offset = blockette != nullptr ? input_offset(*blockette, field.offset)
                                         : place.offset + static_cast<std::int64_t>(field.offset);
        const std::string text = words(field.spec->name, " ", describe(problem.fault), shown(field));
        if (record != nullptr)
            faults_.add(kind, at, *record, text);
        else
            faults_.add(kind, at, text);
    }
}

// --- records -------------------------------------------------------------------------------------------

StructureGatherer::Part StructureGatherer::part_of(char letter) {
    switch (letter) {
    case 'V':
        return Part::volume;
    case 'A':
        return Part::abbreviations;
    case 'S':
        return Part::stations;
    case 'T':
        return Part::time_spans;
    default:
        return Part::none;
    }
}

// Data of further time spans may follow.
bool StructureGatherer::may_follow(Part part) const {
    if (part == Part::data)
        return part_ == Part::time_spans || part_ == Part::data || part_ == Part::none;
    return part >= part_ || part == Part::volume || part == Part::time_spans;
}

void StructureGatherer::check_order(const Place& place, Part part) {
    constexpr std::array<std::string_view, 6> names{
        "", "a volume header", "an abbreviation header", "a station header", "a time span header", "data"};
    if (!may_follow(part) && !is_in_any_order_)
        faults_.add(StructureFault::order, place, names[static_cast<std::size_t>(part)], " behind ",
                    names[static_cast<std::size_t>(part_)],
                    "; headers stand in the order V, A, S, T, data behind those of their time span");
    part_ = part;
}

// --- sequence numbers ----------------------------------------------------------------------------------

bool StructureGatherer::goes_on(int sequence) const {
    const bool is_known = sequence >= 0 && sequence_ >= 0;
    return !is_known || sequence == sequence_ + 1 || (sequence_ == last_sequence && sequence <= 1);
}

void StructureGatherer::check_sequence(const LogicalHeader& header, bool begins_volume) {
    if (!goes_on(header.sequence) && !(begins_volume && header.sequence == 1))
        faults_.add(StructureFault::sequence, {0, header.offset, header.logical_record}, "sequence number ",
                    header.sequence, " follows ", sequence_, "; they count up by one");
    sequence_ = header.sequence;
}

// Data that follow no time span were put behind the headers of another volume, and keep their numbers.
void StructureGatherer::check_sequence(const DataRecord& record) {
    if (has_time_spans_ && !goes_on(record.sequence) && ++jumps_ == 1) {
        first_jump_ = {0, record.offset, record.logical_record};
        jump_ = words("sequence number ", record.sequence, " follows ", sequence_, "; they count up by one");
    }
    sequence_ = record.sequence;
}

// --- order ---------------------------------------------------------------------------------------------

void StructureGatherer::begin_volume() {
    if (first_blockette_.blockette != 0 && !has_volume_header_)
        faults_.add(StructureFault::volume_header, first_blockette_,
                    "headers begin without a volume header (010, 005 or 008)");
    else if (first_blockette_.blockette != 0 && !is_volume_header(first_blockette_.blockette))
        faults_.add(StructureFault::order, first_blockette_, "stands before the volume header");
    if (jumps_ > 0)
        faults_.add(StructureFault::sequence, first_jump_, jump_,
                    jumps_ > 1 ? words("; ", jumps_, " such records") : "");
    indices_.end_volume(&faults_);
    jumps_ = 0;
    has_time_spans_ = false;
    first_blockette_ = {};
    has_volume_header_ = false;
    is_in_any_order_ = false;
}

void StructureGatherer::add(const LogicalHeader& header) {
    const Place place{0, header.offset, header.logical_record};
    const Part part = part_of(header.letter);
    const bool begins_volume = part == Part::volume && part_ > Part::volume;
    record_offset_ = header.offset;
    if (begins_volume)
        begin_volume();
    check_sequence(header, begins_volume);
    has_time_spans_ = has_time_spans_ || part == Part::time_spans;
    if (part != Part::none)
        check_order(place, part);
}

void StructureGatherer::add(const DataRecord& record) {
    check_sequence(record);
    if (part_ != Part::data)
        check_order({0, record.offset, record.logical_record}, Part::data);
    indices_.add(record, &faults_);
    add_data_blockettes(record);
}

// --- blockettes ----------------------------------------------------------------------------------------

void StructureGatherer::add(const ControlBlockette& blockette, const Fields& fields) {
    const Place place{blockette.type, blockette.offset, blockette.logical_record};
    if (first_blockette_.blockette == 0)
        first_blockette_ = place;
    if (is_volume_header(blockette.type)) {
        has_volume_header_ = true;
        is_in_any_order_ = is_in_any_order_ || blockette.type != 10;
        constexpr std::int64_t smallest = 8, largest = 15;
        const auto power = integer_field(fields.fields, "logical_record_length");
        if (!power || *power < smallest || *power > largest)
            faults_.add(StructureFault::declared_length, place, "logical_record_length is ",
                        power ? words(*power) : "missing", "; the length is two to the power of 8 to 15");
    }
    indices_.add(blockette, fields, blockette.offset == record_offset_ + header_size);
    if (is_too_short(blockette.length, fields) && !ends_with_empty_list(fields))
        faults_.add(StructureFault::blockette_length, place, how_short(blockette.length, fields));
    else
        add_problems(fields, place, &blockette, nullptr);
}

void StructureGatherer::add_data_blockettes(const DataRecord& record) {
    for (const DataBlocketteExtent& extent : record.blockettes) {
        const std::string_view text = text_of(record, extent);
        if (is_sound_by_size(extent.type, text.size()))
            continue;
        const Place place{extent.type, record.offset + static_cast<std::int64_t>(extent.offset),
                          record.logical_record};
        decode_blockette(extent.type, text, record.header_order, &fields_);
        if (is_too_short(text.size(), fields_))
            faults_.add(StructureFault::blockette_length, place, record, how_short(text.size(), fields_));
        else
            add_problems(fields_, place, nullptr, &record);
    }
}

StructureFaults StructureGatherer::finish() && {
    begin_volume();
    return std::move(faults_);
}

} // namespace quarry
