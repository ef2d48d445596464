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
// Every choice of positions of the transaction that spells a set counts it once. A set that has been counted
// since it was stored counts up to the transaction before; the tree is made anew whenever half of its sets
// are done with.
// Ownership: owns the tree; the counters and the stored items are the dictionary's and must outlive the pass.
// Cost, per transaction: the stored prefixes that it holds, times a search for the next item.
class ExactCounter {
 public:
  // What the counters hold already: nothing, or the transactions from the one that stored the set on.
  enum class Counted { kNothing, kSinceStored };

  // Takes the dictionary's sets of at least fromLevel (1 or more) items, for a pass from its start.
  void prepare(const SetDictionary& dictionary, int fromLevel, Counted counted);
  // Forgets the sets; count() does nothing then.
  void clear() { *this = {}; }
  // Takes the next transaction: adds one to the counter of each set that has not been counted in it, for each
  // choice of positions. items: ascending.
  void count(std::span<const int> items);
  // Whether no further transaction can change a counter; there is no need to hand them in then.
  bool isDone() const { return number_ >= lastOfAll_; }

 private:
  struct Node {
    int item;
    int firstChild;  // index into nodes_
    int childCount;
    int last;             // number of the last transaction in which the set counts; 0: only a prefix
    SetCounter* counter;  // null: only a prefix
  };
  struct Set {
    const int* items;
    int length;
    int last;
    SetCounter* counter;
  };

  void plant();
  void build(std::size_t node, std::span<const Set> sets, int depth);
  void countChildren(const Node& node, std::span<const int> items);
  void visit(const Node& child, std::span<const int> rest);

  std::vector<Node> nodes_;
  std::vector<Set> sets_;  // of the tree, ascending; none when they all count to the end
  int number_ = 0;         // of the transaction, from 1
  int lastOfHalf_ = 0;     // half of the sets count up to here at most,
  int lastOfAll_ = 0;      // and all of them up to here
};

}  // namespace korassoc::detail
