// The complete pass over more transactions than its sample: counted in blocks, against enumeration, and read
// again where the sample was not like the rest.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <stdexcept>
#include <vector>

#include "korassoc/engine/CompletePass.h"
#include "tests/oracle/BruteForce.h"
#include "tests/support/VectorTransactions.h"

namespace {

using korassoc::detail::CompleteLevel;
using korassoc::detail::CompletePass;
using korassoc::detail::CompletePassLimits;
using oracle::brute::Counts;
using oracle::brute::Set;
using Outcome = CompletePass::Outcome;

// A complete pass in small blocks, with what it did and found.
struct Pass {
  explicit Pass(const Transactions& transactions) : source(transactions) {
    limits.sampleTransactions = 8;
    limits.sampleCount = 0;
    limits.blockTransactions = 4;
  }

  Outcome run() {
    CompletePass pass(source, limits, watch);
    const Outcome outcome = pass.run();
    if (outcome != Outcome::kDone) return outcome;
    for (const CompleteLevel& level : pass.itemsets().levels) {
      for (std::size_t i = 0; i < level.counts.size(); ++i) {
        sets.emplace_back(level.set(i).begin(), level.set(i).end());
        EXPECT_TRUE(counts.emplace(sets.back(), level.counts[i]).second) << "a set stands twice";
      }
    }
    return outcome;
  }

  VectorTransactions source;
  CompletePassLimits limits{0.5, 10, 1 << 20, std::uint64_t{1} << 30};
  CompletePass::Watch watch{[] { return false; }, [](int) {}};
  std::vector<Set> sets;  // as handed on, the small ones first
  Counts counts;
};

Counts frequentOf(const Transactions& transactions, int minCount, int maxLength = 10) {
  Counts counts = oracle::brute::atLeast(oracle::brute::countSubsets(transactions, maxLength), minCount);
  counts.erase(Set());
  return counts;
}

Transactions joined(std::initializer_list<Transactions> parts) {
  Transactions all;
  for (const Transactions& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

Transactions times(int n, const std::vector<int>& transaction) {
  return Transactions(static_cast<std::size_t>(n), transaction);
}

// Transactions of some of the items 0 to kinds - 1, small ones more often; empty ones and repeats included.
Transactions randomTransactions(std::mt19937& random, std::size_t n, unsigned int kinds,
                                unsigned int length) {
  Transactions transactions(n);
  for (auto& transaction : transactions) {
    for (auto items = random() % (length + 1); items > 0; --items)
      transaction.push_back(static_cast<int>(std::min(random() % kinds, random() % kinds)));
  }
  return transactions;
}

TEST(CompletePassInBlocks, FindsExactlyWhatEnumerationFinds) {
  std::mt19937 random(20261121);
  int readOnce = 0;
  int readAgain = 0;
  for (int round = 0; round < 3000; ++round) {
    const std::size_t n = random() % 60;
    const auto kinds = static_cast<unsigned int>(1 + random() % 9);
    const Transactions transactions = randomTransactions(random, n, kinds, 7);
    Pass pass(transactions);
    pass.limits.sampleTransactions = 1 + static_cast<int>(random() % 30);
    pass.limits.blockTransactions = 1 + static_cast<int>(random() % 20);
    if (random() % 4 == 0) pass.limits.sampleBytes = random() % 1000;
    pass.limits.maxLength = 1 + static_cast<int>(random() % 6);
    const int minCount = 1 + static_cast<int>(random() % (n / 2 + 1));
    pass.limits.minSupport = n > 0 ? static_cast<double>(minCount) / static_cast<double>(n) : 0.5;
    ASSERT_EQ(pass.run(), Outcome::kDone);
    ASSERT_EQ(pass.counts, frequentOf(transactions, minCount, pass.limits.maxLength)) << "round " << round;
    const bool inBlocks = n > 30 && pass.limits.maxLength > 1;
    if (inBlocks) ++(pass.source.restarts == 1 ? readOnce : readAgain);
  }
  EXPECT_GT(readOnce, 500);
  EXPECT_GT(readAgain, 50);
}

// Dense rows are counted by intersecting bit sets, sparse ones by sweeping: both kinds, and several machine
// words.
TEST(CompletePassInBlocks, ReadsALongSourceOnceWhenItIsOfOneKind) {
  std::mt19937 random(7);
  for (const unsigned int kinds : {9U, 60U, 400U}) {
    const Transactions transactions = randomTransactions(random, 6000, kinds, 9);
    Pass pass(transactions);
    pass.limits.sampleTransactions = 1000;
    pass.limits.blockTransactions = 700;  // the last block is of 100
    pass.limits.minSupport = 40.0 / 6000;
    ASSERT_EQ(pass.run(), Outcome::kDone);
    EXPECT_EQ(pass.counts, frequentOf(transactions, 40)) << kinds << " kinds of items";
    EXPECT_EQ(pass.source.restarts, 1) << kinds << " kinds of items";
  }
}

TEST(CompletePassInBlocks, ReadsAgainWhenTheSampleWasNotLikeTheRest) {
  const struct {
    const char* what;
    Transactions sample;
    Transactions rest;
  } cases[] = {
      {"other items", times(8, {1, 2}), times(8, {8, 9})},
      {"one more item", times(8, {1, 2}), times(8, {1, 2, 3})},
      {"items that met nowhere", joined({times(4, {1}), times(4, {2})}), times(8, {1, 2})},
      {"pairs that met nowhere", joined({times(3, {1, 2}), times(3, {1, 3}), times(2, {2, 3})}),
       times(8, {1, 2, 3})},
      {"empty transactions", times(8, {}), times(8, {4, 5})},
      {"sorted", joined({times(8, {1, 2, 3, 4}), times(2, {1, 5})}),
       joined({times(8, {5, 6}), times(8, {6, 7})})},
  };
  for (const auto& c : cases) {
    const Transactions transactions = joined({c.sample, c.rest});
    const int minCount = static_cast<int>(transactions.size() / 4);
    Pass pass(transactions);
    pass.limits.minSupport = 0.25;
    ASSERT_EQ(pass.run(), Outcome::kDone);
    EXPECT_EQ(pass.counts, frequentOf(transactions, minCount)) << c.what;
    EXPECT_EQ(pass.source.restarts, 2) << c.what;
  }
}

TEST(CompletePassInBlocks, ReadsAgainInPartsWhenTheIndexDoesNotFitThen) {
  const Transactions transactions = joined({times(200, {1, 2}), times(200, {3, 4})});
  Pass pass(transactions);
  pass.limits.budgetBytes = 10000;  // all of them would take 12,800
  ASSERT_EQ(pass.run(), Outcome::kDone);
  EXPECT_EQ(pass.counts, frequentOf(transactions, 200));
  // In blocks; for the costs, which are of the second half; one part up to item 3, one for item 4.
  EXPECT_EQ(pass.source.restarts, 4);
}

TEST(CompletePassInBlocks, GoesOnWithTheIndexWhenThereIsTooMuchToExpect) {
  // The sample expects 2^8 sets: some 3 KB of a tree, and an eighth of 20 KB is less.
  const Transactions transactions = joined({times(8, {1, 2, 3, 4, 5, 6, 7, 8}), times(20, {8, 9})});
  for (const std::uint64_t budget : {std::uint64_t{20000}, std::uint64_t{400000}}) {
    Pass pass(transactions);
    pass.limits.budgetBytes = budget;
    pass.limits.minSupport = 0.25;
    ASSERT_EQ(pass.run(), Outcome::kDone);
    EXPECT_EQ(pass.counts, frequentOf(transactions, 7));
    EXPECT_EQ(pass.source.restarts, budget == 20000 ? 1 : 2) << "the sample does not know 9";
  }
}

TEST(CompletePassInBlocks, WaitsForASampleThatTellsEnough) {
  // Of the first 8 transactions none has the 3, of the first 16 half have.
  const Transactions transactions = joined({times(8, {1, 2}), times(32, {1, 2, 3})});
  for (const int sampleCount : {0, 8}) {
    Pass pass(transactions);
    pass.limits.sampleCount = sampleCount;  // 8 is half of 16 transactions
    ASSERT_EQ(pass.run(), Outcome::kDone);
    EXPECT_EQ(pass.counts, frequentOf(transactions, 20));
    EXPECT_EQ(pass.source.restarts, sampleCount == 0 ? 2 : 1);
  }
}

TEST(CompletePassInBlocks, GoesOnWithTheIndexWhenAFullSampleTellsTooLittle) {
  // 60 bytes are full with the second transaction, of which a set just frequent is in one.
  const Transactions transactions = joined({times(8, {1, 2}), times(32, {1, 2, 3})});
  for (const int sampleCount : {2, 3}) {
    Pass pass(transactions);
    pass.limits.sampleBytes = 60;
    pass.limits.sampleCount = sampleCount;
    ASSERT_EQ(pass.run(), Outcome::kDone);
    EXPECT_EQ(pass.counts, frequentOf(transactions, 20));
    EXPECT_EQ(pass.source.restarts, sampleCount == 2 ? 2 : 1);
  }
}

TEST(CompletePassInBlocks, CountsTransactionsThatAreAllEqual) {
  for (const std::vector<int>& transaction : {std::vector<int>{}, {5}, {5, 5, -7, 1 << 30}}) {
    const Transactions transactions = times(30, transaction);
    Pass pass(transactions);
    pass.limits.minSupport = 1.0;
    ASSERT_EQ(pass.run(), Outcome::kDone);
    EXPECT_EQ(pass.counts, frequentOf(transactions, 30));
    EXPECT_EQ(pass.source.restarts, 1);
  }
}

TEST(CompletePassInBlocks, KeepsToTheLongestLength) {
  const Transactions transactions = joined({times(10, {1, 2, 3}), times(10, {1, 2, 3, 4})});
  for (const int maxLength : {0, 1, 2, 3, 4}) {
    Pass pass(transactions);
    pass.limits.maxLength = maxLength;
    ASSERT_EQ(pass.run(), Outcome::kDone);
    EXPECT_EQ(pass.counts, maxLength == 0 ? Counts() : frequentOf(transactions, 10, maxLength));
  }
}

// {1, 2} is in no transaction of the sample, so it is of the border.
TEST(CompletePassInBlocks, TakesABorderSetForFrequentFromTheVeryCountAskedFor) {
  for (const int together : {9, 10}) {
    const Transactions transactions = joined(
        {times(10, {1}), times(10, {2}), times(together, {1, 2}), times(20 - together, {1}), times(60, {3})});
    Pass pass(transactions);
    pass.limits.sampleTransactions = 20;
    pass.limits.minSupport = 0.1;  // of 100: 10
    ASSERT_EQ(pass.run(), Outcome::kDone);
    EXPECT_EQ(pass.counts, frequentOf(transactions, 10));
    EXPECT_EQ(pass.counts.count({1, 2}), together == 10 ? 1U : 0U);
  }
}

TEST(CompletePassInBlocks, ReadsOnceWhenTheBorderFallsShortByOne) {
  for (const int together : {9, 10}) {
    const Transactions transactions =
        joined({times(10, {1, 3}), times(10, {2, 3}), times(together, {1, 2, 3}), times(80 - together, {3})});
    Pass pass(transactions);
    pass.limits.sampleTransactions = 20;
    pass.limits.minSupport = 0.1;
    ASSERT_EQ(pass.run(), Outcome::kDone);
    EXPECT_EQ(pass.counts, frequentOf(transactions, 10));
    EXPECT_EQ(pass.source.restarts, together == 10 ? 2 : 1);
  }
}

TEST(CompletePassInBlocks, HandsOnASampleOrderThatDoesNotChange) {
  // In the sample 1 is most frequent, then 2, then 3; in all of the transactions 3 is.
  const Transactions transactions =
      joined({times(4, {1, 2, 3}), times(2, {1, 2}), times(2, {1}), times(9, {1, 2, 3}), times(9, {3})});
  Pass pass(transactions);
  pass.limits.minSupport = 0.4;
  ASSERT_EQ(pass.run(), Outcome::kDone);
  EXPECT_EQ(pass.source.restarts, 1);
  EXPECT_THAT(pass.sets,
              ::testing::ElementsAre(Set{3}, Set{1}, Set{2}, Set{1, 2}, Set{1, 3}, Set{2, 3}, Set{1, 2, 3}));
}

TEST(CompletePassInBlocks, ReportsEachTransactionOnceThoughItReadsAgain) {
  Pass pass(joined({times(10, {1}), times(10, {2})}));
  std::vector<int> reported;
  pass.watch.onRead = [&](int number) { reported.push_back(number); };
  ASSERT_EQ(pass.run(), Outcome::kDone);
  EXPECT_EQ(pass.source.restarts, 2);
  ASSERT_EQ(reported.size(), 20U);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(reported[static_cast<std::size_t>(i)], i + 1);
}

// A cancel is asked for once at every transaction of every reading, and in between.
TEST(CompletePassInBlocks, StopsWhereverItIsCancelled) {
  for (const bool misleading : {false, true}) {
    const Transactions transactions =
        joined({times(20, {1, 2, 3}), misleading ? times(20, {4, 5}) : times(20, {1, 2, 3})});
    int asked = 0;
    int cancelledAt = 1;
    for (bool cancelled = true; cancelled; ++cancelledAt) {
      asked = 0;
      Pass pass(transactions);
      pass.watch.cancelled = [&] { return ++asked >= cancelledAt; };
      const Outcome outcome = pass.run();
      cancelled = asked >= cancelledAt;
      ASSERT_EQ(outcome, cancelled ? Outcome::kCancelled : Outcome::kDone) << "at " << cancelledAt;
      if (!cancelled) {
        EXPECT_EQ(pass.counts, frequentOf(transactions, 20));
      }
      ASSERT_LE(asked, cancelledAt + 1) << "goes on after it";
    }
    EXPECT_GT(cancelledAt, misleading ? 100 : 60);
  }
}

TEST(CompletePassInBlocks, GivesUpWhenThereAreTooManySets) {
  const Transactions transactions = times(30, {1, 2, 3});  // 7 sets
  for (const int maxSets : {2, 6, 7}) {
    Pass pass(transactions);
    pass.limits.maxSets = maxSets;
    EXPECT_EQ(pass.run(), maxSets == 7 ? Outcome::kDone : Outcome::kTooManySets);
    EXPECT_EQ(pass.source.restarts, 1);
  }
}

TEST(CompletePassInBlocks, LetsExceptionsThrough) {
  for (const int position : {3, 9, 17, 29}) {
    Pass pass(times(30, {1, 2, 3}));
    pass.source.throwInNextAt = position;
    EXPECT_THROW(pass.run(), std::runtime_error);
  }
  Pass pass(times(30, {1, 2, 3}));
  pass.watch.onRead = [](int number) {
    if (number == 20) throw std::runtime_error("onRead");
  };
  EXPECT_THROW(pass.run(), std::runtime_error);
}

TEST(CompletePassInBlocks, AsksForTheSourceToRestartAndSaysWhenItDoesNot) {
  // The source restarts for the first reading and for no other.
  class OnceOnly : public VectorTransactions {
   public:
    using VectorTransactions::VectorTransactions;
    int Restart() override {
      if (restarts > 0) restartResult = 1;
      return VectorTransactions::Restart();
    }
  };
  OnceOnly source(joined({times(10, {1}), times(10, {2})}));
  const Pass settings({});
  CompletePass pass(source, settings.limits, settings.watch);
  EXPECT_EQ(pass.run(), Outcome::kNotRestarted);
}

}  // namespace
