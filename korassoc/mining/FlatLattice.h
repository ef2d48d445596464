// Itemsets with links to the sets one item smaller and one item larger, in a few arrays.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "korassoc/mining/ItemRanks.h"
#include "korassoc/mining/ItemsetTable.h"
#include "korassoc/mining/Lazy.h"

namespace korassoc::detail {

// FlatLattice numbers the sets of a table as nodes, from 1 in their order; node 0 is the empty set:
//
//   node     0    1   2   3    4     5   ...     row of the table: node - 1
//   set      {}   1   3   8   1 3   1 8
//   down     for each item of the set, in order: the node of the set without it
//   up       for each set one item larger, by the item that it adds: that item and the node
//
// The order makes a tree of prefixes: the sets that add one larger item to a set are neighbours.
//
//   firstExtension_[4]   the node of 1 3 8, the first set that begins with 1 3; they end where those of 5
//   begin
//
// So a set is found by its items one after the other, and the links down of neighbours are found together: 1
// 3 8 and 1 3 9 without their 1 are 3 8 and 3 9, which are neighbours too.
//
// A complete result is regular: every subset of a set is in the table and counted at least as often. In a
// table that is not, a link down to a missing set is kNone, and sets are found by binary search.
//
// Threads: any number of readers.
// Cost of making it: about 10 ns a link. Memory: 16 bytes a set and 4 a link, beside the table; the links up
// take 8 bytes each, once they have been asked for.
class FlatLattice {
 public:
  using Node = std::uint32_t;
  static constexpr Node kNone = 0xFFFFFFFF;

  struct UpLink {
    Item item;
    Node node;
  };

  // itemsets: in the order of compareItemsets(), each once. transactions: the count of the empty set.
  FlatLattice(ItemsetTable itemsets, std::int64_t transactions);

  const ItemsetTable& itemsets() const { return itemsets_; }
  // Whether every subset of a set is there and counted at least as often as the set.
  bool isRegular() const { return regular_; }

  // Nodes, the empty set included.
  Node size() const { return static_cast<Node>(counts_.size()); }
  std::size_t longest() const { return levelBegins_.size() - 2; }
  // The first node of a length; the end of the shorter ones. Requires length <= longest() + 1.
  Node levelBegin(std::size_t length) const { return levelBegins_[length]; }
  // Cost: a binary search among the lengths. Who goes through nodes knows their lengths, so these are
  // arguments below.
  std::size_t lengthOf(Node node) const;

  std::int64_t count(Node node) const { return counts_[node]; }
  std::span<const Item> items(Node node, std::size_t length) const {
    return {itemsets_.items().data() + place(node, length), length};
  }
  // Link i leads to the set without its item i; kNone when that is not there.
  std::span<const Node> down(Node node, std::size_t length) const {
    return {down_.data() + place(node, length), length};
  }
  // By item. The first call makes the links up.
  std::span<const UpLink> up(Node node) const;

  // The node of a set (ascending items), or kNone.
  Node find(std::span<const Item> items) const;
  // The node of the set with one more item, larger than its own; or kNone.
  Node extension(Node node, std::size_t length, Item item) const;
  // The node of what a set holds beyond one of its subsets, or kNone. Takes part == kNone for no answer.
  Node difference(Node whole, std::size_t wholeLength, Node part, std::size_t partLength) const;

  // All items of the sets.
  const ItemRanks& ranks() const { return ranks_; }

 private:
  struct UpLinks {
    std::vector<std::size_t> begins;  // by node
    std::vector<UpLink> links;
  };

  // Where the items of a set begin, and its links down.
  std::size_t place(Node node, std::size_t length) const {
    return placeBegins_[length] + static_cast<std::size_t>(node - levelBegins_[length]) * length;
  }
  void divideIntoLevels();
  bool linkPrefixes();
  bool linkPrefixes(std::size_t length);
  bool linkDownByNeighbours();
  bool joinNeighbours(Node parent, std::size_t length);
  void linkDownBySearch();
  bool countsFall() const;
  Node search(std::span<const Item> items) const;
  UpLinks makeUpLinks() const;

  ItemsetTable itemsets_;
  ItemRanks ranks_;
  std::vector<std::int64_t> counts_;      // by node
  std::vector<Node> levelBegins_;         // by length, to one beyond the longest
  std::vector<std::size_t> placeBegins_;  // by length
  std::vector<Item> lastItems_;           // by node: the largest item
  std::vector<Node> firstExtensions_;     // by node, and one more
  std::vector<Node> down_;
  bool prefixesLinked_ = false;
  bool regular_ = false;
  Lazy<UpLinks> up_;
};

}  // namespace korassoc::detail
