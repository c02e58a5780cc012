// The demonstration volume: a made-up network with realistic headers and data.

#include "sample_encoders.h"
#include "volume_builder.h"

#include <bit>
#include <cmath>
#include <numbers>

namespace quarry {

namespace {

constexpr const char* whole_day = "2005,032,00:00:00.0000~2005,032,23:59:59.9999~";

std::string volume_header() {
    return blockette(10,
                     std::string(" 2.410") + whole_day + "2005,040,12:00:00~Quarry~Demonstration volume~");
}

std::string volume_index() {
    return blockette(11, "002DEM1 000003DEM2 000007") +
           blockette(12, std::string("0001") + whole_day + "000008");
}

std::string dictionary() {
    return blockette(30, "32-Bit Integer Format~000100002M0~W4 D0-31 C2~") +
           blockette(30, "IEEE single precision real~000200100") +
           blockette(30, "Steim Integer Compression Format~000305006"
                         "F1 P4 W4 D0-31 C2 R1 P8 W4 D0-31 C2~P0 W4 N15 S2,0,1~T0 X N0 W4 D0-31 C2~"
                         "T1 N0 W1 D0-7 C2 N1 W1 D0-7 C2 N2 W1 D0-7 C2 N3 W1 D0-7 C2~"
                         "T2 N0 W2 D0-15 C2 N1 W2 D0-15 C2~T3 N0 W4 D0-31 C2~") +
           blockette(31, "0001SClock locked to GPS~000") + blockette(31, "0002CSensor levelled~000") +
           blockette(32, "01Quarry~2005~Demonstration bulletin~") +
           blockette(33, "001Broadband seismometer, 120 s~") + blockette(33, "002Long-period seismometer~") +
           blockette(33, "003Quarry demonstration network~") +
           blockette(34, "001M/S~Velocity in metres per second~") + blockette(34, "002V~Volts~") +
           blockette(34, "003COUNTS~Digital counts~");
}

std::string station(const char* code, double latitude, double longitude, double elevation, const char* site) {
    return blockette(50, formatted("%-5s%10.6f%11.6f%7.1f   3  1%s~00332101"
                                   "01998,001~~NXX",
                                   code, latitude, longitude, elevation, site));
}

struct Channel {
    const char* codes; // location, channel and subchannel
    int sensor;
    double dip;
    int format;
    int length_exponent;
    double rate;
    const char* dates;
};

// The sensor stands at the station, 2.5 m deep.
std::string channel(const Channel& c, double latitude, double longitude, double elevation) {
    return blockette(
        52, formatted("%s%03d~001002%10.6f%11.6f%7.1f  2.5  0.0%5.1f%04d%02d%10.4f 1.000E-050000CG~%sN",
                      c.codes, c.sensor, latitude, longitude, elevation, c.dip, c.format, c.length_exponent,
                      c.rate, c.dates));
}

// Sensor, digitizer, one FIR stage described twice (054 and 061), and the sensitivity of the whole.
std::string response(double rate) {
    const auto pair = [](double value, double error) { return exponent(value) + exponent(error); };
    const auto gain = [](const char* stage, double value) {
        return blockette(58, stage + exponent(value) + exponent(1.0) + "00");
    };
    const auto decimation = [&](const char* stage, int factor, double delay) {
        return blockette(57,
                         formatted("%s%10.4f%05d00000%11.4f%11.4f", stage, rate * 2, factor, delay, delay));
    };
    return blockette(53, "A01001002" + pair(5.71404e8, 1.0) + "002" + pair(0, 0) + pair(0, 0) + pair(0, 0) +
                             pair(0, 0) + "004" + pair(-0.03701, 0.03701) + pair(0.0001, 0.0001) +
                             pair(-0.03701, -0.03701) + pair(0.0001, 0.0001) + pair(-1131.0, 0) + pair(0, 0) +
                             pair(-1005.0, 0) + pair(0, 0)) +
           gain("01", 1500.0) + blockette(54, "D0200200300000000") + decimation("02", 1, 0) +
           gain("02", 4.0e5) +
           blockette(54, "D030030030003" + pair(0.25, 0) + pair(0.5, 0.001) + pair(0.25, 0) + "0001" +
                             pair(1.0, 0.002)) +
           blockette(61, "03Smoother~A0030030003  2.500000E-01  5.000000E-01  2.500000E-01") +
           decimation("03", 2, 1 / rate) + gain("00", 6.0e8);
}

std::string first_station() {
    constexpr double lat = 47.5, lon = -8.25, elev = 512.0;
    return station("DEM1", lat, lon, elev, "Old quarry, north face") +
           blockette(51, "2005,001~2005,090~0001000000") +
           channel({"  BHZ0000", 1, -90, 3, 12, 20, "1998,001~2003,200,12:00:00~"}, lat, lon, elev) +
           channel({"  BHZ0000", 1, -90, 3, 12, 20, "2003,200,12:00:00.0000~~"}, lat, lon, elev) +
           blockette(59, "2003,200~~0002000000") + response(20) +
           channel({"  BH 0001", 1, 0, 1, 12, 20, "2003,200~~"}, lat, lon, elev) + response(20);
}

std::string second_station() {
    constexpr double lat = -33.125, lon = 18.5, elev = 90.5;
    return station("DEM2", lat, lon, elev, "New quarry, office cellar") +
           channel({"00LHZ0000", 2, -90, 2, 9, 1, "2001,001~~"}, lat, lon, elev) + response(1);
}

std::string time_span() {
    const std::string first_record = "DEM1   BHZ2005,032,10:20:30.0000~00000901";
    return blockette(70, std::string("E") + whole_day) +
           blockette(
               71,
               "2005,032,10:20:00.1200~01   46.2500     7.5000   10.002 5.40mb~01 5.60MW~015430012SWITZERLAND~") +
           blockette(72, "DEM1   BHZ2005,032,10:20:35.5000~  125.5000    1.2500    8.0000P~01XX") +
           blockette(73, "0002" + first_record + "DEM2 00LHZ2005,032,10:20:30.0000~00001301") +
           blockette(74,
                     first_record + "2005,032,10:22:10.0000~000010010012005,032,10:21:20.0000~00001001XX");
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

void add_data(VolumeBuilder* volume) {
    constexpr int in_long_record = 1000;
    constexpr int in_short_record = 100;
    for (int i = 0; i < 2; ++i) {
        RecordFields record;
        record.minute = 20 + (30 + 50 * i) / 60;
        record.second = (30 + 50 * i) % 60;
        record.samples = in_long_record;
        record.encoding = 10;
        record.data = encode_steim1(oscillation(i, in_long_record), 4032, Order::big).bytes;
        volume->data(record);
    }
    for (int i = 0; i < 2; ++i) { // no blockette 1000: format and length stand in the channel's own headers
        RecordFields record;
        record.channel = "BH";
        record.second = 30 + 5 * i;
        record.samples = in_short_record;
        record.quality = 0x10;
        record.data = bytes_of_samples(oscillation(i, in_short_record));
        volume->data(record);
    }
    for (int i = 0; i < 3; ++i) {
        RecordFields record;
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
        record.data = bytes_of_floats(oscillation(i, in_short_record));
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
