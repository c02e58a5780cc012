// quarry coverage: which times the data of each channel cover, over all volumes together.

#include "quarry/coverage.h"

#include "commands/command_line.h"
#include "commands/each_volume.h"
#include "commands/field_damage.h"
#include "commands/json_lines.h"
#include "commands/selected.h"
#include "quarry/time.h"
#include "report/table.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <mutex>
#include <stdexcept>
#include <unistd.h>

namespace quarry {

namespace {

constexpr std::int64_t second = 1'000'000;
constexpr std::int64_t day = 86'400 * second;

// --- reading -------------------------------------------------------------------------------------------

// What the volumes add to the coverage, from any thread.
class SharedCoverage {
public:
    explicit SharedCoverage(const Tolerance& tolerance) : coverage_(tolerance) {}

    void add(std::vector<Coverage::Entry>* entries) {
        const std::lock_guard lock(mutex_);
        for (const Coverage::Entry& entry : *entries)
            coverage_.add(entry);
        entries->clear();
    }

    std::vector<ChannelCoverage> finish() { return coverage_.finish(); }

private:
    std::mutex mutex_ = {};
    Coverage coverage_;
};

class VolumeEntries {
public:
    VolumeEntries(const Selection& selection, VolumeReader* reader, SharedCoverage* coverage)
        : selection_(selection), reader_(*reader), coverage_(*coverage) {
        entries_.reserve(most_entries);
    }

    // Returns true if the volume is sound.
    bool add() {
        while (const Item* item = reader_.next())
            std::visit([this](const auto& one) { take(one); }, *item);
        coverage_.add(&entries_);
        return is_sound_;
    }

private:
    static constexpr std::size_t most_entries = 512;

    void take(const LogicalHeader&) {}
    void take(const Padding&) {}
    void take(const Damage&) { is_sound_ = false; }

    void take(const ControlBlockette& blockette) {
        decode_blockette(blockette.type, blockette.text, std::endian::big, &fields_);
        is_sound_ = is_sound_ && fields_.problems.empty();
    }

    void take(const DataRecord& record) {
        if (!takes(selection_, record))
            return;
        for_each_damage(reader_.name(), record, &fields_, [this](const Damage& damage) { take(damage); });
        entries_.push_back(Coverage::entry_of(record));
        if (entries_.size() == most_entries)
            coverage_.add(&entries_);
    }

    const Selection& selection_;
    VolumeReader& reader_;
    SharedCoverage& coverage_;
    Fields fields_ = {};
    std::vector<Coverage::Entry> entries_ = {};
    bool is_sound_ = true;
};

// --- what is shown of a channel ------------------------------------------------------------------------

struct Shown {
    bool gaps, days, json, csv, plot;
    Tolerance tolerance;
    Selection selection;
};

// A channel with what its rows and lines need.
class ChannelReport {
public:
    ChannelReport(const ChannelCoverage& coverage, const Shown& shown)
        : data_(coverage), times_(covered_times(coverage, shown.tolerance)) {
        if (times_.empty())
            return;
        period_ = static_cast<std::int64_t>(1e6 / coverage.segments.front().rate);
        span_ = {times_.front().start, times_.back().end};
        if (shown.selection.from > Selection::Limits::min())
            span_.start = shown.selection.from;
        if (shown.selection.to < Selection::Limits::max())
            span_.end = shown.selection.to;
    }

    std::int64_t count(Break::Kind kind) const {
        return std::count_if(data_.breaks.begin(), data_.breaks.end(),
                             [kind](const Break& one) { return one.kind == kind; });
    }

    std::int64_t longest_gap() const {
        std::int64_t longest = 0;
        for (const Break& one : data_.breaks)
            if (one.kind == Break::Kind::gap)
                longest = std::max(longest, one.end - one.start);
        return longest;
    }

    // Visits the parts, so many, of a span: how much of each is covered, in percent, and whether data overlap
    // in it.
    template <class Visit>
    void for_each_part(const TimeSpan& span, std::size_t parts, Visit visit) const {
        auto time = times_.begin();
        for (std::size_t i = 0; i < parts; ++i) {
            const TimeSpan part{place_in(span, i, parts), place_in(span, i + 1, parts)};
            while (time != times_.end() && time->end <= part.start)
                ++time;
            visit(percent_of(part, time, 0), overlaps_in(part));
        }
    }

    const TimeSpan& span() const { return span_; }
    bool has_times() const { return !times_.empty() && span_.start < span_.end; }

    double percent() const { return percent_of(span_, times_.begin(), period_); }

    // Visits each day of the span with the percentage of it that is covered.
    template <class Visit>
    void for_each_day(Visit visit) const {
        if (!has_times())
            return;
        auto time = times_.begin();
        for (std::int64_t start = span_.start - (span_.start % day + day) % day;
             snapped(span_.end, start, period_) > start; start += day) {
            while (time != times_.end() && time->end <= start)
                ++time;
            visit(start, percent_of({start, start + day}, time, period_));
        }
    }

    const ChannelCoverage& data() const { return data_; }

private:
    // Data that begin less than a sample after a span does have all samples from its start on; those that end
    // so soon have none in it.
    static std::int64_t snapped(std::int64_t time, std::int64_t start, std::int64_t period) {
        return time > start && time < start + period ? start : time;
    }

    // Of which the times from that one on cover so much.
    double percent_of(const TimeSpan& span, std::vector<TimeSpan>::const_iterator one,
                      std::int64_t period) const {
        std::int64_t covered = 0;
        if (span.end <= span.start)
            return 0;
        for (; one != times_.end() && one->start < span.end; ++one) {
            const std::int64_t start = std::max(snapped(one->start, span.start, period), span.start);
            const std::int64_t end = std::min(snapped(one->end, span.start, period), span.end);
            covered += std::max<std::int64_t>(0, end - start);
        }
        return 100 * static_cast<double>(covered) / static_cast<double>(span.end - span.start);
    }

    static std::int64_t place_in(const TimeSpan& span, std::size_t part, std::size_t parts) {
        return span.start + static_cast<std::int64_t>(static_cast<double>(span.end - span.start) *
                                                      static_cast<double>(part) / static_cast<double>(parts));
    }

    bool overlaps_in(const TimeSpan& part) const {
        return std::any_of(data_.breaks.begin(), data_.breaks.end(), [&part](const Break& one) {
            return one.kind == Break::Kind::overlap && one.start < part.end && one.end > part.start;
        });
    }

    const ChannelCoverage& data_;
    std::vector<TimeSpan> times_;
    TimeSpan span_ = {};
    std::int64_t period_ = 0; // of a sample
};

// --- tables --------------------------------------------------------------------------------------------

std::string time_cell(std::int64_t time) {
    return std::string(IsoTime(time).text());
}

std::string day_text(std::int64_t time) {
    return time_cell(time).substr(0, 10);
}

// Seconds, exact.
std::string seconds_cell(std::int64_t microseconds) {
    std::string text = std::to_string(microseconds);
    text.insert(0, text.size() < 7 ? 7 - text.size() : 0, '0');
    text.insert(text.size() - 6, ".");
    text.erase(text.find_last_not_of('0') + 1);
    return text.ends_with('.') ? text.substr(0, text.size() - 1) : text;
}

// What is not whole is not shown as whole, and what is something not as nothing.
std::string percent_cell(double percent) {
    const double shown = percent > 0 && percent < 100 ? std::clamp(percent, 0.01, 99.99) : percent;
    std::array<char, 32> digits;
    return {
        digits.data(),
        std::to_chars(digits.data(), digits.data() + digits.size(), shown, std::chars_format::fixed, 2).ptr};
}

std::string code_cell(const ChannelCoverage& one) {
    return one.network + "." + one.station + "." + one.location + "." + one.channel;
}

std::string_view name_of(Break::Kind kind) {
    return kind == Break::Kind::gap ? "gap" : "overlap";
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
    take({code_cell(coverage), time_cell(coverage.first), time_cell(coverage.last),
          std::to_string(coverage.segments.size()), std::to_string(report.count(Break::Kind::gap)),
          std::to_string(report.count(Break::Kind::overlap)), std::to_string(coverage.duplicates),
          report.longest_gap() > 0 ? seconds_cell(report.longest_gap()) : "",
          report.has_times() ? percent_cell(report.percent()) : ""});
}

void add_breaks(const ChannelReport& report, const Table::Take& take) {
    for (const Break& one : report.data().breaks)
        take({code_cell(report.data()), std::string(name_of(one.kind)), time_cell(one.start),
              time_cell(one.end), seconds_cell(one.end - one.start),
              std::to_string(static_cast<std::int64_t>(one.samples))});
}

void add_days(const ChannelReport& report, const Table::Take& take) {
    report.for_each_day([&](std::int64_t start, double percent) {
        take({code_cell(report.data()), day_text(start), percent_cell(percent)});
    });
}

struct Section {
    std::string_view title;
    std::span<const Column> columns;
    void (*add)(const ChannelReport& report, const Table::Take& take);
};

// --- JSON ----------------------------------------------------------------------------------------------

class CoverageLines {
public:
    explicit CoverageLines(std::string* out) : json_(out) {}

    void write(const ChannelReport& report, const Shown& shown) {
        coverage_ = &report.data();
        write_channel(report);
        for (const Segment& segment : coverage_->segments)
            write(segment);
        if (shown.gaps)
            for (const Break& one : coverage_->breaks)
                write(one);
        if (shown.days)
            report.for_each_day([this](std::int64_t start, double percent) { write_day(start, percent); });
    }

private:
    void begin(std::string_view kind) {
        json_.begin_object();
        json_.field("kind", kind);
        write_codes(coverage_->network, coverage_->station, coverage_->location, coverage_->channel, &json_,
                    &source_);
    }

    void end() {
        json_.end_object();
        json_.end_line();
    }

    void write_time(std::string_view name, std::int64_t moment) { json_.field(name, IsoTime(moment).text()); }

    void write_seconds(std::string_view name, std::int64_t microseconds) {
        json_.field(name, static_cast<double>(microseconds) / static_cast<double>(second));
    }

    void write_channel(const ChannelReport& report) {
        begin("coverage");
        write_time("first", coverage_->first);
        write_time("last", coverage_->last);
        json_.field("records", coverage_->records);
        json_.field("samples", coverage_->samples);
        json_.field("segments", static_cast<std::int64_t>(coverage_->segments.size()));
        json_.field("gaps", report.count(Break::Kind::gap));
        json_.field("overlaps", report.count(Break::Kind::overlap));
        json_.field("duplicates", coverage_->duplicates);
        if (report.longest_gap() > 0)
            write_seconds("longest_gap", report.longest_gap());
        if (report.has_times())
            json_.field("percent", report.percent());
        end();
    }

    void write(const Segment& segment) {
        begin("segment");
        write_time("start", segment.start);
        write_time("end", last_sample(segment));
        json_.field("samples", segment.samples);
        json_.field("records", segment.records);
        json_.field("rate", segment.rate);
        end();
    }

    void write(const Break& one) {
        begin(name_of(one.kind));
        write_time("start", one.start);
        write_time("end", one.end);
        write_seconds("seconds", one.end - one.start);
        json_.field("samples", static_cast<std::int64_t>(one.samples));
        end();
    }

    void write_day(std::int64_t start, double percent) {
        begin("day");
        json_.field("day", std::string_view(day_text(start)));
        json_.field("percent", percent);
        end();
    }

    JsonWriter json_;
    std::string source_ = {};
    const ChannelCoverage* coverage_ = nullptr;
};

// --- the plot ------------------------------------------------------------------------------------------

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
    Plot(const std::vector<ChannelCoverage>& channels, const Shown& shown) {
        for (const ChannelCoverage& channel : channels)
            add(ChannelReport(channel, shown));
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
        rows_.emplace_back(shown_text(code_cell(report.data())), std::move(report));
    }

    void write_ends(std::size_t indent, std::size_t parts, std::string* out) const {
        for (const std::size_t size : {std::size_t{19}, std::size_t{10}}) { // to the second, to the day
            if (2 * size >= parts)
                continue;
            out->append(indent, ' ').append(time_cell(span_.start), 0, size);
            out->append(parts - 2 * size, ' ').append(time_cell(span_.end), 0, size).append("\n");
            return;
        }
    }

    std::vector<std::pair<std::string, ChannelReport>> rows_ = {};
    TimeSpan span_ = {};
};

// --- the report ----------------------------------------------------------------------------------------

class Report {
public:
    Report(const std::vector<ChannelCoverage>& channels, const Shown& shown, OrderedOutput::Part* out)
        : channels_(channels), shown_(shown), out_(*out) {}

    void write() {
        if (shown_.json)
            return write_json();
        if (shown_.plot)
            return Plot(channels_, shown_).write(plot_width(), &out_.text());
        if (!shown_.csv || !(shown_.gaps || shown_.days))
            write_section({"", channel_titles, add_channel});
        if (shown_.gaps)
            write_section({"gaps and overlaps", break_titles, add_breaks});
        if (shown_.days)
            write_section({"days", day_titles, add_days});
    }

private:
    static std::size_t plot_width() {
        constexpr std::size_t usual = 80;
        const std::size_t width = terminal_width();
        return width > 0 ? width : usual;
    }

    void write_json() {
        CoverageLines lines(&out_.text());
        for (const ChannelCoverage& channel : channels_) {
            lines.write(ChannelReport(channel, shown_), shown_);
            out_.settle();
        }
    }

    void write_section(const Section& section) {
        const Table table(
            section.columns,
            [&](const Table::Take& take) {
                for (const ChannelCoverage& channel : channels_)
                    section.add(ChannelReport(channel, shown_), take);
            },
            [this] { out_.settle(); });
        if (shown_.csv)
            return table.write_csv(&out_.text());
        const std::string front = section.title.empty() ? "" : "\n" + std::string(section.title) + "\n";
        if (!table.write_text(front, terminal_width(), &out_.text()))
            out_.write(front + "none\n");
    }

    const std::vector<ChannelCoverage>& channels_;
    const Shown& shown_;
    OrderedOutput::Part& out_;
};

// --- the command ---------------------------------------------------------------------------------------

// "0.1s", "2samples", "1sample".
std::optional<Tolerance> tolerance_of(std::string_view text) {
    Tolerance tolerance;
    double count = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    const std::string_view unit = text.substr(static_cast<std::size_t>(end - text.data()));
    if (error != std::errc() || !(count >= 0 && count <= 1e9))
        return std::nullopt;
    if (unit == "s")
        tolerance.seconds = count;
    else if (unit == "samples" || unit == "sample")
        tolerance.samples = count;
    else
        return std::nullopt;
    return tolerance;
}

std::optional<Shown> shown_by(const CommandLine& line) {
    Shown shown{line.has("--gaps"), line.has("--days"), line.has("--json"),
                line.has("--csv"),  line.has("--plot"), {},
                line.selection};
    const std::string_view given = line.value("--tolerance");
    const std::optional<Tolerance> tolerance = line.has("--tolerance") ? tolerance_of(given) : Tolerance{};
    if (!tolerance)
        report_trouble(line.command,
                       "--tolerance: 0.1s and 2samples are of its form, and not " + std::string(given));
    else if (std::ranges::count(std::array{shown.csv, shown.json, shown.plot}, true) > 1)
        report_trouble(line.command, "one of --plot, --json, --csv");
    else if (shown.csv && shown.gaps && shown.days)
        report_trouble(line.command, "--csv: one of --gaps, --days");
    else {
        shown.tolerance = *tolerance;
        return shown;
    }
    return std::nullopt;
}

ExitStatus write_coverage(const CommandLine& line) {
    const std::optional<Shown> shown = shown_by(line);
    if (!shown)
        return failed;
    SharedCoverage coverage(shown->tolerance);
    const ExitStatus status = for_each_volume(line, [&](VolumeReader& reader, OrderedOutput::Part&) {
        return VolumeEntries(line.selection, &reader, &coverage).add();
    });
    OrderedOutput output(STDOUT_FILENO, 1, [] {});
    const std::vector<ChannelCoverage> channels = coverage.finish();
    {
        OrderedOutput::Part out = output.part(0);
        Report(channels, *shown, &out).write();
    }
    if (const int error = output.error(); error != 0)
        throw std::runtime_error("standard output: " + std::generic_category().message(error));
    return status;
}

constexpr auto options = std::to_array<OptionRow>({
    {"--gaps", nullptr, "each gap and each overlap too"},
    {"--days", nullptr, "the percentage of each day too"},
    {"--tolerance", "TIME",
     "data that begin so far from their expected time still go on: 0.1s, 2samples; half a sample unless given"},
    {"--plot", nullptr, "a row of blocks for each channel, as wide as the terminal; X where data overlap"},
    {"--json", nullptr, "JSON Lines, with the segments"},
    {"--csv", nullptr,
     "one table (channels unless --gaps or --days is given) with commas and a line of titles"},
});

} // namespace

extern const Command coverage_command;
const Command coverage_command{
    "coverage", "Shows which times the data of SEED volumes cover: segments, gaps, overlaps, duplicates.",
    options,
    "Examples:\n"
    "  quarry coverage archive/*.mseed\n"
    "  quarry coverage --gaps --channel 'BH?' --from 2010-02-27 --to 2010-03-01 volume.seed\n"
    "  quarry coverage --plot archive/*.mseed\n"
    "  quarry coverage --tolerance 2samples --csv --days *.seed\n"
    "  quarry coverage --json volume.seed | jq -c 'select(.kind == \"segment\") | [.source, .start, .end]'\n"
    "\n"
    "Exit status: 0 all volumes are sound, 1 some are damaged, 2 some could not be read.",
    write_coverage};

} // namespace quarry
