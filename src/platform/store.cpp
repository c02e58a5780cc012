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

struct Table {
    std::string name;
    std::vector<std::string> columns;
    std::vector<std::vector<std::string>> rows;
    std::set<std::string> missing; // columns already complained of
};

struct Database {
    std::string name;
    Connection connection;
    std::vector<Table> tables;
};

std::vector<Database>& databases() {
    static std::vector<Database> opened;
    return opened;
}

Statement prepare(sqlite3* connection, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(connection, sql.c_str(), -1, &statement, nullptr);
    return {statement, sqlite3_finalize};
}

int errno_of(int sqlite_result) {
    switch (sqlite_result) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return EBUSY;
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
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

std::string quoted_identifier(const std::string& name) {
    std::string quoted = "\"";
    for (const char character : name)
        quoted.append(character == '"' ? 2 : 1, character);
    return quoted + '"';
}

// Reads rows until the statement ends and returns its last result.
template <class Row>
int step_rows(sqlite3_stmt* statement, Row row) {
    int result = SQLITE_DONE;
    while ((result = sqlite3_step(statement)) == SQLITE_ROW)
        row();
    if (result == SQLITE_NOMEM)
        out_of_memory(QUARRY_SITE("store"), 1, "table");
    return result;
}

std::string column_text(sqlite3_stmt* statement, int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    if (text != nullptr)
        return {text, static_cast<std::size_t>(sqlite3_column_bytes(statement, column))};
    if (sqlite3_column_type(statement, column) != SQLITE_NULL)
        out_of_memory(QUARRY_SITE("store"), 1, "field");
    return {};
}

bool is_table(sqlite3* connection, const char* name) {
    const Statement statement =
        prepare(connection, "SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ?1 COLLATE NOCASE");
    sqlite3_bind_text(statement.get(), 1, name, -1, SQLITE_TRANSIENT);
    bool found = false;
    step_rows(statement.get(), [&] { found = true; });
    return found;
}

bool has_column(const std::vector<std::string>& columns, const char* name) {
    return std::any_of(columns.begin(), columns.end(), [name](const std::string& column) {
        return sqlite3_stricmp(column.c_str(), name) == 0;
    });
}

std::vector<std::string> column_names(sqlite3_stmt* statement) {
    std::vector<std::string> names;
    for (int i = 0; i < sqlite3_column_count(statement); ++i)
        names.emplace_back(sqlite3_column_name(statement, i));
    return names;
}

// The statement that reads the table in the order of its rows. A view keeps its own order, and so does a
// table without rowids or with columns of all three names that mean them.
Statement select_rows(sqlite3* connection, const char* name) {
    const std::string select = "SELECT * FROM " + quoted_identifier(name);
    Statement statement = prepare(connection, select);
    if (!statement || !is_table(connection, name))
        return statement;
    const std::vector<std::string> columns = column_names(statement.get());
    for (const char* rowid : {"rowid", "_rowid_", "oid"})
        if (!has_column(columns, rowid))
            if (Statement ordered = prepare(connection, select + " ORDER BY " + rowid))
                return ordered;
    return statement;
}

Table read_table(Database& database, const char* name) {
    sqlite3* connection = database.connection.get();
    Table table{name, {}, {}, {}};
    const Statement statement = select_rows(connection, name);
    if (!statement) {
        log_complain(0, "Can't read table '%s' of database %s: %s\n", name, database.name.c_str(),
                     sqlite3_errmsg(connection));
        return table;
    }
    table.columns = column_names(statement.get());
    const int result = step_rows(statement.get(), [&] {
        std::vector<std::string>& row = table.rows.emplace_back();
        for (std::size_t i = 0; i < table.columns.size(); ++i)
            row.push_back(column_text(statement.get(), static_cast<int>(i)));
    });
    if (result != SQLITE_DONE)
        log_complain(0, "Can't read table '%s' of database %s beyond row %zu: %s\n", name,
                     database.name.c_str(), table.rows.size(), sqlite3_errmsg(connection));
    return table;
}

template <class T>
T* element(std::vector<T>& elements, std::int64_t index) {
    const auto at = static_cast<std::size_t>(index);
    return index >= 0 && at < elements.size() ? &elements[at] : nullptr;
}

Table* table_at(StorePointer pointer) {
    Database* database = element(databases(), pointer.database);
    return database != nullptr ? element(database->tables, pointer.table) : nullptr;
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
    databases().push_back({name, std::move(connection), {}});
    opened->database = static_cast<std::int64_t>(databases().size()) - 1;
    return 0;
}

StorePointer store_lookup(StorePointer pointer, const char* name) {
    Database* database = element(databases(), pointer.database);
    if (database == nullptr)
        return store_invalid();
    std::size_t at = 0;
    while (at < database->tables.size() && database->tables[at].name != name)
        ++at;
    if (at == database->tables.size())
        database->tables.push_back(read_table(*database, name));
    return {pointer.database, static_cast<std::int64_t>(at), -1, 0};
}

std::int64_t store_query(StorePointer pointer, StoreQuery query) {
    const Table* table = table_at(pointer);
    if (table == nullptr || query != StoreQuery::record_count)
        return 0;
    return static_cast<std::int64_t>(table->rows.size());
}

void store_get_fields(StorePointer pointer, std::initializer_list<StoreField> fields) {
    Table* table = table_at(pointer);
    const std::vector<std::string>* row = table != nullptr ? element(table->rows, pointer.record) : nullptr;
    for (const StoreField& field : fields) {
        const auto column = row != nullptr ? column_index(*table, field.name) : std::nullopt;
        copy_text(field.destination, column ? std::string_view((*row)[*column]) : std::string_view());
    }
}

} // namespace quarry
