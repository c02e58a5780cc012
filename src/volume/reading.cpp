// SPDX-License-Identifier: Apache-2.0
#include "volume/reading.h"

namespace quarry {

using framing::Kind;
using framing::signed_size;

namespace {

constexpr std::size_t stride = 1 << 16; // of a search

} // namespace

VolumeReader::Reading::Reading(ByteSource source, std::string name, Framing framing)
    : window_(std::move(source)), name_(std::move(name)), shows_framing_(framing == Framing::shown),
      error_(window_.error()) {}

const Item* VolumeReader::Reading::next() {
    while (given_ == items_.size()) {
        if (over_)
            return nullptr;
        items_.clear();
        given_ = 0;
        step();
    }
    return &items_[given_++];
}

void VolumeReader::Reading::step() {
    window_.release(at_);
    if (in_control_record())
        return read_in_record();
    const std::string_view front = window_.at(at_, framing::look);
    if (front.empty())
        return end();
    switch (framing::plausible_beginning(front)) {
    case Kind::blank:
        return skip_blank();
    case Kind::data:
        return read_data();
    case Kind::control:
        return begin_control();
    case Kind::none:
        return skip_to_record();
    }
}

void VolumeReader::Reading::end() {
    over_ = true;
    const ByteError& error = window_.error();
    if (error.kind == ByteError::Kind::system)
        error_ = error;
    else if (error.kind != ByteError::Kind::none)
        add_damage(error.kind == ByteError::Kind::damaged ? DamageKind::compressed_data
                                                          : DamageKind::after_compressed_data,
                   at_, 0, 0, {}, describe(error));
}

void VolumeReader::Reading::add_damage(DamageKind kind, std::int64_t offset, std::int64_t bytes,
                                       int blockette, std::string_view field, std::string detail) {
    items_.emplace_back(Damage{kind, name_, offset, bytes, totals_.control_records + totals_.data_records,
                               blockette, field, std::move(detail)});
    ++totals_.damages;
    totals_.damaged_bytes += bytes;
}

void VolumeReader::Reading::add_padding(std::int64_t length, std::int64_t logical_record) {
    if (shows_framing_)
        items_.emplace_back(Padding{at_, length, logical_record});
    totals_.padding_bytes += length;
    at_ += length;
}

// Blanks between records, in steps of what is looked at: the first blanks behind them may belong to a
// sequence number.
void VolumeReader::Reading::skip_blank() {
    constexpr std::int64_t step = framing::look;
    std::int64_t end = at_;
    for (std::int64_t blanks = stride; blanks == stride; end += blanks) {
        window_.release(end);
        const std::string_view bytes = window_.at(end, stride);
        blanks = signed_size(framing::blanks_in_front(bytes));
        if (blanks < signed_size(bytes.size()))
            blanks -= blanks % step;
    }
    add_padding(end - at_, 0);
}

void VolumeReader::Reading::skip_to_record() {
    const std::string_view front = window_.at(at_, framing::look);
    const auto blanks = signed_size(framing::blanks_in_front(front));
    const bool is_tail = front.size() < framing::look;
    const std::int64_t begin = at_;
    const std::int64_t end = next_record_after(begin);
    if (blanks >= end - begin)
        return add_padding(end - begin, 0);
    at_ = end;
    add_damage(is_tail && ends_at(end) ? DamageKind::input_ends : DamageKind::no_record, begin, end - begin);
}

// The first place at which a record begins behind `place`, where one should. Bytes are damaged more often
// than lost or added: so multiples of 64 from there come first, and other places count only in a stride
// without such a record. A text may hold the image of one.
std::int64_t VolumeReader::Reading::next_record_after(std::int64_t place) {
    constexpr std::size_t with_header = stride + framing::header_size - 1;
    const auto accept = [this](std::int64_t candidate) { return resumes_at(candidate); };
    for (std::int64_t begin = place + 1;; begin += signed_size(stride)) {
        window_.release(begin);
        const std::size_t size = window_.at(begin, with_header).size();
        const std::int64_t end = begin + signed_size(size);
        if (const auto record =
                first_record(begin + framing::usual_step - 1, end, framing::usual_step, accept))
            return *record;
        if (const auto record = first_record(begin, end, 1, accept))
            return *record;
        if (size < with_header)
            return end;
    }
}

// The first place from `begin` on, in steps, where a record may begin in front of `end` that is accepted.
std::optional<std::int64_t> VolumeReader::Reading::first_record(std::int64_t begin, std::int64_t end,
                                                                std::int64_t step, const Accept& accept) {
    for (std::int64_t place = begin; place < end; place += step) {
        const std::string_view bytes = window_.at(place, static_cast<std::size_t>(end - place));
        const std::size_t candidate = framing::find_candidate(bytes, static_cast<std::size_t>(step));
        if (candidate == std::string_view::npos)
            return std::nullopt;
        place += signed_size(candidate);
        if (accept(place))
            return place;
    }
    return std::nullopt;
}

// True if a logical record begins at the place and what it says of itself, or what follows it, confirms that.
bool VolumeReader::Reading::resumes_at(std::int64_t place) {
    const Kind kind = sound_at(place);
    if (kind == Kind::data)
        return length_by_1000(place) || length_by_channel(place) || confirmed_end(place);
    return kind == Kind::control &&
           (begins_blockette_at(place + signed_size(framing::header_size)) || confirmed_end(place));
}

// Where the record at the place ends, if another one or the end of the input is there.
std::optional<std::int64_t> VolumeReader::Reading::confirmed_end(std::int64_t place) {
    const Kind kind = sound_at(place);
    std::optional<std::size_t> length;
    if (kind == Kind::data) {
        length = length_by_1000(place);
        if (!length)
            length = length_by_channel(place);
        if (!length)
            length = distance_to_record(place, framing::largest_power);
    } else if (kind == Kind::control) {
        length = record_size_ != 0 ? record_size_ : distance_to_record(place, framing::largest_control_power);
    }
    const std::int64_t end = place + signed_size(length.value_or(0));
    return length && record_or_end_at(end) ? std::optional(end) : std::nullopt;
}

Kind VolumeReader::Reading::sound_at(std::int64_t place) {
    return framing::sound_beginning(window_.at(place, framing::look));
}

bool VolumeReader::Reading::begins_blockette_at(std::int64_t place) {
    return framing::begins_sound_blockette(window_.at(place, framing::head_size));
}

bool VolumeReader::Reading::ends_at(std::int64_t place) {
    return window_.at(place - 1, 2).size() == 1;
}

bool VolumeReader::Reading::record_or_end_at(std::int64_t place) {
    const Kind kind = sound_at(place);
    return kind == Kind::data || kind == Kind::control || ends_at(place);
}

// The smallest power of two at whose distance from the place a logical record or the end of the input is.
std::optional<std::size_t> VolumeReader::Reading::distance_to_record(std::int64_t place, int largest_power) {
    for (int power = framing::smallest_power; power <= largest_power; ++power)
        if (record_or_end_at(place + (std::int64_t{1} << power)))
            return std::size_t{1} << power;
    return std::nullopt;
}

} // namespace quarry
