// A compact copy of the transactions for counting them completely.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

#include "korassoc/engine/Transaction.h"

namespace korassoc::detail {

// Gives every item a code: 0, 1, 2, ... in order of arrival.
// Cost: O(1); small non-negative items through an array, the others through a hash map.
class ItemCodes {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  std::uint32_t codeOf(int item);
  // kNone for an item that was never met.
  std::uint32_t find(int item) const;
  std::size_t size() const { return items_.size(); }
  int itemOf(std::size_t code) const { return items_[code]; }

 private:
  static constexpr int kDirectItems = 1 << 20;

  std::vector<std::uint32_t> direct_;  // by item, kNone where there is none
  std::unordered_map<int, std::uint32_t> others_;
  std::vector<int> items_;  // by code
};

// The transactions as rows of item ranks, rank 0 being the most frequent item. Infrequent items are left out,
// and so are rows of fewer than two items: they add nothing to what is counted here.
//
//   cells   # | 0 3 7 | # | 1 3 | # | 0 1 7 | #       # is kRowEnd; ranks ascend within a row
//
// With the rows go the occurrences: for each rank, the cells that hold it. A cell is enough to find the part
// of its row with the more frequent items: it reaches back to the row end before it.
class RankedRows {
 public:
  static constexpr std::uint32_t kRowEnd = 0xFFFFFFFF;

  void clear();
  // Appends a row of at least two ascending ranks.
  void addRow(std::span<const std::uint32_t> ranks);
  // Lists the occurrences of the ranks 0 to rankCount - 1. To be called once, after the last row.
  void listOccurrences(std::size_t rankCount);

  // The ranks before the given cell in its row are *(cell - 1), *(cell - 2), ... up to kRowEnd.
  const std::uint32_t* cell(std::uint32_t position) const { return cells_.data() + position; }
  const std::vector<std::uint32_t>& cells() const { return cells_; }
  std::size_t rowCount() const { return rowCount_; }
  const std::uint32_t* occurrencesBegin(std::size_t rank) const {
    return occurrences_.data() + starts_[rank];
  }
  const std::uint32_t* occurrencesEnd(std::size_t rank) const {
    return occurrences_.data() + starts_[rank + 1];
  }

 private:
  std::vector<std::uint32_t> cells_;
  std::vector<std::uint32_t> occurrences_;
  std::vector<std::size_t> starts_;
  std::size_t rowCount_ = 0;
};

// The frequent items of a source, by falling count, equal counts by item.
struct RankedItems {
  std::vector<int> items;             // by rank
  std::vector<int> counts;            // by rank: transactions
  std::vector<std::uint32_t> rankOf;  // by code; ItemCodes::kNone for infrequent items
};

// Counts the items of a pass over the transactions and, as long as they fit a budget, keeps the transactions.
//
// Repeats of an item within a transaction count once.
class TransactionIndex {
 public:
  // budgetBytes: what the kept transactions and the rows made of them may take.
  explicit TransactionIndex(std::uint64_t budgetBytes) : budgetBytes_(budgetBytes) {}

  void add(const Transaction& transaction);

  // Transactions seen.
  int transactionCount() const { return transactionCount_; }
  // Whether all of them were kept. When not, only the counts are complete.
  bool complete() const { return kept_; }
  const ItemCodes& codes() const { return codes_; }

  RankedItems rank(int minCount) const;
  // The kept transactions as rows; gives up the kept ones. Requires complete().
  void toRows(const RankedItems& ranked, RankedRows& rows);

  // Bytes that the index of this many item occurrences in this many transactions takes, at most.
  static std::uint64_t bytesFor(std::uint64_t occurrences, std::uint64_t transactions);

 private:
  std::uint64_t budgetBytes_;
  bool kept_ = true;
  int transactionCount_ = 0;
  ItemCodes codes_;
  std::vector<int> counts_;           // by code
  std::vector<int> lastSeen_;         // by code: the last transaction with it
  std::vector<std::uint32_t> cells_;  // codes of the kept transactions, each closed by kRowEnd
};

}  // namespace korassoc::detail
