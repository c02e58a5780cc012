// SPDX-License-Identifier: Apache-2.0
#include "sample_encoders.h"

#include <algorithm>
#include <iterator>
#include <random>

namespace quarry {

namespace {

struct Packing {
    int count; // differences in a word
    int width; // bits of each
    std::uint32_t code;
    std::uint32_t dnib; // top bits of the word; none for the byte-wise packings
};
constexpr Packing level_1[] = {{4, 8, 1, 0}, {2, 16, 2, 0}, {1, 32, 3, 0}};
constexpr Packing level_2[] = {{7, 4, 3, 2},  {6, 5, 3, 1},  {5, 6, 3, 0}, {4, 8, 1, 0},
                               {3, 10, 2, 3}, {2, 15, 2, 2}, {1, 30, 2, 1}};

bool fits(std::span<const std::int64_t> differences, int width) {
    const std::int64_t end = std::int64_t{1} << (width - 1);
    return std::ranges::all_of(differences, [end](std::int64_t d) { return d >= -end && d < end; });
}

// Differences from the sample before; the first one is arbitrary, a decoder must not need it.
std::vector<std::int64_t> differences_of(std::span<const std::int32_t> series) {
    std::vector<std::int64_t> differences(series.size(), -3);
    for (std::size_t i = 1; i < series.size(); ++i)
        differences[i] = std::int64_t{series[i]} - series[i - 1];
    return differences;
}

void overwrite(std::string& bytes, std::size_t offset, const std::string& with) {
    std::ranges::copy(with, bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}

Encoded encode_steim(std::span<const std::int32_t> series, std::size_t size, Order order,
                     std::span<const Packing> packings) {
    const std::vector<std::int64_t> differences = differences_of(series);
    std::span<const std::int64_t> left = differences;
    Encoded encoded;
    for (std::size_t frame = 0; frame < size / 64; ++frame) {
        std::uint32_t codes = 0;
        std::string words;
        for (std::size_t k = 1; k < 16; ++k) {
            const auto packing = std::ranges::find_if(packings, [&](const Packing& p) {
                const auto count = static_cast<std::size_t>(p.count);
                return left.size() >= count && fits(left.first(count), p.width);
            });
            if ((frame == 0 && k < 3) || packing == packings.end()) {
                words += number(0, 4, order);
                continue;
            }
            codes |= packing->code << (30 - 2 * k);
            // Bytes, and in level 1 half-words, are numbers of their own; else the fields make one word.
            const bool apart = packing->count * packing->width == 32;
            std::uint32_t word = packing->dnib << 30;
            for (int i = 0; i < packing->count; ++i) {
                const auto field = static_cast<std::uint32_t>(left[static_cast<std::size_t>(i)]);
                if (apart)
                    words += number(field, packing->width / 8, order);
                else
                    word |= (field & ((1U << packing->width) - 1))
                            << (packing->width * (packing->count - 1 - i));
            }
            if (!apart)
                words += number(word, 4, order);
            left = left.subspan(static_cast<std::size_t>(packing->count));
        }
        encoded.bytes += number(codes, 4, order) + words;
    }
    encoded.samples = static_cast<std::int32_t>(differences.size() - left.size());
    const auto constant = [&](std::size_t sample) {
        return number(static_cast<std::uint32_t>(series[sample]), 4, order);
    };
    overwrite(encoded.bytes, 4, constant(0) + constant(static_cast<std::size_t>(encoded.samples) - 1));
    return encoded;
}

// Writes numbers of any width, most significant bit first.
class BitWriter {
public:
    void put(std::uint64_t value, int width) {
        for (int bit = width - 1; bit >= 0; --bit) {
            if (bits_ % 8 == 0)
                bytes_.push_back('\0');
            if ((value >> bit & 1) != 0)
                bytes_.back() = static_cast<char>(bytes_.back() | 0x80 >> (bits_ % 8));
            ++bits_;
        }
    }
    std::string& bytes() { return bytes_; }

private:
    std::string bytes_;
    std::size_t bits_ = 0;
};

struct Group {
    int width;
    std::size_t count;
};
constexpr Group groups[] = {{4, 4},  {4, 8},  {4, 12}, {6, 4},  {6, 8},  {8, 4},  {8, 8}, {10, 4},
                            {10, 8}, {12, 4}, {14, 4}, {16, 4}, {20, 4}, {24, 4}, {28, 4}};

// The key that is narrowest, and among those longest, for the next differences.
std::size_t key_for(std::span<const std::int64_t> left) {
    std::size_t best = std::size(groups) - 1;
    for (std::size_t key = std::size(groups); key-- > 0;)
        if (fits(left.first(std::min(left.size(), groups[key].count)), groups[key].width) &&
            groups[key].width < groups[best].width)
            best = key;
    return best;
}

} // namespace

Encoded encode_steim1(std::span<const std::int32_t> series, std::size_t size, Order order) {
    return encode_steim(series, size, order, level_1);
}

Encoded encode_steim2(std::span<const std::int32_t> series, std::size_t size, Order order) {
    return encode_steim(series, size, order, level_2);
}

Encoded encode_usnsn(std::span<const std::int32_t> series, std::size_t size, Order order) {
    constexpr std::size_t largest_frame = 1 + 2 * 14;
    const std::vector<std::int64_t> differences = differences_of(series);
    std::span<const std::int64_t> left(differences.begin() + 1, differences.end());
    BitWriter record;
    std::string& bytes = record.bytes();
    record.put(static_cast<std::uint32_t>(series[0]), 32);
    record.put(0, 16); // the count of differences, known at the end

    std::size_t block = bytes.size();
    std::size_t taken = 0; // of the last frame
    for (int frame = 1; !left.empty() && bytes.size() + largest_frame + 2 <= size - 4; ++frame) {
        const std::size_t before = left.size();
        const std::size_t first_key = key_for(left);
        const std::size_t second_key = key_for(left.subspan(std::min(left.size(), groups[first_key].count)));
        record.put(first_key << 4 | second_key, 8);
        for (const std::size_t key : {first_key, second_key})
            for (std::size_t i = 0; i < groups[key].count; ++i) {
                record.put(left.empty() ? 0 : static_cast<std::uint64_t>(left[0]), groups[key].width);
                left = left.subspan(left.empty() ? 0 : 1);
            }
        taken = before - left.size();
        if (frame % 7 == 0) {
            record.put(bytes.size() - block + 1, 8);
            block = bytes.size();
        }
    }
    if (bytes.size() != block) // the last frame has not just closed a block
        record.put(bytes.size() - block + 1, 8);
    record.put(taken, 8);

    Encoded encoded;
    const std::size_t count = differences.size() - 1 - left.size();
    overwrite(bytes, 4, number(static_cast<std::uint32_t>(count), 2, Order::big));
    bytes.resize(size);
    overwrite(bytes, size - 4, number(static_cast<std::uint32_t>(series[count]), 4, Order::big));
    if (order == Order::big)
        for (std::size_t i = 0; i + 4 <= size; i += 4)
            std::reverse(&bytes[i], &bytes[i] + 4);
    encoded.bytes = std::move(bytes);
    encoded.samples = static_cast<std::int32_t>(count + 1);
    return encoded;
}

std::vector<std::int32_t> random_walk(std::size_t samples, int bits, std::uint32_t seed) {
    std::mt19937 random(seed);
    const std::int64_t end = std::int64_t{1} << (bits - 1);
    std::vector<std::int32_t> series;
    std::int64_t value = 0;
    for (std::size_t i = 0; i < samples; ++i) {
        const std::int64_t pick = static_cast<std::int64_t>(random()) % (2 * end) - end;
        const std::int64_t step = i % 16 == 5 ? -end : i % 16 == 11 ? end - 1 : pick;
        value += std::abs(value + step) < (std::int64_t{1} << 30) ? step : value > 0 ? -end : end - 1;
        series.push_back(static_cast<std::int32_t>(value));
    }
    return series;
}

std::string bytes_of(std::initializer_list<std::uint32_t> words, Order order) {
    std::string bytes;
    for (const std::uint32_t word : words)
        bytes += number(word, 4, order);
    return bytes;
}

} // namespace quarry
