// SPDX-License-Identifier: Apache-2.0
#include "check/rules.h"

namespace quarry {

namespace {

#define QUARRY_RULE_ROW(FAMILY, NAME, FUNCTION, SEVERITY, SENTENCE)                                          \
    Rule{#FAMILY, NAME, Severity::SEVERITY, SENTENCE, FUNCTION},
constexpr Rule rules[] = {QUARRY_CHECK_RULES(QUARRY_RULE_ROW)};
#undef QUARRY_RULE_ROW

} // namespace

std::span<const Rule> check_rules() {
    return rules;
}

} // namespace quarry
