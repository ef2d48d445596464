#include "korassoc/mining/ItemsetSorter.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <numeric>
#include <string>
#include <utility>

#include "korassoc/mining/Error.h"
#include "korassoc/mining/RuleOrder.h"

namespace korassoc::detail {
namespace {

constexpr int kDigitBits = 11;
constexpr std::size_t kDigits = std::size_t{1} << kDigitBits;
constexpr std::size_t kFewSets = 512;  // below which a radix sort's counters cost more than the sets

std::span<const Item> setAt(std::span<const Item> items, std::size_t length, std::size_t row) {
  return items.subspan(row * length, length);
}

}  // namespace

ItemsetTable ItemsetSorter::sorted(const ItemsetTable& table) {
  bool inOrder = true;
  for (std::size_t row = 1; inOrder && row < table.size(); ++row) {
    inOrder = compareItemsets(table.itemsOf(row - 1), table.itemsOf(row)) < 0;
  }
  if (inOrder) return table;

  struct Level {
    std::vector<Item> items;
    std::vector<std::int64_t> counts, largestCounts;
  };
  std::vector<Level> levels(table.longest() + 1);
  for (const ItemsetView set : table) {
    Level& level = levels[set.items.size()];
    level.items.insert(level.items.end(), set.items.begin(), set.items.end());
    level.counts.push_back(set.count);
    if (table.hasBounds()) level.largestCounts.push_back(set.largestCount);
  }
  ItemsetSorter sorter{ItemRanks(table.items())};
  sorter.reserve(table.size(), table.items().size());
  for (std::size_t length = 1; length < levels.size(); ++length) {
    const Level level = std::move(levels[length]);
    sorter.addLevel<std::int64_t>(length, level.items, level.counts, level.largestCounts);
  }
  return sorter.take();
}

void ItemsetSorter::reserve(std::size_t sets, std::size_t items) {
  columns_.offsets.reserve(sets + 1);
  columns_.items.reserve(items);
  columns_.counts.reserve(sets);
}

template <typename Count>
void ItemsetSorter::addLevel(std::size_t length, std::span<const Item> items, std::span<const Count> counts,
                             std::span<const Count> largestCounts) {
  if (columns_.counts.size() + counts.size() >= std::numeric_limits<std::uint32_t>::max() - 1) {
    throw Error(Error::Kind::kLimit, "there are more itemsets than 32 bits can number");
  }
  rows_.resize(counts.size());
  std::iota(rows_.begin(), rows_.end(), 0U);
  if (!isInOrder(length, items)) order(length, items);
  const std::size_t before = columns_.items.size();
  columns_.items.resize(before + items.size());
  Item* to = columns_.items.data() + before;
  for (const std::uint32_t row : rows_) {
    to = std::copy_n(items.data() + row * length, length, to);
    columns_.offsets.push_back(to - columns_.items.data());
    columns_.counts.push_back(counts[row]);
  }
  refuseRepeats(length, std::span<const Item>(columns_.items).subspan(before));
  if (largestCounts.empty()) return;
  for (const std::uint32_t row : rows_) columns_.largestCounts.push_back(largestCounts[row]);
}

template void ItemsetSorter::addLevel<int>(std::size_t, std::span<const Item>, std::span<const int>,
                                           std::span<const int>);
template void ItemsetSorter::addLevel<std::int64_t>(std::size_t, std::span<const Item>,
                                                    std::span<const std::int64_t>,
                                                    std::span<const std::int64_t>);

ItemsetTable ItemsetSorter::take() {
  return ItemsetTable(ItemsetTable::Trusted(), std::exchange(columns_, ItemsetTable::Columns()));
}

bool ItemsetSorter::isInOrder(std::size_t length, std::span<const Item> items) const {
  for (std::size_t row = 1; row < rows_.size(); ++row) {
    if (compareItemsets(setAt(items, length, row - 1), setAt(items, length, row)) >= 0) return false;
  }
  return true;
}

void ItemsetSorter::order(std::size_t length, std::span<const Item> items) {
  if (rows_.size() < kFewSets) {
    sortByItems(length, items);
  } else {
    sortByKeys(length, items);
  }
}

void ItemsetSorter::sortByItems(std::size_t length, std::span<const Item> items) {
  std::sort(rows_.begin(), rows_.end(), [&](std::uint32_t a, std::uint32_t b) {
    return compareItemsets(setAt(items, length, a), setAt(items, length, b)) < 0;
  });
}

// The last items first: a radix sort keeps the order of equal keys.
void ItemsetSorter::sortByKeys(std::size_t length, std::span<const Item> items) {
  const int bits = std::max(1, static_cast<int>(std::bit_width(ranks_.size() - 1)));
  const std::size_t perKey = static_cast<std::size_t>(64 / bits);
  keyed_.resize(rows_.size());
  scratch_.resize(rows_.size());
  for (std::size_t i = 0; i < rows_.size(); ++i) keyed_[i].row = rows_[i];
  for (std::size_t end = length; end > 0;) {
    const std::size_t begin = (end - 1) / perKey * perKey;
    for (Keyed& keyed : keyed_) {
      const Item* const set = items.data() + keyed.row * length;
      keyed.key = 0;
      for (std::size_t i = begin; i < end; ++i) keyed.key = keyed.key << bits | ranks_.rankOf(set[i]);
    }
    radixSort(static_cast<int>(end - begin) * bits);
    end = begin;
  }
  for (std::size_t i = 0; i < rows_.size(); ++i) rows_[i] = keyed_[i].row;
}

// Sorts keyed_ by keys of so many bits, digit by digit from the least one.
void ItemsetSorter::radixSort(int bits) {
  std::array<std::uint32_t, kDigits> next{};
  for (int shift = 0; shift < bits; shift += kDigitBits) {
    const auto digitOf = [shift](const Keyed& keyed) { return keyed.key >> shift & (kDigits - 1); };
    next.fill(0);
    for (const Keyed& keyed : keyed_) ++next[digitOf(keyed)];
    if (next[digitOf(keyed_.front())] == keyed_.size()) continue;  // all alike
    std::uint32_t sum = 0;
    for (std::uint32_t& place : next) sum += std::exchange(place, sum);
    for (const Keyed& keyed : keyed_) scratch_[next[digitOf(keyed)]++] = keyed;
    keyed_.swap(scratch_);
  }
}

// Sets that are in order by now.
void ItemsetSorter::refuseRepeats(std::size_t length, std::span<const Item> items) const {
  for (std::size_t row = 1; row < rows_.size(); ++row) {
    const std::span<const Item> set = setAt(items, length, row);
    if (compareItemsets(setAt(items, length, row - 1), set) != 0) continue;
    std::string named;
    for (const Item item : set) named += (named.empty() ? "" : ", ") + std::to_string(item);
    throw Error(Error::Kind::kInput, "the itemset {" + named + "} is there twice");
  }
}

}  // namespace korassoc::detail
