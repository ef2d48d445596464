// Supersets, maximal sets and filtered copies of a lattice.

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "korassoc/rules/AssociationRule.h"
#include "tests/support/RandomCounts.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TestLattice.h"

namespace {

using oracle::brute::Counts;
using Sets = std::set<std::vector<int>>;

// Ten transactions: a 6, b 5, c 4, ab 4, ac 3, bc 2, abc 2 (a = 1, b = 2, c = 3).
const Counts& smallCounts() {
  static const Counts counts = {{{}, 10},    {{1}, 6},    {{2}, 5},    {{3}, 4},
                                {{1, 2}, 4}, {{1, 3}, 3}, {{2, 3}, 2}, {{1, 2, 3}, 2}};
  return counts;
}

Sets vectors(const std::set<ItemSet>& sets) {
  Sets result;
  for (const ItemSet& set : sets) result.insert(itemVector(set));
  return result;
}

bool includes(const std::vector<int>& set, const std::vector<int>& subset) {
  return std::includes(set.begin(), set.end(), subset.begin(), subset.end());
}

Sets superSets(TestLattice& lattice, const std::vector<int>& base) {
  std::set<ItemSet> out;
  EXPECT_TRUE(lattice.dictionary.superSets(itemSet(base), out).IsOK());
  return vectors(out);
}

Sets findItemSets(TestLattice& lattice, const std::vector<int>& base, int minCount, int minLength,
                  int maxLength) {
  std::set<ItemSet> out;
  EXPECT_TRUE(lattice.dictionary.findItemSets(itemSet(base), minCount, minLength, maxLength, out).IsOK());
  return vectors(out);
}

Sets maximal(TestLattice& lattice, int minCount) {
  std::set<ItemSet> out;
  EXPECT_TRUE(lattice.dictionary.findMaximalItemSets(minCount, out).IsOK());
  return vectors(out);
}

TEST(SuperSets, LeaveTheBaseOut) {
  TestLattice lattice(smallCounts());
  EXPECT_EQ(superSets(lattice, {2}), Sets({{1, 2}, {2, 3}, {1, 2, 3}}));
  EXPECT_EQ(superSets(lattice, {1, 2, 3}), Sets());
  EXPECT_EQ(superSets(lattice, {}).size(), 7U);
  EXPECT_EQ(superSets(lattice, {9}), Sets());
}

TEST(FindItemSets, TakesTheBaseInAndHasNoMaximumCount) {
  TestLattice lattice(smallCounts());
  EXPECT_EQ(findItemSets(lattice, {2}, 3, 0, 10), Sets({{2}, {1, 2}}));
  EXPECT_EQ(findItemSets(lattice, {}, 4, 1, 1), Sets({{1}, {2}, {3}}));
  EXPECT_EQ(findItemSets(lattice, {2}, 6, 0, 10), Sets());
}

TEST(FindMaximalItemSets, GivesTheBorder) {
  TestLattice lattice(smallCounts());
  EXPECT_EQ(maximal(lattice, 2), Sets({{1, 2, 3}}));
  EXPECT_EQ(maximal(lattice, 3), Sets({{1, 2}, {1, 3}}));
  EXPECT_EQ(maximal(lattice, 4), Sets({{3}, {1, 2}}));
  EXPECT_EQ(maximal(lattice, 5), Sets({{1}, {2}}));
  EXPECT_EQ(maximal(lattice, 10), Sets({{}}));  // the empty set, for nothing else reaches 10
  EXPECT_EQ(maximal(lattice, 11), Sets());
  EXPECT_EQ(maximal(lattice, std::numeric_limits<int>::min()), Sets({{1, 2, 3}}));
}

TEST(FindMaximalItemSets, LooksAtSupersetsBeyondASetThatIsMissing) {
  const StreamCapture complaints(std::cout);
  TestLattice lattice({{{}, 9}, {{1}, 5}, {{2}, 5}, {{3}, 5}, {{1, 2}, 1}, {{2, 3}, 1}, {{1, 2, 3}, 4}});
  // Without {1, 3}. All three single items have the superset {1, 2, 3}, which reaches 2.
  EXPECT_EQ(maximal(lattice, 2), Sets({{1, 2, 3}}));
  TestLattice onlyTop({{{}, 9}, {{1}, 5}, {{4}, 5}, {{1, 2, 3}, 4}});
  onlyTop.add({4, 5}, 1);  // keeps the levels consecutive
  onlyTop.dictionary.buildLattice();
  EXPECT_EQ(maximal(onlyTop, 2), Sets({{4}, {1, 2, 3}}));
}

class LatticeAgainstEnumeration : public testing::TestWithParam<int> {};

TEST_P(LatticeAgainstEnumeration, SupersetsAndMaximalSets) {
  Dice dice(static_cast<std::uint64_t>(GetParam()));
  for (int data = 0; data < 60; ++data) {
    const Counts counts = randomCounts(dice, {-3, 0, 2, 5, 11, 1000}, 25, 5, dice.between(1, 3));
    TestLattice lattice(counts);
    for (int query = 0; query < 10; ++query) {
      const auto chosen = std::next(counts.begin(), dice.below(static_cast<int>(counts.size())));
      const int minCount = dice.between(0, counts.at({}) + 1);
      Sets supersets, found, border;
      for (const auto& [set, count] : counts) {
        if (includes(set, chosen->first) && set != chosen->first) supersets.insert(set);
        if (includes(set, chosen->first) && count >= minCount && set.size() <= 3) found.insert(set);
        if (count < minCount) continue;
        if (std::none_of(counts.begin(), counts.end(), [&, &smaller = set](const auto& other) {
              return other.second >= minCount && other.first.size() > smaller.size() &&
                     includes(other.first, smaller);
            })) {
          border.insert(set);
        }
      }
      ASSERT_EQ(superSets(lattice, chosen->first), supersets);
      ASSERT_EQ(findItemSets(lattice, chosen->first, minCount, 0, 3),
                chosen->first.size() <= 3 ? found : Sets());
      ASSERT_EQ(maximal(lattice, minCount), border);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, LatticeAgainstEnumeration, testing::Range(0, 3));

// The counts and links of a lattice, by set.
struct Stored {
  int count;
  std::vector<int> adjacent;
  bool operator==(const Stored& other) const { return count == other.count && adjacent == other.adjacent; }
};

std::map<std::vector<int>, Stored> contents(const SemiLattice& lattice) {
  const auto& dictionary = dynamic_cast<const SetDictionary&>(lattice);
  std::map<std::vector<int>, Stored> result;
  for (int level = 0; level <= dictionary.storedLevels(); ++level) {
    dictionary.levelTable(level).forEach([&](const HashTable::Entry& entry) {
      const OrderedArray& adjacent = dynamic_cast<const LatticeSetDescriptor&>(*entry.descriptor).adjacent;
      result[itemVector(*entry.key)] = {entry.descriptor->count,
                                        {adjacent.data, adjacent.data + adjacent.count}};
    });
  }
  return result;
}

TEST(FilteredCopy, KeepsWhatReachesTheFractionAndLinksItAmongItself) {
  TestLattice lattice(smallCounts());
  const std::unique_ptr<SemiLattice> copy(lattice.dictionary.filteredCopy(0.4));
  const std::map<std::vector<int>, Stored> expected = {
      {{}, {10, {1, 2, 3}}}, {{1}, {6, {2}}}, {{2}, {5, {1}}}, {{3}, {4, {}}}, {{1, 2}, {4, {}}}};
  EXPECT_EQ(contents(*copy), expected);
  EXPECT_EQ(copy->getTotalSetCount(), 5);
  EXPECT_EQ(copy->getHighestLevel(), 2);
  EXPECT_EQ(dynamic_cast<SetDictionary&>(*copy).inStoreCount(), 5);
}

TEST(FilteredCopy, LeavesOutSetsWithAnyOfTheItems) {
  TestLattice lattice(smallCounts());
  const std::unique_ptr<SemiLattice> copy(lattice.dictionary.filteredCopy(0.0, itemSet({2, 9})));
  const std::map<std::vector<int>, Stored> expected = {
      {{}, {10, {1, 3}}}, {{1}, {6, {3}}}, {{3}, {4, {1}}}, {{1, 3}, {3, {}}}};
  EXPECT_EQ(contents(*copy), expected);
  const std::unique_ptr<SemiLattice> all(lattice.dictionary.filteredCopy(0.0, ItemSet()));
  EXPECT_EQ(contents(*all), contents(lattice.dictionary));
}

TEST(FilteredCopy, RoundsTheFractionLeniently) {
  TestLattice lattice(smallCounts());
  const std::unique_ptr<SemiLattice> cut(lattice.dictionary.filteredCopy(0.49));  // 4.9, cut to 4
  EXPECT_EQ(cut->getTotalSetCount(), 5);
  const std::unique_ptr<SemiLattice> noise(lattice.dictionary.filteredCopy(0.1 + 0.2));  // 3 up to noise
  EXPECT_EQ(noise->getTotalSetCount(), 6);
}

TEST(FilteredCopy, ATableHasOneAndAHalfBucketsAnEntry) {
  TestLattice lattice(smallCounts());
  const std::unique_ptr<SemiLattice> copy(lattice.dictionary.filteredCopy(0.0));
  const auto& dictionary = dynamic_cast<const SetDictionary&>(*copy);
  EXPECT_EQ(dictionary.levelTable(1).bucketCount(), 4);  // 4.5, cut off
  EXPECT_EQ(dictionary.levelTable(2).bucketCount(), 4);
  EXPECT_EQ(dictionary.levelTable(0).bucketCount(), 3);  // 1, threshold 0: grown at the first entry
}

TEST(FilteredCopy, IsALatticeOfItsOwn) {
  auto lattice = std::make_unique<TestLattice>(smallCounts());
  const std::unique_ptr<SemiLattice> copy(lattice->dictionary.filteredCopy(0.3));
  const auto before = contents(*copy);
  lattice.reset();
  EXPECT_EQ(contents(*copy), before);
  EXPECT_EQ(copy->findSupport(itemSet({1}), 3), 0.3);
  std::vector<AssociationRule> rules;
  EXPECT_TRUE(copy->createRules(0.3, 0.7, rules, nullptr, false).IsOK());
  EXPECT_EQ(rules.size(), 2U);  // b>a 0.8, c>a 0.75
}

TEST(FilteredCopy, AFractionOfAnythingIsTaken) {
  TestLattice lattice(smallCounts());
  const double fractions[] = {2.0, 1e300, std::numeric_limits<double>::infinity()};
  for (const double fraction : fractions) {
    const std::unique_ptr<SemiLattice> copy(lattice.dictionary.filteredCopy(fraction));
    EXPECT_EQ(copy->getTotalSetCount(), 1) << fraction;
    EXPECT_EQ(copy->getHighestLevel(), 0) << fraction;
  }
  const std::unique_ptr<SemiLattice> all(
      lattice.dictionary.filteredCopy(std::numeric_limits<double>::quiet_NaN()));
  EXPECT_EQ(all->getTotalSetCount(), 8);
}

TEST(FilteredCopy, HoldsWhatAnEnumerationKeeps) {
  Dice dice(4);
  const std::vector<int> items = {-3, 0, 2, 5, 11, 1000};
  for (int data = 0; data < 100; ++data) {
    const Counts counts = randomCounts(dice, items, 25, 5, 1);
    TestLattice lattice(counts);
    const int n = counts.at({});
    for (int query = 0; query < 10; ++query) {
      const int numerator = dice.between(0, 13);
      const int minCount = n * numerator / 12;  // cut off
      std::vector<int> leaveOut;
      for (const int item : items) {
        if (dice.chance(20)) leaveOut.push_back(item);
      }
      const auto isKept = [&](const std::vector<int>& set) {
        const auto found = counts.find(set);
        if (found == counts.end()) return false;
        const bool overlaps = std::any_of(set.begin(), set.end(), [&](int item) {
          return std::binary_search(leaveOut.begin(), leaveOut.end(), item);
        });
        return set.empty() || (found->second >= minCount && !overlaps);
      };
      std::map<std::vector<int>, Stored> expected;
      for (const auto& [set, count] : counts) {
        if (!isKept(set)) continue;
        expected[set] = {count, {}};
        for (const int item : items) {
          std::vector<int> larger = set;
          larger.insert(std::lower_bound(larger.begin(), larger.end(), item), item);
          if (isKept(larger)) expected[set].adjacent.push_back(item);
        }
      }
      const std::unique_ptr<SemiLattice> copy(
          lattice.dictionary.filteredCopy(numerator / 12.0, itemSet(leaveOut)));
      ASSERT_EQ(contents(*copy), expected) << "data " << data << ", query " << query;
    }
  }
}

TEST(FilteredCopy, OfACopyGivesTheSameSets) {
  Dice dice(3);
  for (int data = 0; data < 40; ++data) {
    TestLattice lattice(randomCounts(dice, {1, 2, 3, 4, 5, 6}, 30, 5, 1));
    const double fraction = dice.fraction();
    const ItemSet leaveOut = itemSet({dice.between(1, 6)});
    const std::unique_ptr<SemiLattice> once(lattice.dictionary.filteredCopy(fraction, leaveOut));
    const std::unique_ptr<SemiLattice> twice(once->filteredCopy(fraction, leaveOut));
    ASSERT_EQ(contents(*once), contents(*twice));
    ASSERT_LE(once->getTotalSetCount(), lattice.dictionary.getTotalSetCount());
  }
}

}  // namespace
