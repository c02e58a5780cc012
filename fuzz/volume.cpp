// SPDX-License-Identifier: Apache-2.0
// Volumes through the open reader: every item of them, the fields of every blockette, the samples of every
// data record, the inventory of the headers and the data found. The input is a volume as it stands in a file.

#include "fuzz.h"

#include "inventory/builder.h"
#include "platform/byte_source.h"
#include "quarry/data_found.h"
#include "quarry/fields.h"
#include "quarry/samples.h"
#include "quarry/volume.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>
#include <vector>

namespace quarry {

namespace {

constexpr std::int64_t enough = std::int64_t{4} << 20; // of what a small file may become

std::int64_t decompressed_size(std::string_view input) {
    ByteSource source = ByteSource::of_memory(input);
    std::array<char, 65536> piece;
    std::int64_t size = 0;
    for (ssize_t count = 1; count > 0 && size <= enough; size += std::max<ssize_t>(count, 0))
        count = source.read(piece);
    return size;
}

// What belongs to the items so far.
class Owned {
public:
    explicit Owned(std::int64_t size) : size_(size) {}

    void add(std::int64_t offset, std::int64_t length) {
        fuzz::promise(offset >= 0 && length >= 0 && offset <= size_ - length, "within the input");
        if (length > 0)
            extents_.push_back({offset, length});
    }

    // True if each byte belongs to one item.
    bool adds_up() {
        std::ranges::sort(extents_, {}, &Extent::offset);
        std::int64_t end = 0;
        for (const Extent& extent : extents_)
            if (extent.offset != std::exchange(end, extent.offset + extent.length))
                return false;
        return end == size_;
    }

private:
    std::int64_t size_;
    std::vector<Extent> extents_;
};

void check_fields(const Fields& fields) {
    const std::string_view text = fields.text;
    for (std::span<const Field> rest = fields.fields; !rest.empty(); rest = rest.subspan(1)) {
        const Field& field = rest.front();
        fuzz::promise(field.offset <= text.size() && field.raw.size() <= text.size() - field.offset &&
                          field.raw.data() == text.data() + field.offset,
                      "a field is a part of its blockette");
        for (const auto row : rows_at(rest))
            fuzz::promise(!row.empty() && row.size() < rest.size(),
                          "a row is a part of what follows its count");
    }
    for (const FieldProblem& problem : fields.problems)
        fuzz::promise(!describe(problem.fault).empty(), "a problem has words");
}

class Walk {
public:
    explicit Walk(std::int64_t size) : owned_(size) {}

    void take(const ControlBlockette& blockette) {
        std::size_t length = 0;
        for (const Extent& piece : blockette.pieces) {
            fuzz::promise(input_offset(blockette, length) == piece.offset, "a piece stands where it says");
            owned_.add(piece.offset, piece.length);
            length += static_cast<std::size_t>(piece.length);
        }
        fuzz::promise(length == blockette.text.size() && length <= blockette.length, "pieces make the text");
        const Fields fields = decode_blockette(blockette.type, blockette.text);
        check_fields(fields);
        builder_.add(blockette, fields);
    }

    void take(const DataRecord& record) {
        owned_.add(record.offset, std::ssize(record.bytes));
        fuzz::promise(record.bytes.size() <= record.length, "no more bytes than the length");
        fuzz::promise(record.start <= end_of(record) || record.rate <= 0, "a record ends behind its start");
        for (const DataBlocketteExtent& blockette : record.blockettes)
            check_fields(decode_blockette(blockette.type, text_of(record, blockette), record.header_order));
        if (const std::optional<Samples> samples = samples_of(record))
            std::visit(
                [&](const auto& values) {
                    fuzz::promise(values.size() + samples->missing == record.header.samples,
                                  "samples are there or missing");
                },
                samples->values);
        found_.add(record);
    }

    void take(const Damage& damage) {
        owned_.add(damage.offset, damage.bytes);
        fuzz::promise(describe(damage).find('\n') == std::string::npos, "damage is one line");
    }
    void take(const LogicalHeader& header) { owned_.add(header.offset, 8); }
    void take(const Padding& padding) { owned_.add(padding.offset, padding.length); }

    void end(const Totals& totals) {
        fuzz::promise(owned_.adds_up(), "each byte belongs to one item");
        std::int64_t records = 0;
        for (const ChannelData& channel : found_.channels())
            for (const EpochData& epoch : channel.data)
                records += epoch.records;
        fuzz::promise(records == totals.data_records, "every data record is counted");
        for (const Finding& finding : builder_.finish().findings)
            fuzz::promise(!describe(finding).empty(), "a finding has words");
    }

private:
    Owned owned_;
    InventoryBuilder builder_;
    DataFound found_;
};

void read(std::string_view volume) {
    const std::int64_t size = decompressed_size(volume);
    if (size > enough)
        return;
    VolumeReader reader = VolumeReader::of_memory(volume, "volume", Framing::shown);
    Walk walk(size);
    while (const Item* item = reader.next())
        std::visit([&](const auto& one) { walk.take(one); }, *item);
    fuzz::promise(reader.next() == nullptr, "the end stays the end");
    fuzz::promise(reader.totals().bytes() == size, "the totals add up");
    walk.end(reader.totals());

    VolumeReader again = VolumeReader::of_memory(volume, "volume");
    read_inventory(&again);
    fuzz::promise(again.totals() == reader.totals(), "hidden items count, too");
}

} // namespace

} // namespace quarry

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quarry::fuzz::run_to_its_end(quarry::read, quarry::fuzz::text_of(data, size));
    return 0;
}
