#include "korassoc/engine/TransactionIndex.h"

namespace korassoc::detail {

std::uint64_t TransactionIndex::bytesFor(std::uint64_t occurrences, std::uint64_t transactions) {
  // Kept codes or row cells, with vectors that may have grown to twice their use; occurrences.
  constexpr std::uint64_t kBytesPerOccurrence = 12;
  constexpr std::uint64_t kBytesPerTransaction = 8;
  return occurrences * kBytesPerOccurrence + transactions * kBytesPerTransaction;
}

void TransactionIndex::add(std::span<const std::uint32_t> codes) {
  if (!kept_) return;
  cells_.insert(cells_.end(), codes.begin(), codes.end());
  cells_.push_back(RankedRows::kRowEnd);
  // Positions of cells have 32 bits.
  if (bytes() > budgetBytes_ || cells_.size() >= RankedRows::kRowEnd - 1) giveUp();
}

void TransactionIndex::giveUp() {
  kept_ = false;
  cells_ = {};
}

void TransactionIndex::toRows(const RankedItems& ranked, RankedRows& rows) const {
  rows.reserve(cells_.size());
  std::vector<std::uint32_t> row;
  const std::uint32_t* begin = cells_.data();
  for (const std::uint32_t& cell : cells_) {
    if (cell != RankedRows::kRowEnd) continue;
    ranked.rankRow({begin, &cell}, row);
    if (row.size() >= 2) rows.addRow(row);
    begin = &cell + 1;
  }
  rows.listOccurrences(ranked.items.size());
}

}  // namespace korassoc::detail
