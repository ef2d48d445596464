// Itemsets that are expected to be frequent, with the counters of these and of all that border on them.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "korassoc/engine/ItemsetEnumerator.h"
#include "korassoc/engine/RankedRows.h"

namespace korassoc::detail {

// The itemsets that are frequent in a sample of the transactions, counted over a sample and any number of
// further blocks of transactions. A node is an itemset; a child adds a more frequent item:
//
//   {}   columns 0 1 2 3       the single items of the tree, by rank; not counted here
//   {3}  children {3 0} {3 2}  counters of {3 0} {3 1} {3 2}: one for each sibling before {3}
//   {3 2}  no children         counter of {3 2 0}: {3 0} is the one sibling before it
//
// So the counters of a node are those of its children and of its border: the sets that the siblings before it
// would make with it, but that were not frequent in the sample. A sweep over the rows of a node counts them
// all at once, and the counters lie where it needs them: see ItemsetWalk.
//
// A frequent set X that is not in the tree holds a frequent set of the border, or an item that is not in the
// tree. For let X' be a smallest such set within X. If it has two items or more, its subsets are frequent,
// too, and smaller, so they are in the tree. Be e and r the last two of its items, from the least frequent
// one on, and Q the others: Q + r and Q + e are siblings in the tree, so the node Q + r counts X' as of its
// border. When there is no such set, then, the frequent sets of the tree are all there are. (H. Toivonen,
// VLDB 1996: "Sampling large databases for association rules".)
class CandidateTree {
 public:
  // Asked now and then while the tree is grown or counted.
  using Cancelled = std::function<bool()>;

  // maxLength: most items of a set. maxBytes: what the tree may take. cancelled is lent.
  CandidateTree(std::size_t maxLength, std::uint64_t maxBytes, const Cancelled& cancelled);

  // Makes the tree from a sample: all sets of items of the ranks 0 to rankCount - 1 that are in minCount of
  // its rows. Their counters hold the counts in the sample then. False when it would take too much, or was
  // cancelled. To be called once.
  bool grow(const RankedRows& sample, std::size_t rankCount, int minCount);
  // Adds the counts in further rows, of the same ranks. False when it was cancelled.
  bool count(const RankedRows& block);

  // Hands on the sets of the tree of two and more items that have reached this count, ranks in falling order:
  // the sets {3 0} {3 1} ... of a path before those that go on from {3 0}, {3 1}, ... in turn. False when the
  // sink stopped it.
  bool handOn(int minCount, ItemsetSink& sink) const { return handOnAll(minCount, sink, Part::kTree); }
  // The same for the sets of the border; those go on from none of its kind.
  bool handOnBorder(int minCount, ItemsetSink& sink) const {
    return handOnAll(minCount, sink, Part::kBorder);
  }

  // What a tree of so many single items takes at least: a counter for each pair.
  std::uint64_t leastBytes(std::uint64_t items) const {
    return items * sizeof(Node) + (maxLength_ < 2 ? 0 : items * (items - 1) / 2 * sizeof(int));
  }
  std::uint64_t bytes() const { return nodes_.size() * sizeof(Node) + counters_.size() * sizeof(int); }

 private:
  class Guide;
  class Grower;
  class Counter;

  struct Node {
    std::uint32_t rank;        // of the item it adds
    std::uint32_t column;      // of the sibling of its parent that adds the same item
    std::uint32_t firstChild;  // children are consecutive nodes, in ascending order of rank
    std::uint32_t childCount;
    std::uint32_t firstCounter;  // one for each sibling before it,
    std::uint32_t counterCount;  // but none where its children would have too many items
  };

  enum class Part { kTree, kBorder };

  bool handOnAll(int minCount, ItemsetSink& sink, Part part) const;
  bool handOnBelow(const Node& node, std::vector<std::uint32_t>& path, int minCount, ItemsetSink& sink,
                   Part part) const;

  std::size_t maxLength_;
  std::uint64_t maxBytes_;
  const Cancelled& cancelled_;
  std::size_t rankCount_ = 0;
  std::vector<Node> nodes_;  // the single items, by rank, then the children of one node after the other
  std::vector<int> counters_;
};

}  // namespace korassoc::detail
