// SPDX-License-Identifier: Apache-2.0
#include "commands/command_line.h"

#include "platform/terminal_text.h"
#include "platform/text.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <unistd.h>

namespace quarry {

namespace {

constexpr auto common_options = std::to_array<OptionRow>({
    {"--network", "CODES", "only these networks: codes or globs (* ? [A-Z]), separated by commas"},
    {"--station", "CODES", "only these stations"},
    {"--location", "CODES", "only these locations; -- is the blank one"},
    {"--channel", "CODES", "only these channels"},
    {"--from", "TIME",
     "only what ends at this time or later: 2010-02-27T06:50:00 (or with +01:00), 2010-058, 2010,058,06:50"},
    {"--to", "TIME", "only what begins before this time"},
    {"--jobs", "N", "number of threads, each of which reads one volume at a time; 0: one for each processor"},
});

constexpr const char* volumes_help =
    "files, - for standard input, @FILE for a list of names, one on each line; plain or compressed";

constexpr std::size_t help_column = 20;

std::string folded_help(const char* help) {
    return folded(help, help_column, false); // the library pads
}

// What the command line says of an option.
struct Given {
    bool is_set = false; // of an option without a value
    std::vector<std::string> values = {};
};

void add_option(CLI::App* app, const OptionRow& row, Given* given) {
    if (row.value == nullptr)
        app->add_flag(row.name, given->is_set, folded_help(row.help));
    else
        app->add_option(row.name, given->values, folded_help(row.help))
            ->type_name(row.value)
            ->expected(1)
            ->allow_extra_args(false)
            ->take_all();
}

bool is_list(const OptionRow& row) {
    const std::string_view value(row.value);
    return value == "CODES" || value == "RULES" || value == "LIST";
}

std::string joined(const OptionRow& row, const std::vector<std::string>& values) {
    if (values.size() > 1 && !is_list(row))
        throw std::invalid_argument(std::string(row.name) + ": given more than once");
    std::string text;
    for (const std::string& value : values)
        text += (text.empty() ? "" : ",") + value;
    return text;
}

void take_values(const std::vector<OptionRow>& rows, const std::vector<Given>& given, CommandLine* line) {
    for (std::size_t i = 0; i < rows.size(); ++i)
        line->values.emplace(rows[i].name, given[i].is_set || !given[i].values.empty()
                                               ? std::optional(joined(rows[i], given[i].values))
                                               : std::nullopt);
}

std::int64_t time_value(const CommandLine& line, std::string_view option, std::int64_t otherwise) {
    if (!line.has(option))
        return otherwise;
    const std::optional<std::int64_t> time = time_argument(line.value(option));
    if (!time)
        throw std::invalid_argument(std::string(option) + ": not a time: " + std::string(line.value(option)));
    return *time;
}

int jobs_value(const CommandLine& line) {
    if (!line.has("--jobs"))
        return 1;
    const std::string text(line.value("--jobs"));
    if (text.empty() || text.size() > 3 || text.find_first_not_of("0123456789") != std::string::npos)
        throw std::invalid_argument("--jobs: not a number from 0 to 999: " + text);
    const int jobs = std::stoi(text);
    return jobs > 0 ? jobs : std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

void take_common_options(CommandLine* line) {
    line->selection.networks = Codes(line->value("--network"));
    line->selection.stations = Codes(line->value("--station"));
    line->selection.locations = Codes(line->value("--location"));
    line->selection.channels = Codes(line->value("--channel"));
    line->selection.from = time_value(*line, "--from", line->selection.from);
    line->selection.to = time_value(*line, "--to", line->selection.to);
    line->jobs = jobs_value(*line);
}

void take_list(const std::string& name, CommandLine* line) {
    std::ifstream list(name);
    std::string volume;
    while (std::getline(list, volume)) {
        if (volume.ends_with('\r'))
            volume.pop_back();
        if (!volume.empty())
            line->volumes.push_back(volume);
    }
    if (list.is_open() && !list.bad())
        return;
    report_trouble(line->command, name + ": " + std::strerror(errno));
    line->list_failed = true;
}

void take_volumes(const std::vector<std::string>& names, CommandLine* line) {
    for (const std::string& name : names)
        if (name.starts_with('@'))
            take_list(name.substr(1), line);
        else
            line->volumes.push_back(name);
}

void require_volumes(const std::vector<std::string>& names, const std::vector<OptionRow>& rows,
                     const CommandLine& line) {
    const auto does_without = [&](const OptionRow& row) { return row.needs_no_volume && line.has(row.name); };
    if (names.empty() && std::none_of(rows.begin(), rows.end(), does_without))
        throw std::invalid_argument("VOLUME is required");
}

} // namespace

void report_trouble(std::string_view command, std::string_view text) {
    std::string message = "quarry " + std::string(command) + ": " + std::string(text);
    if (isatty(STDERR_FILENO) == 1)
        message = shown_on_terminal(message);
    std::fprintf(stderr, "%s\n", message.c_str());
}

std::optional<ExitStatus> read_command_line(const Command& command, int argc, char** argv,
                                            CommandLine* line) {
    std::vector<OptionRow> rows(command.options.begin(), command.options.end());
    rows.insert(rows.end(), common_options.begin(), common_options.end());
    std::vector<Given> given(rows.size());
    std::vector<std::string> names;

    line->command = command.name;
    CLI::App app(folded(command.description, 0), "quarry " + line->command);
    app.get_formatter()->column_width(help_column);
    app.footer(command.examples);
    app.add_option("VOLUME", names, folded_help(volumes_help))->type_name("");
    for (std::size_t i = 0; i < rows.size(); ++i)
        add_option(&app, rows[i], &given[i]);
    try {
        app.parse(argc, argv);
        take_values(rows, given, line);
        require_volumes(names, rows, *line);
        take_common_options(line);
    } catch (const CLI::CallForHelp&) {
        std::fputs(app.help().c_str(), stdout);
        return std::fflush(stdout) == 0 ? all_sound : failed;
    } catch (const std::exception& error) {
        report_trouble(line->command, error.what());
        report_trouble(line->command, "--help explains the options");
        return failed;
    }
    take_volumes(names, line);
    if (names.empty() || !line->volumes.empty() || line->list_failed)
        return std::nullopt;
    report_trouble(line->command, "no VOLUME is named");
    return failed;
}

} // namespace quarry
