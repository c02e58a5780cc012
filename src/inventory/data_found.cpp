#include "quarry/data_found.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace quarry {

namespace {

constexpr std::size_t codes_offset = 8;

using Limits = std::numeric_limits<std::int64_t>;

template <class T>
void note(T value, std::vector<T>* met) {
    if (met->empty() || met->back() != value)
        if (std::find(met->begin(), met->end(), value) == met->end())
            met->push_back(value);
}

bool holds(const EpochData& epoch, std::int64_t time) {
    return epoch.epoch_start <= time && time < epoch.epoch_end;
}

// The epoch of the time: the last one that holds it, else the records outside all.
std::size_t epoch_at(const ChannelData& channel, std::int64_t time) {
    std::size_t index = channel.data.size() - 1;
    while (index > 0 && !holds(channel.data[index], time))
        --index;
    return index;
}

void compare_with_next(const DataRecord& record, EpochData* data) {
    const double half_a_sample = 0.5e6 / record.rate;
    const auto late = static_cast<double>(record.start - data->next);
    if (data->goes_on && late > half_a_sample)
        ++data->gaps;
    if (data->goes_on && late < -half_a_sample)
        ++data->overlaps;
    data->next = record.start + std::llround(record.header.samples * 1e6 / record.rate);
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
    if (record.rate > 0 && record.header.samples > 0)
        compare_with_next(record, data);
}

} // namespace

std::size_t DataFound::index_of(const Codes& codes, std::string_view network, std::string_view station,
                                std::string_view location, std::string_view channel) {
    if (const auto known = index_.find(codes); known != index_.end())
        return known->second;
    const auto found = std::find_if(channels_.begin(), channels_.end(), [&](const ChannelData& one) {
        return one.network == network && one.station == station && one.location == location &&
               one.channel == channel;
    });
    const auto index = static_cast<std::size_t>(found - channels_.begin());
    if (found == channels_.end())
        channels_.push_back({std::string(network),
                             std::string(station),
                             std::string(location),
                             std::string(channel),
                             {EpochData{Limits::min(), Limits::max()}}});
    return index_[codes] = index;
}

void DataFound::expect(std::string_view network, std::string_view station, std::string_view location,
                       std::string_view channel, std::int64_t start, std::int64_t end) {
    Codes codes;
    codes.fill(' ');
    const auto put = [&codes](std::string_view code, std::size_t at, std::size_t width) {
        std::copy_n(code.begin(), std::min(code.size(), width),
                    codes.begin() + static_cast<std::ptrdiff_t>(at));
    };
    put(station, 0, 5);
    put(location, 5, 2);
    put(channel, 7, 3);
    put(network, 10, 2);
    channels_[index_of(codes, network, station, location, channel)].data.push_back(EpochData{start, end});
}

void DataFound::add(const DataRecord& record) {
    Codes codes;
    std::copy_n(record.bytes.begin() + codes_offset, codes.size(), codes.begin());
    if (channels_.empty() || codes != last_codes_) {
        last_ = index_of(codes, record.network, record.station, record.location, record.channel);
        last_codes_ = codes;
    }
    ChannelData& channel = channels_[last_];
    add_to(&channel.data[epoch_at(channel, record.start)], record);
}

} // namespace quarry
