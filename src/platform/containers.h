// Containers of the tool family: thin, typed, owning.
//
//   List       a list indexed from 0 that grows as slots are set; a slot never set reads as null
//   Map        an associative array keyed by text
//   SortedSet  spans of time (elements with a `start`), sorted by the caller's asymmetric comparison
//
// What a container holds stays where it is until it is replaced or the container ends, except in SortedSet,
// where an addition moves elements.
#pragma once

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

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

    const T *get(int index) const {
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
    const T *get(std::string_view key) const {
        const auto found = entries_.find(key);
        return found == entries_.end() ? nullptr : &found->second;
    }

    std::size_t size() const { return entries_.size(); }

private:
    std::map<std::string, T, std::less<>> entries_;
};

// `compare (sought, stored)` is negative, 0 or positive and calls equal whatever of the same group has the
// sought start inside the stored span, so it is no ordering: it is always called in that order, and only its
// sign "less" is monotone along the set. `compare_group (sought, stored)` is the part of it that knows no
// time, a true ordering of the groups (a group is what the spans of one channel or station share).
template <class T>
class SortedSet {
public:
    using Compare = int (*)(const T &sought, const T &stored);

    SortedSet(Compare compare, Compare compare_group) : compare_(compare), compare_group_(compare_group) {}

    // An element with the very same start as one of its group replaces it (the same span told again); one
    // that compares equal to another of its group is ignored.
    void add(T element) {
        const std::size_t first = group_begin(element);
        std::size_t place = first;
        bool equal_found = false;
        for (; in_group(place, element); ++place) {
            if (elements_[place].start == element.start) {
                elements_[place] = std::move(element);
                return;
            }
            const int order = compare_(element, elements_[place]);
            equal_found = equal_found || order == 0;
            if (order < 0)
                break;
        }
        if (!equal_found)
            elements_.insert(elements_.begin() + static_cast<std::ptrdiff_t>(place), std::move(element));
    }

    // The element with the earliest start among those that compare equal to the sought one, or null.
    const T *find(const T &sought) const {
        for (std::size_t i = group_begin(sought); in_group(i, sought); ++i) {
            const int order = compare_(sought, elements_[i]);
            if (order == 0)
                return &elements_[i];
            if (order < 0)
                break;
        }
        return nullptr;
    }

    std::size_t size() const { return elements_.size(); }
    void clear() { elements_.clear(); }

private:
    std::size_t group_begin(const T &sought) const {
        const auto place = std::partition_point(elements_.begin(), elements_.end(), [&](const T &stored) {
            return compare_group_(sought, stored) > 0;
        });
        return static_cast<std::size_t>(place - elements_.begin());
    }

    bool in_group(std::size_t index, const T &sought) const {
        return index < elements_.size() && compare_group_(sought, elements_[index]) == 0;
    }

    Compare compare_;
    Compare compare_group_;
    std::vector<T> elements_;
};

} // namespace quarry
