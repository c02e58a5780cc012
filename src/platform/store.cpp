#include "platform/store.h"

#include "platform/memory.h"
#include "platform/message_log.h"
#include "platform/text.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <optional>
#include <set>
#include <sqlite3.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace quarry {

namespace {

constexpr int busy_milliseconds = 2000;

using Connection = std::unique_ptr<sqlite3, decltype(&sqlite3_close_v2)>;
using Statement = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

struct Database {
    std::string name;
    Connection connection;
};

struct Table {
    std::int64_t database;
    std::string name;
    std::vector<std::string> columns;
    std::vector<std::vector<std::string>> rows;
    std::set<std::string> missing; // columns already reported
};

std::vector<Database> databases;
std::vector<Table> tables;

template <class T>
T* element(std::vector<T>& elements, std::int64_t index) {
    const auto at = static_cast<std::size_t>(index);
    return index >= 0 && at < elements.size() ? &elements[at] : nullptr;
}

Statement prepare(sqlite3* connection, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(connection, sql.c_str(), -1, &statement, nullptr);
    return {statement, sqlite3_finalize};
}

int errno_of(int sqlite_result) {
    switch (sqlite_result) {
    case SQLITE_BUSY:
        return EBUSY;
    case SQLITE_CANTOPEN:
    case SQLITE_READONLY:
        return EACCES;
    case SQLITE_NOMEM:
        return ENOMEM;
    case SQLITE_IOERR:
        return EIO;
    default:
        return EINVAL;
    }
}

// The errno of what cannot be read as a file at all, or 0: SQLite's own results do not tell these apart.
int unreadable_file(const char* name) {
    struct stat status {};
    if (stat(name, &status) != 0)
        return errno;
    if (!S_ISREG(status.st_mode) || status.st_size == 0)
        return S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    return access(name, R_OK) != 0 ? errno : 0;
}

std::string column_text(sqlite3_stmt* statement, int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    if (text != nullptr)
        return {text, static_cast<std::size_t>(sqlite3_column_bytes(statement, column))};
    if (sqlite3_column_type(statement, column) != SQLITE_NULL)
        out_of_memory(QUARRY_SITE("store"), 1, "field");
    return {};
}

std::vector<std::string> column_names(sqlite3_stmt* statement) {
    std::vector<std::string> names;
    for (int i = 0; i < sqlite3_column_count(statement); ++i)
        names.emplace_back(sqlite3_column_name(statement, i));
    return names;
}

// The statement that reads the table in the order of its rows. A view, which has no rowids, keeps its own
// order, and so does a table without rowids.
Statement select_rows(sqlite3* connection, const std::string& name) {
    const int has_rowids = sqlite3_table_column_metadata(connection, nullptr, name.c_str(), "_rowid_",
                                                         nullptr, nullptr, nullptr, nullptr, nullptr);
    return prepare(connection,
                   "SELECT * FROM " + name + (has_rowids == SQLITE_OK ? " ORDER BY _rowid_" : ""));
}

void read_rows(const Database& database, Table* table) {
    sqlite3* connection = database.connection.get();
    const Statement statement = select_rows(connection, table->name);
    if (!statement) {
        log_complain(0, "Can't read table '%s' of database %s: %s\n", table->name.c_str(),
                     database.name.c_str(), sqlite3_errmsg(connection));
        return;
    }
    table->columns = column_names(statement.get());
    int result;
    while ((result = sqlite3_step(statement.get())) == SQLITE_ROW) {
        std::vector<std::string>& row = table->rows.emplace_back();
        for (std::size_t i = 0; i < table->columns.size(); ++i)
            row.push_back(column_text(statement.get(), static_cast<int>(i)));
    }
    if (result == SQLITE_NOMEM)
        out_of_memory(QUARRY_SITE("store"), 1, "table");
    if (result != SQLITE_DONE)
        log_complain(0, "Can't read table '%s' of database %s beyond row %zu: %s\n", table->name.c_str(),
                     database.name.c_str(), table->rows.size(), sqlite3_errmsg(connection));
}

std::optional<std::size_t> column_index(Table& table, const char* name) {
    for (std::size_t i = 0; i < table.columns.size(); ++i)
        if (sqlite3_stricmp(table.columns[i].c_str(), name) == 0)
            return i;
    if (table.missing.insert(name).second)
        log_complain(0, "Table '%s' has no column '%s'\n", table.name.c_str(), name);
    return std::nullopt;
}

// Opens the file and looks at its schema: opening alone reads nothing, and does not tell whether this is a
// database at all.
int connect(const std::string& file, int flags, Connection* connection) {
    sqlite3* raw = nullptr;
    int result = sqlite3_open_v2(file.c_str(), &raw, flags, nullptr);
    connection->reset(raw);
    if (result == SQLITE_OK) {
        sqlite3_busy_timeout(raw, busy_milliseconds);
        result = sqlite3_exec(raw, "SELECT count(*) FROM sqlite_master", nullptr, nullptr, nullptr);
    }
    return result & 0xff;
}

// A database in write-ahead mode needs files beside it even to be read, which a read-only place refuses.
// Without changes pending it can be read as one that nobody changes.
bool has_pending_changes(const std::string& file) {
    struct stat status {};
    return stat((file + "-wal").c_str(), &status) == 0 && status.st_size > 0;
}

std::string immutable_uri(const std::string& file) {
    std::string uri = "file:";
    for (const char character : file) {
        if (character == '%' || character == '?' || character == '#')
            uri += character == '%' ? "%25" : character == '?' ? "%3f" : "%23";
        else
            uri += character;
    }
    return uri + "?immutable=1";
}

} // namespace

StorePointer store_invalid() {
    return {-1, -1, -1, -1};
}

int store_open(const char* name, const char* mode, StorePointer* opened) {
    *opened = store_invalid();
    if (const int error = unreadable_file(name); error != 0) {
        errno = error;
        return -1;
    }
    // Some names (":memory:", "file:...") mean something else to SQLite than to the user.
    const std::string file = name[0] == '/' ? name : std::string("./") + name;
    const bool writable = std::string_view(mode) == "r+";
    Connection connection(nullptr, sqlite3_close_v2);
    int result = connect(file, writable ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY, &connection);
    if ((result == SQLITE_CANTOPEN || result == SQLITE_READONLY) && !has_pending_changes(file))
        result = connect(immutable_uri(file), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, &connection);
    if (result != SQLITE_OK) {
        const int system_error = sqlite3_system_errno(connection.get());
        errno = result == SQLITE_CANTOPEN && system_error != 0 ? system_error : errno_of(result);
        return -1;
    }
    databases.push_back({name, std::move(connection)});
    opened->database = static_cast<std::int64_t>(databases.size()) - 1;
    return 0;
}

StorePointer store_lookup(StorePointer pointer, const char* name) {
    const Database* database = element(databases, pointer.database);
    if (database == nullptr)
        return store_invalid();
    const auto found = std::find_if(tables.begin(), tables.end(), [&](const Table& table) {
        return table.database == pointer.database && table.name == name;
    });
    const std::int64_t at = found - tables.begin();
    if (found == tables.end())
        read_rows(*database, &tables.emplace_back(Table{pointer.database, name, {}, {}, {}}));
    return {pointer.database, at, -1, 0};
}

std::int64_t store_query(StorePointer pointer, StoreQuery /*record_count*/) {
    const Table* table = element(tables, pointer.table);
    return table != nullptr ? static_cast<std::int64_t>(table->rows.size()) : 0;
}

void store_get_fields(StorePointer pointer, std::initializer_list<StoreField> fields) {
    Table* table = element(tables, pointer.table);
    const std::vector<std::string>* row = table != nullptr ? element(table->rows, pointer.record) : nullptr;
    for (const StoreField& field : fields) {
        const auto column = row != nullptr ? column_index(*table, field.name) : std::nullopt;
        copy_text(field.destination, column ? std::string_view((*row)[*column]) : std::string_view());
    }
}

} // namespace quarry
