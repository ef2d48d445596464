// A complete pass that would find more itemsets than it may: how early it stops, and what it says would fit.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CertainItemsets.h"
#include "korassoc/engine/CompletePass.h"
#include "korassoc/engine/FittingCount.h"
#include "tests/oracle/BruteForce.h"
#include "tests/support/EngineHost.h"
#include "tests/support/VectorTransactions.h"

namespace {

using KorAssoc::KorStatus;
using korassoc::detail::certainItemsets;
using korassoc::detail::CompletePass;
using korassoc::detail::CompletePassLimits;
using korassoc::detail::FittingCount;
using korassoc::detail::RankedRows;
using oracle::brute::Counts;
using oracle::brute::Set;
using Outcome = CompletePass::Outcome;

constexpr std::uint64_t kPlenty = std::uint64_t{1} << 30;

std::vector<int> firstItems(int n) {
  std::vector<int> items;
  for (int i = 0; i < n; ++i) items.push_back(i);
  return items;
}

Transactions randomTransactions(std::mt19937& random, std::size_t n, unsigned int kinds,
                                unsigned int length) {
  Transactions transactions(n);
  for (auto& transaction : transactions) {
    for (auto items = random() % (length + 1); items > 0; --items)
      transaction.push_back(static_cast<int>(std::min(random() % kinds, random() % kinds)));
  }
  return transactions;
}

// The itemsets of one or more items that so many transactions hold.
int setsOf(const Counts& counts, int minCount) {
  return static_cast<int>(std::count_if(counts.begin(), counts.end(), [&](const auto& set) {
    return !set.first.empty() && set.second >= minCount;
  }));
}

int leastCountOf(const Counts& counts, int maxSets) {
  int count = 1;
  while (setsOf(counts, count) > maxSets) ++count;
  return count;
}

int largestCountOf(const Counts& counts) {
  int largest = 0;
  for (const auto& [set, count] : counts) {
    if (!set.empty()) largest = std::max(largest, count);
  }
  return largest;
}

// A complete pass that asks for a count, and what it says.
struct Pass {
  Pass(const Transactions& transactions, int minCount, int maxSets)
      : source(transactions),
        limits{minCount / static_cast<double>(transactions.size()), 10, maxSets, kPlenty} {}

  Outcome run() {
    CompletePass pass(source, limits, watch);
    const Outcome outcome = pass.run();
    found = static_cast<int>(pass.itemsets().size());
    if (outcome == Outcome::kTooManySets) countThatFits = pass.countThatFits();
    return outcome;
  }

  VectorTransactions source;
  CompletePassLimits limits;
  CompletePass::Watch watch{[] { return false; }, [](int) {}};
  int found = 0;
  int countThatFits = -1;
};

TEST(CountThatFits, LeavesFewEnoughItemsetsAndIsMostlyTheLeast) {
  std::mt19937 random(20261122);
  int tooMany = 0;
  int least = 0;
  for (int round = 0; round < 500; ++round) {
    const Transactions transactions = randomTransactions(random, 20 + random() % 40, 4 + random() % 8, 9);
    const Counts counts = oracle::brute::countSubsets(transactions, 10);
    const int minCount = 1 + static_cast<int>(random() % 4);
    Pass pass(transactions, minCount, static_cast<int>(random() % 60));
    switch (random() % 3) {
      case 0:
        break;
      case 1:
        pass.limits.budgetBytes = random() % 2000;  // in parts
        break;
      default:  // in blocks
        pass.limits.sampleTransactions = 8;
        pass.limits.sampleCount = 0;
        pass.limits.blockTransactions = 4;
    }
    const bool fits = setsOf(counts, minCount) <= pass.limits.maxSets;
    ASSERT_EQ(pass.run(), fits ? Outcome::kDone : Outcome::kTooManySets) << "round " << round;
    if (fits) continue;
    ++tooMany;
    const int wanted = leastCountOf(counts, pass.limits.maxSets);
    if (wanted > largestCountOf(counts)) {
      EXPECT_EQ(pass.countThatFits, 0) << "round " << round;
    } else if (pass.countThatFits != 0) {
      EXPECT_GE(pass.countThatFits, wanted) << "round " << round;
      EXPECT_LE(pass.countThatFits, largestCountOf(counts)) << "round " << round;
    }
    least += pass.countThatFits == wanted || wanted > largestCountOf(counts) ? 1 : 0;
  }
  EXPECT_GT(tooMany, 200);
  EXPECT_GT(least, tooMany * 9 / 10);
}

// {0, ..., 5} five times and {0, 1} three times more: 63 itemsets of a count of 5, 3 of them of a count of 8.
TEST(CountThatFits, HelpsTheNextCompletePass) {
  Transactions transactions(5, firstItems(6));
  transactions.insert(transactions.end(), 3, firstItems(2));
  EngineHost host(transactions, 0.5);
  host.settings->GetDictionarySettings().SetMaxInStoreSets(41);
  EXPECT_EQ(host.engine->RunPhaseIIcomplete(5.0 / 8), KorStatus(3, false));
  EXPECT_EQ(host.engine->CountThatFits(), 6);
  EXPECT_TRUE(host.engine->RunPhaseIIcomplete(6.0 / 8).IsOK());
  EXPECT_EQ(host.engine->NumberOfSets(), 4);
  EXPECT_EQ(host.engine->CountThatFits(), 0) << "the last pass has succeeded";
}

TEST(CountThatFits, IsZeroWhenTheMostFrequentItemsetsAreTooMany) {
  EngineHost host(Transactions(5, firstItems(6)), 0.5);
  host.settings->GetDictionarySettings().SetMaxInStoreSets(41);
  EXPECT_EQ(host.engine->RunPhaseIIcomplete(0.2), KorStatus(3, false));
  EXPECT_EQ(host.engine->CountThatFits(), 0);
}

TEST(CountThatFits, IsZeroWhenTheSourceCannotBeReadAgain) {
  Transactions transactions(5, firstItems(6));
  transactions.insert(transactions.end(), 3, firstItems(2));
  Pass pass(transactions, 5, 40);
  CompletePass complete(pass.source, pass.limits, pass.watch);
  ASSERT_EQ(complete.run(), Outcome::kTooManySets);
  pass.source.restartResult = 1;
  EXPECT_EQ(complete.countThatFits(), 0);
}

TEST(CountThatFits, IsGivenUpForACancel) {
  Transactions transactions(5, firstItems(30));
  transactions.insert(transactions.end(), 3, firstItems(2));
  class Listener : public ProgressListener {
   public:
    void OnProgress(ProgressReport* report) override {
      // The limit is 200: what is heard from there on is the search for the count.
      if (report->GetIntValue("itemsets") == 200) engine->Cancel();
    }
    CarmaAssociationAlgorithm* engine = nullptr;
  };
  EngineHost host(transactions, 0.5);
  host.settings->GetDictionarySettings().SetMaxInStoreSets(201);
  host.settings->GetDictionarySettings().SetReportFrequency(7);  // so not at the 200th itemset
  auto* listener = new Listener;
  listener->engine = host.engine.get();
  host.engine->SetProgressListener(listener);
  EXPECT_EQ(host.engine->RunPhaseIIcomplete(5.0 / 8), KorStatus(1, false));
  EXPECT_EQ(host.engine->GetLattice(), nullptr);
}

// Two transactions of the same sixty items: every itemset of up to ten items, 9e10 of them.
TEST(CompletePassAhead, StopsAsSoonAsPairsTellThatThereAreTooMany) {
  Transactions transactions(2, firstItems(60));
  transactions.resize(12, {60});
  Pass pass(transactions, 2, 1'000'000'000);
  pass.limits.lookAheadSets = 100;
  pass.limits.lookAheadPart = 1'000'000'000;
  EXPECT_EQ(pass.run(), Outcome::kTooManySets);
  EXPECT_EQ(pass.found, 100);
  EXPECT_EQ(pass.countThatFits, 3);
}

TEST(CompletePassAhead, LooksWhenAPartOfTheLimitIsFound) {
  Pass pass(Transactions(2, firstItems(60)), 2, 8000);
  pass.limits.lookAheadSets = 100;
  pass.limits.lookAheadPart = 4;
  EXPECT_EQ(pass.run(), Outcome::kTooManySets);
  EXPECT_EQ(pass.found, 2000);
}

TEST(CertainItemsets, AreAllOfThemWhereRowsAreAlike) {
  RankedRows rows;
  const std::vector<std::uint32_t> row = {0, 1, 2, 3, 4, 5};
  for (int i = 0; i < 3; ++i) rows.addRow(row);
  rows.listOccurrences(6);
  const std::vector<int> counts(6, 3);
  EXPECT_EQ(certainItemsets(rows, 0, 6, counts, 3, 10, 1e9), 64 - 1 - 6);
  EXPECT_EQ(certainItemsets(rows, 0, 6, counts, 1, 10, 1e9), 64 - 1 - 6);
  EXPECT_EQ(certainItemsets(rows, 0, 6, counts, 3, 2, 1e9), 15) << "pairs";
  EXPECT_EQ(certainItemsets(rows, 5, 6, counts, 3, 10, 1e9), 31) << "with the last item";
  EXPECT_EQ(certainItemsets(rows, 0, 6, counts, 4, 10, 1e9), 0);
  EXPECT_EQ(certainItemsets(rows, 0, 6, counts, 3, 1, 1e9), 0);
  EXPECT_EQ(certainItemsets(rows, 0, 6, counts, 3, 10, 5), 31) << "the last item's are enough";
}

TEST(CertainItemsets, AreNeverMoreThanThereAre) {
  std::mt19937 random(3);
  double certain = 0;
  double all = 0;
  for (int round = 0; round < 500; ++round) {
    const unsigned int kinds = 3 + static_cast<unsigned int>(random() % 7);
    // Ranks stand for items here; their order by frequency is not needed for the bound to hold.
    Transactions transactions(5 + random() % 20);
    for (auto& transaction : transactions) {
      for (unsigned int item = 0; item < kinds; ++item) {
        if (random() % 6 != 0) transaction.push_back(static_cast<int>(item));
      }
    }
    RankedRows rows;
    std::vector<int> counts(kinds, 0);
    for (const auto& transaction : transactions) {
      for (const int item : transaction) ++counts[static_cast<std::size_t>(item)];
      const std::vector<std::uint32_t> row(transaction.begin(), transaction.end());
      if (row.size() >= 2) rows.addRow(row);
    }
    rows.listOccurrences(kinds);
    const int minCount = 1 + static_cast<int>(random() % 6);
    const std::size_t maxLength = 2 + random() % 5;
    const auto first = static_cast<int>(random() % kinds);
    int sets = 0;
    for (const auto& [set, count] : oracle::brute::countSubsets(transactions, static_cast<int>(maxLength))) {
      if (set.size() >= 2 && count >= minCount && set.back() >= first) ++sets;
    }
    const double told =
        certainItemsets(rows, static_cast<std::size_t>(first), kinds, counts, minCount, maxLength, 1e9);
    ASSERT_LE(told, sets) << "round " << round;
    certain += told;
    all += sets;
  }
  EXPECT_GT(certain, all / 10);
}

// Told in ascending order, every itemset is told before it is known that it is one too many: of 2,000 in turn
// 1901 would let 100 pass. After each 401 of them only half as many may, which makes 6 in the end.
TEST(FittingCount, LetsFewerPassWhereItIsToldTooMany) {
  FittingCount fitting(1, 3000, 10, 100, [] { return true; });
  for (int count = 1; count <= 2000; ++count) fitting.takeItem(count);
  EXPECT_EQ(fitting.count(), 1995);
}

TEST(FittingCount, GivesUpInTheEnd) {
  FittingCount fitting(1, 5000, 10, 100, [] { return true; });
  for (int count = 1; count <= 3000; ++count) fitting.takeItem(count);
  EXPECT_EQ(fitting.count(), 0);
  const std::uint32_t set[] = {1, 0};
  EXPECT_FALSE(fitting.take(set, 2, 3001)) << "the enumeration ends";
}

TEST(FittingCount, KnowsCountsApartByAFewOutOfAMillion) {
  constexpr int kMost = 10'000'000;
  FittingCount fitting(5, kMost, 10, 2, [] { return true; });
  for (const int count : {5, kMost / 2, kMost - 1000, kMost}) fitting.takeItem(count);
  EXPECT_GT(fitting.count(), kMost / 2);
  EXPECT_LE(fitting.count(), kMost - 1000);
}

}  // namespace
