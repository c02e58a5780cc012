// The decoders' speed, beside plain copies in the same run.
//
// Each decoder works through a volume's worth of records, more than the caches hold, into one buffer of
// samples that holds them all: as a program would that reads a volume into memory. For each there is
//   swap    records of the other byte order; a decode swaps them in place, so the records are copied into
//           place again between two passes, which is not timed
//   decode  records of the host's order
//   copy    memcpy of the same raw bytes
//   write   as many floats as the decode gives, written and nothing else
// items_per_second are samples, bytes_per_second raw bytes (of `write`: none). The figure that counts is the
// ratio to copy and write, which says how far the decoder is from what the memory allows.
#include "decode/decode_32bit.h"
#include "decode/decode_asro.h"
#include "decode/decode_cdsn.h"
#include "decode/decode_dwwssn.h"
#include "decode/decode_geoscope.h"
#include "decode/decode_ieeefloat.h"
#include "decode/decode_sro.h"
#include "decode/decode_steim.h"
#include "decode/decode_steim2.h"
#include "decode/decode_usnsn.h"
#include "decode/sample_cursor.h"
#include "sample_encoders.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <random>

namespace quarry {
namespace {

constexpr std::size_t record_size = 4096;
constexpr std::size_t header_size = 64;
constexpr std::size_t records_of_volume = 8192;
constexpr std::size_t different_records = 512;

// Records of one format; the data areas lie header_size apart, as in a volume.
struct Volume {
    std::string bytes;
    std::vector<std::int32_t> samples; // of each record: sample instants
    std::size_t values = 0;            // all that the decoder writes
};

// Coloured noise whose strength goes up and down by a factor of 50, so that all widths of differences take
// turns and neighbouring words differ, as in a seismogram.
std::vector<std::int32_t> seismogram() {
    std::mt19937 random(1);
    std::normal_distribution<double> normal;
    std::vector<std::int32_t> series(1 << 20);
    double fast = 0;
    double slow = 0;
    for (std::size_t i = 0; i < series.size(); ++i) {
        const double strength = 30 * std::exp(2 * std::sin(static_cast<double>(i) / 3000));
        fast = 0.95 * fast + strength * normal(random);
        slow = 0.7 * slow + 0.3 * fast;
        series[i] = static_cast<std::int32_t>(slow);
    }
    return series;
}

void add_record(Volume* volume, const Encoded& record, int components) {
    volume->bytes.append(header_size, '\0').append(record.bytes);
    volume->samples.push_back(record.samples);
    volume->values += static_cast<std::size_t>(record.samples * components);
}

// A few records over and over.
Volume repeated(const std::vector<Encoded>& records, int components) {
    Volume volume;
    volume.bytes.reserve(records_of_volume * record_size);
    for (std::size_t i = 0; i < records_of_volume; ++i)
        add_record(&volume, records[i % records.size()], components);
    return volume;
}

using Encoder = Encoded (*)(std::span<const std::int32_t>, std::size_t, Order);

Volume compressed(Encoder encoder, std::size_t area, Order order) {
    static const std::vector<std::int32_t> series = seismogram();
    std::vector<Encoded> records;
    std::span<const std::int32_t> left = series;
    while (records.size() < different_records && left.size() > 4 * record_size) {
        records.push_back(encoder(left.first(4 * record_size), area, order));
        left = left.subspan(static_cast<std::size_t>(records.back().samples));
    }
    return repeated(records, 1);
}

// Words of any format without compression: noise is as good as samples.
Volume plain(int bytes_of_instant, int components) {
    std::mt19937 random(2);
    std::vector<Encoded> records(different_records);
    for (Encoded& record : records) {
        while (record.bytes.size() < record_size - header_size)
            record.bytes.push_back(static_cast<char>(random() & 0x3F)); // no float that is not a number
        record.samples = static_cast<std::int32_t>(record.bytes.size()) / bytes_of_instant;
    }
    return repeated(records, components);
}

struct Format {
    const char* name;
    Decoder decoder;
    Volume (*volume)(Order order);
};
const Format formats[] = {
    {"steim1", decode_steim,
     [](Order order) { return compressed(encode_steim1, record_size - header_size, order); }},
    {"steim2", decode_steim2,
     [](Order order) { return compressed(encode_steim2, record_size - header_size, order); }},
    {"usnsn", decode_usnsn, [](Order order) { return compressed(encode_usnsn, record_size, order); }},
    {"32bit", decode_32bit, [](Order) { return plain(4, 1); }},
    {"ieeefloat", decode_ieeefloat, [](Order) { return plain(4, 1); }},
    {"dwwssn", decode_dwwssn, [](Order) { return plain(2, 1); }},
    {"sro", decode_sro, [](Order) { return plain(2, 1); }},
    {"asro", decode_asro, [](Order) { return plain(2, 1); }},
    {"cdsn", decode_cdsn, [](Order) { return plain(2, 1); }},
    {"geo1", decode_geo1, [](Order) { return plain(6, 3); }},
    {"geo2", decode_geo2, [](Order) { return plain(9, 3); }},
    {"geo3", decode_geo3, [](Order) { return plain(6, 3); }},
};

// The one in use; each is needed several times in a row, and they are large.
const Volume& volume_of(const Format& format, Order order) {
    static const Format* in_use = nullptr;
    static Order order_in_use;
    static Volume volume;
    if (in_use != &format || order_in_use != order) {
        volume = {};
        volume = format.volume(order);
        in_use = &format;
        order_in_use = order;
    }
    return volume;
}

void count(benchmark::State& state, const Volume& volume, bool raw) {
    const std::int64_t passes = state.iterations();
    state.SetItemsProcessed(passes * static_cast<std::int64_t>(volume.values));
    if (raw)
        state.SetBytesProcessed(passes * static_cast<std::int64_t>(volume.bytes.size()));
}

void decode(benchmark::State& state, const Format& format, Order order) {
    const Volume& volume = volume_of(format, order);
    std::string bytes = volume.bytes;
    std::vector<float> samples(volume.values);
    const std::size_t area = volume.bytes.size() / volume.samples.size() - header_size;
    const auto components = static_cast<std::ptrdiff_t>(volume.values) /
                            std::accumulate(volume.samples.begin(), volume.samples.end(), std::ptrdiff_t{0});
    for (auto _ : state) {
        char* data = bytes.data() + header_size;
        float* next = samples.data();
        for (const std::int32_t nsamples : volume.samples) {
            seismic_data_ptr = next;
            format.decoder(data, nsamples, static_cast<std::int32_t>(area), order == Order::big);
            data += area + header_size;
            next += nsamples * components;
        }
        benchmark::ClobberMemory();
        if (order == Order::big) {
            state.PauseTiming();
            std::memcpy(bytes.data(), volume.bytes.data(), bytes.size());
            state.ResumeTiming();
        }
    }
    count(state, volume, true);
}

void copy(benchmark::State& state, const Format& format) {
    const Volume& volume = volume_of(format, Order::little);
    std::string bytes = volume.bytes;
    for (auto _ : state) {
        std::memcpy(bytes.data(), volume.bytes.data(), bytes.size());
        benchmark::ClobberMemory();
    }
    count(state, volume, true);
}

void write(benchmark::State& state, const Format& format) {
    const Volume& volume = volume_of(format, Order::little);
    std::vector<float> samples(volume.values);
    float value = 0;
    for (auto _ : state) {
        std::fill(samples.begin(), samples.end(), value += 1);
        benchmark::ClobberMemory();
    }
    count(state, volume, false);
}

void register_all() {
    for (const Format& format : formats) {
        const std::string name = format.name;
        const auto add = [](const std::string& label, auto run) {
            benchmark::RegisterBenchmark(label.c_str(), run)->Unit(benchmark::kMillisecond);
        };
        add(name + "/swap", [&format](benchmark::State& state) { decode(state, format, Order::big); });
        add(name + "/decode", [&format](benchmark::State& state) { decode(state, format, Order::little); });
        add(name + "/copy", [&format](benchmark::State& state) { copy(state, format); });
        add(name + "/write", [&format](benchmark::State& state) { write(state, format); });
    }
}

} // namespace
} // namespace quarry

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    quarry::register_all();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
