// Counts of random small data, by brute force.

#pragma once

#include <vector>

#include "tests/oracle/BruteForce.h"
#include "tests/support/Dice.h"

// Up to maxTransactions transactions over the given items, each holding an item with a chance of its own; the
// exact counts of the sets of at most longest items that occur at least minCount times, the empty set
// included.
inline oracle::brute::Counts randomCounts(Dice& dice, const std::vector<int>& items, int maxTransactions,
                                          int longest, int minCount) {
  std::vector<int> chances;
  for (std::size_t i = 0; i < items.size(); ++i) chances.push_back(dice.between(10, 90));
  std::vector<std::vector<int>> transactions(static_cast<std::size_t>(dice.between(1, maxTransactions)));
  for (std::vector<int>& transaction : transactions) {
    for (std::size_t i = 0; i < items.size(); ++i) {
      if (dice.chance(chances[i])) transaction.push_back(items[i]);
    }
  }
  oracle::brute::Counts counts =
      oracle::brute::atLeast(oracle::brute::countSubsets(transactions, longest), minCount);
  counts[{}] = static_cast<int>(transactions.size());
  return counts;
}
