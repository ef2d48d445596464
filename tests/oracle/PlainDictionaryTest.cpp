#include "tests/oracle/PlainDictionary.h"

#include <gtest/gtest.h>

#include "tests/oracle/PlainLattice.h"

namespace oracle {
namespace {

PlainDictionary counted(std::initializer_list<std::pair<Items, int>> sets) {
  PlainDictionary dictionary{PlainSettings{}};
  dictionary.addEmptySet();
  for (const auto& [set, count] : sets) dictionary.add(set, Counter{count, 1, 0, {}});
  return dictionary;
}

TEST(PlainDictionary, GivesEachLevelItsBuckets) {
  PlainSettings settings;
  settings.maxLengthSet = 11;
  const PlainDictionary dictionary(settings);
  const int expected[] = {2, 2879, 23039, 23039, 2879, 2879, 1439, 1439, 719, 89, 89, 89};
  for (int level = 0; level <= 11; ++level) {
    EXPECT_EQ(dictionary.level(level).bucketCount(), expected[level]) << level;
  }
  EXPECT_EQ(dictionary.maxLevel(), 11);
}

TEST(PlainDictionary, CountsLevelsUpToTheFirstEmptyOne) {
  PlainDictionary dictionary = counted({{{1}, 1}, {{2}, 1}, {{1, 2, 3}, 1}});
  EXPECT_EQ(dictionary.highestLevel(), 1);
  EXPECT_EQ(dictionary.totalSetCount(), 4);
  EXPECT_EQ(counted({}).highestLevel(), 0);
  EXPECT_EQ(counted({}).totalSetCount(), 1);
}

TEST(PlainDictionary, PrunesUpToTheFirstEmptyLevel) {
  PlainDictionary dictionary = counted({{{1}, 3}, {{2}, 2}, {{1, 2}, 2}, {{1, 2, 3, 4}, 1}});
  EXPECT_EQ(dictionary.removeSmallSets(2.5), 2);  // the threshold is 3; level 3 is empty, level 4 not reached
  EXPECT_NE(dictionary.find({1}), nullptr);
  EXPECT_EQ(dictionary.find({2}), nullptr);
  EXPECT_EQ(dictionary.find({1, 2}), nullptr);
  EXPECT_NE(dictionary.find({1, 2, 3, 4}), nullptr);
}

TEST(PlainDictionary, EmptiedLevelDoesNotStopThePruningOfTheNext) {
  PlainDictionary dictionary = counted({{{1}, 1}, {{2}, 1}, {{1, 2}, 1}});
  EXPECT_EQ(dictionary.removeSmallSets(2), 3);
}

TEST(PlainDictionary, PruningDropsTheLinksOfABuiltLattice) {
  PlainDictionary dictionary =
      counted({{{1}, 5}, {{2}, 5}, {{3}, 5}, {{1, 2}, 4}, {{1, 3}, 4}, {{2, 3}, 4}, {{1, 2, 3}, 2}});
  EXPECT_EQ(buildLattice(dictionary), 0);
  EXPECT_EQ(dictionary.find({})->adjacent, Items({1, 2, 3}));
  EXPECT_EQ(dictionary.find({2})->adjacent, Items({1, 3}));
  EXPECT_EQ(dictionary.find({1, 3})->adjacent, Items({2}));
  EXPECT_EQ(dictionary.find({1, 2, 3})->adjacent, Items());
  EXPECT_EQ(dictionary.removeSmallSets(3), 1);
  EXPECT_EQ(dictionary.find({1, 3})->adjacent, Items());
  EXPECT_EQ(dictionary.find({2})->adjacent, Items({1, 3}));
}

TEST(PlainDictionary, LatticeBuildingCountsMissingSubsets) {
  PlainDictionary dictionary = counted({{{1}, 5}, {{2}, 5}, {{2, 3}, 4}});
  EXPECT_EQ(buildLattice(dictionary), 1);  // {3}
  EXPECT_EQ(dictionary.find({2})->adjacent, Items({3}));
}

TEST(PlainDictionary, CountsOnlyWhatItHolds) {
  PlainDictionary dictionary = counted({{{1}, 1}});
  EXPECT_EQ(dictionary.increment({1})->count, 2);
  EXPECT_EQ(dictionary.increment({2}), nullptr);
  EXPECT_EQ(dictionary.emptySetCount(), 0);
  dictionary.increment({});
  EXPECT_EQ(dictionary.emptySetCount(), 1);
}

}  // namespace
}  // namespace oracle
