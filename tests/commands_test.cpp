// The commands: their options, the order of their output, exit status, and quarry json.
#include "support.h"

namespace quarry {
namespace {

std::string one_record(RecordFields fields) {
    fields.size = 512;
    fields.encoding = 3;
    return VolumeBuilder(512).data(fields, 1).bytes();
}

const std::map<std::string, std::string> volumes = {
    {"demo", demonstration_volume()},
    {"json", demonstration_volume()},
    {"sound",
     one_record(
         {.station = "AAA", .year = 2010, .samples = 2, .data = std::string("\0\0\0\1\xff\xff\xff\xff", 8)})},
    {"damaged", one_record({.station = "BBB"}) + std::string(512, 'x') + one_record({.station = "CCC"})},
    {"empty", ""},
    {"names", "sound\r\n\ndamaged\n"},
    {"controls",
     VolumeBuilder(512).control('A', blockette(33, "001\33[2J\n\"\\\303\351\302\233\200\177~")).bytes()},
};

const bool commands = make_recorded_tests(
    "Commands",
    {
        {"JsonOfTheDemonstration", "$quarry json demo", volumes},
        {"JsonSamples", "$quarry json --samples --kinds data sound", volumes},
        {"JsonDamage", "$quarry json --kinds volume,damage,summary damaged", volumes},
        {"JsonControlCharacters", "$quarry json --kinds blockette controls", volumes},
        {"JsonOfWhatCannotBeRead", "$quarry json missing empty sound", volumes},
        {"JsonSelection",
         "for o in '--station DEM2' '--location -- --channel BH' '--network YY' '--from 2005-02-01T10:22' "
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
        {"ANameAloneIsAVolume", "$quarry json | tail -3", volumes},
        {"FullOutputOfACommand", "$quarry json demo >/dev/full", volumes},
    });

} // namespace
} // namespace quarry
