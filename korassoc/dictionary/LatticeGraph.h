// The stored sets as numbered nodes, with their links both ways: what the queries walk.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "korassoc/dictionary/HashTable.h"
#include "korassoc/dictionary/NodeMarks.h"
#include "korassoc/dictionary/SubsetIndex.h"

class SetDictionary;

namespace korassoc::detail {

// LatticeGraph numbers the stored sets in the order of ItemSet, whatever the order of their tables:
//
//   node     0    1   2   3    4     5   ...       0 is the empty set, when it is stored
//   set      {}   1   3   8   1 3   3 8
//   down     for each item of the set, in order: the node of the set without it
//   up       for each item by which a lattice set can be extended, in order: that item, the node with it, its
//   count
//
// A link to a set that is not stored leads to kNone. Counts are copies, for the descriptors lie scattered in
// memory; who counts has to see to it that they are read again (SetDictionary::graph() does).
// The dictionary must not gain or lose sets or links while the graph is used.
// Memory: about 80 bytes a set and 20 for each of its items. Cost of making it: linear in both, but for
// sorting the sets.
class LatticeGraph {
 public:
  static constexpr int kNone = -1;

  struct UpLink {
    int item;
    int node;
    int count;  // that of the node, beside it since the nodes lie scattered; 0 for kNone
  };

  // Marks that go back to the graph when they are let go, which must be before the graph is.
  struct GiveBack {
    const LatticeGraph* graph;
    void operator()(NodeMarks* marks) const;
  };
  using LentMarks = std::unique_ptr<NodeMarks, GiveBack>;

  explicit LatticeGraph(const SetDictionary& dictionary);

  int size() const { return static_cast<int>(sets_.size()); }
  // The nodes of one level are [levelBegin(k), levelBegin(k + 1)), none for a level without sets in memory.
  int levels() const { return static_cast<int>(indexes_.size()); }
  int levelBegin(int level) const {
    return level < levels() ? levelBegins_[static_cast<std::size_t>(level)] : size();
  }

  // All nodes of a level in the order of its table.
  std::span<const int> tableOrder(int level) const {
    return std::span<const int>(tableOrder_)
        .subspan(static_cast<std::size_t>(levelBegin(level)),
                 static_cast<std::size_t>(levelBegin(level + 1) - levelBegin(level)));
  }

  const ItemSet& set(int node) const { return *sets_[static_cast<std::size_t>(node)]; }
  SetCounter* descriptor(int node) const { return descriptors_[static_cast<std::size_t>(node)]; }
  // Transactions; 0 for a set without descriptor.
  int count(int node) const { return counts_[static_cast<std::size_t>(node)]; }
  // Copies the counts of the descriptors. Cost: O(size()) and the links.
  void readCounts();
  // Whether they still are those of the descriptors. The dictionary must not have gained or lost sets.
  bool hasCurrentCounts() const;
  int length(int node) const { return static_cast<int>(down(node).size()); }
  std::span<const int> down(int node) const { return links(down_, downBegins_, node); }
  std::span<const UpLink> up(int node) const { return links(up_, upBegins_, node); }

  // The node of a set, or kNone.
  int find(const int* items, int length) const;
  int find(const ItemSet& set) const { return find(set.getTheArray(), set.length()); }
  // The node of what a set holds beyond one of its subsets, or kNone.
  int findDifference(int whole, int subset) const;

  // Marks for the nodes, in a round of their own. Made at the first call and after that only for a query
  // within a query: a query's cost does not depend on how large the lattice is.
  LentMarks lendMarks() const;

 private:
  template <typename Link>
  static std::span<const Link> links(const std::vector<Link>& all, const std::vector<std::size_t>& begins,
                                     int node) {
    const auto index = static_cast<std::size_t>(node);
    return {all.data() + begins[index], begins[index + 1] - begins[index]};
  }
  void addLevel(const HashTable& table, int level);
  void linkDown();
  void linkUp();

  std::vector<const ItemSet*> sets_;      // by node
  std::vector<SetCounter*> descriptors_;  // by node
  std::vector<std::uint64_t> codes_;      // by node: the sets' (ItemCode)
  std::vector<int> counts_;               // by node
  std::vector<int> levelBegins_;
  std::vector<int> tableOrder_;       // level by level
  std::vector<SubsetIndex> indexes_;  // by level
  std::vector<int> down_;
  std::vector<std::size_t> downBegins_;
  std::vector<UpLink> up_;
  std::vector<std::size_t> upBegins_;
  mutable std::vector<std::unique_ptr<NodeMarks>> marks_;  // not lent
};

}  // namespace korassoc::detail
