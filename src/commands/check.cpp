// SPDX-License-Identifier: Apache-2.0
// quarry check: what in volumes is not as it should be.

#include "check/rules.h"
#include "commands/command_line.h"
#include "commands/each_volume.h"
#include "commands/selected.h"
#include "platform/terminal_text.h"
#include "report/json_writer.h"
#include "report/table.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace quarry {

namespace {

// --- which rules ---------------------------------------------------------------------------------------

// True if the list of globs takes the rule, by its own name or that of its family.
bool names(std::string_view list, const Rule& rule) {
    const Codes globs(list);
    return !list.empty() && (globs.takes(rule.name) || globs.takes(rule.family));
}

// Throws for a name that no rule has.
void check_names(std::string_view option, std::string_view list) {
    while (!list.empty()) {
        const std::string_view name = list.substr(0, list.find(','));
        const auto rules = check_rules();
        if (std::none_of(rules.begin(), rules.end(), [&](const Rule& rule) { return names(name, rule); }))
            throw std::invalid_argument(std::string(option) + ": no such rule: " + std::string(name));
        list.remove_prefix(std::min(name.size() + 1, list.size()));
    }
}

struct Choice {
    std::vector<const Rule*> rules;
    bool with_samples = false; // one of them needs them
    bool are_warnings_errors = false;
    bool as_json = false;

    Severity severity_of(const Rule& rule) const {
        return are_warnings_errors && rule.severity == Severity::warning ? Severity::error : rule.severity;
    }
};

Choice choice_of(const CommandLine& line) {
    const std::string_view enabled = line.value("--enable");
    const std::string_view disabled = line.value("--disable");
    if (line.has("--enable") && enabled.empty())
        throw std::invalid_argument("--enable: no rule is named");
    check_names("--enable", enabled);
    check_names("--disable", disabled);
    Choice choice{{}, false, line.has("--werror"), line.has("--json")};
    for (const Rule& rule : check_rules())
        if ((!line.has("--enable") || names(enabled, rule)) && !names(disabled, rule)) {
            choice.rules.push_back(&rule);
            choice.with_samples = choice.with_samples || needs_samples(rule);
        }
    if (choice.rules.empty())
        throw std::invalid_argument("--disable: no rule is left");
    return choice;
}

// --- one volume ----------------------------------------------------------------------------------------

void write_line(const std::string& file, const CheckFinding& finding, Severity severity, std::string* out) {
    *out += shown_on_terminal(file);
    *out += shown_text(words(":", finding.place.offset, ": ", name_of(severity), ": ", finding.text, " [",
                             finding.rule->name, "]"));
    *out += '\n';
}

void write_json(const std::string& file, const CheckFinding& finding, Severity severity, std::string* out) {
    JsonWriter json(out);
    json.begin_object();
    json.field("kind", "check");
    json.key("file");
    json.utf8_value(file);
    json.field("offset", finding.place.offset);
    json.field("severity", name_of(severity));
    json.field("rule", finding.rule->name);
    json.field("family", finding.rule->family);
    if (finding.place.logical_record > 0)
        json.field("logical_record", finding.place.logical_record);
    if (finding.place.blockette > 0)
        json.field("blockette", finding.place.blockette);
    if (!finding.channel.empty())
        json.field("channel", std::string_view(finding.channel));
    json.field("text", std::string_view(finding.text));
    json.end_object();
    json.end_line();
}

using Counts = std::array<std::int64_t, 3>; // by severity

std::string summary(const std::string& file, const Counts& counts) {
    std::string text = file + ":";
    for (const Severity severity : {Severity::error, Severity::warning, Severity::note}) {
        const std::int64_t count = counts[static_cast<std::size_t>(severity)];
        text += words(severity == Severity::error ? " " : ", ", count, " ", name_of(severity),
                      count == 1 ? "" : "s");
    }
    return text;
}

Findings find(const CommandLine& line, const Choice& choice, VolumeReader* reader) {
    const auto is_taken = [&line](const Subject& subject) { return takes(line.selection, subject); };
    FactsGatherer gatherer(choice.with_samples, is_taken);
    while (const Item* item = reader->next()) {
        const auto* record = std::get_if<DataRecord>(item);
        gatherer.take(*item, record == nullptr || takes(line.selection, *record));
    }
    const Facts facts = gatherer.finish(*reader);
    Findings findings(is_taken);
    for (const Rule* rule : choice.rules) {
        findings.begin(*rule);
        rule->check(facts, &findings);
    }
    return findings;
}

// Returns true if no finding is an error.
bool check(const CommandLine& line, const Choice& choice, VolumeReader* reader, OrderedOutput::Part* out) {
    Counts counts{};
    for (const CheckFinding& finding : find(line, choice, reader).take()) {
        const Severity severity = choice.severity_of(*finding.rule);
        counts[static_cast<std::size_t>(severity)] += finding.count;
        (choice.as_json ? write_json : write_line)(reader->name(), finding, severity, &out->text());
        out->flush_if_large();
    }
    if (reader->totals().holds_seed()) {
        out->before_other_stream();
        report_trouble(line.command, summary(reader->name(), counts));
    }
    return counts[static_cast<std::size_t>(Severity::error)] == 0;
}

// --- the command ---------------------------------------------------------------------------------------

ExitStatus list_rules() {
    for (const Rule& rule : check_rules())
        std::puts(
            words(rule.name, " (", rule.family, ", ", name_of(rule.severity), "): ", rule.sentence).c_str());
    return std::fflush(stdout) == 0 ? all_sound : failed;
}

ExitStatus write_check(const CommandLine& line) {
    if (line.has("--rules"))
        return list_rules();
    const Choice choice = choice_of(line);
    return for_each_volume(
        line,
        [&](VolumeReader& reader, OrderedOutput::Part& out) { return check(line, choice, &reader, &out); },
        {}, Framing::shown);
}

constexpr auto options = std::to_array<OptionRow>({
    {"--enable", "RULES", "only these rules: names or families, or globs of them, separated by commas"},
    {"--disable", "RULES", "without these rules"},
    {"--werror", nullptr, "warnings count as errors"},
    {"--json", nullptr, "findings as JSON Lines"},
    {"--rules", nullptr, "lists all rules and ends", true},
});

} // namespace

extern const Command check_command;
const Command check_command{
    "check", "Reports what in SEED volumes is not as it should be, each fault with its place.", options,
    "Examples:\n"
    "  quarry check volume.seed\n"
    "  quarry check --disable samples,key-unused archive/*\n"
    "  quarry check --enable response --werror --station ANMO dataless.seed\n"
    "\n"
    "Exit status: 0 no errors found, 1 some found, 2 some volumes are unreadable.",
    write_check};

} // namespace quarry
