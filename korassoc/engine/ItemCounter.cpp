#include "korassoc/engine/ItemCounter.h"

#include <algorithm>
#include <limits>

namespace korassoc::detail {

// --- ItemCodes ---

std::uint32_t ItemCodes::newCodeOf(int item) {
  const auto next = static_cast<std::uint32_t>(items_.size());
  if (item >= 0 && item < kDirectItems) {
    const auto index = static_cast<std::size_t>(item);
    if (index >= direct_.size()) direct_.resize(std::max(index + 1, 2 * direct_.size()), kNone);
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

// --- RankedItems ---

void RankedItems::rankRow(std::span<const std::uint32_t> codes, std::vector<std::uint32_t>& row) const {
  row.resize(codes.size() + 1);  // and room for the one looked at last
  std::size_t length = 0;
  for (const std::uint32_t code : codes) {
    const std::uint32_t rank = rankOfCode(code);
    row[length] = rank;
    length += rank != ItemCodes::kNone ? 1 : 0;
  }
  row.resize(length);
  std::sort(row.begin(), row.end());
}

// --- ItemCounter ---

void ItemCounter::add(const Transaction& transaction, std::vector<std::uint32_t>& codes) {
  const int length = transaction.GetLength();
  if (transactionCount_ < std::numeric_limits<int>::max()) ++transactionCount_;
  for (int i = 0; i < length; ++i) {
    const std::uint32_t code = codes_.codeOf(transaction.GetItem(i));
    if (code == seen_.size()) seen_.emplace_back();
    Seen& seen = seen_[code];
    if (seen.last == transactionCount_) continue;
    seen.last = transactionCount_;
    ++seen.count;
    codes.push_back(code);
  }
}

RankedItems ItemCounter::rank(int minCount) const {
  std::vector<std::uint32_t> frequent;
  for (std::size_t code = 0; code < seen_.size(); ++code) {
    if (seen_[code].count >= minCount) frequent.push_back(static_cast<std::uint32_t>(code));
  }
  std::sort(frequent.begin(), frequent.end(), [this](std::uint32_t a, std::uint32_t b) {
    return seen_[a].count != seen_[b].count ? seen_[a].count > seen_[b].count
                                            : codes_.itemOf(a) < codes_.itemOf(b);
  });
  RankedItems ranked;
  ranked.rankOf.assign(seen_.size(), ItemCodes::kNone);
  for (const std::uint32_t code : frequent) {
    ranked.rankOf[code] = static_cast<std::uint32_t>(ranked.items.size());
    ranked.items.push_back(codes_.itemOf(code));
    ranked.counts.push_back(seen_[code].count);
  }
  return ranked;
}

}  // namespace korassoc::detail
