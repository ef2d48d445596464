// Counts given itemsets over any number of transactions in the memory of a few.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "korassoc/engine/ItemCounter.h"
#include "korassoc/engine/RankedRows.h"
#include "korassoc/engine/Transaction.h"

namespace korassoc::detail {

// The given sets as a tree, from the least frequent item of a set to the most frequent one. Transactions come
// in blocks: as soon as a block is full, all sets are counted in it by one ItemsetWalk, and it is forgotten.
// How frequent the items are, is taken from the first block.
//
//   {3}    children {3 0} {3 1} {3 2}     of the given sets {3 2 1} and {3 0}
//   {3 2}  child {3 2 1}
//
// The walk extends a set by those that its parent has been extended by: {3 1} is there so that {3 2} can be
// extended by the 1. Where all subsets of a given set are given too, there are no nodes beside these.
class GivenItemsets {
 public:
  // Asked now and then while a block is counted.
  using Cancelled = std::function<bool()>;

  // Set i has the items [offsets[i], offsets[i + 1]), without repeats. cancelled is lent.
  GivenItemsets(std::span<const std::int64_t> offsets, std::span<const int> items,
                const Cancelled& cancelled);

  // Counts a transaction. An item that it repeats counts once. False when it was cancelled.
  bool add(const Transaction& transaction);
  // Counts what has come since the last full block. False when it was cancelled.
  bool finish();

  // After finish(): the transactions that hold each set, in the order given.
  std::vector<int> counts() const;

 private:
  class Guide;

  struct Node {
    std::uint32_t column;  // of the sibling of its parent that adds the same item; of a single item, its rank
    std::uint32_t firstChild;  // children are consecutive nodes, in ascending order of rank
    std::uint32_t childCount;
    int count;
  };
  // A given set without the items of a node's path: the ranks [begin, end), falling.
  struct Rest {
    std::uint32_t set;
    std::uint32_t begin, end;
  };

  void rankItems();
  void plant();
  void buildChildren(std::uint32_t first, std::uint32_t end, std::span<Rest> rests);
  void addRow();
  bool countBlock();

  std::vector<std::int64_t> offsets_;
  std::vector<std::uint32_t> ranks_;  // of the sets' items: codes until they are ranked
  const Cancelled& cancelled_;
  ItemCodes codes_;                    // of the given items alone
  std::vector<int> itemCounts_;        // by code
  std::vector<int> lastSeen_;          // by code: the transaction
  std::vector<std::uint32_t> rankOf_;  // by code; empty before the first block is full
  std::vector<std::uint32_t> codeOf_;  // by rank
  std::size_t longest_ = 0;            // items of a set
  std::vector<std::uint32_t>
      unranked_;  // the first block: codes, each transaction closed by RankedRows::kRowEnd
  int transactions_ = 0;
  int blockTransactions_ = 0;
  std::vector<std::uint32_t> row_;  // of one transaction
  RankedRows block_;
  std::vector<Node> nodes_;  // the single items, by rank, then the children of one node after the other
  std::vector<std::uint32_t> rankOfNode_;  // while the tree is made
  std::vector<std::uint32_t> nodeOf_;      // by set
};

}  // namespace korassoc::detail
