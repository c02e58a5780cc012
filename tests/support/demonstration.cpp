// SPDX-License-Identifier: Apache-2.0
// The demonstration volume: a made-up network with realistic headers and data.

#include "draft.h"
#include "sample_encoders.h"

#include <array>
#include <bit>
#include <cmath>
#include <complex>
#include <numbers>

namespace quarry {

namespace {

constexpr const char* whole_day = "2005,032,00:00:00.0000~2005,032,23:59:59.9999~";

std::vector<Part> volume_headers() {
    return {{'V', 10, std::string(" 2.410") + whole_day + "2005,040,12:00:00~Quarry~Demonstration volume~"},
            {'V', 11, "002DEM1 <DEM1>DEM2 <DEM2>"},
            {'V', 12, std::string("0001") + whole_day + "<SPAN>"}};
}

std::vector<Part> dictionary() {
    return {{'A', 30, "32-Bit Integer Format~000100002M0~W4 D0-31 C2~"},
            {'A', 30, "IEEE single precision real~000200100"},
            {'A', 30,
             "Steim Integer Compression Format~000305006"
             "F1 P4 W4 D0-31 C2 R1 P8 W4 D0-31 C2~P0 W4 N15 S2,0,1~T0 X N0 W4 D0-31 C2~"
             "T1 N0 W1 D0-7 C2 N1 W1 D0-7 C2 N2 W1 D0-7 C2 N3 W1 D0-7 C2~"
             "T2 N0 W2 D0-15 C2 N1 W2 D0-15 C2~T3 N0 W4 D0-31 C2~"},
            {'A', 31, "0001SClock locked to GPS~000"},
            {'A', 31, "0002CSensor levelled~000"},
            {'A', 32, "01Quarry~2005~Demonstration bulletin~"},
            {'A', 33, "001Broadband seismometer, 120 s~"},
            {'A', 33, "002Long-period seismometer~"},
            {'A', 33, "003Quarry demonstration network~"},
            {'A', 34, "001M/S~Velocity in metres per second~"},
            {'A', 34, "002V~Volts~"},
            {'A', 34, "004COUNTS~Digital counts~"}};
}

struct Site {
    const char* code;
    double latitude, longitude, elevation;
    const char* name;
    const char* word_orders; // of 32 and of 16 bits
};

Part station(const Site& site, int channels, int comments) {
    return {'S', 50,
            formatted("%-5s%10.6f%11.6f%7.1f%04d%03d%s~003%s1998,001~~NXX", site.code, site.latitude,
                      site.longitude, site.elevation, channels, comments, site.name, site.word_orders)};
}

struct Channel {
    const char* codes; // location, channel and subchannel
    int sensor;
    double azimuth, dip;
    int format;
    int length_exponent;
    double rate;
    int comments;
    const char* dates;
};

// The sensor stands at the station, 2.5 m deep.
Part channel(const Channel& c, const Site& site) {
    return {'S', 52,
            formatted("%s%03d~001002%10.6f%11.6f%7.1f  2.5%5.1f%5.1f%04d%02d%10.4f 1.000E-05%04dCG~%sN",
                      c.codes, c.sensor, site.latitude, site.longitude, site.elevation, c.azimuth, c.dip,
                      c.format, c.length_exponent, c.rate, c.comments, c.dates)};
}

std::string root(std::complex<double> value, double error) {
    return exponent(value.real()) + exponent(value.imag()) + exponent(error) + exponent(error);
}

// The poles and zeros of a seismometer, normalised at the frequency.
Part poles_and_zeros(double frequency) {
    using Complex = std::complex<double>;
    constexpr std::array<Complex, 4> poles{Complex(-0.03701, 0.03701), Complex(-0.03701, -0.03701),
                                           Complex(-1131, 0), Complex(-1005, 0)};
    const Complex s(0, 2 * std::numbers::pi * frequency);
    Complex a0 = 1.0 / (s * s);
    std::string texts;
    for (const Complex& pole : poles) {
        a0 *= s - pole;
        texts += root(pole, pole.imag() == 0 ? 0 : 0.0001);
    }
    return {'S', 53,
            "A01001002" + exponent(std::abs(a0)) + exponent(frequency) + "002" + root(0, 0) + root(0, 0) +
                "004" + texts};
}

// Sensor, digitizer, two FIR stages (054 and 061), and the sensitivity of the whole.
std::vector<Part> response(double rate) {
    const auto pair = [](double value, double error) { return exponent(value) + exponent(error); };
    const double frequency = rate / 20;
    const auto gain = [&](const char* stage, double value) {
        return Part{'S', 58, stage + exponent(value) + exponent(frequency) + "00"};
    };
    const auto decimation = [&](const char* stage, double input_rate, int factor, double delay) {
        return Part{'S', 57,
                    formatted("%s%10.4f%05d00000%11.4f%11.4f", stage, input_rate, factor, delay, delay)};
    };
    return {poles_and_zeros(frequency),
            gain("01", 1500.0),
            {'S', 54, "D0200200400000000"},
            decimation("02", 4 * rate, 1, 0),
            gain("02", 4.0e5),
            {'S', 54,
             "D030040040003" + pair(0.25, 0) + pair(0.5, 0.001) + pair(0.25, 0) + "0001" + pair(1.0, 0.002)},
            decimation("03", 4 * rate, 2, 1 / (4 * rate)),
            gain("03", 1),
            {'S', 61, "04Smoother~A0040040003  2.500000E-01  5.000000E-01  2.500000E-01"},
            decimation("04", 2 * rate, 2, 1 / (2 * rate)),
            gain("04", 1),
            gain("00", 6.0e8)};
}

void append(std::vector<Part>* headers, const std::vector<Part>& more) {
    headers->insert(headers->end(), more.begin(), more.end());
}

std::vector<Part> first_station() {
    constexpr Site site{"DEM1", 47.5, -8.25, 512.0, "Old quarry, north face", "321010"};
    std::vector<Part> headers{station(site, 3, 1), {'S', 51, "2005,001~2005,090~0001000000"}};
    append(&headers, {channel({"  BHZ0000", 1, 0, -90, 3, 12, 20, 0, "1998,001~2003,200,12:00:00~"}, site)});
    append(&headers, response(20));
    append(&headers, {channel({"  BHZ0000", 1, 0, -90, 3, 12, 20, 1, "2003,200,12:00:00.0000~~"}, site),
                      {'S', 59, "2003,200,12:00:00~~0002000000"}});
    append(&headers, response(20));
    append(&headers, {channel({"  BHN0001", 1, 0, 0, 1, 12, 20, 0, "2003,200~~"}, site)});
    append(&headers, response(20));
    return headers;
}

std::vector<Part> second_station() {
    constexpr Site site{"DEM2", -33.125, 18.5, 90.5, "New quarry, office cellar", "012301"};
    std::vector<Part> headers{station(site, 1, 0),
                              channel({"00LHZ0000", 2, 0, -90, 2, 9, 1, 0, "2001,001~~"}, site)};
    append(&headers, response(1));
    return headers;
}

std::vector<Part> time_span() {
    const std::string first_record = "DEM1   BHZ2005,032,10:20:30.0000~<DAT0>01";
    return {
        {'T', 70, std::string("E") + whole_day},
        {'T', 71,
         "2005,032,10:20:00.1200~01   46.2500     7.5000   10.002 5.40mb~01 5.60MW~015430012SWITZERLAND~"},
        {'T', 72, "DEM1   BHZ2005,032,10:20:35.5000~  125.5000    1.2500    8.0000P~01XX"},
        {'T', 73,
         "0003" + first_record + "DEM1   BHN2005,032,10:20:30.0000~<DAT2>01" +
             "DEM2 00LHZ2005,032,10:20:30.0000~<DAT4>01"},
        {'T', 74, first_record + "2005,032,10:22:10.0000~<DAT1>010012005,032,10:21:20.0000~<DAT1>01XX"}};
}

// A decaying oscillation that begins with the record of the given number.
std::vector<std::int32_t> oscillation(int record, int count) {
    std::vector<std::int32_t> samples;
    for (int i = 0; i < count; ++i) {
        const double seconds = (record * count + i) / 20.0;
        samples.push_back(static_cast<std::int32_t>(
            std::lround(10000 * std::exp(-seconds / 30) * std::sin(2 * std::numbers::pi * 0.8 * seconds))));
    }
    return samples;
}

std::string bytes_of_samples(const std::vector<std::int32_t>& samples) {
    std::string bytes;
    for (const std::int32_t sample : samples)
        bytes += number(static_cast<std::uint32_t>(sample), 4, Order::big);
    return bytes;
}

std::string bytes_of_floats(const std::vector<std::int32_t>& samples) {
    std::string bytes;
    for (const std::int32_t sample : samples)
        bytes += number(std::bit_cast<std::uint32_t>(static_cast<float>(sample) / 1000.0F), 4, Order::little);
    return bytes;
}

std::vector<RecordFields> data_records() {
    constexpr int in_long_record = 1000;
    constexpr int in_short_record = 100;
    std::vector<RecordFields> records;
    for (int i = 0; i < 2; ++i) {
        RecordFields& record = records.emplace_back();
        record.minute = 20 + (30 + 50 * i) / 60;
        record.second = (30 + 50 * i) % 60;
        record.samples = in_long_record;
        record.encoding = 10;
        record.data = encode_steim1(oscillation(i, in_long_record), 4032, Order::big).bytes;
    }
    for (int i = 0; i < 2; ++i) { // no blockette 1000: format and length stand in the channel's own headers
        RecordFields& record = records.emplace_back();
        record.channel = "BHN";
        record.second = 30 + 5 * i;
        record.samples = in_short_record;
        record.data = bytes_of_samples(oscillation(i, in_short_record));
    }
    for (int i = 0; i < 3; ++i) {
        RecordFields& record = records.emplace_back();
        record.station = "DEM2";
        record.location = "00";
        record.channel = "LHZ";
        record.big_endian = false;
        record.minute = 20 + (30 + 100 * i) / 60;
        record.second = (30 + 100 * i) % 60;
        record.samples = in_short_record;
        record.rate_factor = 1;
        record.time_correction = 250;
        record.activity = 2;
        record.size = 512;
        record.encoding = i == 1 ? -1 : 4;
        record.data = bytes_of_floats(oscillation(i, in_short_record));
    }
    return records;
}

} // namespace

Draft demonstration_draft() {
    Draft draft;
    for (const std::vector<Part>& more : {volume_headers(), dictionary(), first_station(),
                                          std::vector<Part>{{'S', 0, ""}}, second_station(), time_span()})
        append(&draft.headers, more);
    draft.records = data_records();
    return draft;
}

std::string demonstration_volume() {
    return volume_of(demonstration_draft());
}

} // namespace quarry
