// The frequent itemsets that a complete count found.

#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace korassoc::detail {

// All itemsets of one size: set i has the items [i * length, (i + 1) * length), ascending, and counts[i].
struct CompleteLevel {
  std::vector<int> items;
  std::vector<int> counts;  // transactions

  std::span<const int> set(std::size_t i) const {
    const std::size_t length = items.size() / counts.size();
    return {items.data() + i * length, length};
  }
};

// Closed under taking subsets; no set stands twice.
struct CompleteItemsets {
  int transactionCount = 0;
  std::vector<CompleteLevel> levels;  // levels[k]: the sets of k + 1 items

  std::size_t size() const {
    std::size_t sets = 0;
    for (const CompleteLevel& level : levels) sets += level.counts.size();
    return sets;
  }
};

}  // namespace korassoc::detail
