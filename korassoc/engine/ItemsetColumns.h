// Itemsets with their counts, in columns.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace korassoc {

// Set i has the items [offsets[i], offsets[i + 1]), ascending and without repeats, and counts[i]. The empty
// set is none of them: its count is that of the transactions.
struct ItemsetColumns {
  int transactions = 0;
  std::vector<std::int64_t> offsets = {0};  // one more than there are sets
  std::vector<int> items;
  std::vector<int> counts;     // transactions; at least so many where maxMissed is there
  std::vector<int> maxMissed;  // how many more there may be; empty where counts are exact

  std::size_t size() const { return offsets.size() - 1; }
  std::span<const int> set(std::size_t i) const {
    const auto begin = static_cast<std::size_t>(offsets[i]);
    return {items.data() + begin, static_cast<std::size_t>(offsets[i + 1]) - begin};
  }
  void add(std::span<const int> set, int count) {
    items.insert(items.end(), set.begin(), set.end());
    offsets.push_back(static_cast<std::int64_t>(items.size()));
    counts.push_back(count);
  }
};

}  // namespace korassoc
