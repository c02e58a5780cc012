#include "decode/decode.h"

#include "decode/decode_32bit.h"
#include "decode/decode_asro.h"
#include "decode/decode_cdsn.h"
#include "decode/decode_dwwssn.h"
#include "decode/decode_geoscope.h"
#include "decode/decode_ieeefloat.h"
#include "decode/decode_sro.h"
#include "decode/decode_steim.h"
#include "decode/decode_steim2.h"
#include "decode/decode_usnsn.h"
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

constexpr std::array<SeedFormat, 18> formats{{
    {"", "**", 0, decode_unknown, 0},
    {"32-Bit Integer Format", "t4", 4, decode_32bit, 4},
    {"SUN IEEE integer", "t4", 4, decode_32bit, 4},
    {"ASRO Gain-Ranged Format", "t4", 4, decode_asro, 2},
    {"SRO Gain-Ranged Format", "t4", 4, decode_sro, 2},
    {"CDSN Gain-Ranged Format", "t4", 4, decode_cdsn, 2},
    {"DWWSSN SUN IEEE short integer", "t4", 4, decode_dwwssn, 2},
    {"DWWSSN Integer Format", "t4", 4, decode_dwwssn, 2},
    {"Steim Integer Compression Format", "t4", 4, decode_steim, 0},
    {"Steim2 Integer Compression Format", "t4", 4, decode_steim2, 0},
    {"IEEE single precision real", "t4", 4, decode_ieeefloat, 4},
    {"SUN IEEE single precision real", "t4", 4, decode_ieeefloat, 4},
    {"DWWSSN demultiplexed short (16 bit) 68000 integer", "t4", 4, decode_dwwssn, 2},
    {"Geoscope gain-range on 3 bits", "t4", 12, decode_geo1, 6},
    {"Geoscope-3 byte (switched gain)", "t4", 12, decode_geo2, 9},
    {"Geoscope gain range on 4 bits", "t4", 12, decode_geo3, 6},
    {"ASCII RefTek Log Files, State of Health", "as", 1, decode_ascii, 1},
    {"USNSN Integer Compression", "t4", 4, decode_usnsn, 0},
}};

constexpr std::array<Xlat, 7> encodings{{
    {"DWWSSN SUN IEEE short integer", 1},
    {"32-Bit Integer Format", 3},
    {"IEEE single precision real", 4},
    {"Steim Integer Compression Format", 10},
    {"Steim2 Integer Compression Format", 11},
    {"USNSN Integer Compression", 15},
    {"CDSN Gain-Ranged Format", 16},
}};

// Fetched from the parameter file at the first use that finds one, then kept.
std::optional<Map<std::string>> data_type_aliases;

// The raw bytes from the beginning of the data to the record's end; none if it begins outside the record, or
// if there is no data to begin with.
std::optional<std::int32_t> raw_bytes(const blk_dh_t& dh) {
    if (dh.beg_data < 0 || dh.beg_data > dh.length || (dh.data == nullptr && dh.beg_data < dh.length))
        return std::nullopt;
    return dh.length - dh.beg_data;
}

void complain_of_missing_samples(const blk_dh_t& dh, std::int32_t found, std::int32_t expected) {
    log_complain(0, "Record of %s:%s holds %d of %d samples\n", std::string(member_text(dh.stn_id)).c_str(),
                 std::string(member_text(dh.chan_id)).c_str(), found, expected);
}

std::int32_t copy_raw_bytes(const blk_dh_t& dh, char** output) {
    log_complain(0,
                 "Can't understand data type '%s'\n\tconsider adding an alias for this type in the parameter "
                 "file quarry.pf",
                 std::string(member_text(dh.format)).c_str());
    if (!raw_bytes(dh))
        complain_of_missing_samples(dh, 0, std::max(dh.nsamps, 0));
    const auto size = static_cast<std::size_t>(raw_bytes(dh).value_or(0));
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

const std::span<const SeedFormat> seed_format_map = formats;
const int seed_format_count = static_cast<int>(formats.size());
const std::span<const Xlat> seedname = encodings;
const int nseedname = static_cast<int>(encodings.size());

int sd_data_type(std::string_view name) {
    if (!data_type_aliases)
        data_type_aliases = param_get_map(Parameters, "data_type_aliases");
    const std::string* alias = data_type_aliases ? data_type_aliases->get(name) : nullptr;
    const std::string_view candidate = alias != nullptr ? std::string_view(*alias) : name;
    for (int i = 0; i < seed_format_count; ++i)
        if (formats[static_cast<std::size_t>(i)].seed == candidate)
            return i;
    return 0;
}

std::int32_t decode_data(blk_dh_t* dh, char** output, const char** csstype) {
    const bool known = dh->type > 0 && dh->type < seed_format_count;
    const SeedFormat& format = formats[known ? static_cast<std::size_t>(dh->type) : 0];
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

    const std::optional<std::int32_t> raw = raw_bytes(*dh);
    std::int32_t found = raw ? expected : 0;
    if (raw && format.raw_size > 0)
        found = std::min(expected, *raw / format.raw_size);
    const std::int32_t status = raw ? format.convert(dh->data, found, *raw, dh->byteswap) : -1;
    if (raw && found == expected)
        return status;
    complain_of_missing_samples(*dh, found, expected);
    if (components > 1)
        spread_components(static_cast<float*>(samples), components, found, expected);
    return -1;
}

std::int32_t decode_unknown(char* data, std::int32_t, std::int32_t, int) {
    seismic_data_ptr = static_cast<float*>(static_cast<void*>(data));
    return -1;
}

std::int32_t decode_ascii(char* data, std::int32_t nsamples, std::int32_t, int) {
    if (nsamples > 0)
        std::memcpy(seismic_data_ptr, data, static_cast<std::size_t>(nsamples));
    return 1;
}

} // namespace quarry
