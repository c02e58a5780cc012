// SPDX-License-Identifier: Apache-2.0
// The data formats that a database gives: the rows of its table seedformat, looked up by channel and time.
#pragma once

#include "platform/store.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <string_view>
#include <vector>

namespace quarry {

// The table is read when it is first needed; as long as it has no rows, it is read again at the next look-up.
//
// A row describes a record if it has the record's station and channel, and if its times, both included, hold
// the record's start; an end before 1970 counts as open. The row looked at last is tried first (after a
// search without success that is the table's last row), then all rows from the table's first one on.
//
// A search takes time in proportion to the logarithm of the number of rows: at the first look-up of a channel
// its time is cut into steps, each with the first row that holds it. Records of a few thousand channels in
// turn need no search: the answer for each channel is remembered.
class FormatRows {
public:
    // The format of the row that describes such a record, empty if none does. Valid until the next call.
    std::string_view find(StorePointer database, std::string_view sta, std::string_view chan, double epoch);

private:
    // A station code, filled up to 5 characters, and a channel code, up to 3.
    using Code = std::uint64_t;

    struct Row {
        std::int64_t number = -1;
        Code code = 0;
        double start = 0.0; // epoch seconds
        double end = 0.0;
        char format[51] = "";
    };

    struct Channel {
        Code code;
        std::uint32_t first_row; // in rows_
        std::uint32_t rows;
        std::uint32_t first_step; // in step_starts_ and step_rows_; not_cut until the steps are made
        std::uint32_t steps;
    };

    // Times of a channel, the end outside, and the first row that holds them.
    struct Step {
        double start;
        double end;
        std::uint32_t row; // no_row if there is none
    };

    struct Answer {
        double start = 0.0;
        double end = 0.0;
        Row row;

        bool holds(Code code, double epoch) const {
            return row.code == code && start <= epoch && epoch < end;
        }
    };

    static std::optional<Code> code_of(std::string_view sta, std::string_view chan);
    void read_table(StorePointer database);
    void group_by_channel();
    Row read_row(std::int64_t number) const;
    Answer* answer_of(Code code);
    Step step_at(Code code, double epoch);
    void cut_into_steps(Channel* channel);
    void add_step(double start, std::uint32_t row);

    StorePointer table_ = store_invalid();
    std::int64_t count_ = 0;
    Row last_;
    std::vector<Answer> answers_;         // the last one to each channel, unless another took its place
    std::deque<Channel> channels_;        // ordered by code
    std::vector<std::uint32_t> rows_;     // row numbers, channel by channel, in table order
    std::deque<double> step_starts_;      // epoch seconds, channel by channel, ascending
    std::deque<std::uint32_t> step_rows_; // the row of each step; no_row between the rows' times
};

} // namespace quarry
