// SPDX-License-Identifier: Apache-2.0
// The tables of quarry coverage.

#include "commands/coverage_report.h"
#include "report/table.h"

#include <array>

namespace quarry {

namespace {

// Seconds, exact.
std::string seconds_cell(std::int64_t microseconds) {
    std::string text = std::to_string(microseconds);
    text.insert(0, text.size() < 7 ? 7 - text.size() : 0, '0');
    text.insert(text.size() - 6, ".");
    text.erase(text.find_last_not_of('0') + 1);
    return text.ends_with('.') ? text.substr(0, text.size() - 1) : text;
}

constexpr auto number = Column::Kind::number;
constexpr auto time = Column::Kind::time;
constexpr auto channel_titles = std::to_array<Column>({
    {"channel", 0},
    {"first", 1, time},
    {"last", 2, time},
    {"segments", 5, number},
    {"gaps", 4, number},
    {"overlaps", 6, number},
    {"duplicates", 7, number},
    {"longest gap", 8, number},
    {"percent", 3, number},
});
constexpr auto break_titles = std::to_array<Column>({
    {"channel", 0},
    {"kind", 1},
    {"start", 2, time},
    {"end", 4, time},
    {"seconds", 3, number},
    {"samples", 5, number},
});
constexpr auto day_titles = std::to_array<Column>({{"channel", 0}, {"day", 1}, {"percent", 2, number}});

void add_channel(const ChannelReport& report, const Table::Take& take) {
    const ChannelCoverage& coverage = report.data();
    take({code_text(coverage), time_text(coverage.first), time_text(coverage.last),
          std::to_string(coverage.segments.size()), std::to_string(report.count(Break::Kind::gap)),
          std::to_string(report.count(Break::Kind::overlap)), std::to_string(coverage.duplicates),
          report.longest_gap() > 0 ? seconds_cell(report.longest_gap()) : "",
          report.has_times() ? percent_text(report.percent()) : ""});
}

void add_breaks(const ChannelReport& report, const Table::Take& take) {
    for (const Break& one : report.data().breaks)
        take({code_text(report.data()), std::string(name_of(one.kind)), time_text(one.start),
              time_text(one.end), seconds_cell(one.end - one.start),
              std::to_string(static_cast<std::int64_t>(one.samples))});
}

void add_days(const ChannelReport& report, const Table::Take& take) {
    report.for_each_day([&](std::int64_t start, double percent) {
        take({code_text(report.data()), day_text(start), percent_text(percent)});
    });
}

struct Section {
    std::string_view title;
    std::span<const Column> columns;
    void (*add)(const ChannelReport& report, const Table::Take& take);
};

void write_section(const Section& section, const Channels& channels, const CoverageOptions& options,
                   OrderedOutput::Part* out) {
    const Table table(
        section.columns,
        [&](const Table::Take& take) {
            for (const ChannelCoverage& channel : channels)
                section.add(ChannelReport(channel, options), take);
        },
        [out] { out->flush_if_large(); });
    if (options.csv)
        return table.write_csv(&out->text());
    const std::string front = section.title.empty() ? "" : "\n" + std::string(section.title) + "\n";
    if (!table.write_text(front, terminal_width(), &out->text()))
        out->write(front + "none\n");
}

} // namespace

void write_tables(const Channels& channels, const CoverageOptions& options, OrderedOutput::Part* out) {
    if (!options.csv || !(options.gaps || options.days))
        write_section({"", channel_titles, add_channel}, channels, options, out);
    if (options.gaps)
        write_section({"gaps and overlaps", break_titles, add_breaks}, channels, options, out);
    if (options.days)
        write_section({"days", day_titles, add_days}, channels, options, out);
}

} // namespace quarry
