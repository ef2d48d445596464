// CarmaCore driven directly, with bounds drawn at random, against the plain step and the plain count.

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <memory>
#include <vector>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/CarmaCore.h"
#include "korassoc/engine/DictionarySettings.h"
#include "tests/oracle/PlainLattice.h"
#include "tests/oracle/PlainStep.h"
#include "tests/support/DictionaryComparison.h"
#include "tests/support/RandomRuns.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/VectorTransactions.h"

namespace {

DictionarySettings settingsOf(const oracle::PlainSettings& plain) {
  DictionarySettings settings;
  settings.SetInitialBoundarySearchSize(plain.initialBoundarySearchSize);
  settings.SetInitialHashtableSet23Size(plain.initialHashtableSet23Size);
  settings.SetInitialSetSize(plain.initialSetSize);
  return settings;
}

void addEmptySet(SetDictionary& dictionary) {
  auto emptySet = std::make_unique<CarmaSetDescriptor>(0, 0, 0);
  ASSERT_TRUE(dictionary.addEmptySet(emptySet.get()));
  static_cast<void>(emptySet.release());
}

// The library's dictionary and step beside the plain ones.
struct Both {
  explicit Both(const oracle::PlainSettings& plainSettings)
      : settings(settingsOf(plainSettings)),
        dictionary(plainSettings.maxLengthSet, &settings, true),
        core(plainSettings.maxLengthSet, 3),
        plain(plainSettings),
        step(plainSettings.maxLengthSet, plain) {
    addEmptySet(dictionary);
    plain.addEmptySet();
  }

  DictionarySettings settings;
  SetDictionary dictionary;
  CarmaCore core;
  oracle::PlainDictionary plain;
  oracle::PlainStep step;
};

class CarmaCoreAgainstOracle : public testing::TestWithParam<int> {};

// A run of steps and prunings with bounds drawn at random. A look at the tables unpacks the sets, so the run
// is looked at from one step on; until then they are packed.
void runBoth(std::uint64_t seed, std::size_t firstLook) {
  const RandomRun run = randomRun(seed);
  Dice dice(seed + 77);
  Both both(run.settings);
  SetDictionary& dictionary = both.dictionary;
  CarmaCore& core = both.core;
  oracle::PlainDictionary& plain = both.plain;
  oracle::PlainStep& step = both.step;

  double sigma = 0;
  double supportCount = 1.0;
  for (std::size_t t = 0; t < run.transactions.size(); ++t) {
    const double previous = sigma;
    if (dice.chance(30)) sigma = dice.oneOf<double>({0.0, 0.05, 0.2, 0.25, 1.0 / 3, 0.5, 1.0, 7.5});
    if (dice.chance(10))
      supportCount = dice.oneOf<double>({0.0, 0.5, 1.0, 2.0, 2.5, 3.0000000000000004, 9.0});
    const VectorTransaction transaction(run.transactions[t]);
    ASSERT_EQ(dictionary.isPacked(), t <= firstLook);
    ASSERT_TRUE(core.step(dictionary, transaction, previous, sigma, supportCount).IsOK());
    step.run(run.transactions[t], previous, sigma, supportCount);
    ASSERT_EQ(dictionary.getTotalSetCount(), plain.totalSetCount());
    if (t >= firstLook) {
      ASSERT_EQ(firstDifference(dictionary, plain), "") << "seed " << seed << ", transaction " << t + 1;
    }
    if (dice.chance(8)) {
      const double minCount = dice.oneOf<double>({1.0, 1.5, 2.0, 2.9999999999999996, 4.2});
      ASSERT_EQ(dictionary.removeSmallSets(minCount), plain.removeSmallSets(minCount));
      if (t >= firstLook) {
        ASSERT_EQ(firstDifference(dictionary, plain), "") << "seed " << seed << ", pruning at " << t + 1;
      }
    }
  }
  ASSERT_EQ(firstDifference(dictionary, plain), "") << "seed " << seed;
  EXPECT_EQ(core.transactions(), step.nTrans);
  EXPECT_EQ(core.averageExtension(), step.aveExt);
  EXPECT_EQ(core.maxExtension(), step.maxExt);
  EXPECT_EQ(core.longestCandidate(), step.longestCandidate);
  EXPECT_EQ(core.longAdded(), step.longAdded);
  EXPECT_EQ(core.meanLength(), step.meanLength);
  EXPECT_EQ(core.maxLength(), step.maxLength);
}

TEST_P(CarmaCoreAgainstOracle, EveryStepAndPruningLeavesTheSameTables) {
  for (std::uint64_t seed = 0; seed < 40; ++seed)
    ASSERT_NO_FATAL_FAILURE(runBoth(static_cast<std::uint64_t>(GetParam()) * 1000 + seed, 0));
}

TEST_P(CarmaCoreAgainstOracle, TheTablesAreTheSameWheneverTheyAreLookedAt) {
  constexpr std::size_t kNever = 1 << 30;
  for (std::uint64_t seed = 0; seed < 50; ++seed) {
    const std::uint64_t run = static_cast<std::uint64_t>(GetParam()) * 1000 + seed;
    const std::size_t transactions = randomRun(run).transactions.size();
    ASSERT_NO_FATAL_FAILURE(runBoth(run, kNever));
    ASSERT_NO_FATAL_FAILURE(runBoth(run, transactions / 2));
  }
}

TEST_P(CarmaCoreAgainstOracle, SecondPassCountsEveryOccurrence) {
  for (std::uint64_t seed = 0; seed < 40; ++seed) {
    RandomRun run = randomRun(static_cast<std::uint64_t>(GetParam()) * 1000 + 500 + seed);
    Dice dice(seed);
    Both both(run.settings);
    SetDictionary& dictionary = both.dictionary;
    CarmaCore& core = both.core;
    oracle::PlainDictionary& plain = both.plain;
    oracle::PlainStep& step = both.step;
    for (const oracle::Items& items : run.transactions) {
      ASSERT_TRUE(core.step(dictionary, VectorTransaction(items), 0.02, 0.02, 1.0).IsOK());
      step.run(items, 0.02, 0.02, 1.0);
    }
    for (const int fromLevel : {1, 2, 1, 2}) {
      dice.shuffle(run.transactions);
      core.preparePhaseII(dictionary, fromLevel);
      EXPECT_EQ(core.transactionsII(), 0);
      std::vector<oracle::PlainTable::Entry*> counted;
      for (int level = fromLevel; level <= plain.maxLevel(); ++level) {
        for (oracle::PlainTable::Entry* entry : plain.level(level).entries()) {
          entry->counter.count = 0;
          entry->counter.maxMissed = 0;
          counted.push_back(entry);
        }
      }
      for (oracle::Items items : run.transactions) {
        core.stepPhaseII(dictionary, VectorTransaction(items));
        std::sort(items.begin(), items.end());
        for (oracle::PlainTable::Entry* entry : counted) {
          entry->counter.count += static_cast<int>(oracle::occurrences(entry->key, items));
        }
      }
      EXPECT_EQ(core.transactionsII(), static_cast<int>(run.transactions.size()));
      ASSERT_EQ(firstDifference(dictionary, plain), "") << "seed " << seed << " from level " << fromLevel;
    }
    {
      const StreamCapture complaints(
          std::cout);  // of repeated items: {a, a} may be stored without {a, b}'s like
      dictionary.buildLattice();
    }
    oracle::buildLattice(plain);
    ASSERT_EQ(firstDifference(dictionary, plain), "") << "seed " << seed;
    const double minCount = dice.between(1, 4);
    ASSERT_EQ(dictionary.removeSmallSets(minCount), plain.removeSmallSets(minCount));
    ASSERT_EQ(firstDifference(dictionary, plain), "") << "seed " << seed;
  }
}

TEST(CarmaCore, KnowsTheCandidateForWhichThereWasNoRoom) {
  DictionarySettings settings;
  settings.SetMaxInStoreSets(3);
  SetDictionary dictionary(4, &settings, true);
  addEmptySet(dictionary);
  CarmaCore core(4, 3);
  ASSERT_TRUE(core.step(dictionary, VectorTransaction({1, 2}), 0.1, 0.1, 1.0).IsOK());
  ASSERT_EQ(core.longestCandidate(), 0);
  EXPECT_EQ(core.step(dictionary, VectorTransaction({1, 2}), 0.1, 0.1, 1.0).GetCode(), 3);
  EXPECT_EQ(core.longestCandidate(), 2);
}

// A restored engine may go on from any number of transactions.
TEST(CarmaCore, CountsFromANegativeNumberOfTransactionsAsWell) {
  DictionarySettings settings;
  std::vector<std::unique_ptr<SetDictionary>> dictionaries;
  for (const bool looked : {false, true}) {
    dictionaries.push_back(std::make_unique<SetDictionary>(4, &settings, true));
    SetDictionary& dictionary = *dictionaries.back();
    addEmptySet(dictionary);
    if (looked) dictionary.levelTable(1);
    CarmaCore core(4, 3);
    core.restoreTransactions(-5, 0.1);
    for (int t = 0; t < 8; ++t)
      ASSERT_TRUE(core.step(dictionary, VectorTransaction({1, 2, 3}), 0.1, 0.1, 1.0).IsOK());
  }
  EXPECT_EQ(dictionaries[0]->getTotalSetCount(), dictionaries[1]->getTotalSetCount());
  EXPECT_EQ(dictionaries[0]->getDescriptor(1)->getTID(), -4);
  const ItemSet all(ItemSet(ItemSet(1), 2), 3);
  EXPECT_EQ(dictionaries[0]->getCount(&all), dictionaries[1]->getCount(&all));
}

INSTANTIATE_TEST_SUITE_P(Seeds, CarmaCoreAgainstOracle, testing::Range(0, 4));

}  // namespace
