// SPDX-License-Identifier: Apache-2.0
#include "platform/store.h"

#include "platform/memory.h"
#include "platform/message_log.h"
#include "platform/text.h"
#include "platform/text_rows.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <functional>
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
    std::string name; // as given
    std::string path; // absolute, without symbolic links
};

struct Table {
    std::int64_t database;
    std::string name;
    std::vector<std::string> columns = {};
    TextRows rows{1};
    std::set<std::string, std::less<>> missing = {}; // columns already reported
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

// The errno of a connection that failed. A file beside the database that cannot be made is refused like the
// database itself; the system's own error is then that of SQLite's last try, which does not help.
int errno_of(int result, sqlite3* connection) {
    const int system_error = sqlite3_system_errno(connection);
    switch (result) {
    case SQLITE_BUSY:
        return EBUSY;
    case SQLITE_CANTOPEN:
        return system_error == EMFILE || system_error == ENFILE ? system_error : EACCES;
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

// The size of the file, or -1 if there is none.
std::int64_t file_size(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_size : -1;
}

// The first bytes of a database; zeros if they cannot be read.
std::array<unsigned char, 20> header_of(const std::string& path) {
    std::array<unsigned char, 20> header{};
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file || std::fread(header.data(), header.size(), 1, file.get()) != 1)
        header = {};
    return header;
}

// True if the file ends within a page, which SQLite would fill with zeros. A journal may still mend it.
bool is_cut_in_a_page(const std::string& path) {
    const auto header = header_of(path);
    const int page_size = header[16] << 8 | header[17]; // 1 stands for 65536
    return page_size > 1 && file_size(path) % page_size != 0 && file_size(path + "-journal") < 0 &&
           file_size(path + "-wal") < 0;
}

// The errno of what cannot be read as a file at all, or 0: SQLite's own results do not tell these apart.
int unreadable_file(const char* name) {
    struct stat status {};
    if (stat(name, &status) != 0)
        return errno;
    if (!S_ISREG(status.st_mode) || status.st_size == 0)
        return S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    if (access(name, R_OK) != 0)
        return errno;
    return is_cut_in_a_page(name) ? EINVAL : 0;
}

bool has_write_ahead_log(const std::string& path) {
    constexpr std::size_t read_version = 19; // offset of that byte in the file
    return header_of(path)[read_version] == 2;
}

constexpr const char* shared = "mode=ro&readonly_shm=1";
constexpr const char* as_unchanging = "mode=ro&immutable=1";
constexpr const char* alone = "mode=rw";

// How to open the database without changing its files or adding to them. A write-ahead log ("-wal") and its
// index ("-shm") stand beside the database while a program has it open, and after a crash; SQLite would
// create them, and write the index, for a reader too. Without a log nobody has the database open. With a log
// and no index a reader that locks the others out keeps the index in its memory.
const char* gentlest_access(const std::string& path) {
    if (!has_write_ahead_log(path))
        return shared;
    const std::int64_t log_size = file_size(path + "-wal");
    if (log_size >= 0 && file_size(path + "-shm") >= 0)
        return shared;
    return log_size > 0 ? alone : as_unchanging;
}

std::string uri_of(const std::string& path, const char* parameters) {
    std::string uri = "file:";
    for (const char character : path)
        if (character == '%' || character == '?' || character == '#')
            uri += character == '%' ? "%25" : character == '?' ? "%3f" : "%23";
        else
            uri += character;
    return uri + "?" + parameters;
}

// Opens the file and looks at its schema: opening alone reads nothing, and does not tell whether this is a
// database at all. Returns SQLite's result.
int connect_by(const std::string& uri, Connection* connection) {
    sqlite3* raw = nullptr;
    int result = sqlite3_open_v2(uri.c_str(), &raw,
                                 SQLITE_OPEN_READWRITE | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX, nullptr);
    connection->reset(raw);
    if (result != SQLITE_OK)
        return result & 0xff;
    sqlite3_busy_timeout(raw, busy_milliseconds);
    // The pending changes of a write-ahead log stay in it.
    sqlite3_db_config(raw, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    if (sqlite3_db_readonly(raw, "main") == 0)
        sqlite3_exec(raw, "PRAGMA locking_mode = EXCLUSIVE", nullptr, nullptr, nullptr);
    return sqlite3_exec(raw, "SELECT count(*) FROM sqlite_master", nullptr, nullptr, nullptr) & 0xff;
}

// A transaction that a crash left half written has to be undone in the file before the rest can be read.
int connect(const std::string& path, Connection* connection) {
    const int result = connect_by(uri_of(path, gentlest_access(path)), connection);
    return result == SQLITE_READONLY ? connect_by(uri_of(path, alone), connection) : result;
}

std::string_view column_text(sqlite3_stmt* statement, int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    if (text != nullptr)
        return {text, static_cast<std::size_t>(sqlite3_column_bytes(statement, column))};
    if (sqlite3_column_type(statement, column) != SQLITE_NULL)
        out_of_memory(QUARRY_SITE("store"), 1, "field");
    return {};
}

std::vector<std::string> column_names(sqlite3_stmt* statement) {
    std::vector<std::string> names;
    const int count = sqlite3_column_count(statement);
    names.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
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

// Reads what rows there are and returns SQLite's last result.
int read_rows(sqlite3_stmt* statement, Table* table) {
    table->columns = column_names(statement);
    table->rows = TextRows(table->columns.size());
    int result;
    while ((result = sqlite3_step(statement)) == SQLITE_ROW)
        for (int column = 0; column < sqlite3_column_count(statement); ++column)
            table->rows.add(column_text(statement, column));
    if (result == SQLITE_NOMEM)
        out_of_memory(QUARRY_SITE("store"), 1, "table");
    return result;
}

// Nothing is kept open, so that other programs find the database unlocked.
void read_table(const Database& database, Table* table) {
    Connection connection(nullptr, sqlite3_close_v2);
    const bool connected = connect(database.path, &connection) == SQLITE_OK;
    const Statement statement =
        connected ? select_rows(connection.get(), table->name) : Statement(nullptr, sqlite3_finalize);
    if (!statement)
        log_complain(0, "Can't read table '%s' of database %s: %s\n", table->name.c_str(),
                     database.name.c_str(), sqlite3_errmsg(connection.get()));
    else if (read_rows(statement.get(), table) != SQLITE_DONE)
        log_complain(0, "Can't read table '%s' of database %s beyond row %zu: %s\n", table->name.c_str(),
                     database.name.c_str(), table->rows.size(), sqlite3_errmsg(connection.get()));
}

std::optional<std::size_t> column_index(Table& table, const char* name) {
    for (std::size_t i = 0; i < table.columns.size(); ++i)
        if (sqlite3_stricmp(table.columns[i].c_str(), name) == 0)
            return i;
    if (table.missing.insert(name).second)
        log_complain(0, "Table '%s' has no column '%s'\n", table.name.c_str(), name);
    return std::nullopt;
}

} // namespace

StorePointer store_invalid() {
    return {-1, -1, -1, -1};
}

int store_open(const char* name, const char* /*mode*/, StorePointer* opened) {
    *opened = store_invalid();
    if (const int error = unreadable_file(name); error != 0) {
        errno = error;
        return -1;
    }
    const std::unique_ptr<char, decltype(&std::free)> path(realpath(name, nullptr), std::free);
    if (!path)
        return -1;
    Connection connection(nullptr, sqlite3_close_v2);
    if (const int result = connect(path.get(), &connection); result != SQLITE_OK) {
        errno = errno_of(result, connection.get());
        return -1;
    }
    databases.push_back({name, path.get()});
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
        read_table(*database, &tables.emplace_back(Table{pointer.database, name}));
    return {pointer.database, at, -1, 0};
}

std::int64_t store_query(StorePointer pointer, StoreQuery /*record_count*/) {
    const Table* table = element(tables, pointer.table);
    return table != nullptr ? static_cast<std::int64_t>(table->rows.size()) : 0;
}

void store_get_fields(StorePointer pointer, std::initializer_list<StoreField> fields) {
    Table* table = element(tables, pointer.table);
    const bool has_row =
        pointer.record >= 0 && pointer.record < store_query(pointer, StoreQuery::record_count);
    const char* row = has_row ? table->rows.row(static_cast<std::size_t>(pointer.record)) : nullptr;
    for (const StoreField& field : fields) {
        const auto column = has_row ? column_index(*table, field.name) : std::nullopt;
        copy_text(field.destination, column ? TextRows::text_at(row, *column) : std::string_view());
    }
}

} // namespace quarry
