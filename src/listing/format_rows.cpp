// SPDX-License-Identifier: Apache-2.0
#include "listing/format_rows.h"

#include "listing/seed_utl.h"
#include "platform/memory.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <utility>

namespace quarry {

namespace {

constexpr std::size_t sta_length = 5;
constexpr std::size_t chan_length = 3;
constexpr std::uint32_t no_row = UINT32_MAX;
constexpr std::uint32_t not_cut = UINT32_MAX;
constexpr std::int64_t most_rows = INT32_MAX; // of which there may be twice as many steps
constexpr double for_ever = std::numeric_limits<double>::infinity();
constexpr int answer_bits = 12; // of the number of answers that are remembered

double epoch_of(std::string_view time) {
    double epoch;
    seed2epoch(time, &epoch);
    return epoch;
}

// The times that a row describes, as a span whose end is outside.
struct Span {
    double start;
    double end;
    std::uint32_t row;
};

double moment_after(double end) {
    return end < 0 ? for_ever : std::nextafter(end, for_ever);
}

bool is_later_row(const Span& a, const Span& b) {
    return a.row > b.row;
}

// Passes the steps of the spans to `add_step (start, row)`. The spans are ordered by their start; their
// places are used for a heap of those that have begun and not been seen to end, the first row on top.
template <class AddStep>
void sweep(std::vector<Span>& spans, AddStep add_step) {
    const auto heap = spans.begin();
    auto heap_end = heap;
    const auto end_spans_until = [&](double time) {
        while (heap_end != heap && heap->end <= time) {
            const double end = heap->end;
            while (heap_end != heap && heap->end <= end)
                std::pop_heap(heap, heap_end--, is_later_row);
            add_step(end, heap_end != heap ? heap->row : no_row);
        }
    };
    for (auto next = spans.begin(); next != spans.end(); ++next) {
        const Span span = *next;
        end_spans_until(span.start);
        if (heap_end == heap || span.row < heap->row)
            add_step(span.start, span.row);
        *heap_end++ = span;
        std::push_heap(heap, heap_end, is_later_row);
    }
    end_spans_until(std::numeric_limits<double>::max());
}

} // namespace

std::string_view FormatRows::find(StorePointer database, std::string_view sta, std::string_view chan,
                                  double epoch) {
    if (count_ == 0)
        read_table(database);
    if (count_ == 0)
        return "";
    const std::optional<Code> code = code_of(sta, chan);
    if (code == last_.code && last_.start <= epoch && (epoch <= last_.end || last_.end < 0))
        return last_.format;
    if (code && answer_of(*code)->holds(*code, epoch)) {
        last_ = answer_of(*code)->row;
        return last_.format;
    }
    const Step step = code && epoch == epoch ? step_at(*code, epoch) : Step{0.0, 0.0, no_row};
    const std::int64_t looked_at = step.row != no_row ? step.row : count_ - 1;
    if (looked_at != last_.number)
        last_ = read_row(looked_at);
    if (step.row == no_row)
        return "";
    *answer_of(*code) = {step.start, step.end, last_};
    return last_.format;
}

// Where the last answer to the channel is, or that to another one.
FormatRows::Answer* FormatRows::answer_of(Code code) {
    return &answers_[code * 0x9E3779B97F4A7C15 >> (64 - answer_bits)]; // the upper bits depend on all others
}

// Texts that no row holds have no code.
std::optional<FormatRows::Code> FormatRows::code_of(std::string_view sta, std::string_view chan) {
    std::array<char, sta_length + chan_length> code{};
    static_assert(sizeof code == sizeof(Code));
    if (sta.size() > sta_length || chan.size() > chan_length)
        return std::nullopt;
    std::copy(sta.begin(), sta.end(), code.begin());
    std::copy(chan.begin(), chan.end(), code.begin() + sta_length);
    return std::bit_cast<Code>(code);
}

void FormatRows::read_table(StorePointer database) {
    table_ = store_lookup(database, "seedformat");
    count_ = store_query(table_, StoreQuery::record_count);
    if (count_ > most_rows)
        out_of_memory(QUARRY_SITE("format_rows"), static_cast<unsigned long>(count_), "rows");
    if (count_ == 0)
        return;
    read_row(0); // reports the columns that are missing
    group_by_channel();
    answers_.resize(std::size_t{1} << answer_bits);
}

void FormatRows::group_by_channel() {
    std::vector<std::pair<Code, std::uint32_t>> coded(static_cast<std::size_t>(count_));
    StorePointer at = table_;
    for (auto& [code, row] : coded) {
        char sta[sta_length + 1];
        char chan[chan_length + 1];
        store_get_fields(at, {{"sta", sta}, {"chan", chan}});
        code = *code_of(member_text(sta), member_text(chan));
        row = static_cast<std::uint32_t>(at.record++);
    }
    std::sort(coded.begin(), coded.end());
    rows_.reserve(coded.size());
    for (const auto& [code, row] : coded) {
        if (channels_.empty() || channels_.back().code != code)
            channels_.push_back({code, static_cast<std::uint32_t>(rows_.size()), 0, not_cut, 0});
        channels_.back().rows += 1;
        rows_.push_back(row);
    }
}

FormatRows::Row FormatRows::read_row(std::int64_t number) const {
    StorePointer at = table_;
    at.record = number;
    Row row;
    row.number = number;
    char sta[sta_length + 1];
    char chan[chan_length + 1];
    char start[23];
    char end[23];
    store_get_fields(
        at,
        {{"sta", sta}, {"chan", chan}, {"seedstart", start}, {"seedend", end}, {"seedformat", row.format}});
    row.code = *code_of(member_text(sta), member_text(chan));
    row.start = epoch_of(member_text(start));
    row.end = epoch_of(member_text(end));
    return row;
}

// The step with the first row of the table that describes such a record.
FormatRows::Step FormatRows::step_at(Code code, double epoch) {
    const auto channel =
        std::lower_bound(channels_.begin(), channels_.end(), code,
                         [](const Channel& element, Code sought) { return element.code < sought; });
    if (channel == channels_.end() || channel->code != code)
        return {0.0, 0.0, no_row};
    if (channel->first_step == not_cut)
        cut_into_steps(&*channel);
    const auto first = step_starts_.begin() + channel->first_step;
    const auto last = first + channel->steps;
    const auto after = std::upper_bound(first, last, epoch);
    if (after == first)
        return {0.0, 0.0, no_row};
    // NOLINTNEXTLINE(*-narrowing-conversions): takes the constant for another type
    return {after[-1], after != last ? *after : for_ever,
            step_rows_[static_cast<std::size_t>(after - step_starts_.begin()) - 1]};
}

void FormatRows::cut_into_steps(Channel* channel) {
    std::vector<Span> spans;
    spans.reserve(channel->rows);
    for (std::uint32_t i = 0; i < channel->rows; ++i) {
        const std::uint32_t number = rows_[channel->first_row + i];
        const Row row = read_row(number);
        if (row.start < moment_after(row.end)) // false if one of them is not a number
            spans.push_back({row.start, moment_after(row.end), number});
    }
    std::sort(spans.begin(), spans.end(), [](const Span& a, const Span& b) { return a.start < b.start; });
    channel->first_step = static_cast<std::uint32_t>(step_starts_.size());
    sweep(spans, [this](double start, std::uint32_t row) { add_step(start, row); });
    channel->steps = static_cast<std::uint32_t>(step_starts_.size()) - channel->first_step;
}

void FormatRows::add_step(double start, std::uint32_t row) {
    step_starts_.push_back(start);
    step_rows_.push_back(row);
}

} // namespace quarry
