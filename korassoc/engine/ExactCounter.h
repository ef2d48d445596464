// Counts given itemsets exactly over a pass of transactions.

#pragma once

#include <cstddef>
#include <span>
#include <vector>

class SetCounter;
class SetDictionary;

namespace korassoc::detail {

// ExactCounter holds the itemsets to be counted as a tree of their prefixes, so that a transaction finds all
// of them in one walk, whether or not the prefixes are stored themselves:
//
//   nodes_      [ root | 1 | 3 | 8 | 1 3 | 1 8 | 3 8 | 1 3 8 ]     children of a node: adjacent, by ascending
//   item
//
// Every choice of positions of the transaction that spells a set counts it once.
// Ownership: owns the tree; the counters are the dictionary's and must outlive the pass.
// Cost, per transaction: the stored prefixes that it holds, times a search for the next item.
class ExactCounter {
 public:
  // Builds the tree of the dictionary's sets of at least fromLevel (1 or more) items.
  void prepare(const SetDictionary& dictionary, int fromLevel);
  // Forgets the sets; count() does nothing then.
  void clear() { nodes_ = {}; }
  // Adds one to the counter of each set, for each choice of positions. items: ascending.
  void count(std::span<const int> items);

 private:
  struct Node {
    int item;
    int firstChild;  // index into nodes_
    int childCount;
    SetCounter* counter;  // null: only a prefix
  };
  struct Set {
    const int* items;
    int length;
    SetCounter* counter;
  };

  void build(std::size_t node, std::span<const Set> sets, int depth);
  void countChildren(const Node& node, std::span<const int> items);
  void visit(const Node& child, std::span<const int> rest);

  std::vector<Node> nodes_;
};

}  // namespace korassoc::detail
