// Searches that walk the lattice upward.

#pragma once

#include <set>
#include <vector>

#include "korassoc/dictionary/LatticeGraph.h"
#include "korassoc/dictionary/SemiLattice.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/itemsets/ItemSet.h"

namespace korassoc::detail {

// Bounds of a search, all inclusive. Counts are transactions, lengths items.
struct SearchBounds {
  int minCount;
  int maxCount;
  long long minLength;
  long long maxLength;
};

// A set that is too frequent is not reported but still extended: its supersets may be within the bounds.
// Cost: O(sets within minCount and maxLength above the start, and their links).
class LatticeSearch {
 public:
  // Of the results of supersets() and containing().
  enum class Order {
    kAsSets,  // that of ItemSet: fewer items first, then item by item
    kAny      // whichever is fastest; fewer items first
  };

  explicit LatticeSearch(const LatticeGraph& graph, Order order = Order::kAsSets)
      : graph_(graph), order_(order) {}

  // The nodes of the stored supersets of base, base included. allowed: the only items that may be added,
  // null: all. Sets in skipped, if given, are neither reported nor extended, but base is.
  std::vector<int> supersets(const ItemSet& base, const ItemSet* allowed, const SearchBounds& bounds,
                             const std::set<ItemSet>* skipped = nullptr) const;
  // The nodes of the stored sets that hold at least one of the items.
  std::vector<int> containing(const ItemSet& items, const SearchBounds& bounds,
                              const std::set<ItemSet>* skipped = nullptr) const;
  // The count of the k-th most frequent among base and its supersets, as a fraction of transactionCount; -1.0
  // when there are fewer than k of them, k below 1 included, or base is not stored.
  double support(const ItemSet& base, int k, int transactionCount) const;
  // The sets of at least minCount none of whose stored supersets reaches it.
  std::vector<int> maximal(int minCount) const;

 private:
  std::vector<int> climb(std::vector<int> level, std::vector<int> found, const ItemSet* allowed,
                         const SearchBounds& bounds, const std::set<ItemSet>* skipped) const;
  bool reports(int node, const SearchBounds& bounds) const;
  bool hasDescriptor(int node) const;
  void dropSubsets(std::vector<int>& nodes) const;

  const LatticeGraph& graph_;
  Order order_;
};

// A new dictionary with the sets of at least minFraction of the transactions that hold none of leaveOut,
// linked among themselves; the empty set is always kept. The caller owns it.
SemiLattice* filteredCopy(const SetDictionary& dictionary, double minFraction, const ItemSet* leaveOut);

}  // namespace korassoc::detail
