// SPDX-License-Identifier: Apache-2.0
// Rules for the keys of the dictionaries.

#include "check/rules.h"
#include "platform/text.h"

namespace quarry {

namespace {

// Visits what the inventory found of the kind, with the channel or station that it is about.
template <class Visit>
void for_each_finding(const Facts& facts, FindingKind kind, Visit visit) {
    for (const Finding& finding : facts.contents.inventory.findings)
        if (finding.kind == kind)
            visit(finding, facts.subject_at(finding.place));
}

std::string name_of_dictionary(int type) {
    return type == 41 ? "041 to 048" : three_digits(type);
}

} // namespace

void check_undefined_keys(const Facts& facts, Findings* findings) {
    for_each_finding(
        facts, FindingKind::key_not_defined, [&](const Finding& finding, const Subject& subject) {
            findings->add(finding.place, subject, finding.field, " is ", finding.key, ", which no blockette ",
                          name_of_dictionary(finding.dictionary), " defines");
        });
}

void check_unused_keys(const Facts& facts, Findings* findings) {
    for_each_finding(facts, FindingKind::key_not_used, [&](const Finding& finding, const Subject& subject) {
        findings->add(finding.place, subject, "no blockette uses key ", finding.key);
    });
}

void check_redefined_keys(const Facts& facts, Findings* findings) {
    for_each_finding(
        facts, FindingKind::key_defined_twice, [&](const Finding& finding, const Subject& subject) {
            if (finding.is_changed)
                findings->add(finding.place, subject, "key ", finding.key,
                              " is defined differently in blockette ", three_digits(finding.other.blockette),
                              " at byte ", finding.other.offset);
        });
}

} // namespace quarry
