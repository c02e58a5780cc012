#include "quarry/data_found.h"

#include "decode/data_record.h"

#include <algorithm>
#include <cmath>
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

bool holds(const EpochData& epoch, std::int64_t time) {
    return epoch.epoch_start <= time && time < epoch.epoch_end;
}

// The epoch of the time: the last one that holds it, else the records outside all. Those that begin after it
// need not be looked at where all are in order.
std::size_t epoch_at(const ChannelData& channel, std::int64_t time) {
    const auto begins_later = [](std::int64_t one, const EpochData& epoch) {
        return one < epoch.epoch_start;
    };
    const auto begin = channel.data.begin();
    const auto end = channel.is_ordered ? std::upper_bound(begin + 1, channel.data.end(), time, begins_later)
                                        : channel.data.end();
    std::ptrdiff_t index = end - begin - 1;
    const std::ptrdiff_t last = channel.is_ordered ? std::max<std::ptrdiff_t>(index - 1, 0) : 0;
    while (index > last && !holds(begin[index], time))
        --index;
    return holds(begin[index], time) ? static_cast<std::size_t>(index) : 0;
}

void compare_with_next(const DataRecord& record, EpochData* data) {
    constexpr double half_a_sample = 0.5e6; // microseconds times samples per second
    const double late = static_cast<double>(record.start - data->next) * record.rate;
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
    const auto [known, is_new] = index_.try_emplace(codes, channels_.size());
    if (is_new)
        channels_.push_back({std::string(network),
                             std::string(station),
                             std::string(location),
                             std::string(channel),
                             {EpochData{Limits::min(), Limits::max()}}});
    return known->second;
}

void DataFound::expect(std::string_view network, std::string_view station, std::string_view location,
                       std::string_view channel, std::int64_t start, std::int64_t end, std::int64_t place) {
    ChannelData& one = channels_[index_of(network, station, location, channel)];
    one.is_ordered = one.is_ordered && (one.data.size() == 1 || one.data.back().epoch_end <= start);
    one.data.push_back(EpochData{start, end, place});
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
    ChannelData& channel = channels_[last_];
    add_to(&channel.data[epoch_at(channel, record.start)], record);
}

} // namespace quarry
