#include "blockette/sdblknam.h"

#include "blockette/types.h"
#include "platform/message_log.h"

#include <algorithm>
#include <array>

namespace quarry {

namespace {

constexpr auto catalogue = std::to_array<Sdinfo>({
    {-1, 48, "Data"},
    {5, 14, "Field Volume Identifier "},
    {8, 27, "Telemetry Volume Identifier "},
    {10, 15, "Volume Identifier "},
    {11, 21, "Volume Station Header Index "},
    {12, 19, "Volume Time Span Index"},
    {30, 18, "Data Format Dictionary "},
    {31, 16, "Comment Description "},
    {32, 12, "Cited Source Dictionary"},
    {33, 11, "Generic Abbreviation"},
    {34, 11, "Units Abbreviation"},
    {35, 33, "Beam Configuration "},
    {41, 23, "FIR Dictionary"},
    {43, 49, "Response (Poles and Zeros) Dictionary"},
    {44, 27, "Response (Coefficients) Dictionary"},
    {45, 22, "Response List Dictionary"},
    {46, 22, "Generic Response Dictionary"},
    {47, 53, "Decimation Dictionary Blockette"},
    {48, 38, "Channel Sensitivity/Gain Dictionary"},
    {50, 61, "Station Identifier"},
    {51, 19, "Station Comment"},
    {52, 100, "Channel Identifier"},
    {53, 46, "Response (Poles and Zeros)"},
    {54, 24, "Response (Coefficients) "},
    {55, 19, "Response List"},
    {56, 19, "Generic Response"},
    {57, 51, "Decimation"},
    {58, 35, "Channel Sensitivity/Gain"},
    {59, 18, "Channel Comment"},
    {60, 17, "Response Reference"},
    {61, 21, "FIR Response"},
    {70, 10, "Time Span Identifier"},
    {71, 40, "Hypocenter Information"},
    {72, 49, "Event Phases"},
    {73, 30, "Time Span Data Start Index"},
    {74, 47, "Time Series Index"},
    {100, 12, "Sample Rate"},
    {200, 28, "Generic Event Detection"},
    {201, 36, "Murdock Event Detection"},
    {202, 0, "Log-Z Event Detection"},
    {300, 32, "Step Calibration"},
    {310, 32, "Sine Calibration "},
    {320, 28, "Pseudo-random Calibration "},
    {390, 28, "Generic Calibration"},
    {395, 16, "Calibration Abort "},
    {400, 16, "Beam "},
    {405, 6, "Beam Delay"},
    {1000, 8, "Data Only SEED"},
});

constexpr const Sdinfo* row_of(int type) {
    const auto row = std::find_if(catalogue.begin(), catalogue.end(),
                                  [type](const Sdinfo& entry) { return entry.id == type; });
    return row == catalogue.end() ? nullptr : row;
}

#define QUARRY_CHECK_ROW(TYPE, NAME)                                                                         \
    static_assert(row_of(TYPE) != nullptr, "blockette " #NAME " has no row in the catalogue");
QUARRY_BLOCKETTE_TYPES(QUARRY_CHECK_ROW)
#undef QUARRY_CHECK_ROW

} // namespace

const std::span<const Sdinfo> sdinfo = catalogue;
const int Nseed = static_cast<int>(catalogue.size());
const char* const Unknown = "Unknown Type";

const char* sdblknam(int type) {
    const Sdinfo* row = row_of(type);
    if (row == nullptr)
        log_note("sdblknam: Unknown blockette type %d\n", type);
    return row != nullptr ? row->name : Unknown;
}

int sdminsz(int type) {
    const Sdinfo* row = row_of(type);
    if (row == nullptr)
        log_note("sdminsz: Unknown blockette type %d\n", type);
    return row != nullptr ? row->minsz : 0;
}

} // namespace quarry
