// SPDX-License-Identifier: Apache-2.0
#include "check/units.h"

#include <algorithm>
#include <array>

namespace quarry {

namespace {

struct UnitRow {
    std::string_view usual; // in capital letters
    std::string_view si;    // with the letters of the SI
    std::string_view other; // further spellings in capital letters, separated by blanks
};

constexpr auto units = std::to_array<UnitRow>({
    {"M", "m", "METER METERS METRE METRES"},
    {"M/S", "m/s", "M/SEC M*S**-1 METER/SECOND METERS/SECOND"},
    {"M/S**2", "m/s**2", "M/S/S M/S2 M/S^2 M/(S**2) M/(S^2) M/SEC**2 M/SEC/SEC M*S**-2"},
    {"CM", "cm", ""},
    {"CM/S", "cm/s", "CM/SEC"},
    {"CM/S**2", "cm/s**2", "CM/S/S CM/S2 CM/S^2 CM/SEC**2 GAL"},
    {"MM", "mm", ""},
    {"MM/S", "mm/s", "MM/SEC"},
    {"MM/S**2", "mm/s**2", "MM/S/S MM/S2 MM/S^2 MM/SEC**2"},
    {"MM/HOUR", "mm/hour", "MM/H"},
    {"UM", "um", ""},
    {"UM/S", "um/s", "UM/SEC"},
    {"NM", "nm", ""},
    {"NM/S", "nm/s", "NM/SEC"},
    {"NM/S**2", "nm/s**2", "NM/S/S NM/S2 NM/S^2 NM/SEC**2"},
    {"COUNTS", "counts", "CNT CNTS DU DIGITS DIGITAL_COUNTS"},
    {"COUNT", "count", ""},
    {"COUNTS/V", "counts/V", "COUNT/V COUNTS/VOLT"},
    {"V", "V", "VOLT VOLTS"},
    {"MV", "mV", "MILLIVOLT MILLIVOLTS"},
    {"UV", "uV", "MICROVOLT MICROVOLTS"},
    {"V/M", "V/m", "VOLT/M VOLTS/M VOLT_PER_METER"},
    {"A", "A", "AMPERE AMPERES AMP AMPS"},
    {"MA", "mA", ""},
    {"OHM", "ohm", "OHMS"},
    {"W", "W", "WATT WATTS"},
    {"W/M**2", "W/m**2", "W/M2 W/M^2 WATTS/M**2"},
    {"J", "J", "JOULE"},
    {"N", "N", "NEWTON NEWTONS"},
    {"PA", "Pa", "PASCAL PASCALS"},
    {"HPA", "hPa", "HECTOPASCAL"},
    {"KPA", "kPa", "KILOPASCAL KILOPASCALS"},
    {"MBAR", "mbar", "MILLIBAR MB"},
    {"S", "s", "SEC SECOND SECONDS"},
    {"USEC", "us", "US MICROSECOND MICROSECONDS"},
    {"HZ", "Hz", "HERTZ 1/S"},
    {"S/S", "s/s", "SECOND/SECOND"},
    {"RAD", "rad", "RADIAN RADIANS"},
    {"RAD/S", "rad/s", "RAD/SEC"},
    {"RAD/S**2", "rad/s**2", "RAD/S/S RAD/S2 RAD/S^2 RAD/SEC**2"},
    {"DEG", "deg", "DEGREE DEGREES"},
    {"T", "T", "TESLA TESLAS"},
    {"NT", "nT", "NANOTESLA NANOTESLAS"},
    {"C", "degC", "DEGC DEG_C CELSIUS DEGREES_CELSIUS"},
    {"K", "K", "KELVIN"},
    {"%", "%", "PERCENT"},
    {"M/M", "m/m", "STRAIN METER/METER M**1/M**1"},
    {"M**3/M**3", "m**3/m**3", "M3/M3 M^3/M^3"},
    {"UNITLESS", "1", "NONE NUMBER"},
    {"BITS/SEC", "bit/s", "BITS/S B/S"},
    {"CYCLES", "cycles", "CYCLE"},
});

std::string capitals(std::string_view name) {
    std::string text(name);
    std::transform(text.begin(), text.end(), text.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    });
    return text;
}

bool lists(std::string_view spellings, std::string_view name) {
    while (!spellings.empty()) {
        const std::size_t blank = std::min(spellings.find(' '), spellings.size());
        if (spellings.substr(0, blank) == name)
            return true;
        spellings.remove_prefix(std::min(blank + 1, spellings.size()));
    }
    return false;
}

const UnitRow* find_unit(std::string_view name) {
    const std::string text = capitals(name);
    const auto* const row = std::find_if(units.begin(), units.end(), [&](const UnitRow& unit) {
        return unit.usual == text || unit.si == name || lists(unit.other, text);
    });
    return row != units.end() ? row : nullptr;
}

} // namespace

std::string_view usual_unit(std::string_view name) {
    const UnitRow* row = find_unit(name);
    return row != nullptr ? row->usual : std::string_view();
}

bool is_usual_spelling(std::string_view name) {
    const UnitRow* row = find_unit(name);
    return row != nullptr && (row->usual == name || row->si == name);
}

std::string comparable_unit(std::string_view name) {
    const std::string_view usual = usual_unit(name);
    return usual == "COUNT" ? "COUNTS" : !usual.empty() ? std::string(usual) : capitals(name);
}

} // namespace quarry
