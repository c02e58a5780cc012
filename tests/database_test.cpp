// The database of option -d: which row of its table serves a record, databases that are damaged, locked or in
// the middle of something, and that reading one leaves its files as they are.

#include "support.h"

#include "listing/format_rows.h"
#include "listing/seed_utl.h"
#include "platform/message_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cmath>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <sqlite3.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace quarry {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

using Connection = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;

const std::string table = "CREATE TABLE seedformat (sta, chan, seedstart, seedend, seedformat);";

std::string insert(const std::string& values) {
    return "INSERT INTO seedformat VALUES (" + values + ");";
}

// A row that serves the records of DEM1 below without a message.
const std::string dem1 = insert("'DEM1', 'BHZ', '2000,001', '', '32-Bit Integer Format'");

void execute(const Connection& connection, const std::string& sql) {
    char* message = nullptr;
    EXPECT_EQ(sqlite3_exec(connection.get(), sql.c_str(), nullptr, nullptr, &message), SQLITE_OK) << message;
}

Connection connect(const std::string& path) {
    sqlite3* connection = nullptr;
    EXPECT_EQ(sqlite3_open(path.c_str(), &connection), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(connection, "PRAGMA synchronous = OFF", nullptr, nullptr, nullptr), SQLITE_OK);
    return {connection, sqlite3_close};
}

// Every file of a directory with its bytes.
std::map<std::string, std::string> files_of(const std::string& directory) {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(directory))
        files[entry.path().filename()] = content_of(entry.path());
    return files;
}

std::string data(int doy, const char* station = "DEM1", int encoding = 3) {
    RecordFields record;
    record.station = station;
    record.year = 2001;
    record.doy = doy;
    record.hour = record.minute = record.second = 0;
    record.encoding = encoding;
    return VolumeBuilder().data(record).bytes();
}

int count_of(const std::string& text, const std::string& part) {
    int count = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size())
        ++count;
    return count;
}

class DatabaseTest : public testing::Test {
protected:
    std::string path(const std::string& name) const { return directory_.path() + "/" + name; }

    // A new database, closed again.
    std::string database(const std::string& sql) {
        const std::string name = path(std::to_string(++count_) + ".db");
        execute(connect(name), sql);
        return name;
    }

    // The format that a new database gives for a record of the station's channel BHZ in 2001.
    std::string format_in(const std::string& sql, const std::string& station) {
        StorePointer opened = store_invalid();
        EXPECT_EQ(store_open(database(sql).c_str(), "r+", &opened), 0);
        double epoch;
        seed2epoch("2001,002", &epoch);
        return std::string(FormatRows().find(opened, station, "BHZ", epoch));
    }

    // What is reported when the volume is listed with the database. The listing itself is complete.
    static std::string messages(const std::string& database, const std::string& volume = data(1)) {
        const RunResult result = run(listing("database", volume, "-d " + database));
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(count_of(result.out, "DATA Net"), static_cast<int>(volume.size() / data(1).size()));
        return result.err;
    }

    // What is reported of a database that cannot be opened, after "Can't open database NAME: ".
    static std::string refusal(const std::string& database) {
        const RunResult result = run(listing("database", data(1), "-d " + database));
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.out, "");
        const std::string begin = "quarry: Can't open database " + database + ": ";
        EXPECT_THAT(result.err, StartsWith(begin));
        return result.err.substr(std::min(begin.size(), result.err.size()));
    }

    TemporaryDirectory directory_;
    int count_ = 0;
};

// --- which row serves a record -------------------------------------------------------------------------

TEST_F(DatabaseTest, FormatsOfUndescribedChannels) {
    const std::string path =
        database(content_of(QUARRY_SCHEMA) + insert("'DEM1','BHZ','2000,001','2001,001','First'") +
                 insert("'DEM1','BHZ','2001,001','','IEEE single precision real'") +
                 insert("'dem2','BHZ','2001,001','','Case'") + insert("'DEM3','BHZ','','','Never'"));
    // The end of the first row is inclusive; the second row's format disagrees with blockette 1000.
    EXPECT_EQ(
        messages(path, data(1) + data(2) + data(3) + data(2, "DEM2") + data(2, "DEM3") + data(1, "DEM1", -1)),
        "quarry: \n*** Serious inconsistency in seed volume.\n"
        "    For the channel XX_DEM1_BHZ, the 030 blockettes indicate the datatype\n"
        "        IEEE single precision real\n"
        "    but the blockette 1000 embedded in the data says the data is\n"
        "        32-Bit Integer Format\n"
        "    This inconsistency may cause problems.\n"
        "quarry: No data format for 'DEM2', 'BHZ' at time 2001,002,00:00:00.0000 (file #0)\n"
        "quarry: No data format for 'DEM3', 'BHZ' at time 2001,002,00:00:00.0000 (file #0)\n");
}

// One row after the other, as the search is described: first the row looked at last, then all.
class PlainSearch {
public:
    struct Row {
        std::string sta, chan, start, end, format;
    };

    explicit PlainSearch(const std::vector<Row>& rows) : rows_(rows) {}

    std::string find(const std::string& sta, const std::string& chan, double epoch) {
        if (describes(last_, sta, chan, epoch))
            return last_.format;
        for (const Row& row : rows_) {
            last_ = row;
            if (describes(row, sta, chan, epoch))
                return row.format;
        }
        return "";
    }

private:
    static bool describes(const Row& row, const std::string& sta, const std::string& chan, double epoch) {
        double start, end;
        seed2epoch(row.start, &start);
        seed2epoch(row.end, &end);
        return row.sta == sta && row.chan == chan && start <= epoch && (epoch <= end || end < 0);
    }

    const std::vector<Row>& rows_;
    Row last_{"none", "", "", "", ""};
};

TEST_F(DatabaseTest, RowsAreFoundAsByLookingAtEach) {
    const std::vector<std::string> times = {
        "",         "1960,001", "1970,001",         "1970,001,00:00:00.5", "1970,002", "1970,003,12",
        "1970,004", "1970,005", "1970,006,00:00:1", "1970,001,00:00:nan",  "1970,007", "1970,001,00:00:inf"};
    std::mt19937 random(7);
    const auto below = [&](std::size_t limit) { return random() % limit; };
    for (int round = 0; round < 60; ++round) {
        std::vector<PlainSearch::Row> rows(1 + below(round < 30 ? 8 : 60));
        std::string sql = table + "BEGIN;";
        for (std::size_t i = 0; i < rows.size(); ++i) {
            rows[i] = {below(2) != 0 ? "AB" : "LONGS", below(4) != 0 ? "BHZ" : "B",
                       times[below(times.size())], times[below(times.size())], "Format " + std::to_string(i)};
            sql += insert("'" + rows[i].sta + "','" + rows[i].chan + "','" + rows[i].start + "','" +
                          rows[i].end + "','" + rows[i].format + "'");
        }
        StorePointer opened = store_invalid();
        ASSERT_EQ(store_open(database(sql + "COMMIT").c_str(), "r+", &opened), 0);
        FormatRows format_rows;
        PlainSearch plain_search(rows);
        for (int i = 0; i < 300; ++i) {
            const std::string sta = below(9) == 0 ? "LONGST" : below(2) != 0 ? "AB" : "LONGS";
            const std::string chan = below(4) != 0 ? "BHZ" : "B";
            double epoch = 0.0;
            if (i % 3 != 0)
                seed2epoch(times[below(times.size() - 1)], &epoch); // not the infinite one
            else
                epoch = static_cast<double>(below(8 * 86400)) - 86400;
            if (below(3) == 0)
                epoch = std::nextafter(epoch, below(2) != 0 ? 1e9 : -1e9);
            ASSERT_EQ(format_rows.find(opened, sta, chan, epoch), plain_search.find(sta, chan, epoch))
                << "round " << round << ", " << sta << ' ' << chan << " at " << epoch << " after " << i;
        }
    }
}

TEST_F(DatabaseTest, TheFirstRowInTableOrder) {
    const std::string rows =
        insert("'DEM1', 'BHZ', '2000', '', 'Second'") + insert("'DEM1', 'BHZ', '1999', '', 'First'");
    EXPECT_EQ(format_in(table + rows, "DEM1"), "Second");
    // An index that has another order, and statistics by which SQLite prefers it to the table.
    const std::string index =
        "CREATE INDEX preferred ON seedformat (sta, chan, seedstart, seedend, seedformat);"
        "ANALYZE; UPDATE sqlite_stat1 SET stat = '2 2 2 1 1 1 sz=1'";
    EXPECT_EQ(format_in(table + rows + index, "DEM1"), "Second");
    const std::string without_rowids = "CREATE TABLE seedformat (sta, chan, seedstart, seedend, seedformat,"
                                       "PRIMARY KEY (seedstart)) WITHOUT ROWID;";
    EXPECT_EQ(format_in(without_rowids + rows, "DEM1"), "First");
    const std::string view = "ALTER TABLE seedformat RENAME TO rows;"
                             "CREATE VIEW seedformat AS SELECT * FROM rows ORDER BY seedstart";
    EXPECT_EQ(format_in(table + rows + view, "DEM1"), "First");
}

TEST_F(DatabaseTest, TextsThatDoNotFit) {
    // Longer texts and those with a NUL are cut, numbers are text, NULL is none; other columns do not matter.
    const std::string sql = "CREATE TABLE seedformat (remark, STA, chan, seedstart, seedend, seedformat);" +
                            insert("printf('%.70000c', 'x'), 'LONGSTATION', 'BHZxyz', 2000, NULL, 1.5") +
                            insert("NULL, x'44454D310041', 'BHZ', '2001,001,00:00:00.0000xxxx', '',"
                                   "'abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyz'");
    EXPECT_EQ(format_in(sql, "LONGS"), "1.5");
    EXPECT_EQ(format_in(sql, "DEM1"), "abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwx");
}

// --- databases with something amiss --------------------------------------------------------------------

TEST_F(DatabaseTest, TablesThatAreNotThere) {
    const std::string no_table = messages(database("CREATE TABLE other (x)"), data(1) + data(2));
    EXPECT_EQ(no_table,
              "quarry: Can't read table 'seedformat' of database " + path("1.db") +
                  ": no such table: seedformat\n"
                  "quarry: No data format for 'DEM1', 'BHZ' at time 2001,001,00:00:00.0000 (file #0)\n"
                  "quarry: No data format for 'DEM1', 'BHZ' at time 2001,002,00:00:00.0000 (file #0)\n");
    EXPECT_EQ(messages(database(table)), // without rows
              "quarry: No data format for 'DEM1', 'BHZ' at time 2001,001,00:00:00.0000 (file #0)\n");
    EXPECT_EQ(
        messages(database("CREATE TABLE seedformat (chan, sta, seedstart, seedformat);"
                          "INSERT INTO seedformat VALUES ('BHZ', 'DEM1', 1999, '32-Bit Integer Format')"),
                 data(1) + data(2)),
        "quarry: Table 'seedformat' has no column 'seedend'\n");
}

TEST_F(DatabaseTest, DatabasesThatCannotBeOpened) {
    EXPECT_EQ(refusal("none.db"), "No such file or directory\n");
    EXPECT_EQ(refusal("/"), "Is a directory\n");
    EXPECT_EQ(refusal("/dev/null"), "Invalid argument\n");
    EXPECT_EQ(refusal(directory_.file("empty", "")), "Invalid argument\n");
    EXPECT_EQ(refusal(directory_.file("text", std::string(5000, 'x'))), "Invalid argument\n");
    EXPECT_FALSE(std::filesystem::exists("none.db"));
}

TEST_F(DatabaseTest, CutAndOverwritten) {
    std::string sql = table + dem1 + "BEGIN;";
    for (int i = 0; i < 1000; ++i)
        sql += insert("'DEM2', 'BHZ', '2000,001', '', 'Steim'");
    const std::string whole = content_of(database(sql + "COMMIT"));
    // What stands before the damage serves, and the damage is reported once.
    std::string overwritten = whole;
    std::fill(overwritten.begin() + 12288, overwritten.end(), 'x');
    const std::string damaged = directory_.file("overwritten.db", overwritten);
    const std::string result = messages(damaged, data(1) + data(2));
    EXPECT_THAT(result, StartsWith("quarry: Can't read table 'seedformat' of database " + damaged));
    EXPECT_THAT(result, HasSubstr(": database disk image is malformed\n"));
    EXPECT_EQ(count_of(result, "quarry:"), 1);
    EXPECT_EQ(refusal(directory_.file("cut.db", whole.substr(0, 50))), "Invalid argument\n");
}

TEST_F(DatabaseTest, LockedByAnotherProgram) {
    const std::string path = database(table + dem1);
    const Connection other = connect(path);
    execute(other, "BEGIN EXCLUSIVE");
    EXPECT_EQ(refusal(path), "Device or resource busy\n");
    std::thread unlock([&] { // quarry waits a while for it
        std::this_thread::sleep_for(std::chrono::milliseconds(400));
        execute(other, "COMMIT");
    });
    EXPECT_EQ(messages(path), "");
    unlock.join();
}

TEST_F(DatabaseTest, EndlessViewsCanBeInterrupted) {
    const std::string endless =
        database("CREATE VIEW seedformat AS WITH RECURSIVE n (sta) AS "
                 "(SELECT 1 UNION ALL SELECT sta + 1 FROM n) SELECT sta FROM n WHERE sta < 0");
    const std::string volume = directory_.file("volume", data(1));
    for (const auto& [signal, number] : {std::pair{"INT", 2}, std::pair{"TERM", 15}}) {
        const RunResult result =
            run({"interrupted", "timeout --preserve-status -k5 -s" + std::string(signal) +
                                    " 0.3 env --block-signal=INT,TERM --ignore-signal=TERM $quarry -d " +
                                    endless + " " + volume});
        EXPECT_EQ(result.status, 128 + number);
    }
}

// --- the files stay as they are ------------------------------------------------------------------------

// Another program, which has executed the statements on a database and has it open until it crashes. (Reading
// the files in the process of an open connection would end its locks.)
class OtherProgram {
public:
    OtherProgram(const std::string& database, const std::string& sql) {
        std::array<int, 2> done;
        EXPECT_EQ(pipe2(done.data(), O_CLOEXEC), 0);
        process_ = fork();
        if (process_ == 0) {
            const Connection connection = connect(database);
            execute(connection, sql);
            close(done[1]);
            pause();
        }
        close(done[1]);
        char none;
        EXPECT_EQ(read(done[0], &none, 1), 0);
        close(done[0]);
    }
    ~OtherProgram() { crash(); }
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;

    void crash() {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }

private:
    pid_t process_;
};

// The row dem1 stands in the write-ahead log only.
const std::string with_log = "PRAGMA journal_mode = WAL;" + table + "PRAGMA wal_checkpoint;" + dem1;

// The row dem1 stands in the rollback journal only: so much is written after its removal that it spills.
const std::string with_journal = table + dem1 + "PRAGMA cache_size = 1; BEGIN; DELETE FROM seedformat;" +
                                 insert("NULL, NULL, NULL, NULL, printf('%.300000c', 'x')");

class DatabaseFiles : public DatabaseTest {
protected:
    // That the row dem1 is found, and the files in the directory afterwards are as before.
    void expect_unchanged(const std::string& database) const {
        const auto before = files_of(directory_.path());
        EXPECT_EQ(messages(database), "");
        const auto after = files_of(directory_.path());
        for (const auto& [name, content] : before)
            EXPECT_TRUE(after.contains(name) && after.at(name) == content) << name;
        EXPECT_EQ(after.size(), before.size());
    }
};

TEST_F(DatabaseFiles, WithoutLog) {
    expect_unchanged(database(table + dem1));
    expect_unchanged(database("PRAGMA journal_mode = WAL;" + table + dem1));
    std::filesystem::rename(path("2.db"), path("a%41?b#.db"));
    expect_unchanged(path("a%41?b#.db"));
}

TEST_F(DatabaseFiles, WriteAheadLog) {
    const std::string name = path("a.db");
    OtherProgram other(name, with_log);
    expect_unchanged(name);
    other.crash();
    expect_unchanged(name);
    std::filesystem::remove(name + "-shm");
    expect_unchanged(name);
    const TemporaryDirectory links;
    std::filesystem::create_symlink(name, links.path() + "/link.db");
    expect_unchanged(links.path() + "/link.db");
    const OtherProgram emptied(path("b.db"), with_log + "PRAGMA wal_checkpoint (TRUNCATE)");
    expect_unchanged(path("b.db"));
}

// Half a transaction in the file can only be undone there, once nobody is at it.
TEST_F(DatabaseFiles, RollbackJournal) {
    const OtherProgram waiting(path("a.db"), table + dem1 + "BEGIN IMMEDIATE; DELETE FROM seedformat");
    expect_unchanged(path("a.db"));
    OtherProgram crashing(path("b.db"), with_journal);
    EXPECT_EQ(refusal(path("b.db")), "Device or resource busy\n");
    crashing.crash();
    EXPECT_TRUE(std::filesystem::exists(path("b.db-journal")));
    EXPECT_EQ(messages(path("b.db")), "");
    EXPECT_FALSE(std::filesystem::exists(path("b.db-journal")));
}

// Nobody may write into the directory; as that does not stop the superuser, quarry runs without its rights.
TEST_F(DatabaseFiles, InPlacesThatCannotBeWritten) {
    OtherProgram(path("log.db"), with_log).crash();
    std::filesystem::remove(path("log.db-shm"));
    OtherProgram(path("log-and-index.db"), with_log).crash();
    OtherProgram(path("journal.db"), with_journal).crash();
    execute(connect(path("closed.db")), with_log);
    directory_.file("volume", data(1));
    directory_.file("quarry.pf", "");
    std::filesystem::copy_file(QUARRY_PROGRAM, path("quarry"));
    using std::filesystem::perms;
    const perms readable = perms::owner_read | perms::others_read;
    const perms executable = readable | perms::owner_exec | perms::others_exec;
    for (const auto& entry : std::filesystem::directory_iterator(directory_.path()))
        std::filesystem::permissions(entry.path(),
                                     entry.path().filename() == "quarry" ? executable : readable);
    std::filesystem::permissions(directory_.path(), executable);
    const auto before = files_of(directory_.path());
    const auto errors = [&](const std::string& name) {
        const std::string as_nobody =
            geteuid() == 0 ? "setpriv --reuid=65534 --regid=65534 --clear-groups " : "";
        return run({"nobody", "cd " + directory_.path() + "; QUARRY_PARAM_PATH=. " + as_nobody +
                                  "./quarry -d " + name + " volume"})
            .err;
    };
    EXPECT_EQ(errors("closed.db"), "");
    EXPECT_EQ(errors("log-and-index.db"), "");
    EXPECT_EQ(errors("log.db"), "quarry: Can't open database log.db: Permission denied\n");
    EXPECT_EQ(errors("journal.db"), "quarry: Can't open database journal.db: Permission denied\n");
    EXPECT_TRUE(files_of(directory_.path()) == before);
    std::filesystem::permissions(directory_.path(), perms::owner_all);
}

} // namespace
} // namespace quarry
