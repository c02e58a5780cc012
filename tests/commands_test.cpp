// The commands: their options, the order of their output, exit status, quarry json and quarry info.
#include "support.h"

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

std::string many_records() {
    std::string bytes;
    for (int i = 0; i < 4000; ++i)
        bytes +=
            one_record({.minute = i / 60 % 60, .second = i % 60, .samples = i % 7}) + record_of_no_rate();
    return bytes;
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
    {"no_rate", record_of_no_rate()},
    {"empty", ""},
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
        {"JsonDamage",
         "$quarry json --kinds volume,blockette index_first; $quarry json --kinds volume,damage,summary damaged",
         volumes},
        {"JsonControlCharacters", "$quarry json --kinds blockette controls", volumes},
        {"JsonOfWhatCannotBeRead", "$quarry json missing empty sound", volumes},
        {"JsonSelection",
         "for o in '--station DEM2' '--location -- --channel BHN' '--network YY' '--from 2005-02-01T10:22' "
         "'--to 2005,032,10:20:31' '--from 2005-02-02'; do echo \"$o\"; "
         "$quarry json --kinds summary $o demo | grep -o '\"sel.*'; $quarry json --kinds blockette $o demo | wc -l; done",
         volumes},
        {"VolumesInOrder",
         "for jobs in 1 4 0; do $quarry json --jobs $jobs --kinds summary damaged @names - demo <sound | "
         "cut -d, -f2,3; done",
         volumes},
        {"ExitStatus",
         "for v in sound damaged empty 'damaged missing sound' '--jobs x sound' '--from 2010-13 sound' "
         "'--kinds x sound' '--no' '@nothing sound' '--help'; do $quarry json $v >out; echo \"$v: $?\"; done",
         volumes},
        {"ManyRecordsInOrder",
         "for jobs in 1 2 5; do $quarry json --jobs $jobs many demo many | cksum; done",
         {{"many", many_records()}, {"demo", demonstration_volume()}}},
        {"JsonInventory", "$quarry json --inventory --kinds station,channel demo plain", volumes},
        {"StatusOfDataBlockettes",
         "for c in 'json --kinds data' 'json --kinds summary' 'info --damage'; do $quarry $c no_rate; echo $?; done",
         volumes},
        {"Info",
         "$quarry info demo plain; $quarry info --jobs 4 empty damaged - missing <controls 2>err; echo $?; sort err",
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
        {"Recipes",
         examples_of(QUARRY_RECIPES),
         {{"volume.seed", demonstration_volume()},
          {"archive/demo", demonstration_volume()},
          {"archive/2005/damaged", volumes.at("damaged")},
          {"archive/2005/plain", plain_records()}}},
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
