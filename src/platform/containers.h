// SPDX-License-Identifier: Apache-2.0
// Containers of the tool family: thin, typed, owning.
//
//   List  a list indexed from 0 that grows as slots are set; a slot never set reads as null
//   Map   an associative array keyed by text
//
// What a container holds stays where it is until it is replaced or the container ends.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace quarry {

// Safe for any index: a negative one is ignored on writing and null on reading. Slots are kept sparse, so
// that one damaged index does not cost memory.
template <class T>
class List {
public:
    void set(int index, T value) {
        if (index >= 0)
            slots_.insert_or_assign(index, std::move(value));
    }

    const T* get(int index) const {
        const auto found = slots_.find(index);
        return found == slots_.end() ? nullptr : &found->second;
    }

    void clear() { slots_.clear(); }

private:
    std::map<int, T> slots_;
};

template <class T>
class Map {
public:
    void set(std::string_view key, T value) { entries_.insert_or_assign(std::string(key), std::move(value)); }

    // Null if there is no such key.
    const T* get(std::string_view key) const {
        const auto found = entries_.find(key);
        return found == entries_.end() ? nullptr : &found->second;
    }

    std::size_t size() const { return entries_.size(); }

private:
    std::map<std::string, T, std::less<>> entries_;
};

} // namespace quarry
