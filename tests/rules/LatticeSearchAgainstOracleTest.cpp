// The searches over the lattice against the plain ones, and against a look at every stored set.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "tests/oracle/PlainSearch.h"
#include "tests/support/EngineAndOracle.h"
#include "tests/support/RandomRuns.h"

namespace {

using oracle::Items;
using oracle::ItemsSet;

ItemSet asItemSet(const Items& items) { return ItemSet(items.data(), static_cast<int>(items.size())); }

ItemsSet plain(const std::set<ItemSet>& sets) {
  ItemsSet result;
  for (const ItemSet& set : sets) result.insert(itemsOf(set));
  return result;
}

bool isSubset(const Items& items, const Items& of) {
  return std::includes(of.begin(), of.end(), items.begin(), items.end());
}

class LatticeSearchAgainstOracle : public testing::TestWithParam<int> {
 protected:
  // Does the operation with each of some lattices; all are the sets stored.
  template <typename Operation>
  void onLattices(Operation&& operation) {
    for (std::uint64_t i = 0; i < 30; ++i) {
      const std::uint64_t seed = static_cast<std::uint64_t>(GetParam()) * 100 + i;
      SCOPED_TRACE("seed " + std::to_string(seed));
      const RandomRun run = seed % 2 == 0 ? everythingStored(seed) : randomRun(seed);
      if (run.repeats) continue;
      EngineAndOracle both(run);
      both.runPhaseI();
      both.runPhaseIIrandom(run.transactions);
      std::vector<Items> all;
      for (int level = 0; level <= both.plain.dictionary.highestLevel(); ++level) {
        for (const auto* entry : both.plain.dictionary.level(level).entries()) all.push_back(entry->key);
      }
      Dice dice(seed);
      operation(both, all, dice);
      if (HasFatalFailure()) return;
    }
  }
};

TEST_P(LatticeSearchAgainstOracle, SupersetsWithinBounds) {
  onLattices([](EngineAndOracle& both, const std::vector<Items>& all, Dice& dice) {
    oracle::PlainDictionary& plainLattice = both.plain.dictionary;
    for (int query = 0; query < 15; ++query) {
      const Items base = dice.chance(10) ? Items{123456, 123457} : dice.oneOf(all);
      const oracle::SearchBounds bounds{dice.between(0, 12), dice.oneOf<int>({5, 20, 2147483647}),
                                        dice.between(-1, 3), dice.oneOf<int>({0, 1, 2, 3, 2147483647})};
      std::set<ItemSet> found;
      ASSERT_TRUE(both.dictionary()
                      .findItemSets2(asItemSet(base), bounds.minCount, bounds.maxCount, bounds.minLength,
                                     bounds.maxLength, found)
                      .IsOK());
      ASSERT_EQ(plain(found), findItemSets2(plainLattice, base, bounds));

      ItemsSet expected;
      for (const Items& set : all) {
        const int count = plainLattice.find(set)->count;
        const int length = static_cast<int>(set.size());
        if (isSubset(base, set) && count >= bounds.minCount && count <= bounds.maxCount &&
            length >= bounds.minLength && length <= bounds.maxLength) {
          expected.insert(set);
        }
      }
      ASSERT_EQ(plain(found), expected);

      const Items& allowed = dice.oneOf(all);
      found.clear();
      ASSERT_TRUE(both.dictionary()
                      .findItemSets3(asItemSet(base), asItemSet(allowed), bounds.minCount, bounds.maxCount,
                                     bounds.minLength, bounds.maxLength, found)
                      .IsOK());
      ASSERT_EQ(plain(found), findItemSets3(plainLattice, base, allowed, bounds));

      found.clear();
      ASSERT_TRUE(both.dictionary()
                      .findItemSetsWithin(asItemSet(allowed), bounds.minCount, bounds.maxCount,
                                          bounds.minLength, bounds.maxLength, found)
                      .IsOK());
      ASSERT_EQ(plain(found), findItemSetsWithin(plainLattice, allowed, bounds));
    }
  });
}

TEST_P(LatticeSearchAgainstOracle, SupportOfTheKthMostFrequent) {
  onLattices([](EngineAndOracle& both, const std::vector<Items>& all, Dice& dice) {
    for (int query = 0; query < 10; ++query) {
      const Items base = dice.chance(10) ? Items{123456} : dice.oneOf(all);
      const int k = dice.between(1, 40);
      ASSERT_EQ(both.dictionary().findSupport(asItemSet(base), k),
                oracle::findSupport(both.plain.dictionary, base, k))
          << braces(base) << ", k " << k;
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Seeds, LatticeSearchAgainstOracle, testing::Range(0, 2));

}  // namespace
