#include "cli/input/Baskets.h"

#include <algorithm>
#include <new>

namespace korassoc::cli {
namespace {

constexpr std::size_t kLeastCapacity = 1024;
constexpr double kMostReserved = sizeof(std::size_t) < 8 ? 1 << 27 : 16.0 * (1 << 30);

}  // namespace

std::size_t Baskets::longest() const {
  std::size_t longest = 0;
  for (std::size_t i = 0; i < size(); ++i) longest = std::max(longest, (*this)[i].size());
  return longest;
}

std::vector<int> Baskets::distinctItems() const {
  const std::span<const int> items(items_.get(), occurrences());
  std::vector<int> distinct;
  const auto bound = static_cast<std::size_t>(itemBits_) + 1;
  if (bound / 16 <= items.size()) {  // marks take little more room than the items themselves
    std::vector<char> seen(bound);
    for (const int item : items) seen[static_cast<std::size_t>(item)] = 1;
    for (std::size_t item = 0; item < bound; ++item) {
      if (seen[item] != 0) distinct.push_back(static_cast<int>(item));
    }
    return distinct;
  }
  distinct.assign(items.begin(), items.end());
  std::sort(distinct.begin(), distinct.end());
  distinct.erase(std::unique(distinct.begin(), distinct.end()), distinct.end());
  distinct.shrink_to_fit();
  return distinct;
}

void BasketBuilder::reserve(double items) {
  if (items > kMostReserved) return;  // room is made as they come
  try {
    grow(0, static_cast<std::size_t>(items));
  } catch (const std::bad_alloc&) {
    return;
  }
}

void BasketBuilder::grow(std::size_t used, std::size_t capacity) {
  capacity = std::max(capacity, kLeastCapacity);
  if (capacity <= capacity_) return;
  auto larger = std::make_unique_for_overwrite<int[]>(capacity);
  std::copy_n(items(), used, larger.get());
  baskets_.items_ = std::move(larger);
  capacity_ = capacity;
}

std::size_t BasketBuilder::sortLastBasket(std::size_t used) {
  int* const begin = items() + baskets_.offsets_.back();
  int* const end = items() + used;
  std::sort(begin, end);
  int* const left = std::unique(begin, end);
  if (left != end) ++basketsWithRepeats_;
  return static_cast<std::size_t>(left - items());
}

void BasketBuilder::renumber(const std::vector<int>& newNumber) {
  baskets_.itemBits_ = 0;
  for (int& item : std::span<int>(items(), used())) {
    item = newNumber[static_cast<std::size_t>(item)];
    baskets_.itemBits_ |= item;
  }
  for (std::size_t i = 0; i < baskets_.size(); ++i) {
    std::sort(items() + baskets_.offsets_[i], items() + baskets_.offsets_[i + 1]);
  }
}

Baskets BasketBuilder::take() { return std::exchange(*this, BasketBuilder()).baskets_; }

}  // namespace korassoc::cli
