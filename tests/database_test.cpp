// SPDX-License-Identifier: Apache-2.0
// The database of option -d: which row of its table serves a record. How a row is found among many is
// compared with a plain search by fuzz/rows.cpp.

#include "support.h"

#include "listing/format_rows.h"
#include "listing/seed_utl.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace quarry {
namespace {

std::string data(int doy, const char* station = "DEM1", int encoding = 3) {
    return VolumeBuilder()
        .data({.station = station,
               .year = 2001,
               .doy = doy,
               .hour = 0,
               .minute = 0,
               .second = 0,
               .encoding = encoding})
        .bytes();
}

std::string insert(const std::string& values) {
    return "INSERT INTO seedformat VALUES (" + values + ");";
}

TEST(Database, FormatsOfUndescribedChannels) {
    const std::string rows = insert("'DEM1','BHZ','2000,001','2001,001','First'") +
                             insert("'DEM1','BHZ','2001,001','','IEEE single precision real'") +
                             insert("'dem2','BHZ','2001,001','','Case'") +
                             insert("'DEM3','BHZ','','','Never'");
    const RunResult result = run({"formats",
                                  "cat " QUARRY_SCHEMA " rows | sqlite3 d; $quarry -d d volume",
                                  {{"rows", rows},
                                   {"volume", data(1) + data(2) + data(3) + data(2, "DEM2") +
                                                  data(2, "DEM3") + data(1, "DEM1", -1)}}});
    // The end of the first row is inclusive; the second row's format disagrees with blockette 1000.
    EXPECT_EQ(result.err,
              "quarry: \n*** Serious inconsistency in seed volume.\n"
              "    For the channel XX_DEM1_BHZ, the 030 blockettes indicate the datatype\n"
              "        IEEE single precision real\n"
              "    but the blockette 1000 embedded in the data says the data is\n"
              "        32-Bit Integer Format\n"
              "    This inconsistency may cause problems.\n"
              "quarry: No data format for 'DEM2', 'BHZ' at time 2001,002,00:00:00.0000 (file #0)\n"
              "quarry: No data format for 'DEM3', 'BHZ' at time 2001,002,00:00:00.0000 (file #0)\n");
}

// The format that a new database gives for a record of the station's channel BHZ in 2001.
std::string format_in(const std::string& sql, const std::string& station = "DEM1") {
    const TemporaryDirectory directory;
    const std::string path = directory.path() + "/d";
    EXPECT_EQ(std::system(("sqlite3 " + path + " <" + directory.file("sql", sql)).c_str()), 0);
    StorePointer opened = store_invalid();
    EXPECT_EQ(store_open(path.c_str(), "r+", &opened), 0);
    double epoch;
    seed2epoch("2001,002", &epoch);
    return std::string(FormatRows().find(opened, station, "BHZ", epoch));
}

TEST(Database, TheFirstRowInTableOrder) {
    const std::string table = "CREATE TABLE seedformat (sta, chan, seedstart, seedend, seedformat);";
    const std::string rows =
        insert("'DEM1', 'BHZ', '2000', '', 'Second'") + insert("'DEM1', 'BHZ', '1999', '', 'First'");
    EXPECT_EQ(format_in(table + rows), "Second");
    // An index that has another order, and statistics by which SQLite prefers it to the table.
    EXPECT_EQ(format_in(table + rows +
                        "CREATE INDEX preferred ON seedformat (sta, chan, seedstart, seedend, seedformat);"
                        "ANALYZE; UPDATE sqlite_stat1 SET stat = '2 2 2 1 1 1 sz=1';"),
              "Second");
    EXPECT_EQ(format_in("CREATE TABLE seedformat (sta, chan, seedstart, seedend, seedformat,"
                        "PRIMARY KEY (seedstart)) WITHOUT ROWID;" +
                        rows),
              "First");
    EXPECT_EQ(format_in(table + rows +
                        "ALTER TABLE seedformat RENAME TO rows;"
                        "CREATE VIEW seedformat AS SELECT * FROM rows ORDER BY seedstart;"),
              "First");
    EXPECT_EQ(format_in(table + insert("'LONGSTATION', 'BHZxyz', 2000, NULL, 1.5"), "LONGS"), "1.5");
    EXPECT_EQ(format_in(table + insert("'DEM1', 'BHZ', '2000', '', printf('%.70c', 'x')")),
              std::string(50, 'x'));
}

} // namespace
} // namespace quarry
