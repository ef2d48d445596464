#include "tests/oracle/PlainMiner.h"

#include <gtest/gtest.h>

#include "tests/oracle/PhaseIByHand.h"
#include "tests/oracle/StateText.h"

namespace oracle {
namespace {

std::string text(PlainDictionary& dictionary) {
  std::vector<StateEntry> entries;
  for (int level = 1; level <= dictionary.maxLevel(); ++level) {
    for (const PlainTable::Entry* entry : dictionary.level(level).entries()) {
      entries.push_back({entry->key, entry->counter.count, entry->counter.tid, entry->counter.maxMissed});
    }
  }
  return stateText(entries);
}

void expectAsByHand(const HandRun& run) {
  PlainSettings settings;
  settings.removeSmallFreq = run.removeSmallFreq;
  PlainMiner* watched = nullptr;
  PlainMiner miner(settings, transactionsOf(run), [&](int t) {
    // Asked before the work on transaction t: the state is that after t - 1.
    const std::size_t done = static_cast<std::size_t>(t) - 1;
    if (done > 0) {
      EXPECT_EQ(text(watched->dictionary), run.transactions[done - 1].state) << "after transaction " << done;
    }
    return run.transactions[done].support;
  });
  watched = &miner;
  const int n = static_cast<int>(run.transactions.size());
  miner.runPhaseI(n);
  EXPECT_EQ(text(miner.dictionary), run.finalState);
  EXPECT_EQ(miner.dictionary.emptySetCount(), n);
  EXPECT_EQ(miner.transactionsSeen, n);
  EXPECT_EQ(miner.supportCount, run.supportCount);
  EXPECT_EQ(miner.setsRemoved, run.setsRemoved);
  EXPECT_EQ(miner.peakSets, run.peakSets);
  EXPECT_DOUBLE_EQ(miner.step.aveExt, run.aveExt);
  EXPECT_EQ(miner.step.maxExt, run.maxExt);
  EXPECT_EQ(miner.step.longestCandidate, run.longestCandidate);
  EXPECT_EQ(miner.step.longAdded, run.longAdded);
}

TEST(PlainMiner, FollowsTheHandWorkedRunAtConstantSupport) { expectAsByHand(constantSupport()); }
TEST(PlainMiner, FollowsTheHandWorkedRunAtRisingSupport) { expectAsByHand(risingSupport()); }
TEST(PlainMiner, FollowsTheHandWorkedRunWithRepeatedItems) { expectAsByHand(repeatedItems()); }

TEST(PlainMiner, LastStateOfTheHandWorkedRunPrecedesTheClosingPruning) {
  // The hooks above see every state but the last. One long pruning interval shows that one too.
  HandRun run = repeatedItems();
  EXPECT_EQ(run.transactions.back().state, run.finalState);
  PlainSettings settings;
  settings.removeSmallFreq = 6;
  run = constantSupport();
  PlainMiner miner(settings, transactionsOf(run), [](int) { return 0.5; });
  miner.runPhaseI(12);
  EXPECT_EQ(text(miner.dictionary), run.transactions[11].state);
  miner.step.run({1, 3}, 0.5, 0.5, 6);
  miner.step.run({1, 2, 3, 4}, 0.5, 0.5, 6);
  EXPECT_EQ(text(miner.dictionary), run.transactions[13].state);
}

TEST(PlainMiner, CountsExactlyInTheSecondPass) {
  // After the hand-worked run a 12, b 10, c 9, ab 7 are left. ab is in transactions 1-4, 9-11 and 14: 8.
  const HandRun run = constantSupport();
  PlainSettings settings;
  settings.removeSmallFreq = run.removeSmallFreq;
  PlainMiner miner(settings, transactionsOf(run), [](int) { return 0.5; });
  miner.runPhaseI(14);
  miner.runPhaseII();
  EXPECT_EQ(text(miner.dictionary), "a 12@1+0, b 10@1+0, c 9@1+0, ab 8@2+0");
  EXPECT_EQ(miner.dictionary.find({})->adjacent, Items({1, 2, 3}));
  EXPECT_EQ(miner.dictionary.find({1})->adjacent, Items({2}));
  EXPECT_EQ(miner.dictionary.find({2})->adjacent, Items({1}));
  EXPECT_EQ(miner.missingSubsets, 0);
}

TEST(PlainMiner, NullSecondPassChangesTheTransactionCountAlone) {
  const HandRun run = constantSupport();
  PlainSettings settings;
  settings.removeSmallFreq = run.removeSmallFreq;
  PlainMiner miner(settings, transactionsOf(run), [](int) { return 0.5; });
  miner.runPhaseI(14);
  miner.runNullPhaseII(0.25);  // 14 * 0.25 = 3.5: 3 more
  EXPECT_EQ(text(miner.dictionary), run.finalState);
  EXPECT_EQ(miner.dictionary.emptySetCount(), 17);
}

TEST(PlainMiner, CallWithoutTransactionsOffThePruningFrequencyForgetsTheThreshold) {
  PlainSettings settings;
  settings.removeSmallFreq = 2;
  PlainMiner miner(settings, {{1}, {1}, {1}}, [](int) { return 1.0; });
  miner.runPhaseI(3);
  EXPECT_EQ(miner.supportCount, 3.0);
  miner.runPhaseI(1);  // nothing left to read: 3 times an average of 0
  EXPECT_EQ(miner.supportCount, 0.0);
  EXPECT_EQ(miner.transactionsSeen, 3);
}

}  // namespace
}  // namespace oracle
