// SPDX-License-Identifier: Apache-2.0
// What the system does to a run: inputs, outputs, names, descriptors and databases with something amiss. Each
// case states the command, its status, the messages and how many of the records are listed all the same.
#include "support.h"

#include <algorithm>
#include <csignal>
#include <random>

namespace quarry {
namespace {

// Data records of 4096 bytes, which hardly compress.
std::string records(int count) {
    std::minstd_rand random;
    VolumeBuilder volume;
    for (int second = 0; second < count; ++second) {
        std::string noise(4032, ' ');
        std::ranges::generate(noise, [&] { return static_cast<char>(random()); });
        volume.data({.second = second, .encoding = 3, .data = noise});
    }
    return volume.bytes();
}

constexpr int all = 6; // records of the volume

// Lists the first record with a database and says where that changed a file.
const std::string listed_unchanged = "before=$(md5sum d*); $quarry -d \"$1\" one; status=$?; "
                                     "[ \"$before\" = \"$(md5sum d*)\" ] || echo changed >&2; exit $status";

struct Fault {
    const char* name;
    std::string command; // for the shell, in a directory with the volume and its first record, "one"
    int status;
    std::string err;
    int records = 0; // that are listed
};

std::string cannot_open(const std::string& name, const std::string& reason) {
    return "quarry: Can't open input file " + name + ": " + reason + "\n";
}
std::string ended_badly(const std::string& name, const std::string& reason) {
    return "quarry: Decompressing " + name + " ended badly: " + reason + "\n";
}
std::string cannot_open_database(const std::string& name, const std::string& reason) {
    return "quarry: Can't open database " + name + ": " + reason + "\n";
}
std::string read_error(const std::string& reason) {
    return "quarry: input read error: " + reason + "\n";
}
const std::string cut_record = "quarry: Unexpected end of file reading data record File #0.: Success\n";
const std::string trailing = "quarry: Decompressing packed: decompression OK, trailing garbage ignored\n";
const std::string cannot_write = "quarry: Can't write standard output: ";

void check(const Fault& fault) {
    const std::map<std::string, std::string> files{
        {"volume", records(all)}, {"one", records(1)}, {"check", listed_unchanged}};
    static const std::string sound = run({"sound", "$quarry volume", files}).out;
    const RunResult result = run({fault.name, fault.command, files});
    EXPECT_EQ(result.status, fault.status);
    EXPECT_EQ(result.err, fault.err);
    std::size_t listed = 0;
    for (int line = 0; line < fault.records; ++line)
        listed = sound.find('\n', listed) + 1;
    EXPECT_EQ(result.out.substr(0, listed), sound.substr(0, listed));
    EXPECT_EQ(result.out.find("DATA Net", listed), std::string::npos) << result.out;
}

// Of the descriptors that a program inherits 3 may be open.
const std::string few_descriptors = "exec 3>&-; ulimit -n 4; ";

// Runs what follows without the superuser's right to open any file.
const std::string as_anybody =
    "[ $(id -u) != 0 ] || without='setpriv --bounding-set -dac_override,-dac_read_search'; ";

// A terminal that hangs up behind 42 records, which is a read error here and again in search of a next tape
// file.
const std::string hangs_up =
    "cat >hang_up.py <<'end'\nimport os, time, tty\nmaster, line = os.openpty()\ntty.setraw(line)\n"
    "if os.fork() == 0:\n os.write(line, 7 * open('volume', 'rb').read())\n time.sleep(0.2)\n os._exit(0)\n"
    "os.close(line)\nos.dup2(master, 0)\nos.execl(os.environ['quarry'], 'quarry')\nend\npython3 hang_up.py";

// The listing fills the pipe before the end of the file is reached; then the file grows.
const std::string grown =
    "cp volume grown; for i in $(seq 9); do cat grown grown >twice; mv twice grown; done; ";
const std::string grows = grown + "mkfifo out; "
                                  "$quarry grown >out & exec 3<out; read -r line <&3; cat volume >>grown; "
                                  "(echo \"$line\"; cat <&3) >listed; $quarry grown | cmp listed";

// A pipe whose reader has gone stands on descriptor 3; signals stand in the way.
const std::string reader_gone = "mkfifo pipe; : <pipe & exec 3>pipe; wait; "
                                "env --ignore-signal=PIPE --block-signal=PIPE $quarry ";

// A name of 4,000 characters, in folders of 199.
const std::string long_name = [] {
    std::string name;
    while (name.size() < 4000)
        name += std::string(199, 'x') + '/';
    return name.substr(0, 3999) + 'x';
}();
const std::string cut_volume = "head -c 10000 volume >cut; $quarry cut";
const std::string cut_gzip = "gzip -c volume | head -c 10000";
const std::string long_folders = "mkdir -p " + long_name.substr(0, 3800) + "; ";

std::string with_table(const std::string& columns, const std::string& values) {
    return "sqlite3 d \"CREATE TABLE seedformat (" + columns + "); INSERT INTO seedformat VALUES (" + values +
           ")\"; ";
}
const std::string create = "CREATE TABLE seedformat (sta, chan, seedstart, seedend, seedformat); ";
const std::string insert =
    "INSERT INTO seedformat VALUES ('DEM1', 'BHZ', '2000,001', '', '32-Bit Integer Format')";
const std::string sound_database = "sqlite3 d \"" + create + insert + "\"; ";
const std::string with_database = "$quarry -d d one";
const std::string no_format =
    "quarry: No data format for 'DEM1', 'BHZ' at time 2005,032,10:20:00.0000 (file #0)\n";
std::string cannot_read_table(const std::string& reason) {
    return "quarry: Can't read table 'seedformat' of database d" + reason + "\n";
}

const std::string endless_view =
    "sqlite3 d 'CREATE VIEW seedformat AS WITH RECURSIVE n (sta) AS (SELECT 1 UNION ALL "
    "SELECT sta + 1 FROM n) SELECT sta FROM n WHERE sta < 0'; timeout --preserve-status -k5 ";
const std::string interrupted = " env --block-signal=INT,TERM --ignore-signal=TERM $quarry -d d one";

// Another program, what it has done to a database, and that quarry reads it meanwhile or after a crash. The
// row that serves the record stands in the write-ahead log only, or in the rollback journal only: so much is
// written after its removal that it spills.
const std::string sqlite = "sqlite3 d '.output /dev/null' \"";
const std::string with_log = "PRAGMA journal_mode = WAL; " + create + "PRAGMA wal_checkpoint; " + insert;
const std::string with_journal = "PRAGMA cache_size = 1; BEGIN; DELETE FROM seedformat; "
                                 "INSERT INTO seedformat (sta) VALUES (printf('%.300000c', 'x'))";
const std::string in_use = "\" '.shell sh check d; echo $? >status'; exit $(cat status)";
const std::string crash = "\" '.shell kill -9 $PPID' 2>&-; ";
const std::string busy = cannot_open_database("d", "Device or resource busy");

// Nobody may write into the directory.
const std::string read_only = as_anybody + "trap 'chmod u+w .' EXIT; chmod a-w d* .; $without sh check d";
const std::string denied = cannot_open_database("d", "Permission denied");

const bool system_faults = make_tests(
    "SystemFaults",
    std::vector<Fault>{
        {"InputMissing", "$quarry missing", 1, cannot_open("missing", "No such file or directory")},
        {"InputUnreadable", as_anybody + "chmod 0 volume; $without $quarry volume", 1,
         cannot_open("volume", "Permission denied")},
        {"InputDirectory", "$quarry /", 0, read_error("Is a directory")},
        {"InputClosed", "$quarry - <&-", 0, read_error("Bad file descriptor")},
        {"InputFifo", "mkfifo pipe; cat volume >pipe & $quarry pipe", 0, "", all},
        {"InputPipe", "cat volume | $quarry", 0, "", all},
        {"InputGrowing", grows, 0, ""},
        {"InputFailsHalfWay", hangs_up + " >out; head -6 out", 0,
         read_error("Input/output error") + read_error("Input/output error"), all},
        {"InputCutInARecord", cut_volume, 0, cut_record, 2},

        {"CompressedEveryEncoding",
         "for encode in gzip compress bzip2 xz zstd lzip; do $encode -fc volume >packed; "
         "$quarry volume >plain; $quarry packed | cmp plain; cat packed | $quarry | cmp plain; done",
         0, ""},
        {"CompressedOneByte", "printf '\\037' >packed; $quarry packed", 0, ""},
        {"CompressedCut", cut_gzip + " >packed; $quarry packed", 0,
         ended_badly("packed", "unexpected end of file") + cut_record, 2},
        {"CompressedCutOnStandardInput", cut_gzip + " | $quarry", 0,
         ended_badly("-", "unexpected end of file") + cut_record, 2},
        {"CompressedDamaged",
         "gzip -c volume >packed; printf damage | dd of=packed bs=1 seek=9000 conv=notrunc status=none; $quarry packed",
         0, ended_badly("packed", "invalid compressed data--crc error"), all},
        {"CompressedGarbage", "printf '\\037\\213 and no more' >packed; $quarry packed", 0,
         ended_badly("packed", "invalid compressed data--format violated")},
        {"CompressedFollowedByGarbage", "(gzip -c volume; echo garbage) >packed; $quarry packed", 0, trailing,
         all},
        {"CompressedSeveralMembers",
         "(head -c 7000 volume | gzip; tail -c +7001 volume | gzip) >packed; $quarry packed", 0, "", all},

        {"OutputFull", "$quarry volume >/dev/full", 1, cannot_write + "No space left on device\n"},
        {"OutputClosed", "$quarry volume >&-", 1, cannot_write + "Bad file descriptor\n"},
        {"OutputClosedInSummary", "$quarry -s volume >&-", 1, cannot_write + "Bad file descriptor\n"},
        {"OutputBeyondALimit", "ulimit -f 1; $quarry volume >out", 1, cannot_write + "File too large\n"},
        {"OutputFullBeforeANote",
         "printf '%-512s' '000001A 0330015001text~0510019~~0000xxxxxx' >bad; $quarry bad >/dev/full", 1,
         cannot_write + "No space left on device\n"},
        {"OutputNotReadyYet", // the pipe is full and does not block
         grown + "python3 -c 'import os; os.set_blocking(1, False); "
                 "os.execl(os.environ[\"quarry\"], \"quarry\", \"grown\")' | (sleep 0.2; cat) >out; "
                 "$quarry grown | cmp out",
         0, ""},
        {"OutputReaderGone", reader_gone + "volume >&3", 141, ""},
        {"OutputReaderGoneInSummary", reader_gone + "-s volume >&3", 141, ""},
        {"ErrorsClosed", cut_volume + " 2>&-", 0, "", 2},
        {"ErrorsFull", cut_volume + " 2>/dev/full", 0, "", 2},
        {"AllDescriptorsClosed", "$quarry missing <&- >&- 2>&-", 1, ""},

        {"NameLeadingDash", "cp volume ./-s; $quarry ./-s && $quarry -- -x", 1,
         cannot_open("-x", "No such file or directory"), all},
        {"NameNewLine", "$quarry 'two\nlines'", 1, cannot_open("two\nlines", "No such file or directory")},
        {"NamePerCentSign", cut_gzip + " >%s%n; $quarry %s%n", 0,
         ended_badly("%s%n", "unexpected end of file") + cut_record, 2},
        {"NameFourThousandCharacters", long_folders + cut_gzip + " >" + long_name + "; $quarry " + long_name,
         0, ended_badly(long_name, "unexpected end of file") + cut_record, 2},
        {"NameTooLong", "$quarry " + long_name + long_name, 1,
         cannot_open(long_name + long_name, "File name too long")},
        {"DatabaseName", "$quarry -d './-%n\nx' one", 1,
         cannot_open_database("./-%n\nx", "No such file or directory")},

        {"DatabaseMissing", with_database + "; status=$?; [ ! -e d ] && exit $status", 1,
         cannot_open_database("d", "No such file or directory")},
        {"DatabaseDirectory", "mkdir d; " + with_database, 1, cannot_open_database("d", "Is a directory")},
        {"DatabaseDevice", "$quarry -d /dev/null one", 1,
         cannot_open_database("/dev/null", "Invalid argument")},
        {"DatabaseEmpty", ": >d; " + with_database, 1, cannot_open_database("d", "Invalid argument")},
        {"DatabaseGarbage", "cp volume d; " + with_database, 1,
         cannot_open_database("d", "Invalid argument")},
        {"DatabaseCutInItsHeader", sound_database + "truncate -s 50 d; " + with_database, 1,
         cannot_open_database("d", "Invalid argument")},
        {"DatabaseCut", sound_database + "truncate -s 4096 d; " + with_database, 1,
         cannot_open_database("d", "Invalid argument")},
        {"DatabaseCutInAPage", sound_database + "truncate -s 6000 d; " + with_database, 1,
         cannot_open_database("d", "Invalid argument")},
        {"DatabaseDamagedBehindTheRow",
         sound_database +
             "sqlite3 d \"INSERT INTO seedformat SELECT 1, 2, 3, 4, value FROM generate_series(1, 1000)\"; "
             "truncate -s 12288 d; truncate -s 40960 d; " +
             with_database,
         0, cannot_read_table(" beyond row 269: database disk image is malformed"), 1},
        {"DatabaseLocked",
         sound_database + "sqlite3 d 'BEGIN EXCLUSIVE' \".shell " + with_database +
             "; echo \\$? >status\"; exit $(cat status)",
         1, busy},
        {"DatabaseLockedForAWhile",
         sound_database +
             "sqlite3 d 'BEGIN EXCLUSIVE' '.shell touch locked; sleep 0.4' COMMIT & "
             "until [ -e locked ]; do sleep 0.01; done; " +
             with_database,
         0, "", 1},
        {"DatabaseWithoutTable", "sqlite3 d 'CREATE TABLE other (x)'; " + with_database, 0,
         cannot_read_table(": no such table: seedformat") + no_format, 1},
        {"DatabaseWithoutRows", sound_database + "sqlite3 d 'DELETE FROM seedformat'; " + with_database, 0,
         no_format, 1},
        {"DatabaseWithoutAColumn",
         with_table("chan, sta, seedstart, seedformat", "'BHZ', 'DEM1', 1999, '32-Bit Integer Format'") +
             with_database,
         0, "quarry: Table 'seedformat' has no column 'seedend'\n", 1},
        {"DatabaseNulsAndLongTexts",
         with_table(
             "remark, STA, chan, seedstart, seedend, seedformat",
             "printf('%.70000c', 'x'), x'44454D310041', 'BHZxyz', 2000, '2005,032,10:20:00.0000xxxx', '32-Bit Integer Format' || x'0041'") +
             with_database,
         0, "", 1},
        {"DatabaseEndlessView", endless_view + "-sINT 0.3" + interrupted, 128 + SIGINT, ""},
        {"DatabaseEndlessViewTerminated", endless_view + "-sTERM 0.3" + interrupted, 128 + SIGTERM, ""},
        {"SignalWhileALineWaits", // before the program has made the line, it is too early
         "printf '%-512s' '000001A 0330015001text~' | cat - one >line; mv line one; for seconds in 0.3 1 3 9; do " +
             endless_view + "-sINT" + " $seconds" + interrupted +
             " >out; status=$?; grep -q '^B033.*text' out && exit $status; rm d; done",
         128 + SIGINT, ""},

        // The files of a database stay as they are, whoever is at them or was.
        {"FilesOfADatabase", sound_database + "sh check d", 0, "", 1},
        {"FilesWithALog", sqlite + with_log + in_use, 0, "", 1},
        {"FilesWithALogEmptied", sqlite + with_log + "; PRAGMA wal_checkpoint (TRUNCATE)" + in_use, 0, "", 1},
        {"FilesWithALogClosed", sqlite + with_log + "\"; sh check d", 0, "", 1},
        {"FilesWithALogOfACrash", sqlite + with_log + crash + "sh check d", 0, "", 1},
        {"FilesWithALogWithoutIndex", sqlite + with_log + crash + "rm d-shm; sh check d", 0, "", 1},
        {"FilesThroughALink", sqlite + with_log + crash + "mkdir l; ln -s ../d l/d; sh check l/d", 0, "", 1},
        {"FilesOfAnOddName", sound_database + "mv d 'd%41?b#'; sh check 'd%41?b#'", 0, "", 1},
        {"FilesInATransaction", sound_database + sqlite + "BEGIN IMMEDIATE; DELETE FROM seedformat" + in_use,
         0, "", 1},
        {"FilesWithAJournalInUse", sound_database + sqlite + with_journal + in_use, 1, busy},
        {"JournalOfACrashIsUndone",
         sound_database + sqlite + with_journal + crash + with_database + " && [ ! -e d-journal ]", 0, "", 1},
        {"ReadOnlyWithALogClosed", sqlite + with_log + "\"; " + read_only, 0, "", 1},
        {"ReadOnlyWithALog", sqlite + with_log + crash + read_only, 0, "", 1},
        {"ReadOnlyWithALogWithoutIndex", sqlite + with_log + crash + "rm d-shm; " + read_only, 1, denied},
        {"ReadOnlyWithAJournal", sound_database + sqlite + with_journal + crash + read_only, 1, denied},

#ifndef __SANITIZE_ADDRESS__ // which opens descriptors of its own
        {"InputFewDescriptors", few_descriptors + "$quarry volume", 0, "", all},
        {"DatabaseFewDescriptors", sound_database + few_descriptors + with_database, 0,
         cannot_read_table(": unable to open database file") + no_format, 1},
#endif
    },
    check);

} // namespace
} // namespace quarry
