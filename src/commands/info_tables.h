// SPDX-License-Identifier: Apache-2.0
// The tables of quarry info: stations, channels, findings and damage.
#pragma once

#include "commands/selection.h"
#include "inventory/contents.h"
#include "report/table.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>

namespace quarry {

struct DamageCount {
    std::int64_t places = 0;
    std::int64_t bytes = 0;
    Damage first = {};
};
using DamageCounts = std::array<DamageCount, damage_kinds>;

// What the tables show: a volume, and which part of it.
struct InfoContent {
    const Contents& contents;
    const Selection& selection;
    const DamageCounts& damages;
};

struct InfoTable {
    const char* option; // that chooses it: "--" and its title
    std::span<const Column> columns;
    void (*give)(const InfoContent& content, const Table::Take& take); // its rows

    std::string_view title() const { return std::string_view(option).substr(2); }
};

inline constexpr std::size_t info_table_count = 4;
extern const std::array<InfoTable, info_table_count> info_tables; // in the order in which they are shown
inline constexpr std::size_t channel_table = 1;                   // of them

// A time as it stands in a cell; a text that is not a time is shown as the volume has it.
std::string time_cell(std::int64_t time);
std::string cell(const Moment& moment);

// The texts with something between them, if neither is empty.
std::string joined(std::string_view text, std::string_view between, std::string_view more);

} // namespace quarry
