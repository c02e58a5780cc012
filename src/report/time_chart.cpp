// SPDX-License-Identifier: Apache-2.0
#include "report/time_chart.h"

#include "report/svg_writer.h"
#include "report/table.h"
#include "report/time_ticks.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quarry {

namespace {

// All lengths are pixels.
constexpr double width = 1200;
constexpr double head = 96; // above the rows, with the axis
constexpr double foot = 48; // below them
constexpr double margin = 16;
constexpr double right = width - 56; // end of the axis, with room for half a text
constexpr double least_pitch = 14;   // of rows
constexpr double most_pitch = 26;
constexpr double high = 500; // what is higher has texts below the rows, too
constexpr double least_mark = 3;
constexpr double screen = 900;         // rows become lower before they take more
constexpr double character = 7.3;      // of a label, in a font of 12
constexpr std::size_t most_label = 40; // characters
constexpr std::size_t most_title = 64;
constexpr std::size_t most_ticks = 9;

// Blue and orange are told apart by everyone; marks are also higher than bars, gaps are cut into them.
constexpr std::string_view style = R"(
text { font-family: "DejaVu Sans", Verdana, sans-serif; font-size: 12px; fill: #222222 }
.title { font-size: 17px; font-weight: bold }
.label { font-family: "DejaVu Sans Mono", Menlo, Consolas, monospace }
.tick { text-anchor: middle }
.low { font-size: 11px }
.paper, .gap { fill: #ffffff }
.band { fill: #f2f2f2 }
.grid { fill: none; stroke: #cccccc }
.bar { fill: #0072b2 }
.mark { fill: #e66100 }
.line { fill: #555555 }
@media (prefers-color-scheme: dark) {
text { fill: #e4e4e4 }
.paper, .gap { fill: #161616 }
.band { fill: #222222 }
.grid { stroke: #444444 }
.bar { fill: #56b4e9 }
.mark { fill: #ffb000 }
.line { fill: #aaaaaa }
}
)";

// A part of the axis.
struct Stretch {
    double from, to;
};

// A stretch is at least `least` wide, and joins the last one if less than a pixel lies between them.
void add_stretch(Stretch stretch, double least, std::vector<Stretch>* stretches) {
    stretch.from = std::min(stretch.from, right - least);
    stretch.to = std::max(stretch.to, stretch.from + least);
    if (!stretches->empty() && stretch.from < stretches->back().to + 1)
        stretches->back().to = std::max(stretches->back().to, stretch.to);
    else
        stretches->push_back(stretch);
}

// Of so many rows in a room. Rows become lower before they take more than a screen.
double pitch_of(std::size_t rows, double room) {
    return std::floor(
        std::clamp(std::min(screen, room) / static_cast<double>(rows), least_pitch, most_pitch));
}

std::string paged(const std::string& text, std::size_t number, std::size_t pages) {
    return pages == 1 ? text : text + ", page " + std::to_string(number + 1) + " of " + std::to_string(pages);
}

} // namespace

// The rows of a page, and the axis.
struct TimeChart::Area {
    TimeSpan span;
    double left;
    std::size_t first, rows;
    double room;
    double pitch = pitch_of(rows, room);
    double bottom = head + pitch * static_cast<double>(rows);

    double place_of(std::int64_t time) const {
        const double whole = static_cast<double>(span.end - span.start);
        return left + (right - left) * static_cast<double>(time - span.start) / whole;
    }

    bool is_high() const { return bottom > high; }
    double height() const { return bottom + (is_high() ? foot : margin); }

    // Visits what of the times lies on the axis.
    template <class Visit>
    void for_each_stretch(const std::vector<TimeSpan>& times, Visit visit) const {
        for (const TimeSpan& time : times)
            if (time.start < span.end && time.end > span.start)
                visit(Stretch{place_of(std::max(time.start, span.start)),
                              place_of(std::min(time.end, span.end))});
    }
};

namespace {

void write_stretches(std::string_view kind, const std::vector<Stretch>& stretches, double y, double height,
                     SvgWriter* svg) {
    std::string path;
    for (const Stretch& one : stretches)
        add_rectangle(one.from, y, one.to - one.from, height, &path);
    if (!path.empty())
        svg->element("path", {{"class", kind}, {"d", path}});
}

// Bars, and the gaps between those that were joined.
template <class Area>
void write_bars(const std::vector<TimeSpan>& times, double top, const Area& area, SvgWriter* svg) {
    std::vector<Stretch> bars;
    std::vector<Stretch> gaps;
    double reached = area.left;
    area.for_each_stretch(times, [&](const Stretch& one) {
        const std::size_t before = bars.size();
        add_stretch(one, 1, &bars);
        if (bars.size() == before)
            add_stretch({reached, one.from}, 1, &gaps);
        reached = one.to;
    });
    write_stretches("bar", bars, top + 0.2 * area.pitch, 0.48 * area.pitch, svg);
    write_stretches("gap", gaps, top + 0.44 * area.pitch, 0.24 * area.pitch, svg);
}

template <class Area>
void write_marks(const std::vector<TimeSpan>& times, double top, const Area& area, SvgWriter* svg) {
    std::vector<Stretch> marks;
    area.for_each_stretch(times, [&](const Stretch& one) { add_stretch(one, least_mark, &marks); });
    write_stretches("mark", marks, top + 0.08 * area.pitch, 0.36 * area.pitch, svg);
}

// Lines, each of which begins with a stroke.
template <class Area>
void write_lines(const std::vector<TimeSpan>& times, double top, const Area& area, SvgWriter* svg) {
    std::vector<Stretch> lines;
    std::vector<Stretch> strokes;
    area.for_each_stretch(times, [&](const Stretch& one) {
        add_stretch(one, 1, &lines);
        if (one.from > area.left)
            add_stretch({one.from, one.from}, 1, &strokes);
    });
    write_stretches("line", lines, top + 0.8 * area.pitch, 1.5, svg);
    write_stretches("line", strokes, top + 0.8 * area.pitch - 1.5, 4, svg);
}

// The context beyond the text, seen from the axis.
void write_tick(const TimeTick& tick, double x, double y, double down, SvgWriter* svg) {
    svg->text_element("text", {{"class", "tick"}, {"x", x}, {"y", y}}, tick.text);
    if (!tick.context.empty())
        svg->text_element("text", {{"class", "tick"}, {"x", x}, {"y", y + down}}, tick.context);
}

} // namespace

TimeChart::TimeChart(ChartWords words, const TimeSpan& span, std::vector<std::string> labels, RowOf row_of,
                     std::size_t height)
    : words_(std::move(words)), span_(span), labels_(std::move(labels)), row_of_(std::move(row_of)) {
    std::size_t widest = 0;
    for (std::string& label : labels_) {
        label = cut_text(label, most_label);
        widest = std::max(widest, text_width(label));
    }
    left_ = 2 * margin + character * static_cast<double>(widest);
    room_ = std::max(static_cast<double>(height) - head - foot, least_pitch);
    const auto most_rows = static_cast<std::size_t>(room_ / least_pitch);
    const std::size_t rows = std::max<std::size_t>(labels_.size(), 1);
    pages_ = (rows + most_rows - 1) / most_rows;
    rows_a_page_ = (rows + pages_ - 1) / pages_;
}

std::string TimeChart::page(std::size_t number) const {
    const std::size_t first = number * rows_a_page_;
    const Area area{span_, left_, first, std::min(labels_.size() - first, rows_a_page_), room_};
    const double height = area.height();
    const std::string box =
        "0 0 " + std::to_string(static_cast<int>(width)) + " " + std::to_string(static_cast<int>(height));
    std::string text;
    SvgWriter svg(&text);
    svg.begin("svg", {{"xmlns", "http://www.w3.org/2000/svg"},
                      {"width", width},
                      {"height", height},
                      {"viewBox", box},
                      {"role", "img"}});
    write_head(number, area, &svg);
    if (area.rows > 0)
        write_axis(area, &svg);
    for (std::size_t i = 0; i < area.rows; ++i)
        write_row(first + i, head + area.pitch * static_cast<double>(i), area, &svg);
    svg.end("svg");
    return text;
}

void TimeChart::write_head(std::size_t number, const Area& area, SvgWriter* svg) const {
    const std::string title = paged(words_.title, number, pages_);
    svg->text_element("title", {}, title);
    svg->raw("<style>");
    svg->raw(style);
    svg->raw("</style>\n");
    svg->element("rect", {{"class", "paper"}, {"width", width}, {"height", area.height()}});
    svg->text_element("text", {{"class", "title"}, {"x", margin}, {"y", 26.0}}, cut_text(title, most_title));
    svg->text_element("text", {{"class", "span"}, {"x", margin}, {"y", 46.0}}, words_.subtitle);
    write_legend(svg);
}

// A short bar with each thing on it, and its name.
void TimeChart::write_legend(SvgWriter* svg) const {
    constexpr double wide = 24;
    constexpr double letter = 7;
    constexpr double y = 38;
    double x = width - margin;
    const auto write = [&](const std::string& word, std::string_view kind, const Stretch& at, double down,
                           double tall) {
        if (word.empty())
            return;
        x -= letter * static_cast<double>(word.size()) + 2 * margin;
        svg->text_element("text", {{"x", x}, {"y", y + 8}}, word);
        x -= wide + 6;
        if (kind == "mark" || kind == "gap")
            write_stretches("bar", {{x, x + wide}}, y, 8, svg);
        write_stretches(kind, {{x + at.from, x + at.to}}, y + down, tall, svg);
    };
    write(words_.line, "line", {0, wide}, 4, 1.5);
    write(words_.gap, "gap", {wide / 2, wide / 2 + 1}, 4, 4);
    write(words_.mark, "mark", {8, 16}, -2, 6);
    write(words_.bar, "bar", {0, wide}, 0, 8);
}

// Texts above the rows, and below many rows once more.
void TimeChart::write_axis(const Area& area, SvgWriter* svg) const {
    std::string bands;
    for (std::size_t i = 1; i < area.rows; i += 2)
        add_rectangle(0, head + area.pitch * static_cast<double>(i), width, area.pitch, &bands);
    std::string grid;
    add_rectangle(left_, head, right - left_, area.bottom - head, &grid);
    const std::vector<TimeTick> ticks = time_ticks(span_, most_ticks);
    for (const TimeTick& tick : ticks)
        add_stroke(area.place_of(tick.time), head - 4, area.bottom - head + 4, &grid);
    svg->element("path", {{"class", "band"}, {"d", bands}});
    svg->element("path", {{"class", "grid"}, {"d", grid}});
    for (const TimeTick& tick : ticks) {
        write_tick(tick, area.place_of(tick.time), head - 8, -14, svg);
        if (area.is_high())
            write_tick(tick, area.place_of(tick.time), area.bottom + 16, 14, svg);
    }
}

void TimeChart::write_row(std::size_t number, double top, const Area& area, SvgWriter* svg) const {
    const ChartRow row = row_of_(number);
    svg->begin("g");
    svg->text_element("title", {}, labels_[number] + ": " + row.note);
    svg->text_element(
        "text",
        {{"class", area.pitch < 18 ? "label low" : "label"}, {"x", margin}, {"y", top + area.pitch / 2 + 4}},
        labels_[number]);
    write_bars(row.bars, top, area, svg);
    write_marks(row.marks, top, area, svg);
    write_lines(row.lines, top, area, svg);
    svg->end("g");
}

} // namespace quarry
