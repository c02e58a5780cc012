// SPDX-License-Identifier: Apache-2.0
// Copies of data records, which outlive the reader that gave them, so that another thread can work on them.
#pragma once

#include "quarry/volume.h"

#include <cstddef>
#include <vector>

namespace quarry {

class RecordBatch {
public:
    // With room for about that many bytes of records.
    explicit RecordBatch(std::size_t bytes) { bytes_.reserve(bytes); }

    void add(const DataRecord& record);

    std::size_t size() const { return entries_.size(); }
    std::size_t bytes() const { return bytes_.size(); }

    // The record of that number with views into the batch; valid until the next add.
    DataRecord at(std::size_t number) const;

private:
    struct Entry {
        DataRecord record; // its views still point into the original; only their offsets are used
        std::size_t bytes; // where its bytes begin
        std::size_t blockettes;
    };
    std::vector<Entry> entries_;
    std::vector<char> bytes_;
    std::vector<DataBlocketteExtent> blockettes_;
};

} // namespace quarry
