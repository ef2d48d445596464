// The stored sets as numbered nodes, with their links both ways: what the queries walk.

#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "korassoc/dictionary/HashTable.h"
#include "korassoc/dictionary/SubsetIndex.h"

class SetDictionary;

namespace korassoc::detail {

// LatticeGraph numbers the stored sets level by level, each level in table order:
//
//   node     0    1   2   3    4     5   ...       0 is the empty set, when it is stored
//   set      {}   1   3   8   1 3   3 8
//   down     for each item of the set, in order: the node of the set without it
//   up       for each item by which a lattice set can be extended, in order: that item and the node with it
//
// A link to a set that is not stored leads to kNone. Counts are the descriptors', read at every call.
// The dictionary must not gain or lose sets or links while the graph is used.
// Memory: about 40 bytes a set and 12 for each of its items. Cost of making it: linear in both.
class LatticeGraph {
 public:
  static constexpr int kNone = -1;

  struct UpLink {
    int item;
    int node;
  };

  explicit LatticeGraph(const SetDictionary& dictionary);

  int size() const { return static_cast<int>(entries_.size()); }
  // The nodes of one level are [levelBegin(k), levelBegin(k + 1)), none for a level that holds no sets in
  // memory.
  int levels() const { return static_cast<int>(indexes_.size()); }
  int levelBegin(int level) const {
    return level < levels() ? levelBegins_[static_cast<std::size_t>(level)] : size();
  }

  const ItemSet& set(int node) const { return *entries_[static_cast<std::size_t>(node)]->key; }
  SetCounter* descriptor(int node) const { return entries_[static_cast<std::size_t>(node)]->descriptor; }
  // Transactions; 0 for a set without descriptor.
  int count(int node) const { return descriptor(node) != nullptr ? descriptor(node)->count : 0; }
  int length(int node) const { return set(node).length(); }
  std::span<const int> down(int node) const { return links(down_, downBegins_, node); }
  std::span<const UpLink> up(int node) const { return links(up_, upBegins_, node); }

  // The node of a set, or kNone.
  int find(const int* items, int length) const;
  int find(const ItemSet& set) const { return find(set.getTheArray(), set.length()); }

 private:
  template <typename Link>
  static std::span<const Link> links(const std::vector<Link>& all, const std::vector<std::size_t>& begins,
                                     int node) {
    const auto index = static_cast<std::size_t>(node);
    return {all.data() + begins[index], begins[index + 1] - begins[index]};
  }
  void linkDown();
  void linkUp();

  std::vector<HashTable::Entry*> entries_;  // by node
  std::vector<int> levelBegins_;
  std::vector<SubsetIndex> indexes_;  // by level
  std::vector<int> down_;
  std::vector<std::size_t> downBegins_;
  std::vector<UpLink> up_;
  std::vector<std::size_t> upBegins_;
};

}  // namespace korassoc::detail
