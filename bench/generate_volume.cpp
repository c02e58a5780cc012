// SPDX-License-Identifier: Apache-2.0
// Writes the benchmark's volumes, the same bytes for the same arguments, to standard output:
//
//   generate_volume KIND [NAME=NUMBER ...] [NAME=WORD ...] > VOLUME
//
//   data       data records of `channels` channels in turn, `size` bytes each, `records` of them; the control
//              headers describe the channels unless `described` is 0; they begin whole seconds apart, and
//              continue each other if their `samples`, which may be left out, fill these at 20 Hz
//   control    control headers of `megabytes`, stations with their responses
//   epochs     `count` epochs of one channel, whose `order` is ascending, descending, random, or, for epochs
//              that lie within each other, narrowing or widening; then
//              `records` data records spread over the time of the epochs
//   formats    `count` data formats with codes of their own that declare many keys and have none
//   hostile    `bytes` of the blockette named `shape` in the table of hostile blockettes, which see; its
//              numbers convert, or one of them does not if `bad` is 1
#include "volume_builder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <numeric>
#include <random>
#include <vector>

namespace quarry {
namespace {

using Arguments = std::map<std::string, std::string, std::less<>>;

[[noreturn]] void fail(const std::string& message) {
    std::fprintf(stderr, "generate_volume: %s\n", message.c_str());
    std::exit(EXIT_FAILURE);
}

const std::string& word(const Arguments& arguments, const char* name) {
    const auto found = arguments.find(name);
    if (found == arguments.end())
        fail(std::string("missing argument ") + name);
    return found->second;
}

std::int64_t number(const Arguments& arguments, const char* name) {
    const std::string& text = word(arguments, name);
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < 0)
        fail("not a number: " + text);
    return value;
}

void put(std::string_view bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size()) {
        std::perror("generate_volume");
        std::exit(EXIT_FAILURE);
    }
}

// A time as seconds from the beginning of 1990.
struct Time {
    int year, doy, hour, minute, second;
};

constexpr int days_of(int year) {
    return year % 4 == 0 ? 366 : 365; // all years in use
}

Time time_at(std::int64_t seconds) {
    Time time{1990, 1, 0, 0, static_cast<int>(seconds % 60)};
    time.minute = static_cast<int>(seconds / 60 % 60);
    time.hour = static_cast<int>(seconds / 3600 % 24);
    std::int64_t days = seconds / 86400;
    for (; days >= days_of(time.year); ++time.year)
        days -= days_of(time.year);
    time.doy += static_cast<int>(days);
    return time;
}

std::string time_text(std::int64_t seconds) {
    const Time time = time_at(seconds);
    return digits(time.year, 4) + "," + digits(time.doy, 3) + "," + digits(time.hour, 2) + ":" +
           digits(time.minute, 2) + ":" + digits(time.second, 2) + ".0000";
}

int exponent_of(std::size_t size) {
    return std::countr_zero(size);
}

std::string volume_header(std::size_t record_size) {
    return blockette(10, " 2.4" + digits(exponent_of(record_size), 2) + "1990,001~2005,365~2006,001~" +
                             "Quarry~Benchmark~");
}

constexpr int steim1 = 10; // as blockette 1000 numbers it

std::string dictionary() {
    std::string entries = blockette(30, "Steim Integer Compression Format~" + digits(1, 4) + digits(50, 3) +
                                            digits(1, 2) + "F1 P4 W4 D0-31 C2 R1 P8 W4 D0-31 C2~");
    for (int i = 1; i <= 20; ++i)
        entries += blockette(33, digits(i, 3) + "Broadband seismometer number " + digits(i, 2) + "~");
    for (int i = 1; i <= 5; ++i)
        entries += blockette(34, digits(i, 3) + "M/S~Velocity in metres per second~");
    return entries;
}

std::string station_code(std::int64_t index) {
    std::string code = "Q    ";
    for (std::size_t i = 4; i > 0; --i, index /= 36)
        code[i] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"[index % 36];
    return code;
}

constexpr std::array<const char*, 3> components{"BHZ", "BHN", "BHE"};

std::string station(std::int64_t index) {
    return blockette(50, station_code(index) + fixed(-60.0 + static_cast<double>(index % 1000) / 8, 10, 6) +
                             fixed(static_cast<double>(index % 1400) / 8, 11, 6) +
                             fixed(static_cast<double>(index % 3000), 7, 1) + "   3" + "  1" +
                             "Quarry, north face~" + digits(3, 3) + "3210" + "10" + "1990,001~~N" + "XX");
}

std::string channel(const char* code, std::size_t record_size, const std::string& start,
                    const std::string& end) {
    return blockette(52, "00" + std::string(code) + digits(0, 4) + digits(1, 3) + "~" + digits(1, 3) +
                             digits(2, 3) + fixed(47.5, 10, 6) + fixed(-8.25, 11, 6) + fixed(512, 7, 1) +
                             fixed(2.5, 5, 1) + fixed(0, 5, 1) + fixed(-90, 5, 1) + digits(1, 4) +
                             digits(exponent_of(record_size), 2) + fixed(20, 10, 4) + " 1.000E-05" +
                             digits(0, 4) + "CG~" + start + "~" + end + "~N");
}

constexpr int sample_rate = 20;
constexpr std::size_t sequence_size = 6;
constexpr std::size_t year_offset = 20;
constexpr std::size_t records_in_hand = 512;
constexpr int sequence_numbers = 1'000'000;

// Data records that differ in sequence number, channel and time; their samples are the same noise.
class DataRecords {
public:
    DataRecords(std::size_t size, int samples) {
        std::mt19937 random(3);
        RecordFields record;
        record.size = static_cast<int>(size);
        record.samples = samples;
        record.rate_factor = sample_rate;
        record.encoding = steim1;
        while (record.data.size() < size - 64)
            record.data.push_back(static_cast<char>(random()));
        model_ = VolumeBuilder(record.size).data(record).bytes();
        pending_.reserve(records_in_hand * size);
    }
    DataRecords(const DataRecords&) = delete;
    DataRecords& operator=(const DataRecords&) = delete;
    ~DataRecords() { put(pending_); }

    void add(std::string_view station, const char* channel, std::int64_t seconds) {
        const std::string codes = std::string(station) + "00" + channel + "XX";
        model_.replace(0, sequence_size, digits(++sequence_ % sequence_numbers, sequence_size));
        model_.replace(sequence_size + 2, codes.size(), codes);
        const Time time = time_at(seconds);
        set_two(year_offset, time.year);
        set_two(year_offset + 2, time.doy);
        set_one(year_offset + 4, time.hour);
        set_one(year_offset + 5, time.minute);
        set_one(year_offset + 6, time.second);
        pending_ += model_;
        if (pending_.size() >= records_in_hand * model_.size()) {
            put(pending_);
            pending_.clear();
        }
    }

private:
    void set_one(std::size_t at, int value) { model_[at] = static_cast<char>(value); }
    void set_two(std::size_t at, int value) {
        set_one(at, value >> 8);
        set_one(at + 1, value & 0xff);
    }

    std::string model_;
    std::string pending_;
    int sequence_ = 100; // the control headers take less
};

// A volume of data records.
void write_data(const Arguments& arguments) {
    const auto size = static_cast<std::size_t>(number(arguments, "size"));
    const std::int64_t records = number(arguments, "records");
    const std::int64_t channels = number(arguments, "channels");
    VolumeBuilder headers(static_cast<int>(size));
    headers.control('V', volume_header(size)).control('A', dictionary());
    if (number(arguments, "described") != 0)
        for (std::int64_t i = 0; i < channels; ++i) {
            const char* code = components[static_cast<std::size_t>(i % 3)];
            headers.control('S', (i % 3 == 0 ? station(i / 3) : "") +
                                     channel(code, size, "1990,001", "1999,365") +
                                     channel(code, size, "1999,365", ""));
        }
    put(headers.bytes());

    const int room = static_cast<int>(size - 64) * 7 / 8;
    const int samples = arguments.contains("samples") ? static_cast<int>(number(arguments, "samples")) : room;
    const std::int64_t step = samples / sample_rate;
    constexpr std::int64_t first = 15LL * 365 * 86400;
    DataRecords data(size, samples);
    for (std::int64_t i = 0; i < records; ++i)
        data.add(station_code(i % channels / 3), components[static_cast<std::size_t>(i % channels % 3)],
                 first + i / channels * step);
}

std::string numbers(std::mt19937* random, int count, int width) {
    std::string fields;
    for (int i = 0; i < count; ++i) {
        const double value = static_cast<double>((*random)() % 2'000'001) / 1e6 - 1;
        fields += std::string(static_cast<std::size_t>(width - 12), ' ') + exponent(value);
    }
    return fields;
}

// Numbers with errors of zero, as most volumes have them.
std::string numbers_with_errors(std::mt19937* random, int count) {
    std::string fields;
    for (int i = 0; i < count; ++i)
        fields += numbers(random, 1, 12) + exponent(0);
    return fields;
}

std::string gain(int stage) {
    return blockette(58, digits(stage, 2) + exponent(1500.0 + stage) + exponent(1.0) + digits(0, 2));
}

std::string decimation(int stage) {
    return blockette(57, digits(stage, 2) + fixed(40.0 * stage, 10, 4) + digits(2, 5) + digits(0, 5) +
                             fixed(0.025, 11, 4) + fixed(0.025, 11, 4));
}

// Sensor, digitizer, a few filter stages as lists of coefficients, and the sensitivity of the whole.
std::string response(std::mt19937* random) {
    std::string fields =
        "A" + digits(1, 2) + digits(1, 3) + digits(2, 3) + exponent(5.71404e8) + exponent(1) + digits(2, 3);
    fields += numbers_with_errors(random, 4) + digits(5, 3) + numbers_with_errors(random, 10);
    std::string stages = blockette(53, fields) + gain(1);
    stages += blockette(54, "D" + digits(2, 2) + digits(2, 3) + digits(3, 3) + digits(0, 4) + digits(0, 4)) +
              decimation(2) + gain(2);
    for (int stage = 3; stage < 6; ++stage) {
        const int coefficients = 60 + static_cast<int>((*random)() % 80);
        if (stage % 2 == 1)
            stages +=
                blockette(54, "D" + digits(stage, 2) + digits(3, 3) + digits(3, 3) + digits(coefficients, 4) +
                                  numbers_with_errors(random, coefficients) + digits(0, 4));
        else
            stages += blockette(61, digits(stage, 2) + "Low pass~" + "A" + digits(3, 3) + digits(3, 3) +
                                        digits(3 * coefficients, 4) + numbers(random, 3 * coefficients, 14));
        stages += decimation(stage) + gain(stage);
    }
    return stages + gain(0);
}

// A volume of control headers: stations of three channels with their responses.
void write_control(const Arguments& arguments) {
    constexpr std::size_t size = 4096;
    const auto bytes = static_cast<std::size_t>(number(arguments, "megabytes")) * 1'000'000;
    std::mt19937 random(4);
    std::vector<std::string> responses(50);
    for (std::string& one : responses)
        one = response(&random);

    VolumeBuilder volume(size);
    volume.control('V', volume_header(size)).control('A', dictionary());
    std::size_t written = 0;
    for (std::int64_t i = 0; written < bytes; ++i) {
        std::string header = station(i);
        for (const char* code : components)
            header += channel(code, size, "1990,001", "") + responses[random() % responses.size()];
        volume.control('S', header);
        written += header.size();
    }
    put(volume.bytes());
}

constexpr std::int64_t hours_of_all_epochs = 100'000;

// The epochs' places in time in the order in which they are declared.
std::vector<std::int64_t> places(const std::string& order, std::int64_t count) {
    std::vector<std::int64_t> places(static_cast<std::size_t>(count));
    std::iota(places.begin(), places.end(), std::int64_t{0});
    if (order == "descending" || order == "widening")
        std::reverse(places.begin(), places.end());
    else if (order == "random")
        for (std::size_t i = places.size(), random = 1; i > 1; --i) {
            random = random * 6364136223846793005 + 1442695040888963407;
            std::swap(places[i - 1], places[(random >> 33) % i]);
        }
    else if (order != "ascending" && order != "narrowing")
        fail("no such order: " + order);
    return places;
}

// One channel of many epochs, and data records over them.
void write_epochs(const Arguments& arguments) {
    constexpr std::size_t size = 4096;
    const std::string& order = word(arguments, "order");
    const std::int64_t count = number(arguments, "count");
    const std::int64_t records = number(arguments, "records");
    constexpr std::int64_t all = hours_of_all_epochs * 3600;
    const bool nested = order == "narrowing" || order == "widening";
    const auto start_of = [&](std::int64_t place) { return place * all / count; };

    VolumeBuilder volume(size);
    volume.control('V', volume_header(size)).control('A', dictionary()).control('S', station(1));
    for (const std::int64_t place : places(order, count)) {
        const std::int64_t start = nested ? place : start_of(place);
        const std::int64_t end = nested ? all - place : start_of(place + 1);
        volume.control('S', channel("BHZ", size, time_text(start), time_text(end)));
    }
    put(volume.bytes());

    DataRecords data(size, 3600);
    for (std::int64_t i = 0; i < records; ++i)
        data.add(station_code(1), "BHZ", i * all / records);
}

void write_formats(const Arguments& arguments) {
    constexpr std::size_t size = 4096;
    VolumeBuilder volume(size);
    volume.control('V', volume_header(size));
    for (int code = 0; code < number(arguments, "count"); ++code)
        volume.control('A', blockette(30, "~" + digits(code, 4) + "001" + "99"));
    put(volume.bytes());
}

// Blockettes that cost much more to list than to store: most declare many elements, and end.
struct Hostile {
    const char* shape;
    int type;
    const char* good; // fields
    const char* bad;  // with one number that does not convert
};
constexpr std::array hostile_blockettes{
    Hostile{"011", 11, "999QUARR000001", "999QUARR00000X"},
    Hostile{"012", 12, "9999~~000001", "9999~~X00001"},
    Hostile{"030", 30, "~000100199", "~000X00199"},
    Hostile{"053", 53, "A01001002 1.00000E+00 1.00000E+00999000", "AX1001002 1.00000E+00 1.00000E+00999000"},
    Hostile{"054", 54, "D010010029999000", "DX10010029999000"},
    Hostile{"061", 61, "01~A0010029999", "X1~A0010029999"},
    Hostile{"071", 71, "~01                            2000000000",
            "~X1                            2000000000"},
    Hostile{"073", 73, "0250Q1   00BHZ~00000101", "0250Q1   00BHZ~X0000101"},
    Hostile{"074", 74, "Q1   00BHZ~00000101~00000101064~00000", "Q1   00BHZ~X0000101~00000101064~00000"},
    Hostile{"058", 58, "01 1.50000E+03 1.00000E+0000", "X1 1.50000E+03 1.00000E+0000"},
    Hostile{"short 058", 58, "", ""},
    Hostile{"unknown type", 999, "", ""},
};

void write_hostile(const Arguments& arguments) {
    constexpr std::size_t size = 4096;
    const auto bytes = static_cast<std::size_t>(number(arguments, "bytes"));
    const bool bad = number(arguments, "bad") != 0;
    const std::string& shape = word(arguments, "shape");
    const auto* found = std::find_if(hostile_blockettes.begin(), hostile_blockettes.end(),
                                     [&](const Hostile& hostile) { return hostile.shape == shape; });
    if (found == hostile_blockettes.end())
        fail("no such blockette: " + shape);
    const std::string one = blockette(found->type, bad ? found->bad : found->good);
    VolumeBuilder volume(size);
    volume.control('V', volume_header(size));
    for (std::size_t written = 0; written < bytes; written += one.size())
        volume.control('S', one);
    put(volume.bytes());
}

struct Kind {
    std::string_view name;
    void (*write)(const Arguments& arguments);
};
constexpr std::array kinds{Kind{"data", write_data}, Kind{"control", write_control},
                           Kind{"epochs", write_epochs}, Kind{"formats", write_formats},
                           Kind{"hostile", write_hostile}};

} // namespace
} // namespace quarry

int main(int argc, char** argv) {
    using namespace quarry;
    Arguments arguments;
    for (int i = 2; i < argc; ++i) {
        const std::string_view argument = argv[i];
        const std::size_t equals = argument.find('=');
        if (equals == std::string_view::npos)
            fail("not NAME=VALUE: " + std::string(argument));
        arguments.emplace(argument.substr(0, equals), argument.substr(equals + 1));
    }
    const auto* kind = std::find_if(kinds.begin(), kinds.end(),
                                    [&](const Kind& one) { return argc > 1 && one.name == argv[1]; });
    if (kind == kinds.end())
        fail("no such kind of volume");
    kind->write(arguments);
    if (std::fflush(stdout) != 0)
        fail("cannot write");
    return 0;
}
