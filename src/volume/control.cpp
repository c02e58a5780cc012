// SPDX-License-Identifier: Apache-2.0
// Logical records of control blockettes: their length, and the blockettes in them and over several of them.
#include "volume/reading.h"

#include <algorithm>

namespace quarry {

using framing::head_size;
using framing::header_size;
using framing::signed_size;

namespace {

// True if a blockette may end before these bytes: others, a blank, or too few for a head.
bool may_follow(std::string_view bytes) {
    return bytes.size() < head_size || framing::is_blank(bytes.substr(0, 1)) ||
           framing::begins_sound_blockette(bytes);
}

bool is_fault_of_length(const FieldProblem& problem) {
    return problem.fault == FieldFault::cut_short || problem.fault == FieldFault::not_closed ||
           problem.fault == FieldFault::missing_rows;
}

} // namespace

// --- the length of the records -------------------------------------------------------------------------

// The record length that a blockette of the record at hand announces; 0 if none does.
std::size_t VolumeReader::Reading::announced_size() {
    const std::string_view bytes = window_.at(at_, framing::usual_record_size);
    std::size_t offset = header_size;
    while (offset + record_power_offset + record_power_size <= bytes.size()) {
        const auto head = framing::blockette_head(bytes.substr(offset));
        if (!head || !framing::is_sound(*head))
            return 0;
        if (is_volume_header(head->type)) {
            const int power =
                framing::number_of(bytes.substr(offset + record_power_offset, record_power_size));
            const bool is_legal = power >= framing::smallest_power && power <= framing::largest_control_power;
            return is_legal ? std::size_t{1} << power : 0;
        }
        offset += head->length;
    }
    return 0;
}

// Settles the length of records from this one on; where a volume may begin, anew. It is the length announced,
// else the one so far, unless the distance to the next record contradicts it. A longer distance may come from
// a damaged record between the two: if a record begins at the third step, the length stays.
void VolumeReader::Reading::settle_record_size(char letter) {
    const std::size_t announced = letter == 'V' ? announced_size() : 0;
    if (announced != 0)
        record_size_ = announced;
    if (letter == 'V')
        record_size_is_sure_ = false;
    if (record_size_is_sure_)
        return;
    const std::size_t distance = distance_to_record(at_, framing::largest_control_power).value_or(0);
    record_size_is_sure_ = distance != 0;
    const bool third_holds =
        record_size_ != 0 && distance > record_size_ && record_or_end_at(at_ + 3 * signed_size(record_size_));
    if (distance != 0 && !third_holds)
        record_size_ = distance;
    if (record_size_ == 0)
        record_size_ = framing::usual_record_size;
    if (announced != 0 && announced != record_size_)
        add_damage(DamageKind::record_length, at_, 0, 0);
}

// Shorter where another record begins within.
std::size_t VolumeReader::Reading::size_of_this_record() {
    const Length declared{record_size_, LengthSource::guess};
    return settled_length(declared);
}

// --- records -------------------------------------------------------------------------------------------

// Reads the header of the record at the place.
void VolumeReader::Reading::enter(std::int64_t place, ControlRecord* record) {
    const std::string_view header = window_.at(place, header_size);
    record->end = place + signed_size(this_size_);
    record->sequence = framing::number_of(header.substr(0, 6));
    record->letter = header[6];
    ++record->logical_record;
    passed_.push_back({place, record->logical_record, record->sequence, header[6], header[7]});
}

void VolumeReader::Reading::begin_control() {
    settle_record_size(window_.at(at_, header_size)[6]);
    this_size_ = size_of_this_record();
    record_.logical_record = totals_.control_records + totals_.data_records;
    passed_.clear();
    enter(at_, &record_);
    add_passed_headers();
    at_ += signed_size(header_size);
}

// True if the record at the place goes on with the control header of the letter. A header that lost its
// continuation character does not begin with a blockette.
bool VolumeReader::Reading::goes_on_at(std::int64_t place, char letter) {
    const std::string_view front = window_.at(place, framing::look);
    if (framing::plausible_beginning(front) != framing::Kind::control || front[6] != letter)
        return false;
    const std::string_view body = front.substr(header_size);
    return front[7] == '*' || !(framing::begins_sound_blockette(body) || framing::is_blank(body));
}

void VolumeReader::Reading::read_in_record() {
    const std::string_view rest = window_.at(at_, static_cast<std::size_t>(record_.end - at_));
    const std::size_t blanks = framing::blanks_in_front(rest);
    if (rest.empty())
        record_.end = at_; // the input ends
    else if (blanks > 0)
        add_padding(signed_size(blanks), record_.logical_record);
    else
        read_blockette();
}

// --- blockettes ----------------------------------------------------------------------------------------

// Adds to the text up to the length, from as many records as it takes; false if they do not hold it.
bool VolumeReader::Reading::gather(Cursor* cursor, std::size_t length) {
    while (text_.size() < length) {
        if (cursor->at == cursor->record.end) {
            if (!goes_on_at(cursor->record.end, cursor->record.letter))
                return false;
            cursor->at += signed_size(header_size);
            enter(cursor->record.end, &cursor->record);
            pieces_.push_back({cursor->at, 0});
        }
        const auto room = static_cast<std::size_t>(cursor->record.end - cursor->at);
        const std::string_view piece = window_.at(cursor->at, std::min(room, length - text_.size()));
        if (piece.empty())
            return false;
        text_ += piece;
        pieces_.back().length += signed_size(piece.size());
        cursor->at += signed_size(piece.size());
    }
    return true;
}

bool VolumeReader::Reading::gather_from_start(Cursor* cursor, std::size_t length) {
    *cursor = {at_, record_};
    text_.clear();
    passed_.clear();
    pieces_.assign(1, {at_, 0});
    return gather(cursor, length);
}

bool VolumeReader::Reading::ends_soundly(const Cursor& cursor) {
    const auto room = static_cast<std::size_t>(cursor.record.end - cursor.at);
    return may_follow(window_.at(cursor.at, std::min(room, head_size)));
}

// True if the text holds just what its fields need.
bool VolumeReader::Reading::fits_its_fields() const {
    return fields_.spec != nullptr && framing::is_blank(fields_.surplus) &&
           std::none_of(fields_.problems.begin(), fields_.problems.end(), is_fault_of_length);
}

// Gathers the text from the first byte that belongs to no item yet, as long as its head says. Where its
// fields end earlier, at the beginning of another blockette, it ends there.
VolumeReader::Reading::Gathered VolumeReader::Reading::gather_blockette(Cursor* cursor) {
    Gathered gathered;
    const bool has_head = gather_from_start(cursor, head_size);
    // A head that the end of the record cuts goes on in the next one, unless a blockette begins there.
    const bool is_anew = cursor->record.end != record_.end &&
                         leads_on(record_.end + signed_size(header_size), cursor->record, false);
    gathered.head = has_head && !is_anew ? framing::blockette_head(text_) : std::nullopt;
    if (!gathered.head)
        return gathered;
    gathered.whole = gather(cursor, gathered.head->length);
    decode_blockette(gathered.head->type, text_, std::endian::big, &fields_);
    if (framing::begins_sound_blockette(fields_.surplus)) {
        gathered.shortened = true;
        gathered.whole = gather_from_start(cursor, text_.size() - fields_.surplus.size());
        decode_blockette(gathered.head->type, text_, std::endian::big, &fields_);
    }
    return gathered;
}

// True if the text can be the blockette that its head says: either it holds just what its fields need; or it
// leads to the next blockette, or is cut and of a known type, and no other blockette begins within it.
bool VolumeReader::Reading::is_credible(const Gathered& gathered, const Cursor& cursor) {
    if (gathered.whole && fits_its_fields())
        return true;
    const bool ends_well = gathered.whole ? ends_soundly(cursor) : framing::is_sound(*gathered.head);
    return ends_well && next_blockette().value_or(text_.size()) >= text_.size();
}

void VolumeReader::Reading::read_blockette() {
    Cursor cursor;
    const Gathered gathered = gather_blockette(&cursor);
    const auto& head = gathered.head;
    if (!head)
        return skip_in_record(DamageKind::no_blockette, 0);
    if (!is_credible(gathered, cursor))
        return framing::is_sound(*head) ? skip_in_record(DamageKind::blockette_length, head->type)
                                        : skip_in_record(DamageKind::no_blockette, 0);
    const std::int64_t begin = at_;
    accept(*head, cursor);
    if (!gathered.whole)
        add_damage(DamageKind::blockette_cut, begin, 0, head->type);
    else if (gathered.shortened)
        add_damage(DamageKind::blockette_length, begin, 0, head->type);
    add_passed_headers();
}

// Gives the blockette.
void VolumeReader::Reading::accept(const framing::Head& head, const Cursor& cursor) {
    if (head.type == 50 || head.type == 52)
        channels_.add(fields_);
    items_.emplace_back(ControlBlockette{head.type, head.length, text_, at_, pieces_, record_.logical_record,
                                         record_.sequence, record_.letter});
    ++totals_.blockettes;
    totals_.blockette_bytes += signed_size(text_.size());
    record_ = cursor.record;
    at_ = cursor.at;
}

// Gives the headers of the records that have been entered.
void VolumeReader::Reading::add_passed_headers() {
    for (const LogicalHeader& header : passed_) {
        ++totals_.control_records;
        totals_.header_bytes += signed_size(header_size);
        if (shows_framing_)
            items_.emplace_back(header);
        if (header.sequence < 0)
            add_damage(DamageKind::sequence_number, header.offset, 0);
    }
    passed_.clear();
}

// True if a blockette begins at a place in the record that leads to another one in it or to nothing but
// blanks; else, with `beyond`, if it may go on in the next record.
bool VolumeReader::Reading::leads_on(std::int64_t place, const ControlRecord& record, bool beyond) {
    const auto room = static_cast<std::size_t>(record.end - place);
    const std::string_view rest = window_.at(place, room);
    const auto head = framing::blockette_head(rest);
    if (!head || !framing::is_sound(*head))
        return false;
    const std::string_view behind = rest.substr(std::min(head->length, rest.size()));
    if (!behind.empty() && (framing::begins_sound_blockette(behind) || framing::is_blank(behind)))
        return true;
    return head->length == room ||
           (beyond && behind.size() < head_size && goes_on_at(record.end, record.letter));
}

// The distance to the next place in the record where a blockette begins that leads on.
std::optional<std::size_t> VolumeReader::Reading::next_blockette() {
    for (const bool beyond : {false, true})
        for (std::int64_t place = at_ + 1; place < record_.end; ++place)
            if (begins_blockette_at(place) && leads_on(place, record_, beyond))
                return static_cast<std::size_t>(place - at_);
    return std::nullopt;
}

void VolumeReader::Reading::skip_in_record(DamageKind kind, int blockette) {
    const std::string_view rest = window_.at(at_, static_cast<std::size_t>(record_.end - at_));
    const std::size_t used = rest.find_last_not_of(std::string_view(" \0", 2)) + 1;
    const std::int64_t length = signed_size(next_blockette().value_or(used));
    add_damage(kind, at_, length, blockette);
    at_ += length;
}

} // namespace quarry
