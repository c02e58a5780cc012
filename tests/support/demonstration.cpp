// The demonstration volume: a made-up network with realistic headers and data.

#include "sample_encoders.h"
#include "volume_builder.h"

#include <bit>
#include <cmath>
#include <numbers>

namespace quarry {

namespace {

constexpr char volume_start[] = "2005,032,00:00:00.0000";
constexpr char volume_end[] = "2005,032,23:59:59.9999";

// Codes of the abbreviation dictionary.
constexpr int broadband_sensor = 1;
constexpr int long_period_sensor = 2;
constexpr int network_name = 3;
constexpr int metres_per_second = 1;
constexpr int volts = 2;
constexpr int counts = 3;
constexpr int integer_format = 1;
constexpr int float_format = 2;
constexpr int steim_format = 3;
constexpr int hypocenter_source = 1;

std::string volume_header() {
    return blockette(10, " 2.4" + digits(10, 2) + volume_start + "~" + volume_end + "~2005,040,12:00:00~" +
                             "Quarry~Demonstration volume~");
}

std::string volume_index() {
    return blockette(11, digits(2, 3) + padded("DEM1", 5) + digits(3, 6) + padded("DEM2", 5) + digits(7, 6)) +
           blockette(12, digits(1, 4) + volume_start + "~" + volume_end + "~" + digits(8, 6));
}

std::string dictionary() {
    return blockette(30, "32-Bit Integer Format~" + digits(integer_format, 4) + digits(0, 3) + digits(2, 2) +
                             "M0~W4 D0-31 C2~") +
           blockette(30,
                     "IEEE single precision real~" + digits(float_format, 4) + digits(1, 3) + digits(0, 2)) +
           blockette(30, "Steim Integer Compression Format~" + digits(steim_format, 4) + digits(50, 3) +
                             digits(6, 2) +
                             "F1 P4 W4 D0-31 C2 R1 P8 W4 D0-31 C2~P0 W4 N15 S2,0,1~T0 X N0 W4 D0-31 C2~"
                             "T1 N0 W1 D0-7 C2 N1 W1 D0-7 C2 N2 W1 D0-7 C2 N3 W1 D0-7 C2~"
                             "T2 N0 W2 D0-15 C2 N1 W2 D0-15 C2~T3 N0 W4 D0-31 C2~") +
           blockette(31, digits(1, 4) + "S" + "Clock locked to GPS~" + digits(0, 3)) +
           blockette(31, digits(2, 4) + "C" + "Sensor levelled~" + digits(0, 3)) +
           blockette(32, digits(hypocenter_source, 2) + "Quarry~2005~Demonstration bulletin~") +
           blockette(33, digits(broadband_sensor, 3) + "Broadband seismometer, 120 s~") +
           blockette(33, digits(long_period_sensor, 3) + "Long-period seismometer~") +
           blockette(33, digits(network_name, 3) + "Quarry demonstration network~") +
           blockette(34, digits(metres_per_second, 3) + "M/S~Velocity in metres per second~") +
           blockette(34, digits(volts, 3) + "V~Volts~") +
           blockette(34, digits(counts, 3) + "COUNTS~Digital counts~");
}

std::string station(const std::string& code, double latitude, double longitude, double elevation,
                    const std::string& site) {
    return blockette(50, padded(code, 5) + fixed(latitude, 10, 6) + fixed(longitude, 11, 6) +
                             fixed(elevation, 7, 1) + "   3" + "  1" + site + "~" + digits(network_name, 3) +
                             "3210" + "10" + "1998,001~~N" + "XX");
}

struct Channel {
    std::string location;
    std::string code;
    int subchannel;
    int sensor;
    double azimuth;
    double dip;
    int format;
    int length_exponent;
    double rate;
    std::string start;
    std::string end;
};

std::string channel(const Channel& c, double latitude, double longitude, double elevation) {
    return blockette(52, padded(c.location, 2) + padded(c.code, 3) + digits(c.subchannel, 4) +
                             digits(c.sensor, 3) + "~" + digits(metres_per_second, 3) + digits(volts, 3) +
                             fixed(latitude, 10, 6) + fixed(longitude, 11, 6) + fixed(elevation, 7, 1) +
                             fixed(2.5, 5, 1) + fixed(c.azimuth, 5, 1) + fixed(c.dip, 5, 1) +
                             digits(c.format, 4) + digits(c.length_exponent, 2) + fixed(c.rate, 10, 4) +
                             " 1.000E-05" + digits(0, 4) + "CG~" + c.start + "~" + c.end + "~N");
}

std::string pair(double value, double error) {
    return exponent(value) + exponent(error);
}

// Sensor, digitizer, one FIR stage told twice over (054 and 061), and the sensitivity of the whole.
std::string response(double rate) {
    const std::string sensor_stage =
        "A" + digits(1, 2) + digits(metres_per_second, 3) + digits(volts, 3) + exponent(5.71404e8) +
        exponent(1.0) + digits(2, 3) + pair(0, 0) + pair(0, 0) + pair(0, 0) + pair(0, 0) + digits(4, 3) +
        pair(-0.03701, 0.03701) + pair(0.0001, 0.0001) + pair(-0.03701, -0.03701) + pair(0.0001, 0.0001) +
        pair(-1131.0, 0) + pair(0, 0) + pair(-1005.0, 0) + pair(0, 0);
    const std::string fir_stage = "D" + digits(3, 2) + digits(counts, 3) + digits(counts, 3) + digits(3, 4) +
                                  pair(0.25, 0) + pair(0.5, 0.001) + pair(0.25, 0) + digits(1, 4) +
                                  pair(1.0, 0.002);
    return blockette(53, sensor_stage) +
           blockette(58, digits(1, 2) + exponent(1500.0) + exponent(1.0) + digits(0, 2)) +
           blockette(54, "D" + digits(2, 2) + digits(volts, 3) + digits(counts, 3) + digits(0, 4) +
                             digits(0, 4)) +
           blockette(57, digits(2, 2) + fixed(rate * 2, 10, 4) + digits(1, 5) + digits(0, 5) +
                             fixed(0, 11, 4) + fixed(0, 11, 4)) +
           blockette(58, digits(2, 2) + exponent(4.0e5) + exponent(1.0) + digits(0, 2)) +
           blockette(54, fir_stage) +
           blockette(61, digits(3, 2) + "Smoother~" + "A" + digits(counts, 3) + digits(counts, 3) +
                             digits(3, 4) + "  2.500000E-01" + "  5.000000E-01" + "  2.500000E-01") +
           blockette(57, digits(3, 2) + fixed(rate * 2, 10, 4) + digits(2, 5) + digits(0, 5) +
                             fixed(1 / rate, 11, 4) + fixed(1 / rate, 11, 4)) +
           blockette(58, digits(0, 2) + exponent(6.0e8) + exponent(1.0) + digits(0, 2));
}

std::string first_station() {
    const double lat = 47.5, lon = -8.25, elev = 512.0;
    std::string header = station("DEM1", lat, lon, elev, "Old quarry, north face");
    header += blockette(51, "2005,001~2005,090~" + digits(1, 4) + digits(0, 6));
    header += channel(
        {"", "BHZ", 0, broadband_sensor, 0, -90, steim_format, 12, 20, "1998,001", "2003,200,12:00:00"}, lat,
        lon, elev);
    header +=
        channel({"", "BHZ", 0, broadband_sensor, 0, -90, steim_format, 12, 20, "2003,200,12:00:00.0000", ""},
                lat, lon, elev);
    header += blockette(59, "2003,200~~" + digits(2, 4) + digits(0, 6)) + response(20);
    header += channel({"", "BH", 1, broadband_sensor, 0, 0, integer_format, 12, 20, "2003,200", ""}, lat, lon,
                      elev);
    return header + response(20);
}

std::string second_station() {
    const double lat = -33.125, lon = 18.5, elev = 90.5;
    std::string header = station("DEM2", lat, lon, elev, "New quarry, office cellar");
    header += channel({"00", "LHZ", 0, long_period_sensor, 0, -90, float_format, 9, 1, "2001,001", ""}, lat,
                      lon, elev);
    return header + response(1);
}

std::string time_span() {
    const std::string event_time = "2005,032,10:20:00.1200";
    return blockette(70, std::string("E") + volume_start + "~" + volume_end + "~") +
           blockette(71, event_time + "~" + digits(hypocenter_source, 2) + fixed(46.25, 10, 4) +
                             fixed(7.5, 11, 4) + fixed(10, 7, 1) + digits(2, 2) + fixed(5.4, 5, 2) + "mb~" +
                             digits(1, 2) + fixed(5.6, 5, 2) + "MW~" + digits(1, 2) + digits(543, 3) +
                             digits(12, 4) + "SWITZERLAND~") +
           blockette(72, padded("DEM1", 5) + "  " + "BHZ" + "2005,032,10:20:35.5000~" + fixed(125.5, 10, 4) +
                             fixed(1.25, 10, 4) + fixed(8.0, 10, 4) + "P~" + digits(1, 2) + "XX") +
           blockette(73, digits(2, 4) + padded("DEM1", 5) + "  " + "BHZ" + "2005,032,10:20:30.0000~" +
                             digits(9, 6) + digits(1, 2) + padded("DEM2", 5) + "00" + "LHZ" +
                             "2005,032,10:20:30.0000~" + digits(13, 6) + digits(1, 2)) +
           blockette(74, padded("DEM1", 5) + "  " + "BHZ" + "2005,032,10:20:30.0000~" + digits(9, 6) +
                             digits(1, 2) + "2005,032,10:22:10.0000~" + digits(10, 6) + digits(1, 2) +
                             digits(1, 3) + "2005,032,10:21:20.0000~" + digits(10, 6) + digits(1, 2) + "XX");
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

std::string float_bytes(const std::vector<std::int32_t>& samples) {
    std::vector<std::int32_t> words;
    for (const std::int32_t sample : samples)
        words.push_back(std::bit_cast<std::int32_t>(static_cast<float>(sample) / 1000.0F));
    return sample_bytes(words, false);
}

void add_data(VolumeBuilder* volume) {
    constexpr int in_long_record = 1000;
    constexpr int in_short_record = 100;
    for (int i = 0; i < 2; ++i) {
        DataRecord record;
        record.minute = 20 + (30 + 50 * i) / 60;
        record.second = (30 + 50 * i) % 60;
        record.samples = in_long_record;
        record.encoding = 10;
        record.data = encode_steim1(oscillation(i, in_long_record), 4032, Order::big).bytes;
        volume->data(record);
    }
    for (int i = 0; i < 2; ++i) { // no blockette 1000: the channel's own headers tell format and length
        DataRecord record;
        record.channel = "BH";
        record.second = 30 + 5 * i;
        record.samples = in_short_record;
        record.quality = 0x10;
        record.data = sample_bytes(oscillation(i, in_short_record), true);
        volume->data(record);
    }
    for (int i = 0; i < 3; ++i) {
        DataRecord record;
        record.station = "DEM2";
        record.location = "00";
        record.channel = "LHZ";
        record.big_endian = false;
        record.minute = 20 + (30 + 100 * i) / 60;
        record.second = (30 + 100 * i) % 60;
        record.samples = in_short_record;
        record.rate_factor = 1;
        record.time_correction = 250;
        record.activity = i == 0 ? 0 : 2;
        record.size = 512;
        record.encoding = i == 1 ? -1 : 4;
        record.data = float_bytes(oscillation(i, in_short_record));
        volume->data(record);
    }
}

} // namespace

std::string demonstration_volume() {
    VolumeBuilder volume(1024);
    volume.control('V', volume_header()).control('V', volume_index());
    volume.control('A', dictionary());
    volume.control('S', first_station());
    volume.blank_record('S');
    volume.control('S', second_station());
    volume.control('T', time_span());
    add_data(&volume);
    return volume.bytes();
}

} // namespace quarry
