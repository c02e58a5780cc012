// SPDX-License-Identifier: Apache-2.0
// The relational table store: named tables of text fields, over an SQLite file.
//
// A table is read once, whole, when it is first looked up, in the order of its rows; between opening and
// reading, and afterwards, the file is closed and not locked. The database is never created. None of its
// files is changed, with one exception: what a crash left half written (a rollback journal) has to be undone
// first.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>

namespace quarry {

// Points at a database, one of its tables, a field or a record of it; -1 stands for none.
struct StorePointer {
    std::int64_t database;
    std::int64_t table;
    std::int64_t field;
    std::int64_t record;

    bool operator==(const StorePointer&) const = default;
};

// What store_query can be asked.
enum class StoreQuery { record_count };

// A field's name and where its text goes; longer text is cut, and always ended by a NUL.
struct StoreField {
    const char* name;
    std::span<char> destination;
};

// The pointer that stands for no database.
StorePointer store_invalid();

// Opens the named database. The mode is kept for the interface and unused: whatever it says, the database is
// only read. Returns 0, or -1 with errno set when the file is missing, cannot be read, is locked for more
// than two seconds (EBUSY) or is not a database (EINVAL, also for an empty file); `opened` is then
// store_invalid.
int store_open(const char* name, const char* mode, StorePointer* opened);

// A pointer to the named table (record 0). A missing or unreadable table is reported once, by name, and
// counts as one without rows. The name goes into a query as it is.
StorePointer store_lookup(StorePointer pointer, const char* name);

// The number of rows of the table; 0 for a pointer that points at none.
std::int64_t store_query(StorePointer pointer, StoreQuery query);

// Copies fields of the record that the pointer is at, as text. NULL is the empty text, and so is a missing
// column, which is reported once, by name.
void store_get_fields(StorePointer pointer, std::initializer_list<StoreField> fields);

} // namespace quarry
