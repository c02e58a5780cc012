// The rules: what each asks of a volume, how grave a breach is, and the function that looks for one.
//
// To add a rule: its row here, and its function in the file of its family (src/check/FAMILY.cpp). What a
// function looks at is in the facts; a rule that needs more of them adds to a gatherer.
#pragma once

#include "check/facts.h"
#include "check/findings.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace quarry {

// Family, name, function, severity, and what the rule asks.
#define QUARRY_CHECK_RULES(RULE)                                                                             \
    RULE(dictionaries, "key-undefined", check_undefined_keys, error,                                         \
         "The dictionaries of a volume define each key that its blockettes use.")                            \
    RULE(dictionaries, "key-unused", check_unused_keys, note, "Each key that is defined is used.")           \
    RULE(dictionaries, "key-redefined", check_redefined_keys, error,                                         \
         "A key that is defined twice has the same content both times.")

struct Rule {
    std::string_view family;
    std::string_view name;
    Severity severity;
    std::string_view sentence;
    void (*check)(const Facts& facts, Findings* findings);
};

#define QUARRY_DECLARE_RULE(FAMILY, NAME, FUNCTION, SEVERITY, SENTENCE)                                      \
    void FUNCTION(const Facts& facts, Findings* findings);
QUARRY_CHECK_RULES(QUARRY_DECLARE_RULE)
#undef QUARRY_DECLARE_RULE

// True for a rule of the family that looks at decoded samples.
inline bool needs_samples(const Rule& rule) {
    return rule.family == "samples";
}

// All of them, by family.
std::span<const Rule> check_rules();

} // namespace quarry
