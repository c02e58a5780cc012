// SPDX-License-Identifier: Apache-2.0
// The plot of quarry coverage.

#include "commands/coverage_report.h"
#include "report/table.h"

#include <array>
#include <utility>

namespace quarry {

namespace {

// From no data to all of it.
constexpr std::array<std::string_view, 5> shades{" ", "\u2591", "\u2592", "\u2593", "\u2588"};

std::string_view sign_of(double percent, bool has_overlap) {
    if (has_overlap)
        return "X";
    const double shade = percent <= 0 ? 0 : 1 + std::min(percent, 100.0) / 100 * 3;
    return shades[static_cast<std::size_t>(shade)];
}

// A row of signs for each channel over the span of all of them, and the times at which it begins and ends.
class Plot {
public:
    Plot(const Channels& channels, const CoverageOptions& options) {
        for (const ChannelCoverage& channel : channels)
            add(ChannelReport(channel, options));
    }

    void write(std::size_t width, std::string* out) const {
        std::size_t label_width = 0;
        for (const auto& [label, report] : rows_)
            label_width = std::max(label_width, text_width(label));
        constexpr std::size_t least = 10;
        const std::size_t parts = std::max(width, label_width + 2 + least) - label_width - 2;
        for (const auto& [label, report] : rows_) {
            out->append(label).append(label_width + 1 - text_width(label), ' ').append("|");
            report.for_each_part(span_, parts, [out](double percent, bool has_overlap) {
                *out += sign_of(percent, has_overlap);
            });
            *out += '\n';
        }
        if (rows_.empty())
            *out += "none\n";
        else
            write_ends(label_width + 2, parts, out);
    }

private:
    void add(ChannelReport report) {
        if (!report.has_times())
            return;
        const TimeSpan span = report.span();
        span_ =
            rows_.empty() ? span : TimeSpan{std::min(span_.start, span.start), std::max(span_.end, span.end)};
        rows_.emplace_back(shown_text(code_text(report.data())), std::move(report));
    }

    void write_ends(std::size_t indent, std::size_t parts, std::string* out) const {
        for (const std::size_t size : {std::size_t{19}, std::size_t{10}}) { // to the second, to the day
            if (2 * size >= parts)
                continue;
            out->append(indent, ' ').append(time_text(span_.start), 0, size);
            out->append(parts - 2 * size, ' ').append(time_text(span_.end), 0, size).append("\n");
            return;
        }
    }

    std::vector<std::pair<std::string, ChannelReport>> rows_ = {};
    TimeSpan span_ = {};
};

std::size_t plot_width() {
    constexpr std::size_t usual = 80;
    const std::size_t width = terminal_width();
    return width > 0 ? width : usual;
}

} // namespace

void write_plot(const Channels& channels, const CoverageOptions& options, OrderedOutput::Part* out) {
    Plot(channels, options).write(plot_width(), &out->text());
}

} // namespace quarry
