// The three second passes of the engine against those of the plain engine, and against counts by enumeration.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "tests/oracle/BruteForce.h"
#include "tests/support/EngineAndOracle.h"
#include "tests/support/RandomRuns.h"

namespace {

class PhaseIIAgainstOracle : public testing::TestWithParam<int> {
 protected:
  // Runs the operation on 60 random runs, after their first pass.
  template <typename Operation>
  void onRandomRuns(Operation&& operation) {
    for (std::uint64_t i = 0; i < 60; ++i) {
      const std::uint64_t seed = static_cast<std::uint64_t>(GetParam()) * 100 + i;
      SCOPED_TRACE("seed " + std::to_string(seed));
      const RandomRun run = randomRun(seed);
      EngineAndOracle both(run);
      both.runPhaseI();
      Dice dice(seed);
      operation(both, run, dice);
      if (HasFatalFailure()) return;
    }
  }
};

TEST_P(PhaseIIAgainstOracle, ExactPassGivesTheSameCountsAndLattice) {
  onRandomRuns([](EngineAndOracle& both, const RandomRun&, Dice&) {
    both.runPhaseII();
    ASSERT_EQ(both.difference(), "");
  });
}

TEST_P(PhaseIIAgainstOracle, ExactPassASecondTimeGivesTheSameAgain) {
  onRandomRuns([](EngineAndOracle& both, const RandomRun&, Dice&) {
    both.runPhaseII();
    both.runPhaseII();
    ASSERT_EQ(both.difference(), "");
  });
}

TEST_P(PhaseIIAgainstOracle, RandomPassTakesTransactionsInAnyOrder) {
  onRandomRuns([](EngineAndOracle& both, const RandomRun& run, Dice& dice) {
    oracle::Transactions pass = run.transactions;
    dice.shuffle(pass);
    both.runPhaseIIrandom(pass);
    ASSERT_EQ(both.difference(), "");
  });
}

TEST_P(PhaseIIAgainstOracle, RandomPassReadsNoMoreTransactionsThanTheFirst) {
  onRandomRuns([](EngineAndOracle& both, const RandomRun& run, Dice& dice) {
    oracle::Transactions pass = run.transactions;
    for (int more = dice.below(20); more > 0; --more) pass.push_back(dice.oneOf(run.transactions));
    both.runPhaseIIrandom(pass);
    ASSERT_EQ(both.difference(), "");
  });
}

TEST_P(PhaseIIAgainstOracle, NullPassGivesTheSameLattice) {
  onRandomRuns([](EngineAndOracle& both, const RandomRun&, Dice& dice) {
    both.runNullPhaseII(dice.oneOf<double>({0.0, 0.1, 0.25, 1.0, 0.29}));
    ASSERT_EQ(both.difference(), "");
  });
}

TEST_P(PhaseIIAgainstOracle, EverySetCountsTheTransactionsThatHoldIt) {
  onRandomRuns([](EngineAndOracle& both, const RandomRun& run, Dice&) {
    if (run.repeats) return;  // an item that comes twice counts twice
    both.runPhaseIIrandom(run.transactions);
    // Where phase I left no set of two items no pass is made, and its counts stay.
    if (CarmaAssociationAlgorithmTestAccess::core(*both.engine)->transactionsII() == 0) return;
    ASSERT_EQ(both.difference(), "");
    const oracle::Transactions read(run.transactions.begin(),
                                    run.transactions.begin() + both.engine->NumberOfTransactions());
    const oracle::brute::Counts counts = oracle::brute::countSubsets(read, run.settings.maxLengthSet);
    for (int level = 0; level <= both.dictionary().getHighestLevel(); ++level) {
      both.dictionary().levelTable(level).forEach([&](const HashTable::Entry& entry) {
        const oracle::Items set = itemsOf(*entry.key);
        EXPECT_EQ(entry.descriptor->count, counts.at(set)) << braces(set);
      });
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Seeds, PhaseIIAgainstOracle, testing::Range(0, 3));

}  // namespace
