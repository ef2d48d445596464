// The searches for itemsets, and what support the k-th most frequent superset has.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iostream>
#include <iterator>
#include <limits>
#include <set>
#include <vector>

#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "tests/support/RandomCounts.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TestLattice.h"

namespace {

using oracle::brute::Counts;
using Sets = std::set<std::vector<int>>;

constexpr int kMin = std::numeric_limits<int>::min();
constexpr int kMax = std::numeric_limits<int>::max();

// Ten transactions: a 6, b 5, c 4, ab 4, ac 3, bc 2, abc 2 (a = 1, b = 2, c = 3).
const Counts& smallCounts() {
  static const Counts counts = {{{}, 10},    {{1}, 6},    {{2}, 5},    {{3}, 4},
                                {{1, 2}, 4}, {{1, 3}, 3}, {{2, 3}, 2}, {{1, 2, 3}, 2}};
  return counts;
}

struct Bounds {
  int minCount = kMin;
  int maxCount = kMax;
  int minLength = kMin;
  int maxLength = kMax;
};

Sets vectors(const std::set<ItemSet>& sets) {
  Sets result;
  for (const ItemSet& set : sets) result.insert(itemVector(set));
  return result;
}

class LatticeSearch : public testing::Test {
 protected:
  Sets supersets(const std::vector<int>& base, const Bounds& b) {
    std::set<ItemSet> out;
    EXPECT_TRUE(
        lattice.dictionary.findItemSets2(itemSet(base), b.minCount, b.maxCount, b.minLength, b.maxLength, out)
            .IsOK());
    return vectors(out);
  }
  Sets supersetsBy(const std::vector<int>& base, const std::vector<int>& allowed, const Bounds& b) {
    std::set<ItemSet> out;
    EXPECT_TRUE(lattice.dictionary
                    .findItemSets3(itemSet(base), itemSet(allowed), b.minCount, b.maxCount, b.minLength,
                                   b.maxLength, out)
                    .IsOK());
    return vectors(out);
  }
  Sets within(const std::vector<int>& items, const Bounds& b) {
    std::set<ItemSet> out;
    EXPECT_TRUE(lattice.dictionary
                    .findItemSetsWithin(itemSet(items), b.minCount, b.maxCount, b.minLength, b.maxLength, out)
                    .IsOK());
    return vectors(out);
  }
  double support(const std::vector<int>& base, int k) {
    return lattice.dictionary.findSupport(itemSet(base), k);
  }

  TestLattice lattice{smallCounts()};
};

TEST_F(LatticeSearch, AMaximumLengthOfTheBaseReportsTheBaseAtMost) {
  EXPECT_EQ(supersets({1}, {1, kMax, 0, 1}), Sets({{1}}));
  EXPECT_EQ(supersets({1}, {7, kMax, 0, 1}), Sets());
  EXPECT_EQ(supersets({1}, {1, kMax, 0, 0}), Sets());  // the base is too long itself
}

TEST_F(LatticeSearch, AMinimumCountAboveTheBaseReportsNothing) {
  EXPECT_EQ(supersets({1}, {7, kMax, 0, 10}), Sets());
  EXPECT_EQ(supersets({1}, {6, kMax, 0, 10}), Sets({{1}}));
}

TEST_F(LatticeSearch, BoundsAreInclusive) {
  EXPECT_EQ(supersets({}, {3, 5, 1, 2}), Sets({{2}, {3}, {1, 2}, {1, 3}}));
  EXPECT_EQ(supersets({}, {4, 4, 2, 2}), Sets({{1, 2}}));
}

TEST_F(LatticeSearch, ATooFrequentSetIsExtendedAllTheSame) {
  EXPECT_EQ(supersets({1}, {2, 3, 0, 10}), Sets({{1, 3}, {1, 2, 3}}));
}

TEST_F(LatticeSearch, OnlyAllowedItemsExtend) {
  EXPECT_EQ(supersetsBy({}, {1, 3}, {}), Sets({{}, {1}, {3}, {1, 3}}));
  EXPECT_EQ(supersetsBy({2}, {3}, {}), Sets({{2}, {2, 3}}));  // the base itself need not be allowed
  EXPECT_EQ(supersetsBy({2}, {}, {}), Sets({{2}}));
}

TEST_F(LatticeSearch, AnAbsentBaseFindsNothing) {
  EXPECT_EQ(supersets({4}, {}), Sets());
  EXPECT_EQ(supersets({1, 2, 3, 4}, {}), Sets());
  EXPECT_EQ(supersets({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}, {}), Sets());  // longer than any level
}

TEST_F(LatticeSearch, AMinimumLengthOfTwoReportsNoSingleItemThoughTheyAreTheSeeds) {
  EXPECT_EQ(within({1}, {1, kMax, 2, 10}), Sets({{1, 2}, {1, 3}, {1, 2, 3}}));
  EXPECT_EQ(within({1}, {1, kMax, 1, 10}), Sets({{1}, {1, 2}, {1, 3}, {1, 2, 3}}));
}

TEST_F(LatticeSearch, ASingleItemIsReportedWhateverTheMaximumLength) {
  EXPECT_EQ(within({1, 2}, {1, kMax, kMin, 1}), Sets({{1}, {2}}));
  EXPECT_EQ(within({1, 2}, {1, kMax, kMin, 0}), Sets({{1}, {2}}));
  EXPECT_EQ(within({1, 2}, {1, kMax, kMin, kMin}), Sets({{1}, {2}}));
}

TEST_F(LatticeSearch, ItemsThatAreNotStoredAreSkipped) {
  EXPECT_EQ(within({-7, 3, 99}, {1, kMax, 2, 2}), Sets({{1, 3}, {2, 3}}));
  EXPECT_EQ(within({}, {}), Sets());
  EXPECT_EQ(within({3, 3, 3}, {4, 4, 1, 1}), Sets({{3}}));
}

TEST_F(LatticeSearch, WhatTheCallerHasAlreadyIsKeptAndNotExtended) {
  std::set<ItemSet> out = {itemSet({1, 2}), itemSet({8, 9})};
  lattice.dictionary.findItemSets2(itemSet({1}), 1, kMax, 0, 10, out);
  // abc is reached through ac all the same.
  EXPECT_EQ(vectors(out), Sets({{1}, {1, 2}, {1, 3}, {1, 2, 3}, {8, 9}}));
  out = {itemSet({1, 2}), itemSet({1, 3})};
  lattice.dictionary.findItemSets2(itemSet({1}), 1, kMax, 0, 10, out);
  EXPECT_EQ(vectors(out), Sets({{1}, {1, 2}, {1, 3}}));
}

TEST_F(LatticeSearch, WithoutItemsInStoreOnlyTheEmptySetIsFound) {
  TestLattice empty(Counts{{std::vector<int>(), 10}});
  std::set<ItemSet> out;
  EXPECT_TRUE(empty.dictionary.findItemSets2(ItemSet(), 1, kMax, 0, 10, out).IsOK());
  EXPECT_EQ(vectors(out), Sets({{}}));
  EXPECT_EQ(empty.dictionary.findSupport(ItemSet(), 1), 1.0);
  EXPECT_EQ(empty.dictionary.findSupport(ItemSet(), 2), -1.0);
}

TEST_F(LatticeSearch, ADescriptorWithoutLinksIsNotExtended) {
  DictionarySettings settings;
  SetDictionary dictionary(3, &settings, true);  // no lattice built
  dictionary.addEmptySet(new CarmaSetDescriptor(5, 0, 0));
  const int item = 1;
  dictionary.addSet(&item, 1, new CarmaSetDescriptor(4, 1, 0));
  std::set<ItemSet> out;
  EXPECT_TRUE(dictionary.findItemSets2(ItemSet(), 1, kMax, 0, 10, out).IsOK());
  EXPECT_EQ(vectors(out), Sets({{}}));
}

TEST_F(LatticeSearch, SeesSetsThatAreAddedAndRemovedBetweenTwoSearches) {
  EXPECT_EQ(supersets({2}, {}), Sets({{2}, {1, 2}, {2, 3}, {1, 2, 3}}));
  lattice.dictionary.removeSmallSets(3);
  EXPECT_EQ(supersets({2}, {}), Sets({{2}, {1, 2}}));
  lattice.add({4}, 5);
  lattice.add({2, 4}, 3);
  lattice.dictionary.buildLattice();
  EXPECT_EQ(supersets({2}, {}), Sets({{2}, {1, 2}, {2, 4}}));
  lattice.dictionary.getDescriptor(2)->count = 9;  // counts are read afresh, whatever is remembered
  EXPECT_EQ(support({2}, 1), 0.9);
}

TEST_F(LatticeSearch, TheFirstSupportIsTheSetsOwn) {
  EXPECT_EQ(support({1}, 1), 0.6);
  EXPECT_EQ(support({}, 1), 1.0);
  EXPECT_EQ(support({1, 2, 3}, 1), 0.2);
}

TEST_F(LatticeSearch, TheSupportOfMoreSupersetsThanThereAreIsMinusOne) {
  EXPECT_EQ(support({1, 2, 3}, 2), -1.0);
  EXPECT_EQ(support({2, 3}, 2), 0.2);
  EXPECT_EQ(support({2, 3}, 3), -1.0);
  EXPECT_EQ(support({4}, 1), -1.0);
}

TEST_F(LatticeSearch, TheSupportOfFewerThanOneSupersetIsMinusOne) {
  EXPECT_EQ(support({1}, 0), -1.0);
  EXPECT_EQ(support({1}, kMin), -1.0);
}

TEST_F(LatticeSearch, ASetThatIsQueuedTwiceCountsTwiceTowardK) {
  // Above a: a 6, ab 4, ac 3. abc is queued by ab (count 2); ac, the most frequent then, queues it again.
  EXPECT_EQ(support({1}, 2), 0.4);
  EXPECT_EQ(support({1}, 3), 0.3);
  EXPECT_EQ(support({1}, 4), 0.2);
  EXPECT_EQ(support({1}, 5), 0.2);
  EXPECT_EQ(support({1}, 6), -1.0);
}

TEST_F(LatticeSearch, ASetThatLostItsDescriptorIsNotFoundWhateverTheMinimumCount) {
  lattice.dictionary.levelTable(2).forEach([](HashTable::Entry& entry) {
    if (entry.key->hasItem(1) && entry.key->hasItem(3)) HashTable::replaceDescriptor(entry, nullptr);
  });
  EXPECT_EQ(supersets({1}, {}), Sets({{1}, {1, 2}, {1, 2, 3}}));
  EXPECT_EQ(within({3}, {}), Sets({{3}, {2, 3}, {1, 2, 3}}));
  const StreamCapture out(std::cout);
  EXPECT_EQ(support({1}, 4), -1.0);  // a, ab and abc
  EXPECT_EQ(out.text(), "Bad Counter in findSupport for the set 1 3 End of Set \n");
}

TEST_F(LatticeSearch, ALinkThatLeadsNowhereIsReported) {
  static_cast<LatticeSetDescriptor*>(lattice.dictionary.getDescriptor(3))->adjacent.Add(7);
  const StreamCapture out(std::cout);
  EXPECT_EQ(support({3}, 4), 0.2);
  EXPECT_EQ(out.text(), "Bad Counter in findSupport for the set 3 7 End of Set \n");
}

bool includes(const std::vector<int>& set, const std::vector<int>& subset) {
  return std::includes(set.begin(), set.end(), subset.begin(), subset.end());
}

// The sets of the counts for which keep answers true.
Sets select(const Counts& counts, const std::function<bool(const std::vector<int>&, int)>& keep) {
  Sets result;
  for (const auto& [set, count] : counts) {
    if (keep(set, count)) result.insert(set);
  }
  return result;
}

class LatticeSearchAgainstEnumeration : public LatticeSearch, public testing::WithParamInterface<int> {};

TEST_P(LatticeSearchAgainstEnumeration, FindsWhatIsWithinTheBoundsAndNothingElse) {
  Dice dice(static_cast<std::uint64_t>(GetParam()));
  const std::vector<int> items = {-3, 0, 2, 5, 11, 1000};
  for (int data = 0; data < 40; ++data) {
    const Counts counts = randomCounts(dice, items, 25, 5, dice.between(1, 3));
    TestLattice random(counts);
    const int n = counts.at({});
    for (int query = 0; query < 50; ++query) {
      const auto someItems = [&](int chance) {
        std::vector<int> some;
        for (const int item : items) {
          if (dice.chance(chance)) some.push_back(item);
        }
        return some;
      };
      Bounds b{dice.between(-1, n / 2 + 1), dice.between(0, n + 1), dice.between(-1, 5), dice.between(-1, 6)};
      if (dice.chance(20)) b.maxCount = kMax;
      if (dice.chance(20)) b.maxLength = kMax;
      const std::vector<int> base = someItems(20);
      const std::vector<int> allowed = someItems(60);
      const auto isWithin = [&b](const std::vector<int>& set, int count) {
        const auto length = static_cast<int>(set.size());
        return count >= b.minCount && count <= b.maxCount && length >= b.minLength && length <= b.maxLength;
      };
      std::set<ItemSet> out;
      random.dictionary.findItemSets2(itemSet(base), b.minCount, b.maxCount, b.minLength, b.maxLength, out);
      ASSERT_EQ(vectors(out), select(counts, [&](const std::vector<int>& set, int count) {
                  return includes(set, base) && isWithin(set, count);
                }));
      out.clear();
      random.dictionary.findItemSets3(itemSet(base), itemSet(allowed), b.minCount, b.maxCount, b.minLength,
                                      b.maxLength, out);
      ASSERT_EQ(vectors(out), select(counts, [&](const std::vector<int>& set, int count) {
                  return includes(set, base) && isWithin(set, count) &&
                         std::all_of(set.begin(), set.end(), [&](int item) {
                           return includes(base, {item}) || includes(allowed, {item});
                         });
                }));
      out.clear();
      random.dictionary.findItemSetsWithin(itemSet(allowed), b.minCount, b.maxCount, b.minLength, b.maxLength,
                                           out);
      ASSERT_EQ(vectors(out), select(counts, [&](const std::vector<int>& set, int count) {
                  const bool longEnough = static_cast<int>(set.size()) >= b.minLength;
                  const bool fits = set.size() == 1 ? longEnough && count >= b.minCount && count <= b.maxCount
                                                    : isWithin(set, count);
                  return fits && std::any_of(set.begin(), set.end(),
                                             [&](int item) { return includes(allowed, {item}); });
                }));
    }
  }
}

// A closed family of sets over five items whose counts are all different and fall with every item.
Counts distinctCounts(Dice& dice) {
  const std::vector<int> items = {-3, 0, 2, 5, 11};
  Counts counts = {{{}, 5000}};
  int next = 5000;
  for (int sets = dice.between(1, 31); sets > 0; --sets) {
    Sets candidates;  // all of whose subsets are there
    for (const auto& [set, count] : counts) {
      for (const int item : items) {
        std::vector<int> larger = set;
        const auto place = std::lower_bound(larger.begin(), larger.end(), item);
        if (place != larger.end() && *place == item) continue;
        larger.insert(place, item);
        bool closed = counts.count(larger) == 0;
        for (std::size_t i = 0; closed && i < larger.size(); ++i) {
          std::vector<int> smaller = larger;
          smaller.erase(smaller.begin() + static_cast<std::ptrdiff_t>(i));
          closed = counts.count(smaller) != 0;
        }
        if (closed) candidates.insert(larger);
      }
    }
    const auto chosen = std::next(candidates.begin(), dice.below(static_cast<int>(candidates.size())));
    counts[*chosen] = next -= dice.between(1, 90);
  }
  return counts;
}

// Where no two counts are equal, a set is queued by everything below it before it is taken, and again each
// time that is taken again: as often as there are ways up to it from the base, one for each order of the
// items.
TEST_P(LatticeSearchAgainstEnumeration, TheKthSupportCountsEveryWayUp) {
  Dice dice(static_cast<std::uint64_t>(GetParam()));
  for (int data = 0; data < 15; ++data) {
    const Counts counts = distinctCounts(dice);
    TestLattice random(counts);
    for (const auto& [base, baseCount] : counts) {
      std::vector<int> taken;
      for (const auto& [set, count] : counts) {
        if (!includes(set, base)) continue;
        std::size_t ways = 1;
        for (std::size_t added = set.size() - base.size(); added > 1; --added) ways *= added;
        taken.insert(taken.end(), ways, count);
      }
      std::sort(taken.begin(), taken.end(), std::greater<>());
      const auto all = static_cast<int>(taken.size());
      for (int k = 1; k <= all; ++k) {
        ASSERT_EQ(random.dictionary.findSupport(itemSet(base), k),
                  taken[static_cast<std::size_t>(k) - 1] / 5000.0)
            << "k " << k << " of " << all;
      }
      ASSERT_EQ(random.dictionary.findSupport(itemSet(base), all + 1), -1.0);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, LatticeSearchAgainstEnumeration, testing::Range(0, 4));

}  // namespace
