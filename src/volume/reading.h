// SPDX-License-Identifier: Apache-2.0
// How a volume is read: from one logical record to the next, and within those of control headers from one
// blockette to the next.
//
// No length is taken on trust. That of a record is compared with where records begin, that of a blockette
// with its own fields and with what follows it, so that one damaged byte costs little.
#pragma once

#include "quarry/volume.h"
#include "volume/channel_lengths.h"
#include "volume/framing.h"
#include "volume/window.h"

#include <functional>

namespace quarry {

class VolumeReader::Reading {
public:
    Reading(ByteSource source, std::string name, Framing framing);

    const Item* next();
    const ByteError& error() const { return error_; }
    const Totals& totals() const { return totals_; }
    const std::string& name() const { return name_; }
    std::int64_t input_bytes() const { return window_.input_bytes(); }

private:
    // A logical record of control blockettes.
    struct ControlRecord {
        std::int64_t end = 0; // of its bytes in the input
        std::int64_t logical_record = 0;
        int sequence = -1;
        char letter = '\0';
    };
    // A place in one.
    struct Cursor {
        std::int64_t at = 0;
        ControlRecord record = {};
    };
    // A blockette that has been gathered in text_ and decoded to fields_.
    struct Gathered {
        std::optional<framing::Head> head = {};
        bool whole = false;
        bool shortened = false; // its length leads over the beginning of another one
    };
    using Accept = std::function<bool(std::int64_t place)>;
    struct Length {
        std::size_t bytes;
        LengthSource source;
    };

    // reading.cpp: records
    void step();
    void end();
    void skip_blank();
    void skip_to_record();
    std::int64_t next_record_after(std::int64_t place);
    std::optional<std::int64_t> first_record(std::int64_t begin, std::int64_t end, std::int64_t step,
                                             const Accept& accept);
    bool resumes_at(std::int64_t place);
    std::optional<std::int64_t> confirmed_end(std::int64_t place);
    framing::Kind sound_at(std::int64_t place);
    bool begins_blockette_at(std::int64_t place);
    bool ends_at(std::int64_t place);
    bool record_or_end_at(std::int64_t place);
    std::optional<std::size_t> distance_to_record(std::int64_t place, int largest_power);
    void add_damage(DamageKind kind, std::int64_t offset, std::int64_t bytes, int blockette = 0,
                    std::string_view field = {}, std::string detail = {});
    void add_padding(std::int64_t length, std::int64_t logical_record);

    // data.cpp: data records
    void read_data();
    std::optional<RecordFormat> format_at(std::int64_t place, std::endian order);
    std::optional<std::size_t> length_by_1000(std::int64_t place);
    std::optional<std::size_t> length_by_channel(std::int64_t place);
    Length declared_length();
    bool record_within(std::int64_t place, const Length& length);
    std::size_t settled_length(const Length& declared);
    std::optional<std::int64_t> record_between(std::int64_t begin, std::int64_t end);
    std::size_t length_up_to(std::size_t distance) const;
    void describe_record(DataRecord* record);
    bool list_blockettes(DataRecord* record);

    // control.cpp: logical records of control blockettes
    bool in_control_record() const { return at_ < record_.end; }
    void begin_control();
    void settle_record_size(char letter);
    std::size_t announced_size();
    std::size_t size_of_this_record();
    void enter(std::int64_t place, ControlRecord* record);
    bool goes_on_at(std::int64_t place, char letter);
    void read_in_record();
    void read_blockette();
    bool gather(Cursor* cursor, std::size_t length);
    bool gather_from_start(Cursor* cursor, std::size_t length);
    Gathered gather_blockette(Cursor* cursor);
    bool is_credible(const Gathered& gathered, const Cursor& cursor);
    bool ends_soundly(const Cursor& cursor);
    bool fits_its_fields() const;
    void accept(const framing::Head& head, const Cursor& cursor);
    void add_passed_headers();
    void skip_in_record(DamageKind kind, int blockette);
    bool leads_on(std::int64_t place, const ControlRecord& record, bool beyond);
    std::optional<std::size_t> next_blockette();

    Window window_;
    std::string name_;
    bool shows_framing_;
    ByteError error_;
    bool over_ = false;
    std::int64_t at_ = 0; // the first byte that belongs to no item yet
    std::vector<Item> items_ = {};
    std::size_t given_ = 0; // of them
    Totals totals_ = {};
    ChannelLengths channels_ = {};

    // Of data records.
    std::size_t last_length_ = 0; // 0: there was none
    std::vector<DataBlocketteExtent> blockettes_ = {};

    // Of control records.
    std::size_t record_size_ = 0; // 0: not known yet
    bool record_size_is_sure_ = false;
    std::size_t this_size_ = 0; // of the one being read
    ControlRecord record_ = {}; // the one being read
    std::string text_ = {};     // of the blockette being read
    std::vector<Extent> pieces_ = {};
    std::vector<LogicalHeader> passed_ = {}; // headers of the records that it goes on in
    Fields fields_ = {};                     // of it
};

} // namespace quarry
