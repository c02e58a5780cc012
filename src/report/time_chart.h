// SPDX-License-Identifier: Apache-2.0
// A chart of what lies when, as SVG: a row for each label with bars over an axis of time. It is readable in
// light and in dark surroundings, without colours too, and of a size that grows with rows and pixels only:
// what is closer than a pixel is drawn as one.
//
//     TimeChart chart(words, span, {"XX.DEM1..BHZ"}, [&](std::size_t) { return row; }, 4800);
//     for (std::size_t page = 0; page < chart.pages(); ++page)
//         file << chart.page(page);
#pragma once

#include "quarry/time.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace quarry {

class SvgWriter;

struct ChartRow {
    // Each in order of the starts.
    std::vector<TimeSpan> bars;
    std::vector<TimeSpan> marks; // on the bars
    std::vector<TimeSpan> lines; // below the bars
    std::string note;            // what is shown where a pointer rests on the row
};

// Texts are UTF-8. Those of the legend say what is drawn; what has no text is not in it.
struct ChartWords {
    std::string title, subtitle;
    std::string bar, mark, gap, line; // gap: one that is too short to be left open
};

class TimeChart {
public:
    // Rows are asked for when their page is made.
    using RowOf = std::function<ChartRow(std::size_t number)>;

    // A page is at most so many pixels high, if that leaves room for a row.
    TimeChart(ChartWords words, const TimeSpan& span, std::vector<std::string> labels, RowOf row_of,
              std::size_t height);

    std::size_t pages() const { return pages_; }
    std::string page(std::size_t number) const; // from 0

private:
    struct Area;
    void write_head(std::size_t number, const Area& area, SvgWriter* svg) const;
    void write_legend(SvgWriter* svg) const;
    void write_axis(const Area& area, SvgWriter* svg) const;
    void write_row(std::size_t number, double top, const Area& area, SvgWriter* svg) const;

    ChartWords words_;
    TimeSpan span_;
    std::vector<std::string> labels_;
    RowOf row_of_;
    double left_; // of the axis
    double room_; // for the rows of a page, in pixels
    std::size_t rows_a_page_;
    std::size_t pages_;
};

} // namespace quarry
