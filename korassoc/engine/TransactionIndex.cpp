#include "korassoc/engine/TransactionIndex.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace korassoc::detail {

// --- ItemCodes ---

std::uint32_t ItemCodes::codeOf(int item) {
  const auto next = static_cast<std::uint32_t>(items_.size());
  if (item >= 0 && item < kDirectItems) {
    const auto index = static_cast<std::size_t>(item);
    if (index >= direct_.size()) direct_.resize(std::max(index + 1, 2 * direct_.size()), kNone);
    if (direct_[index] != kNone) return direct_[index];
    direct_[index] = next;
  } else {
    const auto [place, isNew] = others_.try_emplace(item, next);
    if (!isNew) return place->second;
  }
  items_.push_back(item);
  return next;
}

std::uint32_t ItemCodes::find(int item) const {
  if (item >= 0 && item < kDirectItems) {
    const auto index = static_cast<std::size_t>(item);
    return index < direct_.size() ? direct_[index] : kNone;
  }
  const auto place = others_.find(item);
  return place != others_.end() ? place->second : kNone;
}

// --- RankedRows ---

void RankedRows::clear() {
  cells_.clear();
  occurrences_.clear();
  starts_.clear();
  rowCount_ = 0;
}

void RankedRows::addRow(std::span<const std::uint32_t> ranks) {
  if (cells_.empty()) cells_.push_back(kRowEnd);
  cells_.insert(cells_.end(), ranks.begin(), ranks.end());
  cells_.push_back(kRowEnd);
  ++rowCount_;
}

void RankedRows::listOccurrences(std::size_t rankCount) {
  starts_.assign(rankCount + 1, 0);
  for (const std::uint32_t rank : cells_) {
    if (rank != kRowEnd) ++starts_[rank + 1];
  }
  std::partial_sum(starts_.begin(), starts_.end(), starts_.begin());
  occurrences_.resize(starts_.back());
  std::vector<std::size_t> next(starts_.begin(), starts_.end() - 1);
  for (std::size_t position = 0; position < cells_.size(); ++position) {
    const std::uint32_t rank = cells_[position];
    if (rank != kRowEnd) occurrences_[next[rank]++] = static_cast<std::uint32_t>(position);
  }
}

// --- TransactionIndex ---

std::uint64_t TransactionIndex::bytesFor(std::uint64_t occurrences, std::uint64_t transactions) {
  // Kept codes or row cells, with vectors that may have grown to twice their use; occurrences.
  constexpr std::uint64_t kBytesPerOccurrence = 12;
  constexpr std::uint64_t kBytesPerTransaction = 8;
  return occurrences * kBytesPerOccurrence + transactions * kBytesPerTransaction;
}

void TransactionIndex::add(const Transaction& transaction) {
  const int length = transaction.GetLength();
  if (transactionCount_ < std::numeric_limits<int>::max()) ++transactionCount_;
  for (int i = 0; i < length; ++i) {
    const std::uint32_t code = codes_.codeOf(transaction.GetItem(i));
    if (code == counts_.size()) {
      counts_.push_back(0);
      lastSeen_.push_back(0);
    }
    if (lastSeen_[code] == transactionCount_) continue;
    lastSeen_[code] = transactionCount_;
    ++counts_[code];
    if (kept_) cells_.push_back(code);
  }
  if (!kept_) return;
  cells_.push_back(RankedRows::kRowEnd);
  // Positions of cells have 32 bits.
  if (bytesFor(cells_.size(), 0) > budgetBytes_ || cells_.size() >= RankedRows::kRowEnd - 1) {
    kept_ = false;
    cells_ = {};
  }
}

RankedItems TransactionIndex::rank(int minCount) const {
  std::vector<std::uint32_t> frequent;
  for (std::size_t code = 0; code < counts_.size(); ++code) {
    if (counts_[code] >= minCount) frequent.push_back(static_cast<std::uint32_t>(code));
  }
  std::sort(frequent.begin(), frequent.end(), [this](std::uint32_t a, std::uint32_t b) {
    return counts_[a] != counts_[b] ? counts_[a] > counts_[b] : codes_.itemOf(a) < codes_.itemOf(b);
  });
  RankedItems ranked;
  ranked.rankOf.assign(counts_.size(), ItemCodes::kNone);
  for (const std::uint32_t code : frequent) {
    ranked.rankOf[code] = static_cast<std::uint32_t>(ranked.items.size());
    ranked.items.push_back(codes_.itemOf(code));
    ranked.counts.push_back(counts_[code]);
  }
  return ranked;
}

void TransactionIndex::toRows(const RankedItems& ranked, RankedRows& rows) {
  std::vector<std::uint32_t> row;
  for (const std::uint32_t code : cells_) {
    if (code != RankedRows::kRowEnd) {
      if (ranked.rankOf[code] != ItemCodes::kNone) row.push_back(ranked.rankOf[code]);
      continue;
    }
    if (row.size() >= 2) {
      std::sort(row.begin(), row.end());
      rows.addRow(row);
    }
    row.clear();
  }
  cells_ = {};
  rows.listOccurrences(ranked.items.size());
}

}  // namespace korassoc::detail
