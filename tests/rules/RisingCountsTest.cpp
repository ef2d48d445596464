// Rules of lattices in which a set may be counted more often than its subsets, as phase I can leave them,
// against the definition of redundancy carried out word by word. The same of lattices without such sets: what
// is redundant is told from the counts there.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "korassoc/rules/AssociationRule.h"
#include "tests/support/TestLattice.h"

namespace {

using Items = std::vector<int>;
using Counts = oracle::brute::Counts;
using Splits = std::set<std::pair<Items, Items>>;  // whole, antecedent

Items without(const Items& items, std::size_t position) {
  Items rest = items;
  rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(position));
  return rest;
}

// The sets reached from whole by leaving out items one at a time, as long as counts are at most 1/confidence
// of the whole's, that cannot lose a further item.
std::set<Items> minimalAntecedents(const Counts& counts, const Items& whole, double confidence) {
  const double highest = counts.at(whole) / confidence;
  std::set<Items> met{whole};
  std::vector<Items> open{whole};
  std::set<Items> minimal;
  while (!open.empty()) {
    const Items set = open.back();
    open.pop_back();
    bool isMinimal = true;
    for (std::size_t i = 0; i < set.size(); ++i) {
      const Items rest = without(set, i);
      if (counts.at(rest) > highest) continue;
      isMinimal = false;
      if (met.insert(rest).second) open.push_back(rest);
    }
    if (isMinimal) minimal.insert(set);
  }
  return minimal;
}

Splits expectedSplits(const Counts& counts, int minCount, double confidence) {
  std::map<Items, std::set<Items>> antecedents;
  for (const auto& [whole, count] : counts) {
    if (count >= minCount) antecedents[whole] = minimalAntecedents(counts, whole, confidence);
  }
  Splits splits;
  for (const auto& table : antecedents) {
    const Items& whole = table.first;
    for (const Items& antecedent : table.second) {
      const bool isRedundant = std::any_of(antecedents.begin(), antecedents.end(), [&](const auto& larger) {
        return larger.first.size() == whole.size() + 1 &&
               std::includes(larger.first.begin(), larger.first.end(), whole.begin(), whole.end()) &&
               larger.second.count(antecedent) != 0;
      });
      if (!isRedundant && antecedent != whole) splits.emplace(whole, antecedent);
    }
  }
  return splits;
}

Splits splitsOf(const std::vector<AssociationRule>& rules) {
  Splits splits;
  for (const AssociationRule& rule : rules) {
    const Items antecedent = itemVector(rule.getAntecedent());
    Items whole = antecedent;
    const Items consequent = itemVector(rule.getConsequent());
    whole.insert(whole.end(), consequent.begin(), consequent.end());
    std::sort(whole.begin(), whole.end());
    EXPECT_TRUE(splits.emplace(whole, antecedent).second);
  }
  return splits;
}

constexpr int kItems = 5;
constexpr int kTransactions = 64;

// All subsets of five items. rises: how often of eight a set has any count, instead of one that is not above
// its subsets'.
Counts randomCounts(std::mt19937& random, unsigned rises) {
  Counts counts{{{}, kTransactions}};
  for (int size = 1; size <= kItems; ++size) {
    for (unsigned mask = 1; mask < 1U << kItems; ++mask) {
      Items items;
      for (int i = 0; i < kItems; ++i) {
        if ((mask >> static_cast<unsigned>(i) & 1U) != 0) items.push_back(i + 1);
      }
      if (static_cast<int>(items.size()) != size) continue;
      int most = kTransactions;
      for (std::size_t i = 0; i < items.size(); ++i) most = std::min(most, counts.at(without(items, i)));
      if (random() % 8 < rises) most = kTransactions;
      counts[items] = 1 + static_cast<int>(random() % static_cast<unsigned>(most));
      // Half of the sets are as frequent as they can be, so that many bounds meet.
      if (random() % 2 == 0) counts[items] = most;
    }
  }
  return counts;
}

void compareWithDefinition(unsigned rises, unsigned seed) {
  std::mt19937 random(seed);
  std::size_t compared = 0;
  for (int i = 0; i < 300; ++i) {
    const Counts counts = randomCounts(random, rises);
    TestLattice lattice(counts);
    for (const double confidence : {0.25, 0.5, 0.75, 1.0}) {
      const int minCount = static_cast<int>(random() % 16);
      std::vector<AssociationRule> rules;
      ASSERT_TRUE(
          lattice.dictionary
              .createRules(static_cast<double>(minCount) / kTransactions, confidence, rules, nullptr, true)
              .IsOK());
      const Splits expected = expectedSplits(counts, minCount, confidence);
      ASSERT_EQ(splitsOf(rules), expected) << "lattice " << i << ", confidence " << confidence;
      compared += expected.size();
    }
  }
  EXPECT_GT(compared, 1000U);
}

TEST(NonRedundantRules, FollowTheDefinitionWhereNoSetIsCountedMoreOftenThanItsSubsets) {
  compareWithDefinition(0, 1);
}

TEST(NonRedundantRules, FollowTheDefinitionWhereAFewSetsAreCountedMoreOftenThanTheirSubsets) {
  compareWithDefinition(1, 2);
}

TEST(NonRedundantRules, FollowTheDefinitionWhereCountsAreAnything) { compareWithDefinition(8, 3); }

TEST(QueriesToADictionary, SeeCountsThatChangeBetweenThem) {
  TestLattice lattice({{{}, 10}, {{1}, 4}, {{2}, 5}, {{1, 2}, 4}});
  std::vector<AssociationRule> rules;
  ASSERT_TRUE(lattice.dictionary.createRules(0.0, 1.0, rules, nullptr, true).IsOK());
  EXPECT_EQ(splitsOf(rules), Splits({{{1, 2}, {1}}}));
  EXPECT_EQ(lattice.dictionary.findSupport(ItemSet(1), 1), 0.4);

  const int item = 1;
  lattice.dictionary.incrementSet(&item, 1);
  EXPECT_EQ(lattice.dictionary.findSupport(ItemSet(1), 1), 0.5);
  rules.clear();
  ASSERT_TRUE(lattice.dictionary.createRules(0.0, 1.0, rules, nullptr, true).IsOK());
  EXPECT_TRUE(rules.empty());

  lattice.dictionary.getDescriptor(1)->count = 8;
  EXPECT_EQ(lattice.dictionary.findSupport(ItemSet(1), 1), 0.8);
  lattice.dictionary.takeTransactionCount(20);
  EXPECT_EQ(lattice.dictionary.findSupport(ItemSet(), 1), 1.0);
  lattice.dictionary.resetAllCounts();
  lattice.dictionary.takeTransactionCount(20);
  EXPECT_EQ(lattice.dictionary.findSupport(ItemSet(1), 1), 0.0);
}

}  // namespace
