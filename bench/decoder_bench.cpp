// SPDX-License-Identifier: Apache-2.0
// The decoders' speed, beside plain copies in the same run.
//
// Each decoder of the format table works through a volume's worth of records, more than the caches hold, into
// one buffer of samples that holds them all: as a program would that reads a volume into memory. For each
// there is
//   swap    records of the other byte order; a decode swaps them in place, so the records are copied into
//           place again between two passes, which is not timed
//   decode  records of the host's order
//   copy    memcpy of the same raw bytes
//   write   as many bytes as the decode gives, written and nothing else
// items_per_second are samples, bytes_per_second raw bytes (of `write`: none). The figure that counts is the
// ratio to copy and write, which says how far the decoder is from what the memory allows.
#include "decode/formats.h"
#include "quarry/decoders.h"
#include "sample_encoders.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
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
    std::size_t instants = 0;          // of all records
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

// A few records over and over.
Volume repeated(const std::vector<Encoded>& records) {
    Volume volume;
    volume.bytes.reserve(records_of_volume * record_size);
    for (std::size_t i = 0; i < records_of_volume; ++i) {
        const Encoded& record = records[i % records.size()];
        volume.bytes.append(header_size, '\0').append(record.bytes);
        volume.samples.push_back(record.samples);
        volume.instants += static_cast<std::size_t>(record.samples);
    }
    return volume;
}

// The encoders of the formats with compression, and the size of the data area that they fill.
struct Compression {
    DataFormat format;
    Encoded (*encode)(std::span<const std::int32_t> series, std::size_t size, Order order);
    std::size_t area;
};
const std::array compressions{
    Compression{format_steim1, encode_steim1, record_size - header_size},
    Compression{format_steim2, encode_steim2, record_size - header_size},
    Compression{format_usnsn, encode_usnsn, record_size},
};

std::size_t number_of(const SeedFormat& format) {
    return static_cast<std::size_t>(&format - seed_format_map.data());
}

const Compression* compression_of(const SeedFormat& format) {
    const auto found = std::find_if(compressions.begin(), compressions.end(), [&](const Compression& one) {
        return static_cast<std::size_t>(one.format) == number_of(format);
    });
    return found != compressions.end() ? &*found : nullptr;
}

Volume compressed(const Compression& compression, Order order) {
    static const std::vector<std::int32_t> series = seismogram();
    std::vector<Encoded> records;
    std::span<const std::int32_t> left = series;
    while (records.size() < different_records && left.size() > 4 * record_size) {
        records.push_back(compression.encode(left.first(4 * record_size), compression.area, order));
        left = left.subspan(static_cast<std::size_t>(records.back().samples));
    }
    return repeated(records);
}

// Words of any format without compression: noise is as good as samples.
Volume plain(std::int32_t bytes_of_instant) {
    std::mt19937 random(2);
    std::vector<Encoded> records(different_records);
    for (Encoded& record : records) {
        while (record.bytes.size() < record_size - header_size)
            record.bytes.push_back(static_cast<char>(random() & 0x3F)); // no float that is not a number
        record.samples = static_cast<std::int32_t>(record.bytes.size()) / bytes_of_instant;
    }
    return repeated(records);
}

Volume volume_of(const SeedFormat& format, Order order) {
    const Compression* compression = compression_of(format);
    return compression != nullptr ? compressed(*compression, order) : plain(format.raw_size);
}

// The one in use; each is needed several times in a row, and they are large.
const Volume& volume_in_use(const SeedFormat& format, Order order) {
    static const SeedFormat* in_use = nullptr;
    static Order order_in_use;
    static Volume volume;
    if (in_use != &format || order_in_use != order) {
        volume = {};
        volume = volume_of(format, order);
        in_use = &format;
        order_in_use = order;
    }
    return volume;
}

std::size_t floats_of(const Volume& volume, const SeedFormat& format) {
    return volume.instants * static_cast<std::size_t>(format.size) / sizeof(float);
}

void count(benchmark::State& state, const Volume& volume, const SeedFormat& format, bool raw) {
    const std::int64_t passes = state.iterations();
    const std::int64_t components = std::max(format.size / static_cast<std::int32_t>(sizeof(float)), 1);
    state.SetItemsProcessed(passes * static_cast<std::int64_t>(volume.instants) * components);
    if (raw)
        state.SetBytesProcessed(passes * static_cast<std::int64_t>(volume.bytes.size()));
}

void decode(benchmark::State& state, const SeedFormat& format, Order order) {
    const Volume& volume = volume_in_use(format, order);
    std::string bytes = volume.bytes;
    std::vector<float> samples(floats_of(volume, format));
    const std::size_t area = volume.bytes.size() / volume.samples.size() - header_size;
    for (auto _ : state) {
        char* data = bytes.data() + header_size;
        auto* next = reinterpret_cast<char*>(samples.data());
        for (const std::int32_t nsamples : volume.samples) {
            seismic_data_ptr = reinterpret_cast<float*>(next);
            format.convert(data, nsamples, static_cast<std::int32_t>(area), order == Order::big);
            data += area + header_size;
            next += static_cast<std::ptrdiff_t>(nsamples) * format.size;
        }
        benchmark::ClobberMemory();
        if (order == Order::big) {
            state.PauseTiming();
            std::memcpy(bytes.data(), volume.bytes.data(), bytes.size());
            state.ResumeTiming();
        }
    }
    count(state, volume, format, true);
}

void copy(benchmark::State& state, const SeedFormat& format) {
    const Volume& volume = volume_in_use(format, Order::little);
    std::string bytes = volume.bytes;
    for (auto _ : state) {
        std::memcpy(bytes.data(), volume.bytes.data(), bytes.size());
        benchmark::ClobberMemory();
    }
    count(state, volume, format, true);
}

void write(benchmark::State& state, const SeedFormat& format) {
    const Volume& volume = volume_in_use(format, Order::little);
    std::vector<float> samples(floats_of(volume, format));
    float value = 0;
    for (auto _ : state) {
        std::fill(samples.begin(), samples.end(), value += 1);
        benchmark::ClobberMemory();
    }
    count(state, volume, format, false);
}

void add(const std::string& name, const SeedFormat& format) {
    const auto add = [&name](const char* what, auto run) {
        benchmark::RegisterBenchmark((name + "/" + what).c_str(), run)->Unit(benchmark::kMillisecond);
    };
    add("swap", [&format](benchmark::State& state) { decode(state, format, Order::big); });
    add("decode", [&format](benchmark::State& state) { decode(state, format, Order::little); });
    add("copy", [&format](benchmark::State& state) { copy(state, format); });
    add("write", [&format](benchmark::State& state) { write(state, format); });
}

// Several rows of the table share a decoder: the first one stands for them all.
bool is_measured(const SeedFormat& format) {
    if (format.convert == decode_unknown)
        return false;
    const auto first = std::find_if(seed_format_map.begin(), seed_format_map.end(),
                                    [&](const SeedFormat& row) { return row.convert == format.convert; });
    return &*first == &format;
}

const std::array names{
#define QUARRY_FORMAT_NAME(NAME, ...) #NAME,
    QUARRY_DATA_FORMATS(QUARRY_FORMAT_NAME)
#undef QUARRY_FORMAT_NAME
};

void add_all() {
    for (const SeedFormat& format : seed_format_map)
        if (is_measured(format))
            add(names[number_of(format)], format);
}

} // namespace
} // namespace quarry

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    quarry::add_all();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
