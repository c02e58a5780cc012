// Data formats out of the database: the table's rows, and databases that are none.
#include "support.h"

#include <sqlite3.h>

namespace quarry {
namespace {

std::string database(const std::string& sql) {
    sqlite3* connection = nullptr;
    EXPECT_EQ(sqlite3_open(":memory:", &connection), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_int64 size = 0;
    unsigned char* image = sqlite3_serialize(connection, "main", &size, 0);
    const std::string bytes(image, image + size);
    sqlite3_free(image);
    sqlite3_close(connection);
    return bytes;
}

std::string data(int year, int doy, const char* station = "DEM1", const char* channel = "BHZ",
                 int encoding = 3) {
    return VolumeBuilder()
        .data({.station = station,
               .channel = channel,
               .year = year,
               .doy = doy,
               .hour = 0,
               .minute = 0,
               .second = 0,
               .encoding = encoding})
        .bytes();
}

Run with_database(const char* name, const std::string& bytes, const std::string& volume) {
    return {name,
            "$quarry -s -d x.db volume; for file in *; do echo \"$file\"; done",
            {{"x.db", bytes}, {"volume", volume}}};
}

Run unreadable(const char* name, const std::string& command, const std::string& bytes = "") {
    return {name, command + "; for file in *; do echo \"$file\"; done", {{"x.db", bytes}}};
}

// The end of a row is inclusive; an end before 1970 counts as open; of two rows the first one counts. What a
// row says of the wrong station, channel or time would be reported as missing or as disagreeing.
const std::string rows =
    "INSERT INTO seedformat VALUES ('DEM1','BHZ','2000,001','2001,001','32-Bit Integer Format');"
    "INSERT INTO seedformat VALUES ('DEM1','BHZ','2001,001','','IEEE single precision real');"
    "INSERT INTO seedformat VALUES ('DEM1','BHN','2000,001','1969,365','32-Bit Integer Format');"
    "INSERT INTO seedformat VALUES ('DEM1','BHE','2000,001','1970,001','32-Bit Integer Format');"
    "INSERT INTO seedformat VALUES ('dem2','BHZ','2001,001','','Case');"
    "INSERT INTO seedformat VALUES ('DEM4','BHZ','2001,001','','');"
    "INSERT INTO seedformat VALUES ('DEM3','BHZ','','','Never');";
const std::string of_rows = data(1999, 365) + data(2000, 1) + data(2001, 1) + data(2001, 2) + data(2001, 3) +
                            data(2000, 2) + data(2002, 1, "DEM1", "BHN") + data(2002, 1, "DEM1", "BHE") +
                            data(2001, 2, "DEM2") + data(2001, 2, "DEM3") + data(2001, 2, "DEM4") +
                            data(2001, 1, "DEM1", "BHZ", -1);

const bool formats = make_recorded_tests(
    "Database",
    {
        with_database("FormatsOfUndescribedChannels", database(content_of(QUARRY_SCHEMA) + rows), of_rows),
        with_database("NoRows", database(content_of(QUARRY_SCHEMA)), data(2001, 1)),
        with_database("NoTable", database("CREATE TABLE other (x)"), data(2001, 1) + data(2001, 2)),
        with_database(
            "NoColumn",
            database("CREATE TABLE seedformat (sta, chan, seedstart, seedformat);"
                     "INSERT INTO seedformat VALUES ('DEM1', 'BHZ', 1999, '32-Bit Integer Format')"),
            data(2001, 1) + data(2001, 2)),
        unreadable("Missing", "$quarry -d none.db"),
        unreadable("Directory", "$quarry -d /"),
        unreadable("Text", "$quarry -d x.db", std::string(5000, 'x')),
        unreadable("Empty", "$quarry -d x.db"),
        // Nor is it read as standard input, though that was closed.
        unreadable("ClosedInput", "$quarry -d x.db - <&-", database(content_of(QUARRY_SCHEMA))),
    });

} // namespace
} // namespace quarry
