// A pass that finds every frequent itemset with its exact count, whatever was counted before.

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "korassoc/dictionary/CompleteItemsets.h"
#include "korassoc/engine/BlockCounter.h"
#include "korassoc/engine/ItemCounter.h"
#include "korassoc/engine/ItemsetEnumerator.h"
#include "korassoc/engine/MultiPassTransIter.h"
#include "korassoc/engine/PassedSets.h"
#include "korassoc/engine/TransactionIndex.h"

namespace korassoc::detail {

// What a complete pass is to find and may take.
struct CompletePassLimits {
  double minSupport;          // fraction of the transactions
  int maxLength;              // items of a set
  int maxSets;                // itemsets found, beyond which the pass gives up
  std::uint64_t budgetBytes;  // memory for the index of the transactions

  // The sample, beyond which transactions are counted in blocks, has so many transactions at least and so
  // many that a set just frequent is expected in sampleCount of them; or else this much of the index.
  int sampleTransactions = 1 << 17;
  int sampleCount = 150;
  std::uint64_t sampleBytes = std::uint64_t{1} << 27;
  // A block has this many transactions, or this much of the index.
  int blockTransactions = 1 << 15;
  std::uint64_t blockBytes = std::uint64_t{1} << 23;
  // When so many itemsets have been found, or this part of maxSets if it is more, the pass looks whether more
  // than maxSets are certain to come.
  int lookAheadSets = 1 << 16;
  int lookAheadPart = 16;
};

// Reads the source to its end and counts the items. What becomes of the transactions:
//
//   a sample, or fewer       are kept in an index, in which the itemsets are enumerated
//   more than a sample       are counted in blocks, see BlockCounter. When sets passed that the sample had
//                            not made expect, the transactions that hold one of them are read again, into
//                            an index, for the sets that do
//   too much to expect       all are kept in the index as long as its budget lasts; when it did not, they are
//                            read again for it
//
// What is read again and would not fit the budget is read once more, to find out how much of the index each
// item calls for, and then in parts: the index of a part of the items, as much as the budget holds, and the
// sets of which the least frequent item is of that part. A part is never less than one item, so the budget is
// exceeded where a single item needs more.
//
// Repeats of an item within a transaction count once. Which sets are found does not depend on the order of
// the transactions. They are handed on in this order: the single items by falling count; where blocks were
// counted, the sets expected, in the order of CandidateTree::handOn(); the others in that of ItemsetWalk.
class CompletePass {
 public:
  enum class Outcome { kDone, kCancelled, kNotRestarted, kTooManySets };

  struct Watch {
    std::function<bool()> cancelled;  // asked at every transaction and often in between
    // After every transaction of the first reading, with their number.
    std::function<void(int transactions)> onRead;

    // While itemsets are enumerated: whenever this many have been found since the last call, and earlier
    // where the search finds few. With the number found so far. 0: never.
    int itemsetsBetweenCalls = 0;
    std::function<void(int itemsets)> onFound = {};
  };

  CompletePass(MultiPassTransIter& source, const CompletePassLimits& limits, const Watch& watch);

  // Exceptions of the source and of the watch are let through.
  Outcome run();
  // What run() found, when it is done.
  const CompleteItemsets& itemsets() const { return found_; }
  // The same, taken out of the pass.
  CompleteItemsets takeItemsets() { return std::move(found_); }

  // After kTooManySets: a count of transactions that at most maxSets itemsets reach, usually the least one or
  // close to it. Reads the source again. Takes about as long as the pass has taken to find what it has, or to
  // find a million sets, and no memory for them: what run() found is given up. 0 when no count is known: the
  // pass was cancelled, memory ran out, or too many itemsets are in as many transactions as an item can be.
  // Exceptions of the source and of the watch are let through.
  int countThatFits();

 private:
  class Pulse;
  class Collector;

  // Rows that are being enumerated, for itemsets whose least frequent item is of these ranks.
  struct Enumerated {
    const RankedRows* rows = nullptr;
    std::size_t firstRank = 0;
    std::size_t endRank = 0;
  };

  template <typename Handle>
  Outcome readAll(Handle&& handle);
  template <typename Handle>
  Outcome readRows(Handle&& handle);
  bool sampleIsFull() const;
  void startBlocks();
  bool tooManyAreCertain() const;
  Outcome enumerateRows(ItemsetSink& sink);
  Outcome enumerateBlocks(ItemsetSink& sink);
  template <typename Enumerate>
  Outcome enumerateInParts(Enumerate&& enumerate);
  Outcome costsOfRanks(std::vector<std::uint64_t>& costs);

  MultiPassTransIter& source_;
  CompletePassLimits limits_;
  const Watch& watch_;
  ItemCounter items_;
  TransactionIndex index_;
  std::unique_ptr<BlockCounter> blocks_;  // null as long as the index holds the transactions
  bool sampled_ = false;                  // whether blocks were tried
  std::vector<std::uint32_t> codes_;      // of one transaction
  int minCount_ = 1;
  RankedItems ranked_;  // the frequent items
  PassedSets passed_;   // what was not expected of the blocks
  Enumerated now_;
  CompleteItemsets found_;
};

}  // namespace korassoc::detail
