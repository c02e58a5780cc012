// SPDX-License-Identifier: Apache-2.0
#include "quarry/decoders.h"

#include "decode/formats.h"
#include "platform/bytes.h"
#include "platform/memory.h"
#include "platform/message_log.h"
#include "platform/text.h"
#include "state.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

namespace quarry {

namespace {

// Fetched from the parameter file at the first use that finds one, then kept.
std::optional<Map<std::string>> data_type_aliases;

// What names mean, as found before or after the aliases were there.
struct NamedType {
    std::string name;
    int type = format_unknown; // of the empty name without aliases
    bool with_aliases = false;
};

// The two looked up last: the records of a volume mostly have one name declared by its control headers and
// one given by their own blockettes 1000.
std::array<NamedType, 2> last_named;
std::size_t next_forgotten = 0;

const NamedType* remembered(std::string_view name) {
    for (const NamedType& named : last_named)
        if (named.name == name && named.with_aliases == data_type_aliases.has_value())
            return &named;
    return nullptr;
}

int row_named(std::string_view name) {
    const auto row = std::find_if(seed_format_map.begin(), seed_format_map.end(),
                                  [name](const SeedFormat& format) { return format.seed == name; });
    return row == seed_format_map.end() ? format_unknown : static_cast<int>(row - seed_format_map.begin());
}

// How many bytes lie between the beginning of the data and the record's end; none if the data begin outside
// the record, or if the record has no data.
std::optional<std::int32_t> raw_byte_count(const blk_dh_t& dh) {
    if (dh.beg_data < 0 || dh.beg_data > dh.length || (dh.data == nullptr && dh.beg_data < dh.length))
        return std::nullopt;
    return dh.length - dh.beg_data;
}

void report_missing_samples(const blk_dh_t& dh, std::int32_t found, std::int32_t expected) {
    log_complain(0, "Record of %s:%s holds %d of %d samples\n", std::string(member_text(dh.stn_id)).c_str(),
                 std::string(member_text(dh.chan_id)).c_str(), found, expected);
}

std::int32_t copy_raw_bytes(const blk_dh_t& dh, char** output) {
    log_complain(0,
                 "Can't understand data type '%s'\n\tconsider adding an alias for this type in the parameter "
                 "file quarry.pf",
                 std::string(member_text(dh.format)).c_str());
    if (!raw_byte_count(dh))
        report_missing_samples(dh, 0, std::max(dh.nsamps, 0));
    const auto size = static_cast<std::size_t>(raw_byte_count(dh).value_or(0));
    *output = bytes_dup({dh.data, size});
    if (*output == nullptr)
        out_of_memory(QUARRY_SITE("decode.cpp"), size, "output");
    return -1;
}

// A decoder of `components` lays them out for the `found` sample instants that it decodes; they belong
// `expected` instants apart.
void spread_components(float* samples, std::int32_t components, std::int32_t found, std::int32_t expected) {
    for (std::int64_t j = components - 1; j > 0; --j)
        std::memmove(samples + j * expected, samples + j * found,
                     static_cast<std::size_t>(found) * sizeof(float));
    for (std::int64_t j = 0; j < components; ++j)
        std::fill(samples + j * expected + found, samples + (j + 1) * expected, 0.0F);
}

} // namespace

int sd_data_type(std::string_view name) {
    if (!data_type_aliases)
        data_type_aliases = param_get_map(Parameters, "data_type_aliases");
    if (const NamedType* named = remembered(name); named != nullptr)
        return named->type;
    const std::string* alias = data_type_aliases ? data_type_aliases->get(name) : nullptr;
    const int type = row_named(alias != nullptr ? *alias : name);
    last_named[next_forgotten] = {std::string(name), type, data_type_aliases.has_value()};
    next_forgotten ^= 1;
    return type;
}

std::int32_t decode_data(blk_dh_t* dh, char** output, const char** csstype) {
    const bool known = dh->type > format_unknown && dh->type < seed_format_count;
    const SeedFormat& format = seed_format_map[static_cast<std::size_t>(known ? dh->type : 0)];
    *csstype = format.css;
    if (!known)
        return copy_raw_bytes(*dh, output);

    constexpr std::int32_t float_size = sizeof(float);
    const std::int32_t components = std::max(format.size / float_size, 1);
    const std::int32_t expected = std::max(dh->nsamps, 0);
    // USNSN stores a sample even where none is expected.
    void* const samples = std::calloc(std::max<std::size_t>(static_cast<std::size_t>(expected), 1),
                                      static_cast<std::size_t>(components) * sizeof(float));
    if (samples == nullptr)
        out_of_memory(QUARRY_SITE("decode.cpp"), static_cast<unsigned long>(dh->nsamps), "seismic_data_ptr");
    *output = static_cast<char*>(samples);
    seismic_data_ptr = static_cast<float*>(samples);

    const std::optional<std::int32_t> raw = raw_byte_count(*dh);
    std::int32_t found = raw ? expected : 0;
    if (raw && format.raw_size > 0)
        found = std::min(expected, *raw / format.raw_size);
    const std::int32_t status = raw ? format.convert(dh->data, found, *raw, dh->byteswap) : -1;
    if (raw && found == expected)
        return status;
    report_missing_samples(*dh, found, expected);
    if (components > 1)
        spread_components(static_cast<float*>(samples), components, found, expected);
    return -1;
}

} // namespace quarry
