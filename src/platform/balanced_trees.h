// SPDX-License-Identifier: Apache-2.0
// Balanced binary search trees (AVL trees) whose nodes lie together in one array and name each other by their
// index in it. One array holds any number of trees; they all end with it, at once.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace quarry {

using TreeIndex = std::uint32_t;
inline constexpr TreeIndex no_node = UINT32_MAX; // also the root of an empty tree

// An array that grows without copying its elements and leaves room for less than a block of them unused.
template <class T>
class BlockedArray {
public:
    const T& operator[](std::size_t index) const { return blocks_[index / block_size][index % block_size]; }
    T& operator[](std::size_t index) { return blocks_[index / block_size][index % block_size]; }
    std::size_t size() const { return size_; }
    void clear() {
        blocks_.clear();
        size_ = 0;
    }

    void push_back(T element) {
        if (size_ % block_size == 0)
            blocks_.emplace_back().reserve(block_size);
        blocks_.back().push_back(std::move(element));
        ++size_;
    }

private:
    static constexpr std::size_t block_size = 64;

    std::vector<std::vector<T>> blocks_;
    std::size_t size_ = 0;
};

// What a node has besides its caller's data:
//
//   key ()                 what the tree is sorted by, with == and <
//   children               the left and the right one
//   height                 of the subtree below and including the node
//   sum_up (left, right)   recomputes what the node says about its subtree, from its children (or null)
//
// The height of a tree of n nodes is at most 1.45 log2 n, and so is the depth of the recursion.
template <class Node>
class BalancedTrees {
public:
    const Node& operator[](TreeIndex index) const { return nodes_[index]; }
    Node& operator[](TreeIndex index) { return nodes_[index]; }
    std::size_t size() const { return nodes_.size(); }
    void clear() { nodes_.clear(); }

    // Adds a node that is not yet in a tree.
    TreeIndex append(Node node) {
        nodes_.push_back(std::move(node));
        return static_cast<TreeIndex>(nodes_.size() - 1);
    }

    // The node with the key, or no_node.
    template <class Key>
    TreeIndex find(TreeIndex root, const Key& key) const {
        while (root != no_node && !(nodes_[root].key() == key))
            root = nodes_[root].children[nodes_[root].key() < key ? right : left];
        return root;
    }

    // Puts the node into the tree, which must not hold another one with its key. A node that is there already
    // stays in its place, and what the nodes above say about it is brought up to date. Returns the tree's new
    // root.
    TreeIndex settle(TreeIndex root, TreeIndex node) {
        if (root == no_node)
            root = node;
        if (root != node) {
            const Side side = nodes_[root].key() < nodes_[node].key() ? right : left;
            nodes_[root].children[side] = settle(nodes_[root].children[side], node);
        }
        return balanced(root);
    }

private:
    enum Side { left, right };

    int height(TreeIndex index) const { return index == no_node ? 0 : nodes_[index].height; }
    const Node* node_or_null(TreeIndex index) const { return index == no_node ? nullptr : &nodes_[index]; }

    void update(TreeIndex index) {
        Node& node = nodes_[index];
        node.height = std::max(height(node.children[left]), height(node.children[right])) + 1;
        node.sum_up(node_or_null(node.children[left]), node_or_null(node.children[right]));
    }

    // Brings the subtree of `root` back into balance if its sides differ in height by two. Returns its root.
    TreeIndex balanced(TreeIndex root) {
        for (const auto& [side, other] : {std::pair{left, right}, {right, left}}) {
            TreeIndex& child = nodes_[root].children[side];
            if (height(child) <= height(nodes_[root].children[other]) + 1)
                continue;
            if (height(nodes_[child].children[other]) > height(nodes_[child].children[side]))
                child = lift(child, other, side);
            return lift(root, side, other);
        }
        update(root);
        return root;
    }

    // Rotates: the child on that side takes the place of `root`, which becomes its child on the other one.
    TreeIndex lift(TreeIndex root, Side side, Side other) {
        const TreeIndex child = nodes_[root].children[side];
        nodes_[root].children[side] = nodes_[child].children[other];
        nodes_[child].children[other] = root;
        update(root);
        update(child);
        return child;
    }

    BlockedArray<Node> nodes_;
};

} // namespace quarry
