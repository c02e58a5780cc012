// SPDX-License-Identifier: Apache-2.0
#include "volume/record_batch.h"

namespace quarry {

void RecordBatch::add(const DataRecord& record) {
    constexpr std::size_t usual_records = 256;
    if (entries_.empty())
        entries_.reserve(usual_records);
    entries_.push_back({record, bytes_.size(), blockettes_.size()});
    bytes_.insert(bytes_.end(), record.bytes.begin(), record.bytes.end());
    blockettes_.insert(blockettes_.end(), record.blockettes.begin(), record.blockettes.end());
}

DataRecord RecordBatch::at(std::size_t number) const {
    const Entry& entry = entries_[number];
    DataRecord record = entry.record;
    const auto bytes = std::span(bytes_).subspan(entry.bytes, record.bytes.size());
    const auto moved = [&](std::string_view& code) {
        if (!code.empty())
            code = {bytes.data() + (code.data() - record.bytes.data()), code.size()};
    };
    moved(record.network);
    moved(record.station);
    moved(record.location);
    moved(record.channel);
    record.payload = bytes.last(record.payload.size());
    record.blockettes = std::span(blockettes_).subspan(entry.blockettes, record.blockettes.size());
    record.bytes = bytes;
    return record;
}

} // namespace quarry
