// SPDX-License-Identifier: Apache-2.0
// The commands: their options, the order of their output, exit status, quarry json and quarry info.
#include "support.h"

#include <limits>

namespace quarry {
namespace {

std::string one_record(RecordFields fields) {
    fields.size = 512;
    fields.encoding = 3;
    return VolumeBuilder(512).data(fields, 1).bytes();
}

// Ten seconds of a channel each, the second of which comes late and the third early.
std::string plain_records() {
    std::string bytes;
    for (const int second : {0, 15, 20})
        bytes += one_record({.channel = "LHZ", .second = second, .samples = 10, .rate_factor = 1});
    return bytes + one_record({.station = "AAA", .channel = "LOG", .rate_factor = 0});
}

// A record whose blockette 1000 is followed by a 100 with a rate that is no number.
std::string record_of_no_rate() {
    std::string bytes = one_record({.station = "BBB"});
    return bytes.replace(50, 2, std::string("\0\x38", 2))
        .replace(56, 8, std::string("\0\x64\0\0\x7f\xc0\0\0", 8));
}

// Blockettes 395 and 500 behind blockette 1000; the first one's time has no day.
std::string record_of_times() {
    using namespace std::string_literals;
    std::string bytes = one_record({.station = "BBB"});
    const std::string abort = "\1\x8b\0\x48"s + "\7\xd5\0\0\12\24\36\0\4\xd2"s + "\0\0"s;
    const std::string timing = "\1\xf4\0\0\0\0\0\0"s + "\7\xd5\0\40\12\24\36\0\4\xd2"s + "\xf0\x64"s;
    return bytes.replace(44, 2, "\1\x40"s)
        .replace(50, 2, "\0\x38"s)
        .replace(56, abort.size(), abort)
        .replace(72, timing.size(), timing);
}

std::string volume_with_another_name() {
    std::string bytes = demonstration_volume();
    return bytes.replace(bytes.find("north face"), 5, "south");
}

std::string many_records() {
    std::string bytes;
    for (int i = 0; i < 4000; ++i)
        bytes +=
            one_record({.minute = i / 60 % 60, .second = i % 60, .samples = i % 7}) + record_of_no_rate();
    return bytes;
}

// Keys defined twice (one in a response that quarry info does not keep), not at all and for nothing; an epoch
// twice; a response without a channel.
std::string headers_that_do_not_fit() {
    const std::string station = blockette(50, "STA  +12.345678-123.4567891234.500000000Site~001321010"
                                              "2005,001~~NXX");
    const std::string response = "0003Name~A001000";
    return VolumeBuilder(512)
        .control('A', blockette(33, "001Network~") + blockette(33, "001Other~") +
                          blockette(33, "002Unused~") + blockette(41, response) + blockette(41, response))
        .control('S', blockette(57, "01 1.000E+01    1    0 0.0000E+00 0.0000E+00") + station + station)
        .bytes();
}

constexpr const char* site = "  +12.345678-123.4567891234.500000000Site~001321010~~NXX";
constexpr const char* channel =
    "  BHZ0000001~001002+12.345678-123.4567891234.50  0.0  0.0-90.0000112   20.0000 "
    "1.000E-050000CG~~~N";

// Records of 4096 bytes are declared, one of 512 is there.
std::string lengths_that_differ() {
    return VolumeBuilder(512)
               .control('S', blockette(50, std::string("AAA") + site) + blockette(52, channel))
               .bytes() +
           one_record({.station = "AAA", .samples = 2});
}

// Two stations, each with more unreadable fields than are shown.
std::string many_faults() {
    std::string headers;
    for (const char* station : {"AAA", "BBB"}) {
        headers += blockette(50, std::string(station) + site) + blockette(52, channel);
        for (int i = 0; i < 1100; ++i)
            headers += blockette(59, "~~00xx000000");
    }
    // The channel of a second volume follows no station.
    std::string orphans = blockette(52, channel);
    for (int i = 0; i < 1100; ++i)
        orphans += blockette(59, "~~00xx000000");
    return VolumeBuilder(4096).control('S', headers).bytes() +
           VolumeBuilder(4096)
               .control('V', blockette(10, " 2.412~~~Quarry~Two~"))
               .control('S', orphans)
               .bytes();
}

// The second record continues the first one across a positive leap second.
std::string records_around_a_leap_second() {
    return one_record(
               {.doy = 32, .hour = 23, .minute = 59, .samples = 60, .rate_factor = 1, .activity = 0x10}) +
           one_record({.doy = 33, .hour = 0, .minute = 0, .second = 29, .samples = 60, .rate_factor = 1});
}

const std::map<std::string, std::string> volumes = {
    {"demo", demonstration_volume()},
    {"json", demonstration_volume()},
    {"sound", one_record({.station = "AAA",
                          .channel = "BH",
                          .year = 2010,
                          .samples = 2,
                          .quality = 0x10,
                          .time_correction = 250,
                          .data = std::string("\0\0\0\1\xff\xff\xff\xff", 8)})},
    {"damaged", one_record({.station = "BBB"}) + std::string(512, 'x') + one_record({.station = "CCC"})},
    {"plain", plain_records()},
    {"index_first", VolumeBuilder(256).control('V', blockette(11, "000") + blockette(5, " 2.408~")).bytes()},
    {"joined", VolumeBuilder(256).control('V', blockette(10, " 2.408~~~Quarry~One~")).bytes() +
                   one_record({}) +
                   VolumeBuilder(256).control('V', blockette(10, " 2.408~~~Quarry~Two~")).bytes()},
    {"no_rate", record_of_no_rate()},
    {"times", record_of_times()},
    {"infinite", one_record({.samples = 2, .stated_rate = std::numeric_limits<double>::infinity()})},
    {"brief", one_record({.year = 2010, .samples = 2})},
    {"outside", one_record({.samples = 2}).replace(44, 2, "\x7f\xff")}, // where its data begin
    {"empty", ""},
    {"unfit", headers_that_do_not_fit()},
    {"B\303\274ro", many_faults()},
    {"lengths", lengths_that_differ()},
    {"leap", records_around_a_leap_second()},
    {"names", "sound\r\n\ndamaged\n"},
    {"controls",
     VolumeBuilder(512)
         .control('A', blockette(33, "001\33[2J\n\"\\\303\351\302\233\200\177~"))
         .control('S', blockette(50, "STA  +12.345678-123.4567891234.500000000S\33[2J\t\351~001321010~~NXX"))
         .bytes()},
};

// Runs the commands that a document prints.
std::string examples_of(const std::string& document) {
    return "awk '/^```sh/ {on = 1; next} /^```/ {on = 0} on' " + document +
           " >examples; PATH=${quarry%/*}:$PATH sh examples";
}

const bool commands = make_recorded_tests(
    "Commands",
    {
        {"JsonOfTheDemonstration", "$quarry json demo", volumes},
        {"JsonSamples", "$quarry json --samples --kinds data sound", volumes},
        {"JsonBinaryTimes",
         "$quarry json --kinds data times | grep -o '\"type\":[35].*'; "
         "$quarry json --kinds data infinite | grep -o '\"rate\":[^,]*'",
         volumes},
        {"JsonDamage",
         "$quarry json --kinds volume,blockette index_first; $quarry json --kinds volume,data joined | cut -c 1-90; "
         "$quarry json --kinds volume,damage,summary damaged; $quarry json --kinds damage outside",
         volumes},
        {"JsonControlCharacters", "$quarry json --kinds blockette controls", volumes},
        {"JsonOfWhatCannotBeRead", "$quarry json missing empty sound", volumes},
        {"JsonSelection",
         "for o in '--station DEM2' '--location -- --channel BHN' '--network YY' '--from 2005-02-01T10:22' "
         "'--to 2005,032,10:20:31' '--from 2005-02-02'; do echo \"$o\"; "
         "$quarry json --kinds summary $o demo | grep -o '\"sel.*'; $quarry json --kinds blockette $o demo | wc -l; done",
         volumes},
        // The record goes from 10:20:30 to 50 ms later: each form of a time, and that a microsecond later.
        {"Times",
         "taken() { $quarry json --kinds summary \"$@\" brief 2>err | grep -o 'ted_data_records\":.' || tail -n1 err; }; "
         "for t in 2010-02-01T10:20:30%s 2010-032T10:20:30%sZ 20100201T102030%s '2010032 102030%s' "
         "2010,032,10:20:30%s 2010-02-01T11:20:30%s+01:00 20100201T045030%s-0530 2010-02-02T00:20:30%s+14; do "
         "for f in '' .000001; do taken --to \"$(printf \"$t\" $f)\"; done; done; "
         "for f in .05 .050001; do taken --from 2010-02-01T10:20:30$f; done; "
         "for t in 2010 2010-02 20100201T10 2010-02-01T10:20Z; do taken --from $t; taken --to $t; done; "
         "for t in 2010-02-30 2010-366 2010-000 2010-02-01Z 2010-02-01T24 2010-02-01T 2010-02-01T10.5 2010-2-1 "
         "2010-02-01T10:20:30+24 2010-02-01T10Z01:00 2010-02-01T10:20:30.x; do $quarry json --from $t sound; echo $?; done 2>&1 | sort | uniq -c",
         volumes},
        {"VolumesInOrder",
         "for jobs in 1 4 0; do $quarry json --jobs $jobs --kinds summary damaged @names - demo <sound | "
         "cut -d, -f2,3; done",
         volumes},
        {"ExitStatus",
         "for v in sound damaged empty 'damaged missing sound' '--jobs x sound' '--from 2010-13 sound' "
         "'--kinds x sound' '--no' '@nothing sound' @empty '@empty sound' '--help'; do $quarry json $v >out; echo \"$v: $?\"; done",
         volumes},
        {"ManyRecordsInOrder",
         "for jobs in 1 2 5; do $quarry json --jobs $jobs many demo many | cksum; done",
         {{"many", many_records()}, {"demo", demonstration_volume()}}},
        {"JsonInventory", "$quarry json --inventory --kinds station,channel demo plain", volumes},
        {"StatusOfDataBlockettes",
         "for c in 'json --kinds data' 'json --kinds summary' 'info --damage'; do $quarry $c no_rate; echo $?; done",
         volumes},
        {"Findings",
         "$quarry info --tsv --findings unfit; $quarry json --kinds finding unfit; $quarry info --findings sound",
         volumes},
        {"Info",
         "$quarry info demo plain; $quarry info --jobs 4 empty damaged - missing <controls 2>err; echo $?; sort err",
         volumes},
        {"InfoOfLeapSecondsAndLengths", "$quarry info --tsv leap lengths | cut -f 1-4,8-", volumes},
        {"CheckOfManyFaults",
         "for o in '' '--station AAA' '--station BBB' '--network --'; do $quarry check --enable field $o B* | sed -n '1p; $p'; done; "
         "$quarry check --enable field --json B* | tail -n 1",
         volumes},
        {"InfoOfTables",
         "for o in '--stations --network XX' '--channels --station DEM2' '--channels --to 2003-01-01' "
         "'--damage --channels'; do $quarry info $o demo; done",
         volumes},
        {"InfoForPrograms",
         "for o in '' --stations --damage '--damage --stations'; do $quarry info --tsv $o damaged demo controls; done",
         volumes},
        {"InfoOnATerminal",
         "for columns in 9 20 80 160; do script -qec \"stty cols $columns; $quarry info demo damaged controls\" /dev/null "
         "</dev/null | tr -d '\\r'; done; COLUMNS=60 script -qec '$quarry info --channels demo' /dev/null </dev/null",
         volumes},
        {"Progress",
         "seen() { tr '\\r' '\\n' | sed 's/[0-9.]* MB.s/SPEED/; s/[0-9]* s left/TIME/' | cat -v >seen; "
         "grep -m1 MB seen; grep . seen | tail -n1; }; "
         "script -qec \"$quarry json --kinds damage many | { sleep 2.3; wc -l; }\" /dev/null </dev/null | seen; "
         "script -qec \"{ cat demo; sleep 2.3; } | $quarry info demo - >out\" /dev/null </dev/null | seen; "
         "script -qec \"{ sleep 2.3; cat demo; } | $quarry check - >out\" /dev/null </dev/null | seen",
         {{"many", many_records()}, {"demo", demonstration_volume()}}},
        {"Recipes",
         examples_of(QUARRY_RECIPES),
         {{"volume.seed", demonstration_volume()},
          {"other.seed", volume_with_another_name()},
          {"archive/demo", demonstration_volume()},
          {"archive/2005/damaged", volumes.at("damaged")},
          {"archive/2005/plain", plain_records()}}},
        {"ExamplesOfCheck",
         examples_of(QUARRY_CHECK),
         {{"volume.seed", volumes.at("damaged")}, {"archive/sound.mseed", volumes.at("sound")}}},
        {"ExamplesOfCoverage",
         examples_of(QUARRY_COVERAGE) + "; ls",
         {{"volume.seed", demonstration_volume()},
          {"archive/sound.mseed", volumes.at("sound")},
          {"archive/plain.mseed", plain_records()}}},
        {"ANameAloneIsAVolume", "$quarry json | tail -3", volumes},
        {"FullOutputOfACommand", "$quarry json demo >/dev/full", volumes},
    });

} // namespace
} // namespace quarry
