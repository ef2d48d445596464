// Itemsets and their counts as the tests write them, and models made of them.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "korassoc/mining/Model.h"
#include "tests/oracle/BruteForce.h"
#include "tests/support/Dice.h"
#include "tests/support/RandomRuns.h"

namespace korassoc {

using Items = std::vector<Item>;

inline Items listOf(std::span<const Item> items) { return {items.begin(), items.end()}; }

// The sets of two or no items and more, in a random order; the empty set is left out.
inline ItemsetTable tableOf(const oracle::brute::Counts& counts, Dice& dice) {
  std::vector<std::pair<Items, int>> sets;
  for (const auto& [items, count] : counts) {
    if (!items.empty()) sets.emplace_back(items, count);
  }
  dice.shuffle(sets);
  ItemsetTable::Columns columns;
  for (const auto& [items, count] : sets) {
    columns.items.insert(columns.items.end(), items.begin(), items.end());
    columns.offsets.push_back(static_cast<std::int64_t>(columns.items.size()));
    columns.counts.push_back(count);
  }
  return ItemsetTable::fromColumns(std::move(columns));
}

// A model of these sets, whose least count is asked for. The count of the empty set is that of the
// transactions.
inline Model modelOf(const oracle::brute::Counts& counts, std::int64_t minCount, Dice& dice) {
  return Model::fromItemsets({tableOf(counts, dice), counts.at({}), Support::count(minCount)});
}

// Frequent sets of random transactions, and how often a set has to be in them.
struct RandomSets {
  explicit RandomSets(std::uint64_t seed) : dice(seed) {
    universe = randomUniverse(dice, dice.between(2, 9));
    const int longest = dice.between(2, std::min(static_cast<int>(universe.size()), 7));
    transactions = randomTransactions(dice, universe, dice.between(1, 80), longest, false);
    minCount = dice.between(1, 1 + static_cast<int>(transactions.size()) / 8);
    counts = oracle::brute::atLeast(oracle::brute::countSubsets(transactions, 10), minCount);
    counts[{}] = static_cast<int>(transactions.size());
    std::sort(universe.begin(), universe.end());
  }

  Dice dice;
  Items universe;  // ascending
  oracle::Transactions transactions;
  int minCount;
  oracle::brute::Counts counts;
};

}  // namespace korassoc
