// Enumerates all frequent itemsets of ranked rows, depth first.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "korassoc/engine/ItemsetWalk.h"
#include "korassoc/engine/RankedRows.h"

namespace korassoc::detail {

// Takes the itemsets as they are found.
class ItemsetSink {
 public:
  virtual ~ItemsetSink() = default;

  // n ranks, in no particular order, and the number of transactions that hold them all. False stops the
  // enumeration.
  virtual bool take(const std::uint32_t* ranks, std::size_t n, int count) = 0;
  // Asked now and then in between. False stops the enumeration, too.
  virtual bool goesOn() = 0;
};

// Guides an ItemsetWalk through all sets that are frequent.
class ItemsetEnumerator {
 public:
  // minCount: at least 1. maxLength: most items of a set. The sink and the rows are lent.
  ItemsetEnumerator(int minCount, std::size_t maxLength, ItemsetSink& sink);

  // Finds the sets of two and more items whose least frequent item has a rank in [firstRank, endRank). False
  // when the sink stopped it.
  bool enumerate(const RankedRows& rows, std::size_t firstRank, std::size_t endRank);

  // From now on looks for sets of this count alone, if it is higher. The sink may call this in the middle.
  void raiseMinCount(int minCount) { minCount_ = std::max(minCount_, minCount); }

 private:
  friend class ItemsetWalk<ItemsetEnumerator>;

  int* enter(std::size_t depth, std::uint32_t column, std::size_t rows);
  std::uint32_t nextKept(std::size_t depth, std::uint32_t from, std::uint32_t end);
  bool goesOn();
  bool stopped() const { return stopped_; }

  // The rank of a column of the table of a path of depth items.
  std::uint32_t rankOf(std::size_t depth, std::uint32_t column) const {
    return depth == 0 ? column : ranks_[depth][column];
  }

  int minCount_;
  ItemsetSink& sink_;
  ItemsetWalk<ItemsetEnumerator> walk_;
  bool stopped_ = false;
  std::vector<std::uint32_t> path_;                // ranks of the current set
  std::vector<std::vector<std::uint32_t>> ranks_;  // by depth, by column; those of depth 0 are the columns
  std::vector<int> counts_;                        // by column; all 0 but between enter() and nextKept()
};

}  // namespace korassoc::detail
