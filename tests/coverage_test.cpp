// SPDX-License-Identifier: Apache-2.0
// quarry coverage: its tables, JSON Lines and options. tests/coverage.py compares what it finds.
#include "support.h"

namespace quarry {
namespace {

std::string one_record(RecordFields fields) {
    fields.size = 256;
    fields.encoding = 3;
    return VolumeBuilder(256).data(fields, 1).bytes();
}

// Minutes at 1 Hz: three, a gap up to the next hour, one, a second one too early, one of them again; another
// channel over three days; what has no rate or no samples.
std::string records_of_days() {
    std::string bytes;
    for (const int minute : {20, 21, 22})
        bytes += one_record({.channel = "LHZ", .minute = minute, .samples = 60, .rate_factor = 1});
    bytes += one_record({.channel = "LHZ", .hour = 11, .minute = 0, .samples = 60, .rate_factor = 1});
    bytes += one_record(
        {.channel = "LHZ", .hour = 11, .minute = 1, .second = 29, .samples = 60, .rate_factor = 1});
    bytes += one_record({.channel = "LHZ", .minute = 21, .samples = 60, .rate_factor = 1});
    for (const int doy : {32, 34})
        bytes += one_record({.station = "A,\"",
                             .channel = "VHZ",
                             .doy = doy,
                             .hour = 0,
                             .minute = 0,
                             .second = 9,
                             .samples = 8640,
                             .rate_factor = -10});
    bytes += one_record({.channel = "LOG", .samples = 80, .rate_factor = 0});
    return bytes + one_record({.channel = "ACE", .rate_factor = 1});
}

// Three minutes at 1 Hz whose second one is 0.2 s early, and that one again.
std::string jittering_records() {
    std::string bytes;
    for (const int seconds : {1200, 1259, 1320, 1259})
        bytes += one_record({.channel = "LHZ",
                             .minute = seconds / 60,
                             .second = seconds % 60,
                             .fraction = seconds % 60 != 0 ? 8000 : 0,
                             .samples = 60,
                             .rate_factor = 1});
    return bytes;
}

const std::map<std::string, std::string> volumes = {
    {"days", records_of_days()},
    {"later", one_record({.channel = "LHZ", .minute = 23, .samples = 60, .rate_factor = 1})},
    {"jitter", jittering_records()},
    {"damaged", std::string(256, 'x') + one_record({.station = "BBB", .samples = 20})},
    {"tiny", one_record({.samples = 1, .rate_factor = -32767, .rate_multiplier = -32767}) +
                 one_record({.samples = 65535, .rate_factor = 32767, .rate_multiplier = 32767})},
};

const bool tests = make_recorded_tests(
    "Coverage",
    {
        {"Tables",
         "$quarry coverage --gaps --days later days; $quarry coverage --gaps tiny later; $quarry coverage jitter",
         volumes},
        {"Plot",
         "$quarry coverage --plot --channel ?H? days later; $quarry coverage --plot --channel LOG days; "
         "for columns in 20 40 60; do COLUMNS=$columns script -qec '$quarry coverage --plot --station DEM1 "
         "--from 2005-02-01T10:20 --to 2005-02-01T11:10 days tiny' /dev/null </dev/null; done",
         volumes},
        {"Json", "$quarry coverage --json --gaps --days later days tiny", volumes},
        {"Csv", "for o in '' --gaps --days; do $quarry coverage --csv $o days later; done", volumes},
        {"SpanAndSelection",
         "for o in '--from 2005-02-01T10:21 --to 2005-02-01T10:23:30' '--from 2005-02-02 --to 2005-02-05 --days' "
         "'--channel L* --from 2005-02-01' '--station NO'; do echo \"$o\"; $quarry coverage $o days; done",
         volumes},
        {"Tolerance",
         "for t in 0.99s 1s 1sample 2219s 2220samples 0.1 s -1s 1e99s nans; do echo \"$t\"; "
         "$quarry coverage --channel LHZ --csv --gaps --tolerance $t days; echo $?; done",
         volumes},
        {"Status",
         "for v in days damaged 'damaged missing days' '--csv --json days' '--svg p.svg --svg q.svg days' '--plot --csv days' '--csv --days --gaps days'; do "
         "$quarry coverage $v; echo $?; done; $quarry coverage days >/dev/full; echo $?",
         volumes},
        {"Picture",
         "$quarry coverage --svg p.svg --station DEM1 days tiny; cat p.svg; $quarry coverage --svg p.svg --station NO days; "
         "grep -c '<text' p.svg; for o in p.txt p.svg\\ --height\\ 199 no/p.svg; do $quarry coverage --svg $o tiny; echo $?; done",
         volumes},
        {"Terminal",
         "for columns in 60 80 90; do COLUMNS=$columns script -qec '$quarry coverage --gaps days' /dev/null </dev/null; done",
         volumes},
    });

} // namespace
} // namespace quarry
