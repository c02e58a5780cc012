// SPDX-License-Identifier: Apache-2.0
// The keys of one volume: where each is defined and used, and which of that does not fit together.
#pragma once

#include "quarry/inventory.h"

#include <map>
#include <string_view>
#include <utility>
#include <vector>

namespace quarry {

class KeyBook {
public:
    // Takes the keys that the blockette defines and uses. `continues`: it goes on with the definition in the
    // blockette before it.
    void add(const Place& place, const Fields& fields, bool continues);

    // Adds the findings of the volume that ends here, and begins another one.
    void end_volume(std::vector<Finding>* findings);

private:
    struct Definition {
        Place place;
        std::size_t content; // a hash of it
    };
    struct Use {
        Place place;
        std::string_view field;
    };
    struct Entry {
        std::vector<Definition> definitions;
        std::vector<Use> first_use; // none or one
    };
    using Key = std::pair<int, std::int64_t>; // type of the defining blockettes, key

    void add_definition(const Place& place, const Fields& fields, std::string_view name, int dictionary,
                        bool continues);
    void add_uses(const Place& place, const Fields& fields, std::string_view name, int dictionary);
    void add_use(const Place& place, const Field& field, int dictionary);
    static void report(const Key& key, const Entry& entry, std::vector<Finding>* findings);

    std::map<Key, Entry> entries_;
};

} // namespace quarry
