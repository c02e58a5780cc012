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
#include <limits>
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

// The elements have a `start` and an `end`. `compare (sought, stored)` is negative, 0 or positive and calls
// equal whatever of the same group has the sought start inside the stored span, so it is no ordering: it is
// always called in that order, and along the set only its being negative is monotone. `compare_group (sought,
// stored)` is the part of it that knows no time, a true ordering of the groups (a group is what the spans of
// one channel or station share).
template <class T>
class SortedSet {
public:
    using Compare = int (*)(const T& sought, const T& stored);

    SortedSet(Compare compare, Compare compare_group) : compare_(compare), compare_group_(compare_group) {}

    // An element with the very same start as one of its group replaces it (the same span told again); one
    // that compares equal to another of its group is ignored, and so is one whose start is no number.
    void add(T element) {
        if (element.start != element.start)
            return;
        const std::size_t first = group_begin(element);
        std::size_t place = first_after(element, first);
        if (place > first && entries_[place - 1].element.start == element.start)
            entries_[--place].element = std::move(element);
        else if (find(element) == nullptr)
            entries_.insert(entries_.begin() + static_cast<std::ptrdiff_t>(place), {std::move(element), 0.0});
        else
            return;
        update_reach(first, place);
    }

    // The element with the earliest start among those that compare equal to the sought one, or null.
    const T* find(const T& sought) const {
        const std::size_t first = group_begin(sought);
        const std::size_t last = first_after(sought, first);
        // Of the spans that begin in time, the first one to reach beyond the sought start holds it.
        const std::size_t holds =
            partition(first, last, [&](const Entry& entry) { return entry.reach <= sought.start; });
        if (holds != last)
            return &entries_[holds].element;
        // A span without extent equals only its own start.
        const bool same = last > first && compare_(sought, entries_[last - 1].element) == 0;
        return same ? &entries_[last - 1].element : nullptr;
    }

    std::size_t size() const { return entries_.size(); }
    void clear() { entries_.clear(); }

private:
    struct Entry {
        T element;
        double reach; // the latest end of the group's spans up to this one
    };

    template <class Predicate>
    std::size_t partition(std::size_t first, std::size_t last, Predicate predicate) const {
        const auto begin = entries_.begin();
        const auto place = std::partition_point(begin + static_cast<std::ptrdiff_t>(first),
                                                begin + static_cast<std::ptrdiff_t>(last), predicate);
        return static_cast<std::size_t>(place - begin);
    }

    std::size_t group_begin(const T& sought) const {
        return partition(0, entries_.size(),
                         [&](const Entry& entry) { return compare_group_(sought, entry.element) > 0; });
    }

    // The first element from `first` on that lies wholly after the sought one.
    std::size_t first_after(const T& sought, std::size_t first) const {
        return partition(first, entries_.size(),
                         [&](const Entry& entry) { return compare_(sought, entry.element) >= 0; });
    }

    // Sets the reach of the entry at `changed` and of those of its group after it.
    void update_reach(std::size_t group, std::size_t changed) {
        for (std::size_t i = changed; i < entries_.size(); ++i) {
            Entry& entry = entries_[i];
            if (compare_group_(entries_[changed].element, entry.element) != 0)
                break;
            const double before =
                i > group ? entries_[i - 1].reach : -std::numeric_limits<double>::infinity();
            const double reach = entry.element.end > before ? entry.element.end : before;
            if (i > changed && reach == entry.reach)
                break;
            entry.reach = reach;
        }
    }

    Compare compare_;
    Compare compare_group_;
    std::vector<Entry> entries_;
};

} // namespace quarry
