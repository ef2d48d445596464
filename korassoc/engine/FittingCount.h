// Finds out which count leaves few enough itemsets.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "korassoc/engine/ItemsetEnumerator.h"

namespace korassoc::detail {

// FittingCount is told every itemset of at least some count, keeps none, and raises that count whenever it
// has been told more than it may let pass. So a single enumeration ends with a count that leaves few enough.
//
//   told_   [ 3 | 17 | 41 | ... ]      itemsets of the counts first, first + width, first + 2 width, ...
//             x    ^ lowest_           those below are too many and no longer looked for
//
// An enumeration goes through the itemsets of a count before it knows that they are too many. Where this
// happens too often, fewer are let pass, and the count is not the least possible one; in the end the search
// is given up. So its work is bounded: some 28 times maxSets itemsets, few of them in most data, as an
// ItemsetWalk meets the most frequent itemsets first.
class FittingCount final : public ItemsetSink {
 public:
  // firstCount: the least count that comes into question, at least 1. largestCount: of any itemset.
  // maxLength: most items of a set. maxSets: itemsets that may reach the count, at least 0. mayGoOn is asked
  // now and then; false ends the enumeration.
  FittingCount(int firstCount, int largestCount, std::size_t maxLength, int maxSets,
               std::function<bool()> mayGoOn);

  // An itemset of one item.
  void takeItem(int count) { add(count); }
  // Looks for the longer ones, as ItemsetEnumerator does. To be called for all ranks, in any parts.
  bool enumerate(const RankedRows& rows, std::size_t firstRank, std::size_t endRank) {
    return enumerator_.enumerate(rows, firstRank, endRank);
  }

  // After all itemsets: the count. 0 when even the most frequent ones are too many, or it was given up.
  int count() const { return leastCount() <= largestCount_ ? leastCount() : 0; }

  bool take(const std::uint32_t* ranks, std::size_t n, int count) override;
  bool goesOn() override { return mayGoOn_(); }

 private:
  int leastCount() const;
  void add(int count);

  int firstCount_;
  int largestCount_;
  int width_;  // counts that share a place
  std::vector<std::int64_t> told_;
  std::size_t lowest_ = 0;
  std::int64_t sets_ = 0;  // from lowest_ on
  std::int64_t mayPass_;
  std::int64_t patience_;  // itemsets that may be told until fewer may pass
  std::int64_t patienceLeft_;
  int halvings_ = 0;
  std::function<bool()> mayGoOn_;
  ItemsetEnumerator enumerator_;
};

}  // namespace korassoc::detail
