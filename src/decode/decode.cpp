#include "decode/decode.h"

#include "state.h"

#include <array>
#include <optional>

namespace quarry {

namespace {

constexpr std::array<SeedFormat, 18> formats{{
    {"", "**", 0, nullptr},
    {"32-Bit Integer Format", "t4", 4, nullptr},
    {"SUN IEEE integer", "t4", 4, nullptr},
    {"ASRO Gain-Ranged Format", "t4", 4, nullptr},
    {"SRO Gain-Ranged Format", "t4", 4, nullptr},
    {"CDSN Gain-Ranged Format", "t4", 4, nullptr},
    {"DWWSSN SUN IEEE short integer", "t4", 4, nullptr},
    {"DWWSSN Integer Format", "t4", 4, nullptr},
    {"Steim Integer Compression Format", "t4", 4, nullptr},
    {"Steim2 Integer Compression Format", "t4", 4, nullptr},
    {"IEEE single precision real", "t4", 4, nullptr},
    {"SUN IEEE single precision real", "t4", 4, nullptr},
    {"DWWSSN demultiplexed short (16 bit) 68000 integer", "t4", 4, nullptr},
    {"Geoscope gain-range on 3 bits", "t4", 12, nullptr},
    {"Geoscope-3 byte (switched gain)", "t4", 12, nullptr},
    {"Geoscope gain range on 4 bits", "t4", 12, nullptr},
    {"ASCII RefTek Log Files, State of Health", "as", 1, nullptr},
    {"USNSN Integer Compression", "t4", 4, nullptr},
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

} // namespace

const std::span<const SeedFormat> seed_format_map = formats;
const int seed_format_count = static_cast<int>(formats.size());
const std::span<const Xlat> seedname = encodings;
const int nseedname = static_cast<int>(encodings.size());

int sd_data_type(std::string_view name) {
    if (!data_type_aliases)
        data_type_aliases = param_get_map(Parameters, "data_type_aliases");
    const std::string *alias = data_type_aliases ? data_type_aliases->get(name) : nullptr;
    const std::string_view candidate = alias != nullptr ? std::string_view(*alias) : name;
    for (int i = 0; i < seed_format_count; ++i)
        if (formats[static_cast<std::size_t>(i)].seed == candidate)
            return i;
    return 0;
}

} // namespace quarry
