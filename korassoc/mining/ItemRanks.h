// Items by their place among all items.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

#include "korassoc/mining/Item.h"

namespace korassoc::detail {

// Numbers the different items of a column: 0, 1, 2, ... in ascending order.
// Cost of rankOf(): a look into an array, or into a hash map where the items lie far apart.
class ItemRanks {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  ItemRanks() = default;
  explicit ItemRanks(std::span<const Item> occurrences);

  std::size_t size() const { return items_.size(); }
  Item item(std::size_t rank) const { return items_[rank]; }
  // kNone for an item that does not occur.
  std::uint32_t rankOf(Item item) const {
    const auto index = static_cast<std::uint32_t>(item) - static_cast<std::uint32_t>(least_);
    if (index < direct_.size()) return direct_[index];
    return scattered_.empty() ? kNone : rankOfScattered(item);
  }

 private:
  std::uint32_t rankOfScattered(Item item) const;

  std::vector<Item> items_;  // by rank
  Item least_ = 0;
  std::vector<std::uint32_t> direct_;  // by distance from the least item
  std::unordered_map<Item, std::uint32_t> scattered_;
};

}  // namespace korassoc::detail
