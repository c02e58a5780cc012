// SPDX-License-Identifier: Apache-2.0
// Rows of a database's table of data formats, packed as the store packs them, and the searches in them. What
// is found is compared with a search that follows the rules word for word. The input is read line by line:
// "?STATION;CHANNEL;TIME" is a search, any other line a row of its five texts.

#include "fuzz.h"

#include "listing/format_rows.h"
#include "listing/seed_utl.h"
#include "platform/store.h"
#include "platform/text.h"
#include "platform/text_rows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace quarry {

namespace {

constexpr std::array<std::string_view, 5> columns{"sta", "chan", "seedstart", "seedend", "seedformat"};

TextRows table(columns.size());

struct Search {
    std::string_view sta;
    std::string_view chan;
    double epoch;
};

double epoch_of(std::string_view time) {
    double epoch;
    seed2epoch(time, &epoch);
    return epoch;
}

std::string_view field(std::size_t row, std::size_t column, std::size_t room) {
    return up_to_nul(TextRows::text_at(table.row(row), column).substr(0, room));
}

bool describes(std::size_t row, const Search& search) {
    const double end = epoch_of(field(row, 3, 22));
    return field(row, 0, 5) == search.sta && field(row, 1, 3) == search.chan &&
           epoch_of(field(row, 2, 22)) <= search.epoch && (search.epoch <= end || end < 0);
}

// Looks into the row looked at last, then into all.
class PlainSearch {
public:
    std::string_view find(const Search& search) {
        if (table.size() == 0)
            return {};
        if (last_ < table.size() && describes(last_, search))
            return field(last_, 4, 50);
        for (last_ = 0; last_ < table.size(); ++last_)
            if (describes(last_, search))
                return field(last_, 4, 50);
        last_ = table.size() - 1;
        return {};
    }

private:
    std::size_t last_ = SIZE_MAX; // row
};

// The next text up to a semicolon or the end of the line, which it removes.
std::string_view next_text(std::string_view* line) {
    const std::string_view text = line->substr(0, line->find(';'));
    line->remove_prefix(std::min(text.size() + 1, line->size()));
    return text;
}

std::string_view code(std::string_view text, std::size_t room) {
    return up_to_nul(text.substr(0, room));
}

void search(std::string_view input) {
    table = TextRows(columns.size());
    std::vector<Search> searches;
    while (!input.empty()) {
        std::string_view line = input.substr(0, input.find('\n'));
        input.remove_prefix(std::min(line.size() + 1, input.size()));
        if (line.substr(0, 1) == "?") {
            line.remove_prefix(1);
            const std::string_view sta = code(next_text(&line), 6);
            const std::string_view chan = code(next_text(&line), 4);
            if (const double epoch = epoch_of(line); !std::isinf(epoch)) // as is no record's
                searches.push_back({sta, chan, epoch});
        } else {
            for (std::size_t column = 0; column < columns.size(); ++column)
                table.add(next_text(&line));
        }
    }
    FormatRows rows;
    PlainSearch plain;
    for (const Search& one : searches)
        fuzz::promise(rows.find({0, 0, -1, 0}, one.sta, one.chan, one.epoch) == plain.find(one),
                      "the rows' rules");
}

} // namespace

// In the place of the library's own store: its table is the one above.
StorePointer store_invalid() {
    return {-1, -1, -1, -1};
}

StorePointer store_lookup(StorePointer database, const char* /*name*/) {
    return {database.database, 0, -1, 0};
}

std::int64_t store_query(StorePointer /*pointer*/, StoreQuery /*query*/) {
    return static_cast<std::int64_t>(table.size());
}

void store_get_fields(StorePointer pointer, std::initializer_list<StoreField> fields) {
    const auto row = static_cast<std::size_t>(pointer.record);
    fuzz::promise(row < table.size(), "rows that exist");
    for (const StoreField& field : fields) {
        const auto column = std::find(columns.begin(), columns.end(), field.name) - columns.begin();
        copy_text(field.destination, TextRows::text_at(table.row(row), static_cast<std::size_t>(column)));
    }
}

} // namespace quarry

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quarry::fuzz::run_to_its_end(quarry::search, quarry::fuzz::text_of(data, size));
    return 0;
}
