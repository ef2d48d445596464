// Counting over a source without an engine: all frequent itemsets, and given ones, against enumeration.

#include "korassoc/engine/CountItemsets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "korassoc/itemsets/CountBound.h"
#include "tests/oracle/BruteForce.h"
#include "tests/support/Dice.h"
#include "tests/support/RandomRuns.h"
#include "tests/support/VectorTransactions.h"

namespace korassoc {
namespace {

using oracle::brute::Counts;
using oracle::brute::Set;

Counts countsOf(const ItemsetColumns& columns) {
  Counts counts;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const std::span<const int> set = columns.set(i);
    EXPECT_TRUE(counts.emplace(Set(set.begin(), set.end()), columns.counts[i]).second) << "a set twice";
  }
  counts[{}] = columns.transactions;
  return counts;
}

ItemsetColumns columnsOf(const std::vector<Set>& sets) {
  ItemsetColumns columns;
  for (const Set& set : sets) columns.add(set, -1);
  return columns;
}

TEST(CountAllItemsets, FindsWhatEnumerationFinds) {
  for (std::uint64_t seed = 0; seed < 60; ++seed) {
    Dice dice(seed);
    const std::vector<int> universe = randomUniverse(dice, dice.between(2, 12));
    const Transactions transactions =
        randomTransactions(dice, universe, dice.between(0, 90), 8, dice.chance(30));
    const int longest = dice.between(1, 6);
    const double support = dice.oneOf<double>({0, 0.05, 0.1, 0.29, 1.0 / 3, 1});
    VectorTransactions source(transactions);
    ItemsetColumns found;
    CompleteCountLimits limits{support, longest};
    if (dice.chance(30)) limits.indexBytes = 500;  // read again, in parts
    ASSERT_EQ(countAllItemsets(source, limits, {}, found), CountOutcome::kDone);
    const int minCount = detail::completeCountBound(static_cast<double>(transactions.size()), support);
    Counts expected = oracle::brute::atLeast(oracle::brute::countSubsets(transactions, longest), minCount);
    expected[{}] = static_cast<int>(transactions.size());
    ASSERT_EQ(countsOf(found), expected) << "seed " << seed;
    EXPECT_TRUE(found.maxMissed.empty());
    for (std::size_t i = 1; i < found.size(); ++i) ASSERT_GE(found.set(i).size(), found.set(i - 1).size());
  }
}

TEST(CountAllItemsets, LeavesTheColumnsWhenItIsNotDone) {
  const Transactions transactions = {{1, 2}, {1, 2}, {1, 3}};
  ItemsetColumns before = columnsOf({{7}});
  ItemsetColumns columns = before;
  const auto expectLeft = [&] {
    EXPECT_EQ(columns.items, before.items);
    EXPECT_EQ(columns.counts, before.counts);
  };
  VectorTransactions source(transactions);
  CompleteCountLimits limits{0.3, 10, 3};
  EXPECT_EQ(countAllItemsets(source, limits, {}, columns), CountOutcome::kTooManyItemsets);
  expectLeft();
  int asked = 0;
  CountWatch watch{[&asked] { return ++asked > 2; }, {}};
  EXPECT_EQ(countAllItemsets(source, {0.3}, watch, columns), CountOutcome::kCancelled);
  expectLeft();
  EXPECT_EQ(countGivenItemsets(source, {[] { return true; }, {}}, columns), CountOutcome::kCancelled);
  expectLeft();
  source.restartResult = 1;
  EXPECT_EQ(countAllItemsets(source, {0.3}, {}, columns), CountOutcome::kNotRestarted);
  EXPECT_EQ(countGivenItemsets(source, {}, columns), CountOutcome::kNotRestarted);
  expectLeft();
  source.restartResult = 0;
  source.throwInNextAt = 1;
  EXPECT_THROW(countAllItemsets(source, {0.3}, {}, columns), std::runtime_error);
  EXPECT_THROW(countGivenItemsets(source, {}, columns), std::runtime_error);
  expectLeft();
}

TEST(CountAllItemsets, TellsHowManyTransactionsItHasRead) {
  VectorTransactions source(Transactions{{1}, {2}, {}});
  std::vector<int> told;
  const CountWatch watch{{}, [&told](int transactions) { told.push_back(transactions); }};
  ItemsetColumns columns;
  ASSERT_EQ(countAllItemsets(source, {0.3}, watch, columns), CountOutcome::kDone);
  EXPECT_EQ(told, (std::vector<int>{1, 2, 3}));
  told.clear();
  ASSERT_EQ(countGivenItemsets(source, watch, columns), CountOutcome::kDone);
  EXPECT_EQ(told, (std::vector<int>{1, 2, 3}));
}

TEST(CountGivenItemsets, CountsWhatEnumerationCounts) {
  for (std::uint64_t seed = 0; seed < 80; ++seed) {
    Dice dice(seed);
    const std::vector<int> universe = randomUniverse(dice, dice.between(2, 12));
    const Transactions transactions =
        randomTransactions(dice, universe, dice.between(0, 90), 8, dice.chance(30));
    const Counts counts = oracle::brute::countSubsets(transactions, 8);
    // Sets with gaps between them, such as no transaction has, twice, in any order.
    std::vector<Set> sets;
    const int percent = dice.oneOf<int>({3, 30, 100});
    for (const auto& [set, count] : counts) {
      if (!set.empty() && dice.chance(percent)) sets.push_back(set);
    }
    for (int i = dice.below(8); i > 0; --i) {
      Set set;
      for (const int item : universe) {
        if (dice.chance(50)) set.push_back(item);
      }
      if (dice.chance(50)) set.push_back(123456);
      std::sort(set.begin(), set.end());
      if (!set.empty()) sets.push_back(set);
    }
    if (!sets.empty()) sets.push_back(dice.oneOf(sets));
    dice.shuffle(sets);
    ItemsetColumns columns = columnsOf(sets);
    columns.maxMissed.assign(sets.size(), 5);
    VectorTransactions source(transactions);
    ASSERT_EQ(countGivenItemsets(source, {}, columns), CountOutcome::kDone);
    EXPECT_EQ(columns.transactions, static_cast<int>(transactions.size()));
    EXPECT_TRUE(columns.maxMissed.empty());
    for (std::size_t i = 0; i < sets.size(); ++i) {
      const auto place = counts.find(sets[i]);
      ASSERT_EQ(columns.counts[i], place != counts.end() ? place->second : 0)
          << "seed " << seed << ", set " << i;
    }
  }
}

// More transactions than a block has: 100,000, of which every third holds 1 and every fifth 2.
TEST(CountGivenItemsets, CountsInBlocks) {
  Transactions transactions;
  for (int t = 0; t < 100000; ++t) {
    std::vector<int> items = {9};
    if (t % 3 == 0) items.push_back(1);
    if (t % 5 == 0) items.push_back(2);
    transactions.push_back(items);
  }
  VectorTransactions source(transactions);
  ItemsetColumns columns = columnsOf({{1, 2}, {1}, {1, 2, 9}, {2, 9}, {3}, {1, 3}});
  ASSERT_EQ(countGivenItemsets(source, {}, columns), CountOutcome::kDone);
  EXPECT_EQ(columns.counts, (std::vector<int>{6667, 33334, 6667, 20000, 0, 0}));
}

TEST(CountGivenItemsets, MayBeGivenNone) {
  VectorTransactions source(Transactions{{1}, {2}});
  ItemsetColumns columns;
  ASSERT_EQ(countGivenItemsets(source, {}, columns), CountOutcome::kDone);
  EXPECT_EQ(columns.transactions, 2);
  EXPECT_EQ(columns.size(), 0U);
}

}  // namespace
}  // namespace korassoc
