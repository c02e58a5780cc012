// SPDX-License-Identifier: Apache-2.0
// The JSON Lines of quarry coverage.

#include "commands/coverage_report.h"
#include "commands/json_lines.h"
#include "quarry/time.h"

namespace quarry {

namespace {

class CoverageLines {
public:
    explicit CoverageLines(std::string* out) : json_(out) {}

    void write(const ChannelReport& report, const CoverageOptions& options) {
        coverage_ = &report.data();
        write_channel(report);
        for (const Segment& segment : coverage_->segments)
            write(segment);
        if (options.gaps)
            for (const Break& one : coverage_->breaks)
                write(one);
        if (options.days)
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
        json_.field(name, static_cast<double>(microseconds) / 1e6);
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

} // namespace

void write_json(const Channels& channels, const CoverageOptions& options, OrderedOutput::Part* out) {
    CoverageLines lines(&out->text());
    for (const ChannelCoverage& channel : channels) {
        lines.write(ChannelReport(channel, options), options);
        out->flush_if_large();
    }
}

} // namespace quarry
