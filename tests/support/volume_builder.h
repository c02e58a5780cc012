// SPDX-License-Identifier: Apache-2.0
// Builds small SEED volumes out of blockette fields and data records, for the demonstration volume and for
// the tests. It writes what its caller asks for, damaged or not.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quarry {

// Fields as printf writes them, at most 255 characters.
__attribute__((format(printf, 1, 2))) std::string formatted(const char* format, ...);

// Fields of fixed width: digits with leading zeros, a real number with decimals or with an exponent (12
// characters), text padded with blanks.
std::string digits(int value, int width);
std::string fixed(double value, int width, int decimals);
std::string exponent(double value);
std::string padded(std::string_view text, int width);

// A control blockette: its type, its length and the given fields.
std::string blockette(int type, std::string_view fields);

// The low bytes of a number as they stand in a record.
enum class Order { big, little };
std::string number(std::uint32_t value, int width, Order order);

struct RecordFields {
    const char* station = "DEM1";
    const char* location = "";
    const char* channel = "BHZ";
    const char* network = "XX";
    char quality_indicator = 'D';
    int year = 2005;
    int doy = 32;
    int hour = 10;
    int minute = 20;
    int second = 30;
    int fraction = 0; // 0.0001 s
    int samples = 0;
    int rate_factor = 20;
    int rate_multiplier = 1;
    int activity = 0;
    int io_flags = 0;
    int quality = 0;
    int time_correction = 0; // 0.0001 s
    int size = 4096;         // bytes
    int size_exponent = 0;   // in blockette 1000; 0: that of the size
    int encoding = -1;       // of a blockette 1000; below 0: the record has none
    bool big_endian = true;
    std::string data = {};
    double stated_rate = 0;  // in a blockette 100; 0: the record has none
    int timing_quality = -1; // in a blockette 1001; below 0: the record has none
    int sequence = 0;        // 0 goes on counting
};

class VolumeBuilder {
public:
    // Control headers go into logical records of the given length.
    explicit VolumeBuilder(int record_size = 4096) : record_size_(static_cast<std::size_t>(record_size)) {}

    // Appends blockettes to the control header of the given letter, which begins a new logical record unless
    // it is the one being written. Blockettes run on into following records as needed; their first 7 bytes
    // are kept in one record.
    VolumeBuilder& control(char letter, std::string_view blockettes);

    // Appends the bytes as they are to the record being written.
    VolumeBuilder& raw(std::string_view bytes);

    // Appends a data record of its own logical record. A sequence number of 0 goes on counting.
    VolumeBuilder& data(const RecordFields& record, int sequence = 0);

    // Fills the logical record being written with blanks, or begins and fills a blank one.
    VolumeBuilder& blank_record(char letter);

    // The volume so far, its last logical record filled with blanks.
    std::string bytes() const;

private:
    void begin_record(char letter, char continuation);
    void end_record();
    std::size_t room() const;
    void append_control(std::string_view blockette);

    std::size_t record_size_;
    std::string volume_;
    char letter_ = '\0'; // of the control header being written
    std::size_t record_start_ = 0;
    int sequence_ = 0;
};

// The demonstration volume: two stations, several channels and epochs, every blockette type that is listed,
// an event with its time series, data records with and without blockette 1000, in both byte orders and of
// two lengths.
std::string demonstration_volume();

} // namespace quarry
