#include "korassoc/mining/Baskets.h"

#include <limits>
#include <string>
#include <type_traits>
#include <utility>

#include "korassoc/mining/Error.h"

namespace korassoc {
namespace {

[[noreturn]] void refuse(const std::string& sentence) { throw Error(Error::Kind::kInput, sentence); }

template <typename Offset>
void checkOffsets(std::span<const Offset> offsets, std::size_t items) {
  if (offsets.empty())
    refuse("the offsets of baskets are one more than the baskets, so there is at least one");
  Offset last = 0;
  for (std::size_t i = 0; i < offsets.size(); ++i) {
    if (offsets[i] < last) {
      refuse("the offset of basket " + std::to_string(i) + " is " + std::to_string(offsets[i]) + ", below " +
             std::to_string(last));
    }
    last = offsets[i];
  }
  if (static_cast<std::uint64_t>(last) > items) {
    refuse("the offsets of the baskets lead to item " + std::to_string(last) + ", and there are " +
           std::to_string(items));
  }
}

// The smallest and the largest first, so that good items cost no branch each.
void checkItems(std::span<const Item> items, const Labels& labels) {
  std::uint32_t largest = 0;  // a negative item counts as a large one
  for (const Item item : items) {
    const auto number = static_cast<std::uint32_t>(item);
    largest = number > largest ? number : largest;
  }
  if (items.empty() || largest < labels.size()) return;
  refuse("item " + std::to_string(static_cast<Item>(largest)) + " has no label; there are " +
         std::to_string(labels.size()));
}

std::int64_t sumOf(std::span<const std::int64_t> weights) {
  std::int64_t sum = 0;
  for (std::size_t i = 0; i < weights.size(); ++i) {
    if (weights[i] < 0) {
      refuse("the weight of basket " + std::to_string(i) + " is " + std::to_string(weights[i]) + ", below 0");
    }
    if (weights[i] > std::numeric_limits<std::int64_t>::max() - sum) {
      refuse("the weights of the baskets add up to more than 64 bits hold");
    }
    sum += weights[i];
  }
  return sum;
}

}  // namespace

template <typename Offset>
Baskets Baskets::make(std::span<const Offset> offsets, std::span<const Item> items, Labels labels,
                      std::span<const std::int64_t> weights, std::shared_ptr<const void> owner) {
  checkOffsets(offsets, items.size());
  Baskets baskets;
  baskets.size_ = offsets.size() - 1;
  if (!weights.empty() && weights.size() != baskets.size_) {
    refuse("there are " + std::to_string(weights.size()) + " weights for " + std::to_string(baskets.size_) +
           " baskets");
  }
  if (!labels.areNumbers()) {
    const auto first = static_cast<std::size_t>(offsets.front());
    checkItems(items.subspan(first, static_cast<std::size_t>(offsets.back()) - first), labels);
  }
  baskets.owner_ = std::move(owner);
  if constexpr (std::is_same_v<Offset, std::int64_t>) {
    baskets.wide_ = offsets.data();
  } else {
    baskets.narrow_ = offsets.data();
  }
  baskets.items_ = items.data();
  baskets.weights_ = weights;
  baskets.transactions_ = weights.empty() ? static_cast<std::int64_t>(baskets.size_) : sumOf(weights);
  baskets.labels_ = std::move(labels);
  return baskets;
}

Baskets Baskets::fromLists(const std::vector<std::vector<Item>>& baskets, Labels labels) {
  Columns columns;
  columns.offsets.reserve(baskets.size() + 1);
  for (const std::vector<Item>& basket : baskets) {
    columns.items.insert(columns.items.end(), basket.begin(), basket.end());
    columns.offsets.push_back(static_cast<std::int64_t>(columns.items.size()));
  }
  return fromColumns(std::move(columns), std::move(labels));
}

Baskets Baskets::fromColumns(Columns columns, Labels labels) {
  const auto owner = std::make_shared<const Columns>(std::move(columns));
  return make<std::int64_t>(owner->offsets, owner->items, std::move(labels), owner->weights, owner);
}

Baskets Baskets::borrow(std::span<const std::int64_t> offsets, std::span<const Item> items,
                        std::shared_ptr<const void> owner, Labels labels,
                        std::span<const std::int64_t> weights) {
  return make<std::int64_t>(offsets, items, std::move(labels), weights, std::move(owner));
}

Baskets Baskets::borrow(std::span<const std::int32_t> offsets, std::span<const Item> items,
                        std::shared_ptr<const void> owner, Labels labels,
                        std::span<const std::int64_t> weights) {
  return make<std::int32_t>(offsets, items, std::move(labels), weights, std::move(owner));
}

}  // namespace korassoc
