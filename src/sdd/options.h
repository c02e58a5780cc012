// SPDX-License-Identifier: Apache-2.0
// The options of the listing: one table for reading the command line and for the help.
#pragma once

#include <array>
#include <string>

namespace quarry {

struct ListingOption {
    char letter;
    const char* value; // what stands for its value in the help; null for a flag
    const char* group;
    const char* help;
};

inline constexpr auto listing_options = std::to_array<ListingOption>({
    {'s', nullptr, "What is listed", "summaries only"},
    {'S', nullptr, "What is listed", "a short line for each channel, with its instrument and units by name"},
    {'v', nullptr, "What is listed", "twice: the sequence number of each logical record, too"},
    {'f', "n", "What is read", "only tape file n; the command `cmd` of the site first winds the tape to it"},
    {'d', "database", "What is read",
     "data formats of channels that the volume does not describe, from an SQLite file"},
    {'V', nullptr, "About quarry", "the banner: release, build and source revision"},
});

// As getopt takes them; it stops at the first argument that is not an option. -H only prints the usage.
inline std::string listing_option_letters() {
    std::string letters = "+H";
    for (const ListingOption& option : listing_options) {
        letters += option.letter;
        if (option.value != nullptr)
            letters += ':';
    }
    return letters;
}

} // namespace quarry
