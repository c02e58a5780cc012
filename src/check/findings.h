// SPDX-License-Identifier: Apache-2.0
// What the rules find: a line of text each, with the place in the volume and the channel it is about.
#pragma once

#include "check/words.h"
#include "inventory/contents.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quarry {

enum class Severity : std::uint8_t { note, warning, error };
std::string_view name_of(Severity severity);

struct Rule;

struct CheckFinding {
    const Rule* rule;
    Place place;         // the byte at which the fault stands, and the type of the blockette
    std::string channel; // NET.STA.LOC.CHA or NET.STA; empty for what concerns the whole volume
    std::string text;    // bytes of a volume, as they are, may be in it
    std::int64_t count;  // of findings: 1, or as many as the text says are not shown
};

// What a finding is about. The codes are empty for the whole volume, the last two for a station. The span of
// time is open where it is not known.
struct Subject {
    std::string_view network = {}, station = {}, location = {}, channel = {};
    Integer start = {}, end = {};
};
Subject subject_of(const ChannelRow& row);
template <class Channel>
Subject subject_of(const Channel& channel) { // of anything with the four codes
    return {channel.network, channel.station, channel.location, channel.channel};
}
Subject subject_of(const Network& network, const Station& station, const StationEpoch& epoch);
std::string name_of(const Subject& subject);

class Findings {
public:
    using Takes = std::function<bool(const Subject& subject)>;

    // Only what is about subjects that `takes` accepts is kept.
    explicit Findings(Takes takes) : takes_(std::move(takes)) {}

    // What is found from now on breaks this rule.
    void begin(const Rule& rule);

    // Adds "blockette 057: " and the words, behind the name of the subject. At most `most_of_a_rule` of a
    // rule are kept; the others are only counted.
    template <class... Words>
    void add(const Place& place, const Subject& subject, const Words&... text) {
        if (is_taken(subject))
            keep(place, subject, words(text...));
    }
    template <class... Words>
    void add(const Place& place, const ChannelRow& row, const Words&... text) {
        add(place, subject_of(row), text...);
    }

    // Counts so many more that whoever gathered them did not keep.
    void count_more(std::size_t findings) { of_rule_ += findings; }

    // In the order of their places. The object is empty then.
    std::vector<CheckFinding> take();

private:
    static constexpr std::size_t most_of_a_rule = 1000;

    bool is_taken(const Subject& subject) const;
    void keep(const Place& place, const Subject& subject, std::string text);
    void end_rule();

    Takes takes_;
    const Rule* rule_ = nullptr;
    std::size_t of_rule_ = 0;
    Place last_ = {}; // of the last one that was kept
    std::vector<CheckFinding> all_ = {};
};

} // namespace quarry
