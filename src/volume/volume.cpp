// SPDX-License-Identifier: Apache-2.0
#include "quarry/volume.h"

#include "decode/data_record.h"
#include "platform/text.h"
#include "volume/reading.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quarry {

// --- damage --------------------------------------------------------------------------------------------

namespace {

struct KindRow {
    std::string_view name;
    std::string_view text;
};
constexpr std::array kinds{
    KindRow{"compressed_data", "the compressed data are damaged"},
    KindRow{"after_compressed_data", "the compressed data are followed by something else"},
    KindRow{"no_record", "no logical record begins here"},
    KindRow{"input_ends", "the input ends within a logical record"},
    KindRow{"sequence_number", "the sequence number is not a number"},
    KindRow{"record_length", "the declared record length does not lead to the next record"},
    KindRow{"no_blockette", "no blockette begins here"},
    KindRow{"blockette_length", "the length of the blockette does not lead to the next one"},
    KindRow{"blockette_cut", "the rest of the blockette is missing"},
    KindRow{"blockette_chain", "the chain of data blockettes is broken"},
    KindRow{"data_offset", "the beginning of data is not in the record"},
    KindRow{"field", "the field does not hold what it should"},
};
static_assert(kinds.size() == damage_kinds);

std::string what_is_wrong(const Damage& damage) {
    if (damage.kind == DamageKind::field)
        return std::string(damage.field) + " " + damage.detail;
    std::string text(describe(damage.kind));
    return damage.detail.empty() ? text : text + ": " + damage.detail;
}

Damage field_damage(std::string_view input, std::int64_t offset, std::int64_t logical_record, int type,
                    const FieldProblem& problem) {
    return {DamageKind::field,
            std::string(input),
            offset,
            0,
            logical_record,
            type,
            problem.field.spec->name,
            std::string(describe(problem.fault))};
}

} // namespace

std::string_view describe(DamageKind kind) {
    return kinds[static_cast<std::size_t>(kind)].text;
}

std::string_view name_of(DamageKind kind) {
    return kinds[static_cast<std::size_t>(kind)].name;
}

std::string describe(const Damage& damage) {
    std::string text = damage.input + ": byte " + std::to_string(damage.offset);
    if (damage.logical_record > 0)
        text += ", logical record " + std::to_string(damage.logical_record);
    if (damage.blockette > 0)
        text += ", blockette " + three_digits(damage.blockette);
    text += ": " + what_is_wrong(damage);
    return damage.bytes > 0 ? text + " (" + std::to_string(damage.bytes) + " bytes skipped)" : text;
}

std::int64_t input_offset(const ControlBlockette& blockette, std::size_t position) {
    auto rest = static_cast<std::int64_t>(position);
    for (const Extent& piece : blockette.pieces) {
        if (rest < piece.length)
            return piece.offset + rest;
        rest -= piece.length;
    }
    const Extent& last = blockette.pieces.back();
    return last.offset + last.length + rest;
}

Damage damage_of(std::string_view input, const ControlBlockette& blockette, const FieldProblem& problem) {
    return field_damage(input, input_offset(blockette, problem.field.offset), blockette.logical_record,
                        blockette.type, problem);
}

Damage damage_of(std::string_view input, const DataRecord& record, const DataBlocketteExtent& blockette,
                 const FieldProblem& problem) {
    const std::size_t offset = blockette.offset + problem.field.offset;
    return field_damage(input, record.offset + static_cast<std::int64_t>(offset), record.logical_record,
                        blockette.type, problem);
}

// --- data records --------------------------------------------------------------------------------------

std::string_view text_of(const DataRecord& record, const DataBlocketteExtent& blockette) {
    return {record.bytes.data() + blockette.offset, blockette.length};
}

double rate_of(const FixedHeader& header) {
    return sample_rate(header.rate_factor, header.rate_multiplier);
}

std::int64_t end_of(const DataRecord& record) {
    if (record.rate <= 0 || record.header.samples < 2)
        return record.start;
    constexpr double longest = 1e17; // microseconds: 3000 years
    return record.start + std::llround(std::min((record.header.samples - 1) * 1e6 / record.rate, longest));
}

// --- the reader ----------------------------------------------------------------------------------------

VolumeReader::VolumeReader(std::unique_ptr<Reading> reading) : reading_(std::move(reading)) {}
VolumeReader::VolumeReader(VolumeReader&&) noexcept = default;
VolumeReader& VolumeReader::operator=(VolumeReader&&) noexcept = default;
VolumeReader::~VolumeReader() = default;

VolumeReader VolumeReader::of_path(const std::string& path, Framing framing) {
    return VolumeReader(std::make_unique<Reading>(ByteSource::of_path(path.c_str()), path, framing));
}

VolumeReader VolumeReader::of_descriptor(int descriptor, std::string name, Framing framing) {
    return VolumeReader(
        std::make_unique<Reading>(ByteSource::of_descriptor(descriptor), std::move(name), framing));
}

VolumeReader VolumeReader::of_memory(std::span<const char> bytes, std::string name, Framing framing) {
    return VolumeReader(std::make_unique<Reading>(ByteSource::of_memory(bytes), std::move(name), framing));
}

const Item* VolumeReader::next() {
    return reading_->next();
}
const ByteError& VolumeReader::error() const {
    return reading_->error();
}
const Totals& VolumeReader::totals() const {
    return reading_->totals();
}
std::int64_t VolumeReader::input_bytes() const {
    return reading_->input_bytes();
}
const std::string& VolumeReader::name() const {
    return reading_->name();
}

} // namespace quarry
