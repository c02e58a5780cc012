// SPDX-License-Identifier: Apache-2.0
// Reading SEED volumes: control blockettes, data records and damage, one at a time, in the order of the
// input.
//
//     auto reader = quarry::VolumeReader::of_path("volume.seed.gz");
//     while (const quarry::Item* item = reader.next()) {
//         if (const auto* blockette = std::get_if<quarry::ControlBlockette>(item))
//             std::cout << blockette->type << " at " << blockette->offset << '\n';
//         else if (const auto* record = std::get_if<quarry::DataRecord>(item))
//             std::cout << record->station << ' ' << record->channel << ' ' << record->header.samples <<
//             '\n';
//         else if (const auto* damage = std::get_if<quarry::Damage>(item))
//             std::cerr << quarry::describe(*damage) << '\n';
//     }
//     if (reader.error().kind != quarry::ByteError::Kind::none)
//         std::cerr << reader.name() << ": " << quarry::describe(reader.error()) << '\n';
//
// Its first bytes decide whether the input is compressed; all offsets count decompressed bytes from 0.
// Reading is forgiving: whatever the bytes are, it goes on to their end, and what is wrong is an item like
// any other. Only an input that cannot be opened or read ends it with an error.
//
// Nothing is kept outside a reader: any number of them, in any threads, do not affect each other. A reader
// needs about 1 MiB (up to 5 MiB if data records are 1 MiB long), and some 100 bytes for each channel epoch
// of the headers, however long the input is.
#pragma once

#include "quarry/byte_error.h"
#include "quarry/fields.h"
#include "quarry/fixed_header.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#pragma GCC visibility push(default)
namespace quarry {

// --- damage --------------------------------------------------------------------------------------------

enum class DamageKind : std::uint8_t {
    compressed_data,       // compressed data are damaged or cut: the input ends here
    after_compressed_data, // something else follows the compressed data; it is ignored
    no_record,             // no logical record begins here: these bytes were skipped
    input_ends,            // the input ends within a logical record
    sequence_number,       // the sequence number of a logical record is not a number
    record_length,         // the declared length does not lead to the next record, or no record can have it
    no_blockette,          // no control blockette begins here: these bytes were skipped
    blockette_length,      // the length does not lead to the next blockette: a shorter one was used, or the
                           // bytes were skipped
    blockette_cut,         // the rest of a control blockette is missing
    blockette_chain,       // the chain of data blockettes leaves the record or goes back
    data_offset,           // the beginning of data is outside the record or within its header
    field,                 // a field of a blockette is wrong, as its FieldProblem says
};
inline constexpr std::size_t damage_kinds = static_cast<std::size_t>(DamageKind::field) + 1;

// What is wrong and where. It owns its texts.
struct Damage {
    DamageKind kind = DamageKind::no_record;
    std::string input;               // its name
    std::int64_t offset = 0;         // of the first byte concerned
    std::int64_t bytes = 0;          // that were skipped; 0 if they belong to another item
    std::int64_t logical_record = 0; // counted from 1: the one concerned, or the last one before
    int blockette = 0;               // type; 0 for none
    std::string_view field = {};     // name as in the tables of fields; empty for none
    std::string detail = {};         // more words; empty for none

    bool operator==(const Damage&) const = default;
};

// The kind as a name ("no_record") and in words ("no logical record begins here"), and the whole damage as
// one line without an end of line: "volume.seed: byte 4096, logical record 2, blockette 053: ...". Texts of
// the volume are not in it, names of inputs are as given.
std::string_view name_of(DamageKind kind);
std::string_view describe(DamageKind kind);
std::string describe(const Damage& damage);

// --- items ---------------------------------------------------------------------------------------------

// A run of bytes of the input.
struct Extent {
    std::int64_t offset;
    std::int64_t length;

    bool operator==(const Extent&) const = default;
};

// The first 8 bytes of a logical record of control blockettes. Data records have theirs within.
struct LogicalHeader {
    std::int64_t offset;
    std::int64_t logical_record; // counted from 1, data records included
    int sequence;                // -1 if it is not a number
    char letter;                 // V, A, S or T; blank for a record without blockettes
    char continuation;           // '*' if the control header goes on from the record before
};

// Blanks or zeros: after the last blockette of a logical record, or between logical records.
struct Padding {
    std::int64_t offset;
    std::int64_t length;
    std::int64_t logical_record; // 0 between records
};

struct ControlBlockette {
    int type;
    std::size_t length;    // as it says itself; `text` is shorter if the rest is missing
    std::string_view text; // whole, from its type on, joined over logical records
    std::int64_t offset;
    std::span<const Extent> pieces; // where `text` stands, one in each logical record
    std::int64_t logical_record;    // of its beginning
    int sequence;                   // of that record; -1 if it is not a number
    char letter;                    // of that record: V, A, S or T
};

// Where the byte at `position` of the text stands in the input.
std::int64_t input_offset(const ControlBlockette& blockette, std::size_t position);

// A data blockette: up to the next one, the last one up to the data.
struct DataBlocketteExtent {
    int type;
    std::size_t offset; // in the record
    std::size_t length;
};

// What a blockette 1000 says about its record.
struct RecordFormat {
    int encoding;
    std::endian word_order; // of the data
    int power;              // the record's length is two to the power of it, if it is 7 to 20
};

// Where the length of a data record comes from.
enum class LengthSource : std::uint8_t {
    blockette_1000,
    channel,     // the channel's headers (blockette 052) for the time of the record
    next_record, // where the next record begins
    guess,       // the length of the data record before, or 4096
};

struct DataRecord {
    std::int64_t offset;
    std::size_t length;          // `bytes` are fewer if the input ends before
    std::span<const char> bytes; // the whole record
    LengthSource length_source;
    std::int64_t logical_record; // counted from 1, control records included
    int sequence;                // -1 if it is not a number
    char quality;                // D, R, Q or M
    std::string_view network;    // the codes are trimmed of blanks
    std::string_view station;
    std::string_view location;
    std::string_view channel;
    FixedHeader header;
    std::endian header_order; // of the header and of the data blockettes
    std::span<const DataBlocketteExtent> blockettes;
    std::span<const char> payload;              // from the beginning of data to the end of `bytes`
    std::optional<RecordFormat> format;         // of the first blockette 1000
    std::optional<float> stated_rate;           // of the first blockette 100
    std::optional<int> microseconds;            // of the first blockette 1001, and its
    std::optional<std::uint8_t> timing_quality; // percent

    // Microseconds since 1970 of the first sample: the header's time with the microseconds of blockette 1001,
    // and with the time correction unless the activity flags say that it has been applied.
    std::int64_t start;
    // Samples per second: that of blockette 100 if it is positive and finite, else that of the factors; 0 for
    // none.
    double rate;
};

// The bytes of a data blockette, as decode_blockette takes them in the order of the record's header.
std::string_view text_of(const DataRecord& record, const DataBlocketteExtent& blockette);

// Sample rate factor and multiplier as samples per second; 0 if one of them is 0.
double rate_of(const FixedHeader& header);

// Microseconds since 1970 of the last sample: the start if the record has one sample or none, or if the rate
// is 0.
std::int64_t end_of(const DataRecord& record);

// What decode_blockette found wrong in a blockette, as damage.
Damage damage_of(std::string_view input, const ControlBlockette& blockette, const FieldProblem& problem);
Damage damage_of(std::string_view input, const DataRecord& record, const DataBlocketteExtent& blockette,
                 const FieldProblem& problem);

using Item = std::variant<ControlBlockette, DataRecord, Damage, LogicalHeader, Padding>;

// --- the reader ----------------------------------------------------------------------------------------

// Bytes and things met so far. Each byte belongs to exactly one of the five kinds.
struct Totals {
    std::int64_t header_bytes = 0; // of logical records of control blockettes
    std::int64_t blockette_bytes = 0;
    std::int64_t padding_bytes = 0;
    std::int64_t data_bytes = 0; // data records, with all that is in them
    std::int64_t damaged_bytes = 0;

    std::int64_t control_records = 0;
    std::int64_t blockettes = 0;
    std::int64_t data_records = 0;
    std::int64_t damages = 0;

    std::int64_t bytes() const {
        return header_bytes + blockette_bytes + padding_bytes + data_bytes + damaged_bytes;
    }
    // False for an input in which nothing of a volume was found.
    bool holds_seed() const { return control_records + data_records > 0; }
    bool operator==(const Totals&) const = default;
};

// Which items next() gives besides blockettes, data records and damage.
enum class Framing : std::uint8_t {
    hidden,
    shown // logical headers and padding
};

class VolumeReader {
public:
    // Opens the file. Where that fails, error() says why and next() gives nothing.
    static VolumeReader of_path(const std::string& path, Framing framing = Framing::hidden);
    // Reads a descriptor of the caller's (standard input, a pipe), which stays open. The name is for damage.
    static VolumeReader of_descriptor(int descriptor, std::string name, Framing framing = Framing::hidden);
    // Reads bytes of the caller's, which outlive the reader.
    static VolumeReader of_memory(std::span<const char> bytes, std::string name,
                                  Framing framing = Framing::hidden);

    VolumeReader(const VolumeReader&) = delete;
    VolumeReader& operator=(const VolumeReader&) = delete;
    VolumeReader(VolumeReader&&) noexcept;
    VolumeReader& operator=(VolumeReader&&) noexcept;
    ~VolumeReader();

    // The next item, which is valid until the next call, as are all its views; null at the end and after an
    // error. Damage of a blockette or data record follows it. A blockette that goes on in further logical
    // records stands before the headers of those.
    const Item* next();

    // Why the input could not be opened or read on; of kind none as long as it could.
    const ByteError& error() const;

    const Totals& totals() const;
    const std::string& name() const;

    // Bytes taken from the input so far: of a file, how far it has been read; compressed ones where it is
    // compressed. May be called in any thread while the reader exists.
    std::int64_t input_bytes() const;

private:
    class [[gnu::visibility("hidden")]] Reading;
    explicit VolumeReader(std::unique_ptr<Reading> reading);

    std::unique_ptr<Reading> reading_;
};

} // namespace quarry
#pragma GCC visibility pop
