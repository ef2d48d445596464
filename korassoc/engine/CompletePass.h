// A pass that finds every frequent itemset with its exact count, whatever was counted before.

#pragma once

#include <cstdint>
#include <functional>

#include "korassoc/dictionary/CompleteItemsets.h"
#include "korassoc/engine/ItemsetEnumerator.h"
#include "korassoc/engine/MultiPassTransIter.h"
#include "korassoc/engine/TransactionIndex.h"

namespace korassoc::detail {

// What a complete pass is to find and may take.
struct CompletePassLimits {
  double minSupport;          // fraction of the transactions
  int maxLength;              // items of a set
  int maxSets;                // itemsets found, beyond which the pass gives up
  std::uint64_t budgetBytes;  // memory for the index of the transactions
};

// Reads the source to its end, counts the items and keeps the transactions in an index, in which it
// enumerates the itemsets. When the index would not fit its budget:
//
//   1st pass   counts the items                          2nd pass   how much of the index each item calls for
//   further    the index of a part of the items, as much as the budget holds, and the sets of which the least
//              frequent item is of that part
//
// A part is never less than one item, so the budget is exceeded where a single item needs more.
// Repeats of an item within a transaction count once. Nothing depends on the order of the transactions.
class CompletePass {
 public:
  enum class Outcome { kDone, kCancelled, kNotRestarted, kTooManySets };

  struct Watch {
    std::function<bool()> cancelled;  // asked at every transaction and often in between
    std::function<void(int transactions)>
        onRead;  // after every transaction of the first pass, with their number
  };

  CompletePass(MultiPassTransIter& source, const CompletePassLimits& limits, const Watch& watch);

  // Exceptions of the source and of the watch are let through.
  Outcome run();
  // What run() found, when it is done.
  const CompleteItemsets& itemsets() const { return found_; }

 private:
  class Collector;

  template <typename Handle>
  Outcome readAll(Handle&& handle);
  Outcome enumerateInParts(const RankedItems& ranked, Collector& collector);
  Outcome costsOfRanks(const RankedItems& ranked, std::vector<std::uint64_t>& costs);
  void rankRow(const Transaction& transaction, const RankedItems& ranked,
               std::vector<std::uint32_t>& row) const;

  MultiPassTransIter& source_;
  CompletePassLimits limits_;
  const Watch& watch_;
  TransactionIndex index_;
  int minCount_ = 1;
  CompleteItemsets found_;
};

}  // namespace korassoc::detail
