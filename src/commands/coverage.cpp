// SPDX-License-Identifier: Apache-2.0
// quarry coverage: which times the data of each channel cover, over all volumes together.

#include "commands/command_line.h"
#include "commands/coverage_report.h"
#include "commands/each_volume.h"
#include "commands/field_damage.h"
#include "commands/selected.h"
#include "decode/catalogue.h"
#include "inventory/builder.h"
#include "inventory/field_values.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <mutex>
#include <stdexcept>
#include <unistd.h>

namespace quarry {

namespace {

// --- reading -------------------------------------------------------------------------------------------

// What the volumes add, from any thread.
class SharedCoverage {
public:
    explicit SharedCoverage(const Tolerance& tolerance) : coverage_(tolerance) {}

    void add(std::vector<Coverage::Entry>* entries) {
        const std::lock_guard lock(mutex_);
        for (const Coverage::Entry& entry : *entries)
            coverage_.add(entry);
        entries->clear();
    }

    void add_epoch(const ChannelCodes& codes, const ChannelEpoch& epoch) {
        const std::lock_guard lock(mutex_);
        const TimeSpan span = span_of(epoch);
        epochs_[codes].emplace(span.start, span.end);
    }

    std::vector<ChannelCoverage> finish() { return coverage_.finish(); }
    const ChannelEpochs& epochs() const { return epochs_; }

private:
    std::mutex mutex_ = {};
    Coverage coverage_;
    ChannelEpochs epochs_ = {};
};

class VolumeEntries {
public:
    VolumeEntries(const CoverageOptions& options, VolumeReader* reader, SharedCoverage* coverage)
        : options_(options), reader_(*reader), coverage_(*coverage) {
        entries_.reserve(most_entries);
    }

    // Returns true if the volume is sound.
    bool add() {
        while (const Item* item = reader_.next())
            std::visit([this](const auto& one) { take(one); }, *item);
        coverage_.add(&entries_);
        add_epochs({headers_.finish(), {}});
        return is_sound_;
    }

private:
    static constexpr std::size_t most_entries = 512;

    void take(const LogicalHeader&) {}
    void take(const Padding&) {}
    void take(const Damage&) { is_sound_ = false; }

    void take(const ControlBlockette& blockette) {
        const int type = blockette.type;
        decode_blockette(type, blockette.text, std::endian::big, &fields_);
        is_sound_ = is_sound_ && fields_.problems.empty();
        if (!options_.svg.empty() && (is_volume_header(type) || type == 50 || type == 52))
            headers_.add(blockette, fields_);
    }

    void take(const DataRecord& record) {
        if (!takes(options_.selection, record))
            return;
        for_each_damage(reader_.name(), record, &fields_, [this](const Damage& damage) { take(damage); });
        entries_.push_back(Coverage::entry_of(record));
        if (entries_.size() == most_entries)
            coverage_.add(&entries_);
    }

    void add_epochs(const Contents& headers) {
        for_each_row(headers, options_.selection, [this](const ChannelRow& row) {
            coverage_.add_epoch({std::string(row.network), std::string(row.station),
                                 std::string(row.location), std::string(row.channel)},
                                *row.epoch);
        });
    }

    const CoverageOptions& options_;
    VolumeReader& reader_;
    SharedCoverage& coverage_;
    Fields fields_ = {};
    InventoryBuilder headers_ = {};
    std::vector<Coverage::Entry> entries_ = {};
    bool is_sound_ = true;
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

// Pixels.
std::optional<std::size_t> height_of(std::string_view text) {
    constexpr std::size_t usual = 4800;
    std::size_t height = usual;
    if (text.empty())
        return height;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), height);
    if (error != std::errc() || end != text.data() + text.size() || height < 200 || height > 100'000)
        return std::nullopt;
    return height;
}

// What is wrong with the options; empty if nothing is.
std::string trouble_of(const CommandLine& line, const CoverageOptions& options) {
    if (std::ranges::count(std::array{options.csv, options.json, options.plot}, true) > 1)
        return "only one of --plot, --json, --csv is allowed";
    if (options.csv && options.gaps && options.days)
        return "--csv: only one of --gaps, --days is allowed";
    if (line.has("--svg") && !options.svg.ends_with(".svg"))
        return "--svg: the file name does not end in .svg: " + options.svg;
    return "";
}

std::optional<CoverageOptions> options_of(const CommandLine& line) {
    const std::optional<Tolerance> tolerance =
        line.has("--tolerance") ? tolerance_of(line.value("--tolerance")) : Tolerance{};
    const std::optional<std::size_t> height = height_of(line.value("--height"));
    const CoverageOptions options{line.has("--gaps"), line.has("--days"),
                                  line.has("--json"), line.has("--csv"),
                                  line.has("--plot"), std::string(line.value("--svg")),
                                  height.value_or(0), tolerance.value_or(Tolerance{}),
                                  line.selection};
    std::string trouble = trouble_of(line, options);
    if (!tolerance)
        trouble = "--tolerance: not of the form 0.1s or 2samples: " + std::string(line.value("--tolerance"));
    else if (!height)
        trouble = "--height: not a number from 200 to 100000: " + std::string(line.value("--height"));
    if (trouble.empty())
        return options;
    report_trouble(line.command, trouble);
    return std::nullopt;
}

void write_report(const Channels& channels, const CoverageOptions& options, OrderedOutput::Part out) {
    const auto write = options.json ? write_json : options.plot ? write_plot : write_tables;
    write(channels, options, &out);
}

ExitStatus write_coverage(const CommandLine& line) {
    const std::optional<CoverageOptions> options = options_of(line);
    if (!options)
        return failed;
    SharedCoverage coverage(options->tolerance);
    const ExitStatus status = for_each_volume(line, [&](VolumeReader& reader, OrderedOutput::Part&) {
        return VolumeEntries(*options, &reader, &coverage).add();
    });
    OrderedOutput output(STDOUT_FILENO, 1, [] {});
    const Channels channels = coverage.finish();
    write_report(channels, *options, output.part(0));
    if (!options->svg.empty())
        write_picture(channels, coverage.epochs(), *options);
    if (const int error = output.error(); error != 0)
        throw std::runtime_error("standard output: " + std::generic_category().message(error));
    return status;
}

constexpr auto option_rows = std::to_array<OptionRow>({
    {"--gaps", nullptr, "each gap and each overlap too"},
    {"--days", nullptr, "the percentage of each day too"},
    {"--tolerance", "TIME",
     "how far from its expected time data may begin and still continue a segment: 0.1s, 2samples; half a sample "
     "unless given"},
    {"--plot", nullptr, "a row of blocks for each channel, as wide as the terminal; X where data overlap"},
    {"--json", nullptr, "JSON Lines, with the segments"},
    {"--csv", nullptr,
     "one table (channels unless --gaps or --days is given) with commas and a line of titles"},
    {"--svg", "FILE.svg", "a picture too; what does not fit on its first page is in FILE-2.svg and so on"},
    {"--height", "PIXELS", "no page of the picture is higher; 4800 unless given, for 332 channels"},
});

} // namespace

extern const Command coverage_command;
const Command coverage_command{
    "coverage", "Shows which times the data of SEED volumes cover: segments, gaps, overlaps, duplicates.",
    option_rows,
    "Examples:\n"
    "  quarry coverage archive/*.mseed\n"
    "  quarry coverage --gaps --channel 'BH?' --from 2010-02-27 --to 2010-03-01 volume.seed\n"
    "  quarry coverage --plot archive/*.mseed\n"
    "  quarry coverage --svg coverage.svg --jobs 0 archive/*.mseed\n"
    "  quarry coverage --tolerance 2samples --csv --days *.seed\n"
    "  quarry coverage --json volume.seed | jq -c 'select(.kind == \"segment\") | [.source, .start, .end]'\n"
    "\n"
    "Exit status: 0 all volumes are sound, 1 some are damaged, 2 some are unreadable.",
    write_coverage};

} // namespace quarry
