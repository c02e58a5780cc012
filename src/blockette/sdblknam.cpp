// SPDX-License-Identifier: Apache-2.0
#include "blockette/sdblknam.h"

#include "blockette/types.h"
#include "decode/catalogue.h"
#include "decode/data_record.h"
#include "platform/message_log.h"

#include <algorithm>
#include <array>

namespace quarry {

namespace {

constexpr bool is_listed(const CatalogueRow& row) {
    return row.listed;
}

constexpr auto listed_rows = [] {
    std::array<Sdinfo, std::count_if(catalogue.begin(), catalogue.end(), is_listed)> rows{};
    std::size_t count = 0;
    for (const CatalogueRow& row : catalogue)
        if (is_listed(row))
            rows[count++] = {row.type, row.smallest, row.name};
    return rows;
}();

constexpr std::optional<CatalogueRow> row_of(int type) {
    const auto row = catalogue_row(type);
    return row && is_listed(*row) ? row : std::nullopt;
}

#define QUARRY_CHECK_ROW(TYPE, NAME)                                                                         \
    static_assert(row_of(TYPE).has_value(),                                                                  \
                  "blockette " #NAME " has no row in the catalogue that the listing knows");
QUARRY_BLOCKETTE_TYPES(QUARRY_CHECK_ROW)
#undef QUARRY_CHECK_ROW
static_assert(catalogue_row(-1)->smallest == int{fixed_header_size});
static_assert(std::ranges::is_sorted(catalogue, {}, &CatalogueRow::type));

} // namespace

const std::span<const Sdinfo> sdinfo = listed_rows;
const int Nseed = static_cast<int>(listed_rows.size());
const char* const Unknown = "Unknown Type";

const char* sdblknam(int type) {
    const auto row = row_of(type);
    if (!row)
        log_note("sdblknam: Unknown blockette type %d\n", type);
    return row ? row->name : Unknown;
}

int sdminsz(int type) {
    const auto row = row_of(type);
    if (!row)
        log_note("sdminsz: Unknown blockette type %d\n", type);
    return row ? row->smallest : 0;
}

} // namespace quarry
