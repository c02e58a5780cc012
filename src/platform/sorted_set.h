// SPDX-License-Identifier: Apache-2.0
// An index of epochs: the spans of time for which something was declared of a channel or a station. Its
// caller adds each epoch as it is declared, in whatever order, and asks for every data record which epoch of
// its channel holds the record's time.
//
// An epoch lasts from its start, which belongs to it, to its end, which does not. It always holds its own
// start, even if its end lies before that or is not a number (which becomes an end before every time). Epochs
// of different groups (a group is one channel or one station) have nothing to do with each other.
//
// The first of these rules that applies to an added epoch decides:
//
//   1. its start is not a number                   it is ignored
//   2. one of its group has the same start         it replaces that one
//   3. its start lies within one of its group      it is ignored
//   4. none of these                               it is kept, even where it overlaps later ones
//
// Of the epochs of a group that hold a time, the one that starts first is found. It hides the others there
// until a shorter one replaces it. A time that is not a number finds the group's earliest epoch.
//
// An addition or a look-up among n epochs takes O(log n) steps whatever their order and their groups, besides
// the growth of arrays, which is constant on the average.
#pragma once

#include "platform/balanced_trees.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace quarry {

// T has a `start` and an `end`, both double. Beside T are declared
//
//   group_of (const T&)       its group as a value, with == and <
//   hash_of (const Group&)    64 bits, of which the upper ones should differ from group to group; where they
//                             do not, look-ups slow down, but not beyond the cost above
template <class T>
class SortedSet {
public:
    using Time = decltype(T::start);
    using Group = decltype(group_of(std::declval<const T&>()));

    void add(T element) {
        if (element.start != element.start)
            return;
        if (element.end != element.end)
            element.end = Time{-std::numeric_limits<double>::infinity()};
        TreeIndex& root = groups_[find_or_add_group(group_of(element))].spans;
        TreeIndex span = spans_.find(root, element.start);
        if (span != no_node)
            spans_[span].element = std::move(element);
        else if (holder(root, element.start) == no_node)
            span = spans_.append({.element = std::move(element)});
        else
            return;
        root = spans_.settle(root, span);
    }

    // The epoch of the group that the rules find for the time, or null. It stays where it is until the next
    // addition.
    const T* find(const Group& group, const Time& time) const {
        const TreeIndex found = find_group(group);
        const TreeIndex span = found == no_node ? no_node : holder(groups_[found].spans, time);
        return span == no_node ? nullptr : &spans_[span].element;
    }

    std::size_t size() const { return spans_.size(); }

    void clear() {
        buckets_.clear();
        groups_.clear();
        spans_.clear();
    }

private:
    struct GroupNode {
        Group group;
        TreeIndex spans = no_node; // root of the tree of its spans
        std::array<TreeIndex, 2> children = {no_node, no_node};
        int height = 1;

        const Group& key() const { return group; }
        void sum_up(const GroupNode*, const GroupNode*) {}
    };

    struct SpanNode {
        Time reach = {}; // the latest end in the subtree
        std::array<TreeIndex, 2> children = {no_node, no_node};
        int height = 1;
        T element;

        const Time& key() const { return element.start; }

        void sum_up(const SpanNode* left, const SpanNode* right) {
            reach = element.end;
            for (const SpanNode* child : {left, right})
                if (child != nullptr && reach < child->reach)
                    reach = child->reach;
        }
    };

    TreeIndex find_group(const Group& group) const {
        return buckets_.empty() ? no_node : groups_.find(buckets_[bucket_of(group)], group);
    }

    TreeIndex find_or_add_group(const Group& group) {
        if (const TreeIndex found = find_group(group); found != no_node)
            return found;
        if (groups_.size() == buckets_.size())
            double_buckets();
        const TreeIndex added = groups_.append({group});
        put_into_bucket(added);
        return added;
    }

    std::size_t bucket_of(const Group& group) const {
        return hash_of(group) >> std::countl_zero(std::uint64_t{buckets_.size() - 1});
    }

    void put_into_bucket(TreeIndex group) {
        TreeIndex& root = buckets_[bucket_of(groups_[group].group)];
        root = groups_.settle(root, group);
    }

    void double_buckets() {
        constexpr std::size_t fewest = 16; // a power of two
        buckets_ = std::vector<TreeIndex>(std::max(fewest, 2 * buckets_.size()), no_node);
        for (TreeIndex i = 0; i < groups_.size(); ++i) {
            groups_[i].children = {no_node, no_node};
            groups_[i].height = 1;
            put_into_bucket(i);
        }
    }

    // The span that the rules find for the time.
    TreeIndex holder(TreeIndex root, const Time& time) const {
        const TreeIndex first = first_beyond(root, time);
        return first != no_node && !(time < spans_[first].key()) ? first : spans_.find(root, time);
    }

    // The earliest span that ends after the time, whenever it starts. (So written that no end counts as
    // lying before a time that is not a number.)
    TreeIndex first_beyond(TreeIndex root, const Time& time) const {
        if (root == no_node || spans_[root].reach <= time)
            return no_node;
        for (TreeIndex i = root;;) {
            const auto& [left, right] = spans_[i].children;
            if (left != no_node && !(spans_[left].reach <= time))
                i = left;
            else if (!(spans_[i].element.end <= time))
                return i;
            else
                i = right; // what reaches beyond the time is neither here nor on the left
        }
    }

    std::vector<TreeIndex> buckets_; // a tree of groups each; a power of two of them, or none yet
    BalancedTrees<GroupNode> groups_;
    BalancedTrees<SpanNode> spans_; // one tree for each group
};

} // namespace quarry
