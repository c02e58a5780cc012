// SPDX-License-Identifier: Apache-2.0
#include "quarry/data_found.h"

#include "decode/data_record.h"
#include "quarry/coverage.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace quarry {

namespace {

using Limits = std::numeric_limits<std::int64_t>;

template <class T>
void note(T value, std::vector<T>* met) {
    if (met->empty() || met->back() != value)
        if (std::find(met->begin(), met->end(), value) == met->end())
            met->push_back(value);
}

void compare_with_next(const DataRecord& record, const Segment& segment, EpochData* data) {
    constexpr double half_a_sample = 0.5e6; // microseconds times samples per second
    const double late = static_cast<double>(record.start - data->next) * record.rate;
    if (data->goes_on && late > half_a_sample)
        ++data->gaps;
    if (data->goes_on && late < -half_a_sample)
        ++data->overlaps;
    data->next = segment.next;
    data->goes_on = true;
}

void add_to(EpochData* data, const DataRecord& record) {
    const std::int64_t end = end_of(record);
    data->first = data->records == 0 ? record.start : std::min(data->first, record.start);
    data->last = data->records == 0 ? end : std::max(data->last, end);
    ++data->records;
    data->samples += record.header.samples;
    if (data->rate == 0)
        data->rate = record.rate;
    note(record.format ? record.format->encoding : -1, &data->encodings);
    note(record.length, &data->lengths);
    if (const auto segment = segment_of(record))
        compare_with_next(record, *segment, data);
}

} // namespace

bool DataFound::holds(const Epoch& epoch, std::int64_t time) {
    return epoch.start <= time && time < epoch.end;
}

// The epoch of the time: the last one that holds it, else all time. Those that begin after it need not be
// looked at where all are in order.
std::size_t DataFound::index_at(const Epochs& epochs, std::int64_t time) {
    const auto begins_later = [](std::int64_t one, const Epoch& epoch) { return one < epoch.start; };
    const auto begin = epochs.all.begin();
    const auto end = epochs.is_ordered ? std::upper_bound(begin + 1, epochs.all.end(), time, begins_later)
                                       : epochs.all.end();
    std::ptrdiff_t index = end - begin - 1;
    const std::ptrdiff_t last = epochs.is_ordered ? std::max<std::ptrdiff_t>(index - 1, 0) : 0;
    while (index > last && !holds(begin[index], time))
        --index;
    return holds(begin[index], time) ? static_cast<std::size_t>(index) : 0;
}

std::size_t DataFound::Hash::operator()(const Codes& codes) const {
    std::uint64_t front = 0;
    std::uint32_t back = 0;
    std::memcpy(&front, codes.data(), sizeof front);
    std::memcpy(&back, codes.data() + sizeof front, sizeof back);
    const std::uint64_t mixed = (front ^ std::uint64_t{back} << 21) * 0x9E3779B97F4A7C15;
    return mixed ^ mixed >> 32;
}

// By the codes filled up with blanks, which is one of the ways they stand in headers.
std::size_t DataFound::index_of(std::string_view network, std::string_view station, std::string_view location,
                                std::string_view channel) {
    const auto [known, is_new] =
        index_.try_emplace(header_codes({station, location, channel, network}), channels_.size());
    if (is_new) {
        channels_.push_back(
            {std::string(network), std::string(station), std::string(location), std::string(channel), {}});
        epochs_.push_back({{{Limits::min(), Limits::max(), -1}}});
    }
    return known->second;
}

void DataFound::expect(std::string_view network, std::string_view station, std::string_view location,
                       std::string_view channel, std::int64_t start, std::int64_t end, std::int64_t place) {
    Epochs& epochs = epochs_[index_of(network, station, location, channel)];
    epochs.is_ordered = epochs.is_ordered && (epochs.all.size() == 1 || epochs.all.back().end <= start);
    epochs.all.push_back({start, end, place});
}

void DataFound::add(const DataRecord& record) {
    Codes codes;
    static_assert(sizeof codes == codes_size);
    std::copy_n(record.bytes.begin() + codes_offset, codes.size(), codes.begin());
    if (channels_.empty() || codes != last_codes_) {
        const auto known = index_.find(codes);
        last_ = known != index_.end() ? known->second
                                      : index_[codes] = index_of(record.network, record.station,
                                                                 record.location, record.channel);
        last_codes_ = codes;
    }
    Epochs& epochs = epochs_[last_];
    Epoch& epoch = epochs.all[index_at(epochs, record.start)];
    std::vector<EpochData>& data = channels_[last_].data;
    if (epoch.data < 0) {
        epoch.data = std::ssize(data);
        data.push_back(EpochData{epoch.start, epoch.end, epoch.place});
        data.back().offset = record.offset;
    }
    add_to(&data[static_cast<std::size_t>(epoch.data)], record);
}

} // namespace quarry
