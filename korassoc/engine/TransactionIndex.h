// A compact copy of the transactions for counting them completely.

#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "korassoc/engine/ItemCounter.h"
#include "korassoc/engine/RankedRows.h"

namespace korassoc::detail {

// Keeps the transactions of a pass as the codes of their items, as long as they fit a budget.
class TransactionIndex {
 public:
  // budgetBytes: what the kept transactions and the rows made of them may take.
  explicit TransactionIndex(std::uint64_t budgetBytes) : budgetBytes_(budgetBytes) {}

  // Keeps a transaction, its items without repeats. Gives up all of them when the budget is exceeded.
  void add(std::span<const std::uint32_t> codes);
  void giveUp();

  // Whether all transactions were kept.
  bool complete() const { return kept_; }
  // What the kept transactions and the rows made of them take, at most.
  std::uint64_t bytes() const { return bytesFor(cells_.size(), 0); }

  // The kept transactions as rows. Requires complete().
  void toRows(const RankedItems& ranked, RankedRows& rows) const;

  // Bytes that the index of this many item occurrences in this many transactions takes, at most.
  static std::uint64_t bytesFor(std::uint64_t occurrences, std::uint64_t transactions);

 private:
  std::uint64_t budgetBytes_;
  bool kept_ = true;
  std::vector<std::uint32_t> cells_;  // codes of the kept transactions, each closed by kRowEnd
};

}  // namespace korassoc::detail
