// SPDX-License-Identifier: Apache-2.0
// The picture of quarry coverage.

#include "commands/coverage_report.h"
#include "report/table.h"
#include "report/time_chart.h"

#include <cerrno>
#include <fstream>
#include <set>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace quarry {

namespace {

using Limits = Selection::Limits;

std::string counted(std::size_t count, std::string_view what) {
    return std::to_string(count) + " " + std::string(what) + (count == 1 ? "" : "s");
}

// A channel that has data, or is described in headers, or both.
struct PictureRow {
    ChannelCodes codes;
    const ChannelCoverage* data;
    const EpochSpans* epochs;
};

class Picture {
public:
    Picture(const Channels& channels, const ChannelEpochs& epochs, const CoverageOptions& options)
        : options_(options) {
        std::map<ChannelCodes, PictureRow> rows;
        const auto row_of = [&rows](const ChannelCodes& codes) -> PictureRow& {
            return rows.try_emplace(codes, PictureRow{codes, nullptr, nullptr}).first->second;
        };
        for (const ChannelCoverage& one : channels)
            row_of({one.network, one.station, one.location, one.channel}).data = &one;
        for (const auto& [codes, spans] : epochs)
            row_of(codes).epochs = &spans;
        for (const auto& [codes, row] : rows)
            rows_.push_back(row);
        find_span();
    }

    TimeChart chart() const {
        std::vector<std::string> labels;
        for (const PictureRow& row : rows_)
            labels.push_back(label_of(row));
        return {words(), span_, labels, [this](std::size_t number) { return drawn(rows_[number]); },
                options_.height};
    }

private:
    static std::string label_of(const PictureRow& row) {
        const auto& [network, station, location, channel] = row.codes;
        return shown_text(network + "." + station + "." + location + "." + channel);
    }

    // --- the span: that of the data; without data that of what else is known

    void find_span() {
        for (const PictureRow& row : rows_)
            if (row.data != nullptr)
                widen_by_data(*row.data);
        if (!has_span())
            for (const PictureRow& row : rows_)
                widen_by_others(row);
        limit_span(options_.selection.from, options_.selection.to);
        if (!has_span())
            rows_.clear();
    }

    bool has_span() const { return span_.start < span_.end; }

    void widen_by(std::int64_t time) {
        if (time > Limits::min() && time < Limits::max())
            span_ = {std::min(span_.start, time), std::max(span_.end, time)};
    }

    void widen_by_data(const ChannelCoverage& data) {
        const ChannelReport report(data, options_);
        if (!report.has_times())
            return;
        widen_by(report.span().start);
        widen_by(report.span().end);
    }

    void widen_by_others(const PictureRow& row) {
        if (row.data != nullptr) {
            widen_by(row.data->first);
            widen_by(row.data->last + 1);
        }
        for (const auto& [start, end] : row.epochs != nullptr ? *row.epochs : EpochSpans()) {
            widen_by(start);
            widen_by(end);
        }
    }

    // Where only one end of the axis is known, the axis is a day long.
    void limit_span(std::int64_t from, std::int64_t to) {
        constexpr std::int64_t day = 86'400'000'000;
        if (from > Limits::min())
            span_ = {from, span_.end > from ? span_.end : from + day};
        if (to < Limits::max())
            span_ = {from > Limits::min() || span_.start < to ? span_.start : to - day, to};
        if (span_.start == span_.end)
            span_.end += day;
    }

    // --- texts

    std::string title() const {
        std::set<std::pair<std::string, std::string>> stations;
        for (const PictureRow& row : rows_)
            stations.emplace(row.codes[0], row.codes[1]);
        const std::string of = stations.size() == 1
                                   ? shown_text(stations.begin()->first + "." + stations.begin()->second)
                                   : counted(stations.size(), "station");
        return "Data of " + of + ", " + counted(rows_.size(), "channel");
    }

    ChartWords words() const {
        const bool has_epochs = std::any_of(rows_.begin(), rows_.end(),
                                            [](const PictureRow& row) { return row.epochs != nullptr; });
        return {title(),
                rows_.empty() ? "none" : time_text(span_.start) + " to " + time_text(span_.end),
                "data",
                "data overlap",
                "gap too short to be left open",
                has_epochs ? "epoch of the headers" : ""};
    }

    // --- rows

    ChartRow drawn(const PictureRow& row) const {
        ChartRow drawn;
        drawn.note = "no data";
        if (row.data != nullptr)
            draw_data(*row.data, &drawn);
        if (row.epochs != nullptr)
            for (const auto& [start, end] : *row.epochs)
                drawn.lines.push_back({start, end});
        return drawn;
    }

    void draw_data(const ChannelCoverage& data, ChartRow* drawn) const {
        const ChannelReport report(data, options_);
        drawn->bars = report.times();
        for (const Break& one : data.breaks)
            if (one.kind == Break::Kind::overlap)
                drawn->marks.push_back({one.start, one.end});
        drawn->note = counted(data.segments.size(), "segment") + ", " +
                      counted(static_cast<std::size_t>(report.count(Break::Kind::gap)), "gap") + ", " +
                      counted(drawn->marks.size(), "overlap") +
                      (report.has_times() ? ", " + percent_text(report.percent()) + " %" : "");
    }

    const CoverageOptions& options_;
    std::vector<PictureRow> rows_ = {};
    TimeSpan span_ = {Limits::max(), Limits::min()};
};

// "cover.svg", "cover-2.svg".
std::string name_of_page(const std::string& file, std::size_t number) {
    return number == 0 ? file : file.substr(0, file.rfind('.')) + "-" + std::to_string(number + 1) + ".svg";
}

void write_file(const std::string& name, std::string_view content) {
    errno = 0;
    std::ofstream file(name, std::ios::binary);
    file << content;
    file.close();
    if (!file)
        throw std::runtime_error(name + ": " + std::generic_category().message(errno));
}

} // namespace

void write_picture(const Channels& channels, const ChannelEpochs& epochs, const CoverageOptions& options) {
    const Picture picture(channels, epochs, options);
    const TimeChart chart = picture.chart();
    for (std::size_t page = 0; page < chart.pages(); ++page)
        write_file(name_of_page(options.svg, page), chart.page(page));
}

} // namespace quarry
