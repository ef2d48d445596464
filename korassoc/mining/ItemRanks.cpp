#include "korassoc/mining/ItemRanks.h"

#include <algorithm>

namespace korassoc::detail {

ItemRanks::ItemRanks(std::span<const Item> occurrences) {
  if (occurrences.empty()) return;
  const auto [least, most] = std::minmax_element(occurrences.begin(), occurrences.end());
  least_ = *least;
  const std::uint64_t range =
      static_cast<std::uint64_t>(static_cast<std::int64_t>(*most) - static_cast<std::int64_t>(*least)) + 1;
  constexpr std::uint64_t kSmallRange = 1 << 16;
  if (range <= std::max<std::uint64_t>(kSmallRange, occurrences.size())) {
    direct_.assign(range, kNone);
    for (const Item item : occurrences)
      direct_[static_cast<std::uint32_t>(item) - static_cast<std::uint32_t>(least_)] = 0;
    for (std::size_t index = 0; index < direct_.size(); ++index) {
      if (direct_[index] == kNone) continue;
      direct_[index] = static_cast<std::uint32_t>(items_.size());
      items_.push_back(
          static_cast<Item>(static_cast<std::int64_t>(least_) + static_cast<std::int64_t>(index)));
    }
    return;
  }
  for (const Item item : occurrences) {
    if (scattered_.try_emplace(item, 0).second) items_.push_back(item);
  }
  std::sort(items_.begin(), items_.end());
  for (std::size_t rank = 0; rank < items_.size(); ++rank)
    scattered_[items_[rank]] = static_cast<std::uint32_t>(rank);
}

std::uint32_t ItemRanks::rankOfScattered(Item item) const {
  const auto place = scattered_.find(item);
  return place != scattered_.end() ? place->second : kNone;
}

}  // namespace korassoc::detail
