// SPDX-License-Identifier: Apache-2.0
// The rules of quarry check: each breach of one is found, and nothing else.

#include "damaged_volumes.h"
#include "draft.h"
#include "support.h"

#include "check/rules.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace quarry {
namespace {

// --- breaches ------------------------------------------------------------------------------------------
// A breach is the demonstration volume with a few changes, that breaks one rule and no other. To add some: a
// row for each in the table of the family, then QUARRY_RECORD=1 check_test, and a look at what was recorded
// in golden/Check/FAMILY.txt.

// What is changed before the volume is written, or in its bytes.
using Edit = std::function<void(Draft* draft)>;
using Damaging = std::function<void(std::string* volume)>;

struct Breach {
    const char* rule;
    std::vector<Edit> edits;
    Damaging damage = {};
};

Part& part_with(Draft* draft, int type, const std::string& text) {
    for (Part& part : draft->headers)
        if (part.type == type && part.fields.find(text) != std::string::npos)
            return part;
    throw std::logic_error("no blockette " + std::to_string(type) + " has " + text);
}

// The first blockette of the type that has the text gets another one in its place.
Edit put(int type, const std::string& text, const std::string& other) {
    return [=](Draft* draft) {
        std::string& fields = part_with(draft, type, text).fields;
        fields.replace(fields.find(text), text.size(), other);
    };
}

// The first blockette of the type that has the text is missing.
Edit without(int type, const std::string& text = "") {
    return [=](Draft* draft) {
        draft->headers.erase(draft->headers.begin() +
                             (&part_with(draft, type, text) - draft->headers.data()));
    };
}

// Another blockette stands behind the first one of the type that has the text.
Edit behind(int type, const std::string& text, const Part& more) {
    return [=](Draft* draft) {
        const auto at = &part_with(draft, type, text) - draft->headers.data() + 1;
        draft->headers.insert(draft->headers.begin() + at, more);
    };
}

// The data record is changed: 0 and 1 are of DEM1 BHZ, 2 and 3 of BHN, 4 to 6 of DEM2 LHZ.
Edit record(std::size_t index, const std::function<void(RecordFields* record)>& change) {
    return [=](Draft* draft) { change(&draft->records.at(index)); };
}

std::vector<Breach> dictionaries() {
    return {{"key-undefined", {put(59, "~0002", "~0009"), without(31, "0002C")}},
            {"key-unused", {behind(33, "002Long", {'A', 33, "004Short-period seismometer~"})}},
            {"key-redefined", {behind(34, "002V~", {'A', 34, "002V~Volt~"})}}};
}

// The time span's headers stand in front of the second station's.
void mix_up_headers(Draft* draft) {
    auto& headers = draft->headers;
    std::rotate(std::find_if(headers.begin(), headers.end(), [](const Part& one) { return one.type == 0; }),
                headers.end() - 5, headers.end());
}

std::vector<Breach> structure() {
    return {{"damage", {}, [](std::string* volume) { volume->insert(14336, 512, 'x'); }},
            {"damage", {}, [](std::string* volume) { volume->resize(volume->size() - 40); }},
            {"field", {put(52, "1.000E-05", "1.0x0E-05")}},
            {"field", {record(0, [](RecordFields* record) { record->stated_rate = std::nan(""); })}},
            {"text", {put(33, "Long-period", std::string(50, 'l'))}},
            {"declared-length", {put(10, " 2.410", " 2.407")}},
            {"declared-length", {put(10, " 2.410", " 2.4  ")}},
            {"blockette-length", {put(51, "2005,001~2005,090~0001000000", "2005~~00010")}},
            {"sequence", {record(3, [](RecordFields* record) { record->sequence = 500; })}},
            {"sequence", {}, [](std::string* volume) { volume->replace(1024, 6, "000003"); }},
            {"order", {mix_up_headers}},
            {"order", {[](Draft* draft) { std::swap(draft->headers.at(0), draft->headers.at(1)); }}},
            {"volume-header", {without(10)}},
            {"station-index", {put(11, "<DEM2>", "000009")}},
            {"station-index",
             {put(50, "0003001", "0003002"), put(11, "<DEM2>", "000008"),
              behind(0, "", {'S', 51, "2005,001~2005,090~0001000000"})}},
            {"span-index", {put(12, "<SPAN>", "000009")}},
            {"span-index", {put(12, "2005,032,23:59:59.9999", "2005,032,23:59")}},
            {"data-index", {put(73, "BHN2005,032,10:20:30", "BHN2005,032,10:20:31")}},
            {"data-index", {put(73, "BHN", "BHE")}},
            {"data-index", {put(73, "<DAT2>", "000099")}},
            {"data-index", {put(74, "10:22:10", "10:22:11")}},
            {"station-count", {put(11, "002DEM1 <DEM1>DEM2 <DEM2>", "001DEM1 <DEM1>")}},
            {"channel-count", {put(50, "0003001", "0004001")}},
            {"comment-count", {put(50, "0003001", "0003000")}},
            {"comment-count", {put(52, "0001CG", "0002CG")}}};
}

// Two records of BHZ, and no headers, where it is not a network.
void keep_records_of(Draft* draft, const char* network) {
    draft->headers.clear();
    draft->records.resize(2);
    for (RecordFields& one : draft->records)
        one.network = network;
}

// All that is of DEM1 is of another station.
Edit of_station(const char* code) {
    return [=](Draft* draft) {
        for (Part& part : draft->headers)
            for (std::size_t at = 0;
                 part.letter == 'T' && (at = part.fields.find("DEM1 ", at)) != std::string::npos;)
                part.fields.replace(at, 4, code);
        for (RecordFields& one : draft->records)
            if (std::string_view(one.station) == "DEM1")
                one.station = code;
    };
}

// All is of another network.
Edit of_network(const char* code) {
    return [=](Draft* draft) {
        for (Part& part : draft->headers)
            if (part.type == 50 || part.type == 72 || part.type == 74)
                part.fields.replace(part.fields.size() - 2, 2, code);
        for (RecordFields& one : draft->records)
            one.network = code;
    };
}

constexpr const char* whole_span = "2005,032,00:00:00.0000~2005,032,23:59:59.9999~";

void without_BHN(Draft* draft) {
    put(73, "0003", "0002")(draft);
    put(73, "DEM1   BHN2005,032,10:20:30.0000~<DAT2>01", "")(draft);
    put(73, "<DAT4>", "<DAT2>")(draft);
    draft->records.erase(draft->records.begin() + 2, draft->records.begin() + 4);
}

void without_time_spans(Draft* draft) {
    std::erase_if(draft->headers, [](const Part& part) { return part.letter == 'T'; });
    put(12, "0001" + std::string(whole_span) + "<SPAN>", "0000")(draft);
}

std::vector<Breach> epochs() {
    const Part second_header{'S', 50, "DEM2 -33.125000  18.500000   90.50001000Moved~0030123011998,001~~NXX"};
    const std::string span = "0001" + std::string(whole_span) + "<SPAN>";
    const auto with_another_channel = [](Draft* draft) {
        draft->records.push_back(draft->records.front());
        draft->records.back().channel = "BHE";
    };
    return {{"codes", {[](Draft* draft) { keep_records_of(draft, "x"); }}},
            {"codes", {put(50, "DEM1", "DEM-"), put(11, "DEM1 <DEM1>", "DEM- <DEM->"), of_station("DEM-")}},
            {"codes", {of_network("Xx")}},
            {"epoch-ends", {put(51, "2005,090", "2004,090")}},
            {"epoch-ends", {put(59, "~~", "~2003,200~")}},
            {"station-overlap", {put(50, "90.50001", "90.50000"), behind(50, "DEM2", second_header)}},
            {"channel-overlap", {put(52, "2003,200,12:00:00.0000~~", "2003,200,11:59:59.9999~~")}},
            {"epoch-outside-station", {put(50, "1998,001~~", "1998,002~~")}},
            {"epoch-outside-station", {put(50, "1998,001~~", "1998,001~2006,001~")}},
            {"data-outside-epochs", {put(52, "2001,001~~", "2001,001~2005,032,10:22~")}},
            {"data-without-channel", {with_another_channel}},
            {"channel-without-data", {without_BHN}},
            {"channel-without-data", {without_BHN, put(52, "2003,200~~", "~~")}},
            {"channel-without-data", {without_BHN, without(70), put(12, span, "0000")}},
            {"data-outside-volume", {put(70, "23:59:59.9999", "10:22"), put(12, "23:59:59.9999", "10:22")}},
            {"data-outside-volume", {put(10, "00:00:00.0000", "10:20:31")}}};
}

// --- responses: of the first channel epoch, which has no data

Edit put_number(int type, const std::string& front, double number, double other,
                const std::string& back = "") {
    return put(type, front + exponent(number) + back, front + exponent(other) + back);
}

// Of the first channel all responses are missing, or those of the types.
Edit without_responses(const std::set<int>& types = {53, 54, 57, 58, 61}) {
    return [=](Draft* draft) {
        const auto begin = draft->headers.begin() + (&part_with(draft, 53, "") - draft->headers.data());
        const auto end =
            std::find_if(begin, draft->headers.end(), [](const Part& part) { return part.type == 52; });
        const auto is_gone = [&](const Part& part) { return types.count(part.type) > 0; };
        draft->headers.erase(std::remove_if(begin, end, is_gone), end);
    };
}

// Responses of the first channel, in their order.
Edit with_responses(std::vector<Part> parts) {
    return [parts = std::move(parts)](Draft* draft) {
        const auto begin = draft->headers.begin() + (&part_with(draft, 52, "") - draft->headers.data()) + 1;
        draft->headers.insert(begin, parts.begin(), parts.end());
    };
}

std::vector<Breach> response() {
    const std::string sensitivity = exponent(6e8), ten_hertz = exponent(10), one = exponent(1),
                      none = exponent(0), blank(12, ' ');
    const std::string rate = "   20.0000 1.0", third = "03   80.00000000", delay = "     0.0250";
    const Part smoother{'S', 61, "04Smoother~A0040040003  2.500000E-01  5.000000E-01  2.500000E-01"};
    const std::string quarter = "  2.500000E-01", half = "  5.000000E-01", fifth = "  2.000000E-01";
    const Edit no_stages_but_first = without_responses({54, 57, 58, 61});
    const auto gain = [](const char* stage, double value) {
        return Part{'S', 58, stage + exponent(value) + exponent(1) + "00"};
    };
    return {
        {"response-missing", {without_responses()}},
        {"response-of-no-rate", {put(52, rate, "    0.0000 1.0")}},
        {"stage-numbers",
         {put(61, "04Smoo", "05Smoo"), put(57, "04   40", "05   40"), put(58, "04" + one, "05" + one)}},
        {"stage-order", {without(61, "04Smoo"), behind(58, "02", smoother)}},
        {"unit-chain", {put(61, "A0040040003", "A0020040003")}},
        {"unit-last", {put(61, "A0040040003", "A0040020003")}},
        {"unit-first", {put(53, "A01001002", "A01002002")}},
        {"unit-unknown", {put(34, "002V~", "002FURLONG~")}},
        {"unit-spelling", {put(34, "002V~", "002Volts~")}},
        {"rate-chain", {put(57, third + "2", third + "1")}},
        {"rate-last", {put(52, rate, "   10.0000 1.0")}},
        {"decimation-missing",
         {no_stages_but_first, put(53, "A01001002", "A01001004"), behind(53, "", gain("00", 1500)),
          behind(53, "", gain("01", 1500))}},
        {"decimation-of-digital", {without(57, "02   80")}},
        {"decimation-stray",
         {behind(53, "", {'S', 57, formatted("01%10.4f%05d00000%11.4f%11.4f", 80.0, 1, 0.0, 0.0)})}},
        {"decimation-stray", {put(61, "A0040040003" + quarter + half + quarter, "A0040040000")}},
        {"delay", {put(57, delay + delay, "     0.5000     0.0000")}},
        {"response-list",
         {without_responses(), with_responses({{'S', 55, "010010040001" + one + one + none + none + none},
                                               gain("01", 6e8),
                                               gain("00", 6e8)})}},
        {"stage-numbers",
         {put(61, "04Smoo", "  Smoo"), without(57, "04   40"), without(58, "04" + one),
          put(52, rate, "   40.0000 1.0")}},
        {"response-list", // has no amplitude at the frequency of the sensitivity
         {without_responses(), with_responses({{'S', 55,
                                                "010010040002" + one + blank + none + none + none +
                                                    ten_hertz + one + none + none + none},
                                               {'S', 58, "01" + exponent(6e8) + ten_hertz + "00"},
                                               gain("00", 7e8)})}},
        {"gain-missing", {without(58, "03" + one + one)}},
        {"gain-zero", {put_number(58, "03", 1, 0, one)}},
        {"gain-negative", {put_number(58, "03", 1, -1, one)}},
        {"sensitivity-missing", {without(58, "00" + sensitivity)}},
        {"sensitivity-zero", {put_number(58, "00", 6e8, 0)}},
        {"sensitivity-frequency", {put(58, "00" + sensitivity + one, "00" + exponent(2.5545e8) + ten_hertz)}},
        {"sensitivity-near", {put_number(58, "00", 6e8, 6.2e8)}},
        {"sensitivity-off", {put_number(58, "00", 6e8, 6.6e8)}},
        {"sensitivity-off", // the list gives half of the first stage's gain at the sensitivity's frequency
         {without(53), put(58, "01" + exponent(1500) + one, "01" + exponent(1500) + ten_hertz),
          behind(52, "",
                 {'S', 55,
                  "010010020002" + one + exponent(0.5) + none + none + none + ten_hertz + one + none + none +
                      none})}},
        {"zero-frequency", {put(53, one + "002", none + "002")}},
        {"a0", {[](Draft* draft) { part_with(draft, 53, "").fields.replace(9, 12, exponent(1e3)); }}},
        {"poles", {put_number(53, "", -1131, 1131)}},
        {"symmetry",
         {put(61, "A0040040003" + quarter + half + quarter, "B0040040003" + fifth + fifth + fifth)}},
        {"coefficient-sum", {put(61, half, "  7.000000E-01")}},
    };
}

// --- places

// All that is of one channel becomes another's.
Edit rename(const std::string& code, const char* other) {
    return [=](Draft* draft) {
        for (Part& part : draft->headers)
            for (std::size_t at; (at = part.fields.find(code)) != std::string::npos;)
                part.fields.replace(at, code.size(), other);
        for (RecordFields& record : draft->records)
            if (record.channel == code)
                record.channel = other;
    };
}

std::vector<Breach> position() {
    return {
        {"range", {put(52, "  0.0-90.0", "400.0-90.0")}},
        {"distance", {put(52, " 47.500000", " 47.600000")}},
        {"distance", {put(52, "  512.0", " 2512.0")}},
        {"orientation-missing", {put(52, "  0.0-90.0", "     -90.0")}},
        {"component", {put(52, "  0.0-90.0", "  0.0-80.0")}},
        {"right-angles", {rename("BHZ", "BH1"), rename("BHN", "BH2"), put(52, "  0.0-90.0", "  0.0-45.0")}},
        {"sensor", {put(52, "BHZ0000001", "BHZ0000000")}},
    };
}

// --- records

// Bytes of the volume that begin so far before its end.
Damaging patch(std::size_t before_end, const std::string& bytes) {
    return [=](std::string* volume) { volume->replace(volume->size() - before_end, bytes.size(), bytes); };
}

constexpr std::size_t of_lhz = 3 * 512;
constexpr std::size_t of_bhz = of_lhz + 4 * 4096;

std::vector<Breach> formats() {
    const std::string second_epoch = "0312   20.0000 1.000E-050001";
    const Edit slow = [](Draft* draft) {
        for (int i = 1; i <= 4; ++i) { // 5.02 s for 5 s of samples
            RecordFields& record = draft->records.emplace_back(draft->records.at(3));
            record.second += 5 * i;
            record.fraction = 200 * i;
        }
    };
    return {
        {"format", {put(52, second_epoch, "0112" + second_epoch.substr(4))}},
        {"record-length", {put(52, second_epoch, "0311" + second_epoch.substr(4))}},
        {"rate",
         {record(2, [](RecordFields* r) { r->rate_factor = 21; }),
          record(3, [](RecordFields* r) { r->rate_factor = 21; })}},
        {"rate-of-record", {record(2, [](RecordFields* r) { r->rate_factor = 21, r->stated_rate = 20; })}},
        {"rate-of-times", {slow}},
        {"encoding", {record(1, [](RecordFields* r) { r->encoding = 99; })}},
    };
}

std::vector<Breach> data() {
    return {
        {"timing-quality", {record(2, [](RecordFields* r) { r->timing_quality = 49; })}},
        {"quality-flags", {record(2, [](RecordFields* r) { r->quality = 0x90; })}},
        {"correction", {record(4, [](RecordFields* r) { r->activity = 0; })}},
        {"duplicate", {[](Draft* draft) { draft->records.push_back(draft->records.at(2)); }}},
        {"duplicate", {[](Draft* draft) { draft->records.push_back(draft->records.at(6)); }}},
        {"overlap",
         {record(2, [](RecordFields* r) { r->data = std::string(400, '\0'); }),
          record(3,
                 [](RecordFields* r) {
                     r->data = std::string(400, '\0');
                     r->second = 34;
                 })},
         patch(of_lhz + 4096 - 12, std::string(1, '\0'))}, // a NUL behind the station's code
    };
}

std::vector<Breach> samples() {
    return {
        {"samples-missing", {record(6, [](RecordFields* r) { r->samples = 120; })}},
        {"last-sample", {}, patch(of_bhz - 64 - 8, "\1")},
        {"word-order", {}, patch(of_lhz - 48 - 5, "\1")},
        {"samples-differ",
         {record(2, [](RecordFields* r) { r->encoding = 3; }),
          record(3, [](RecordFields* r) { r->encoding = 3, r->second = 34; })}},
    };
}

const std::map<std::string, std::vector<Breach>> breaches{
    {"structure", structure()}, {"dictionaries", dictionaries()}, {"epochs", epochs()},
    {"formats", formats()},     {"response", response()},         {"position", position()},
    {"data", data()},           {"samples", samples()},
};

// --- what is found -------------------------------------------------------------------------------------

struct Found {
    std::set<std::string_view> rules = {};
    std::set<std::int64_t> offsets = {};
    std::string lines = {};
};

Found found_in(const std::string& volume) {
    VolumeReader reader = VolumeReader::of_memory(volume, "volume", Framing::shown);
    const auto all = [](const Subject&) { return true; };
    FactsGatherer gatherer(true, all);
    while (const Item* item = reader.next())
        gatherer.take(*item);
    const Facts facts = gatherer.finish(reader);
    Findings findings(all);
    for (const Rule& rule : check_rules()) {
        findings.begin(rule);
        rule.check(facts, &findings);
    }
    Found found;
    for (const CheckFinding& one : findings.take()) {
        found.rules.insert(one.rule->name);
        found.offsets.insert(one.place.offset);
        found.lines += words(one.place.offset, ": ", name_of(one.rule->severity), ": ", one.text, " [",
                             one.rule->name, "]\n");
    }
    return found;
}

std::string volume_with(const Breach& breach) {
    Draft draft = demonstration_draft();
    for (const Edit& edit : breach.edits)
        edit(&draft);
    std::string volume = volume_of(draft);
    if (breach.damage)
        breach.damage(&volume);
    return volume;
}

TEST(Check, NothingIsWrongWithTheDemonstrationVolume) {
    EXPECT_EQ(found_in(demonstration_volume()).lines, "");
}

// What writers do as well.
TEST(Check, NothingIsWrongWithItsVariants) {
    const Part other_header{'S', 50, "DEM1  47.500000  -8.250000  512.00003001Moved~0033210101998,001~~NXX"};
    const Edit closed = put(50, "1998,001~~", "1997,001~1998,001~");
    const Edit without_channels = put(50, "0003001", "0000000");
    const Edit with_other_header = behind(50, "DEM1", other_header);
    const std::vector<std::vector<Edit>> variants{
        {put(50, "0003001", "0002001")}, // channels, not their epochs
        {put(50, "0003001", "       ")},
        {without_channels, closed, with_other_header},
        {without_channels, closed, with_other_header, put(11, "002DEM1 <DEM1>", "003DEM1 <DEM1>DEM1 <DEM1>")},
        {put(11, "<DEM2>", "000000")},
        {put(12, "0001" + std::string(whole_span) + "<SPAN>", "0000")},
        {put(12, "23:59:59.9999", "10:25:28"),
         put(70, "23:59:59.9999", "10:25:28")}, // the last sample but one
        {put(70, "23:59:59.9999", "01:00"), behind(70, "", {'T', 70, std::string("E") + whole_span})},
        {put(73, "<DAT2>", "      ")},
        {without_BHN, without(70), put(12, "0001" + std::string(whole_span) + "<SPAN>", "0000"),
         put(52, "2003,200~~", "2006,001~~")}, // after all data
        {rename("BHZ", "BH1"), rename("BHN", "BH2"), put(52, "  0.0-90.0", " 45.0  0.0"),
         put(52, "  0.0-90.0", " 45.0  0.0"), put(52, "  0.0  0.0", "135.0  0.0")},
        {put(61, "A0040040003  2.500000E-01  5.000000E-01", "C0040040002  2.500000E-01  2.500000E-01")},
        {[](Draft* draft) { keep_records_of(draft, "XX"); }}};
    for (const std::vector<Edit>& edits : variants)
        EXPECT_EQ(found_in(volume_with({"", edits})).lines, "");
}

TEST(Check, EachBreachIsFoundAndNothingElse) {
    for (const auto& [family, rows] : breaches) {
        std::string lines;
        for (const Breach& breach : rows) {
            const Found found = found_in(volume_with(breach));
            EXPECT_EQ(found.rules, std::set<std::string_view>{breach.rule}) << found.lines;
            lines += found.lines;
        }
        expect_recorded("Check", family, lines);
    }
}

// How often the rule is broken.
std::ptrdiff_t times(const Found& found, std::string_view rule) {
    const std::vector<std::string> lines = split(found.lines, '\n');
    return std::count_if(lines.begin(), lines.end(), [name = words("[", rule, "]")](const std::string& line) {
        return line.find(name) != std::string::npos;
    });
}

TEST(Check, VolumesMayBeJoined) {
    const std::string sound = demonstration_volume();
    EXPECT_EQ(found_in(sound + sound).rules, std::set<std::string_view>{"duplicate"});
    std::vector<Breach> rows = structure();
    std::ranges::copy_if(epochs(), std::back_inserter(rows), [](const Breach& breach) {
        return std::string_view(breach.rule) == "data-outside-volume";
    });
    // Data without time spans keep their numbers, also behind a volume that has some.
    rows.push_back({"sequence", {without_time_spans, record(3, [](RecordFields* r) { r->sequence = 500; })}});
    for (const Breach& breach : rows) {
        const std::string broken = volume_with(breach);
        const std::ptrdiff_t alone = times(found_in(broken), breach.rule);
        EXPECT_EQ(times(found_in(broken + sound), breach.rule), alone) << breach.rule;
        EXPECT_EQ(times(found_in(sound + broken), breach.rule), alone) << breach.rule;
    }
}

TEST(Check, RatesMayBeAnyNumber) {
    for (const double rate : {1e-38, 3e38})
        EXPECT_GT(times(found_in(volume_with(
                            {"", {record(0, [rate](RecordFields* one) { one->stated_rate = rate; })}})),
                        "rate-of-record"),
                  0)
            << rate;
}

TEST(Check, DamageIsReportedWhereItIs) {
    const std::string volume = demonstration_volume();
    for (std::uint64_t round = 0; round < 200; ++round) {
        Random random(round);
        const std::string mutation = damaged(volume, &random);
        for (const auto size = static_cast<std::int64_t>(mutation.size());
             const std::int64_t offset : found_in(mutation).offsets)
            ASSERT_TRUE(offset >= 0 && offset <= size) << round;
    }
}

TEST(Check, EachRuleHasABreach) {
    std::set<std::string_view> broken;
    for (const auto& [family, rows] : breaches)
        for (const Breach& breach : rows)
            broken.insert(breach.rule);
    for (const Rule& rule : check_rules())
        EXPECT_EQ(broken.count(rule.name), 1) << rule.name;
}

} // namespace
} // namespace quarry
