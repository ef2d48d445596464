// The complete pass against enumeration, hand-worked cases, its limits and its refusals.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <vector>

#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/engine/ProgressListener.h"
#include "korassoc/engine/ProgressReport.h"
#include "tests/oracle/BruteForce.h"
#include "tests/support/EngineHost.h"
#include "tests/support/EngineTestAccess.h"
#include "tests/support/Hosts.h"
#include "tests/support/VectorTransactions.h"

namespace {

using Access = CarmaAssociationAlgorithmTestAccess;
using KorAssoc::KorStatus;
using oracle::brute::Counts;
using oracle::brute::Set;

// An engine with its settings and its transactions.
struct Mining {
  explicit Mining(const Transactions& transactions, int maxLength = 10) : source(transactions) {
    settings.SetMaxLengthSet(maxLength);
    settings.SetSupportSource(new TestSupport(0.3));
  }
  CarmaAssociationAlgorithm& start() {
    engine = std::make_unique<CarmaAssociationAlgorithm>(&settings, &source);
    return *engine;
  }

  CarmaSettings settings;
  VectorTransactions source;
  std::unique_ptr<CarmaAssociationAlgorithm> engine;
};

Counts storedSets(const SetDictionary& dictionary) {
  Counts counts;
  for (int level = 0; level <= dictionary.storedLevels(); ++level) {
    dictionary.levelTable(level).forEach([&](const HashTable::Entry& entry) {
      const int* items = entry.key->getTheArray();
      counts[Set(items, items + entry.key->length())] = entry.descriptor->count;
    });
  }
  return counts;
}

// Every stored set's links lead to exactly its stored supersets of one item more.
void expectLinksComplete(const SetDictionary& dictionary, const Counts& stored) {
  std::map<Set, Set> expected;
  for (const auto& [set, count] : stored) {
    for (std::size_t i = 0; i < set.size(); ++i) {
      Set subset = set;
      subset.erase(subset.begin() + static_cast<std::ptrdiff_t>(i));
      expected[subset].push_back(set[i]);
    }
  }
  for (auto& [set, items] : expected) std::sort(items.begin(), items.end());
  for (int level = 0; level <= dictionary.storedLevels(); ++level) {
    dictionary.levelTable(level).forEach([&](const HashTable::Entry& entry) {
      const auto* links = dynamic_cast<const LatticeSetDescriptor*>(entry.descriptor);
      ASSERT_NE(links, nullptr);
      const int* items = entry.key->getTheArray();
      const Set set(items, items + entry.key->length());
      EXPECT_EQ(Set(links->adjacent.data, links->adjacent.data + links->adjacent.count), expected[set]);
    });
  }
}

Counts frequentOf(const Transactions& transactions, int minCount, int maxLength) {
  Counts counts = oracle::brute::atLeast(oracle::brute::countSubsets(transactions, maxLength), minCount);
  counts[{}] = static_cast<int>(transactions.size());
  return counts;
}

Transactions randomTransactions(std::mt19937& random) {
  const int kinds = 1 + static_cast<int>(random() % 9);
  std::vector<int> alphabet;
  for (int i = 0; i < kinds; ++i) {
    switch (random() % 4) {
      case 0:
        alphabet.push_back(static_cast<int>(random()));  // any 32 bits
        break;
      case 1:
        alphabet.push_back(-i - 1);
        break;
      default:
        alphabet.push_back(i);
    }
  }
  Transactions transactions(random() % 40);
  for (auto& transaction : transactions) {
    const std::size_t length = random() % 8;  // empty ones and repeats included
    for (std::size_t i = 0; i < length; ++i) {
      transaction.push_back(alphabet[std::min(random() % alphabet.size(), random() % alphabet.size())]);
    }
  }
  return transactions;
}

struct Ask {
  double support;
  int minCount;  // the smallest count that reaches it
};

// Supports whose bound is known without rounding: k of n up to noise, a rational number, and the ends.
Ask randomAsk(std::mt19937& random, int n) {
  const int k = n > 0 ? 1 + static_cast<int>(random() % static_cast<unsigned>(n)) : 1;
  const double exact = n > 0 ? static_cast<double>(k) / n : 0.5;
  switch (random() % 7) {
    case 0:
      return {exact, k};
    case 1:
      return {std::nextafter(exact, 1.0), k};
    case 2:
      return {std::nextafter(exact, 0.0), k};
    case 3:
      return {0.0, 1};
    case 4:
      return {1.0, std::max(n, 1)};
    case 5:
      return {0.75, std::max((3 * n + 3) / 4, 1)};
    default: {
      const int thousandths = static_cast<int>(random() % 1000);
      return {thousandths / 1000.0, std::max((n * thousandths + 999) / 1000, 1)};
    }
  }
}

TEST(RunPhaseIIcomplete, FindsExactlyWhatEnumerationFinds) {
  std::mt19937 random(20261121);
  const std::uint64_t budgets[] = {std::uint64_t{1} << 30, 0, 200, 2000};
  for (int round = 0; round < 1500; ++round) {
    const Transactions transactions = randomTransactions(random);
    const int n = static_cast<int>(transactions.size());
    const int maxLength = 1 + static_cast<int>(random() % 6);
    const Ask ask = randomAsk(random, n);
    Mining run(transactions, maxLength);
    run.settings.SetCompleteIndexBudget(budgets[random() % 4]);
    CarmaAssociationAlgorithm& engine = run.start();
    switch (random() % 3) {
      case 0:
        break;  // phase I saw nothing
      case 1:
        engine.RunPhaseI(1 + n / 2);
        break;
      default:
        engine.RunPhaseI(n + 1);
    }
    const KorStatus status = engine.RunPhaseIIcomplete(ask.support);
    ASSERT_TRUE(status.IsOK()) << "round " << round;
    ASSERT_TRUE(engine.IsLatticeBuilt());
    const SetDictionary& dictionary = *Access::dictionary(engine);
    const Counts stored = storedSets(dictionary);
    ASSERT_EQ(stored, frequentOf(transactions, ask.minCount, maxLength)) << "round " << round;
    expectLinksComplete(dictionary, stored);
    ASSERT_EQ(engine.NumberOfTransactions(), n);
    ASSERT_EQ(Access::transactionsSeen(engine), n);
    ASSERT_EQ(dictionary.inStoreCount(), static_cast<int>(stored.size()));
  }
}

// Dense rows are counted by intersecting bit sets, sparse ones by sweeping: both kinds, and several machine
// words.
TEST(RunPhaseIIcomplete, FindsExactlyWhatEnumerationFindsInLargerData) {
  std::mt19937 random(7);
  for (const unsigned int kinds : {9U, 60U, 400U}) {
    for (const std::uint64_t budget : {std::uint64_t{1} << 30, std::uint64_t{20000}}) {
      Transactions transactions(700);
      for (auto& transaction : transactions) {
        for (int i = 0; i < 8; ++i) {
          transaction.push_back(static_cast<int>(std::min(random() % kinds, random() % kinds)));
        }
      }
      Mining run(transactions);
      run.settings.SetCompleteIndexBudget(budget);
      CarmaAssociationAlgorithm& engine = run.start();
      ASSERT_TRUE(engine.RunPhaseIIcomplete(5.0 / 700).IsOK());
      EXPECT_EQ(storedSets(*Access::dictionary(engine)), frequentOf(transactions, 5, 10))
          << kinds << " kinds of items";
    }
  }
}

TEST(RunPhaseIIcomplete, FindsTheSecondHalfThatPhaseINeverSaw) {
  const Transactions transactions = {{1, 2}, {1, 2}, {1}, {8, 9}, {8, 9}, {9}};
  Mining run(transactions);
  CarmaAssociationAlgorithm& engine = run.start();
  ASSERT_TRUE(engine.RunPhaseI(3).IsOK());
  ASSERT_TRUE(engine.RunPhaseIIcomplete(0.3).IsOK());  // 1.8 of 6: 2
  EXPECT_EQ(storedSets(*Access::dictionary(engine)),
            (Counts{{{}, 6}, {{1}, 3}, {{2}, 2}, {{8}, 2}, {{9}, 3}, {{1, 2}, 2}, {{8, 9}, 2}}));
}

TEST(RunPhaseIIcomplete, ReadsOnceWhenTheIndexFitsAndInPartsWhenNot) {
  const Transactions transactions = {{1, 2, 3}, {1, 2}, {2, 3}, {1, 3}};
  Mining run(transactions);
  CarmaAssociationAlgorithm& engine = run.start();
  ASSERT_TRUE(engine.RunPhaseIIcomplete(0.25).IsOK());
  EXPECT_EQ(run.source.restarts, 1);

  Mining tight(transactions);
  tight.settings.SetCompleteIndexBudget(1);
  CarmaAssociationAlgorithm& other = tight.start();
  ASSERT_TRUE(other.RunPhaseIIcomplete(0.25).IsOK());
  EXPECT_EQ(tight.source.restarts, 5);  // the items, their costs, one part for each of three items
  EXPECT_EQ(storedSets(*Access::dictionary(engine)), storedSets(*Access::dictionary(other)));
}

TEST(RunPhaseIIcomplete, AnswersThreeAndKeepsWhatPhaseILeftWhenThereAreTooManySets) {
  const Transactions transactions = {{1, 2, 3}, {1, 2, 3}};  // 7 sets and the empty one
  for (const int limit : {7, 8}) {
    Mining run(transactions);
    run.settings.GetDictionarySettings().SetMaxInStoreSets(limit);
    CarmaAssociationAlgorithm& engine = run.start();
    ASSERT_TRUE(engine.RunPhaseI(2).IsOK());
    const Counts before = storedSets(*Access::dictionary(engine));
    const KorStatus status = engine.RunPhaseIIcomplete(1.0);
    if (limit == 8) {
      EXPECT_TRUE(status.IsOK());
      EXPECT_EQ(engine.NumberOfSets(), 8);
    } else {
      EXPECT_EQ(status, KorStatus(3, false));
      EXPECT_EQ(storedSets(*Access::dictionary(engine)), before);
      EXPECT_FALSE(engine.IsLatticeBuilt());
      EXPECT_EQ(Access::transactionsSeen(engine), 2);
    }
  }
}

TEST(RunPhaseIIcomplete, CanRunAgainWithAnotherSupport) {
  Mining run({{1, 2}, {1}});
  CarmaAssociationAlgorithm& engine = run.start();
  ASSERT_TRUE(engine.RunPhaseIIcomplete(1.0).IsOK());
  EXPECT_EQ(storedSets(*Access::dictionary(engine)), (Counts{{{}, 2}, {{1}, 2}}));
  ASSERT_TRUE(engine.RunPhaseIIcomplete(0.5).IsOK());
  EXPECT_EQ(storedSets(*Access::dictionary(engine)), (Counts{{{}, 2}, {{1}, 2}, {{2}, 1}, {{1, 2}, 1}}));
}

// A second pass over the same transactions finds the same counts, also of what phase I never saw.
TEST(RunPhaseIIcomplete, LeavesItsTransactionsToAPassThatFollows) {
  const Transactions transactions = {{1, 2}, {1, 2}, {1}, {8, 9}, {8, 9}, {9}};
  for (const bool random : {false, true}) {
    Mining run(transactions);
    CarmaAssociationAlgorithm& engine = run.start();
    ASSERT_TRUE(engine.RunPhaseI(3).IsOK());
    ASSERT_TRUE(engine.RunPhaseIIcomplete(0.3).IsOK());
    const Counts complete = storedSets(*Access::dictionary(engine));
    ASSERT_TRUE((random ? engine.RunPhaseIIrandom() : engine.RunPhaseII()).IsOK());
    EXPECT_EQ(storedSets(*Access::dictionary(engine)), complete);
    EXPECT_EQ(Access::transactionsSeen(engine), 6);
  }
}

TEST(RunPhaseIIcomplete, KeepsToTheLengthWithWhichTheEngineWasMade) {
  const Transactions transactions = {{1, 2, 3}, {1, 2, 3}};
  for (const int settingsSayNow : {1, 3}) {
    Mining run(transactions, 2);
    CarmaAssociationAlgorithm& engine = run.start();
    run.settings.SetMaxLengthSet(settingsSayNow);
    ASSERT_TRUE(engine.RunPhaseIIcomplete(1.0).IsOK());
    const SetDictionary& dictionary = *Access::dictionary(engine);
    const Counts stored = storedSets(dictionary);
    EXPECT_EQ(stored, frequentOf(transactions, 2, std::min(settingsSayNow, 2)));
    expectLinksComplete(dictionary, stored);
    EXPECT_EQ(engine.NumberOfSets(), static_cast<int>(stored.size()));
  }
}

TEST(RunPhaseIIcomplete, ReportsTransactionsAndTheEnd) {
  class Listener : public ProgressListener {
   public:
    explicit Listener(std::vector<int>& seen) : seen_(seen) {}
    void OnProgress(ProgressReport* report) override { seen_.push_back(report->GetIntValue("nTransII")); }

   private:
    std::vector<int>& seen_;
  };
  std::vector<int> seen;
  Mining run({{1}, {1}, {1}, {1}, {1}});
  run.settings.SetReportFreqPhaseII(2);
  CarmaAssociationAlgorithm& engine = run.start();
  engine.SetProgressListener(new Listener(seen));
  ASSERT_TRUE(engine.RunPhaseI(5).IsOK());
  seen.clear();
  ASSERT_TRUE(engine.RunPhaseIIcomplete(0.5).IsOK());
  EXPECT_THAT(seen, ::testing::ElementsAre(0, 2, 4, 5));  // the first is the end of phase I
}

TEST(RunPhaseIIcomplete, StopsForACancelFromAReport) {
  class Canceller : public ProgressListener {
   public:
    void OnProgress(ProgressReport* report) override {
      if (report->GetIntValue("nTransII") == 2) engine->Cancel();
    }
    CarmaAssociationAlgorithm* engine = nullptr;
  };
  Mining run({{1}, {1}, {1}, {1}});
  run.settings.SetReportFreqPhaseII(1);
  CarmaAssociationAlgorithm& engine = run.start();
  auto* canceller = new Canceller;
  canceller->engine = &engine;
  engine.SetProgressListener(canceller);
  ASSERT_TRUE(engine.RunPhaseI(4).IsOK());
  EXPECT_EQ(engine.RunPhaseIIcomplete(0.5), KorStatus(1, false));
  EXPECT_EQ(engine.GetLattice(), nullptr);
  EXPECT_EQ(engine.RunPhaseIIcomplete(0.5), KorStatus(1, false));
}

// What a listener hears at one report.
struct Heard {
  int transactions;
  int itemsets;
};

// Runs the complete pass over the transactions, with a report every 3 transactions and every so many
// itemsets. The listener cancels when it hears of cancelAt itemsets.
struct HeardRun {
  HeardRun(const Transactions& transactions, double support, int reportFrequency, int cancelAt = 1 << 30,
           std::uint64_t budget = std::uint64_t{1} << 30)
      : run(transactions) {
    run.settings.SetReportFreqPhaseII(3);
    run.settings.GetDictionarySettings().SetReportFrequency(reportFrequency);
    run.settings.SetCompleteIndexBudget(budget);
    CarmaAssociationAlgorithm& engine = run.start();
    engine.SetProgressListener(new Listener(*this, cancelAt));
    status = engine.RunPhaseIIcomplete(support);
    heard.erase(heard.begin());  // the report of phase I's end
  }

  class Listener : public ProgressListener {
   public:
    Listener(HeardRun& run, int cancelAt) : run_(run), cancelAt_(cancelAt) {}
    void OnProgress(ProgressReport* report) override {
      run_.heard.push_back({report->GetIntValue("nTransII"), report->GetIntValue("itemsets")});
      if (run_.heard.back().itemsets >= cancelAt_) run_.run.engine->Cancel();
    }

   private:
    HeardRun& run_;
    int cancelAt_;
  };

  std::vector<Heard> heard;
  Mining run;
  KorStatus status;
};

Transactions copies(int items, int n) {
  Transactions transactions(static_cast<std::size_t>(n));
  for (auto& transaction : transactions) {
    for (int item = 0; item < items; ++item) transaction.push_back(item);
  }
  return transactions;
}

// 1,023 itemsets, each in all ten transactions.
TEST(RunPhaseIIcomplete, TellsTheItemsetsFoundSoFar) {
  for (const int frequency : {10, -10}) {
    for (const std::uint64_t budget : {std::uint64_t{1} << 30, std::uint64_t{100}}) {
      const HeardRun run(copies(10, 10), 1.0, frequency, 1 << 30, budget);
      ASSERT_TRUE(run.status.IsOK());
      ASSERT_GT(run.heard.size(), 100U);
      for (std::size_t i = 0; i < 3; ++i) {  // while it reads
        EXPECT_EQ(run.heard[i].transactions, 3 * static_cast<int>(i) + 3);
        EXPECT_EQ(run.heard[i].itemsets, 0);
      }
      for (std::size_t i = 3; i < run.heard.size(); ++i) {
        EXPECT_EQ(run.heard[i].transactions, 10);
        EXPECT_GE(run.heard[i].itemsets, run.heard[i - 1].itemsets);
        EXPECT_LE(run.heard[i].itemsets, run.heard[i - 1].itemsets + 10);
      }
      EXPECT_EQ(run.heard.back().itemsets, 1023);
    }
  }
}

// A hundred items, no two of them together: after the items nothing is found, but the search goes on.
TEST(RunPhaseIIcomplete, IsHeardOfWhileItFindsNothing) {
  Transactions transactions;
  for (int i = 0; i < 100; ++i) transactions.push_back({i});
  const HeardRun run(transactions, 0.01, 100);
  ASSERT_TRUE(run.status.IsOK());
  const auto atTheItems =
      std::count_if(run.heard.begin(), run.heard.end(), [](const Heard& h) { return h.itemsets == 100; });
  EXPECT_GT(atTheItems, 10);
}

TEST(RunPhaseIIcomplete, TellsOfNoItemsetsWhereAFrequencyIsZero) {
  const HeardRun noSets(copies(10, 10), 1.0, 0);
  ASSERT_EQ(noSets.heard.size(), 4U);  // transactions 3, 6, 9 and the end
  EXPECT_EQ(noSets.heard.back().itemsets, 1023);

  HeardRun noTransactions({}, 1.0, 10);
  noTransactions.run.source = VectorTransactions(copies(10, 10));
  noTransactions.run.settings.SetReportFreqPhaseII(0);
  noTransactions.heard.clear();
  ASSERT_TRUE(noTransactions.run.engine->RunPhaseIIcomplete(1.0).IsOK());
  ASSERT_EQ(noTransactions.heard.size(), 1U);
  EXPECT_EQ(noTransactions.heard.back().itemsets, 1023);
}

TEST(RunPhaseIIcomplete, StopsForACancelWhileItEnumerates) {
  for (const std::uint64_t budget : {std::uint64_t{1} << 30, std::uint64_t{100}}) {
    const HeardRun run(copies(30, 10), 1.0, 10, 500, budget);  // more sets than any test waits for
    EXPECT_EQ(run.status, KorStatus(1, false));
    ASSERT_FALSE(run.heard.empty());
    EXPECT_LE(run.heard.back().itemsets, 510);
    EXPECT_EQ(
        std::count_if(run.heard.begin(), run.heard.end(), [](const Heard& h) { return h.itemsets >= 500; }),
        1);
  }
}

TEST(RunPhaseIIcomplete, AnswersTwoWhenTheSourceDoesNotRestart) {
  Mining run(repeated({1}, 2));
  run.source.restartResult = 1;
  CarmaAssociationAlgorithm& engine = run.start();
  EXPECT_EQ(engine.RunPhaseIIcomplete(0.5), KorStatus(2, false));
}

TEST(RunPhaseIIcomplete, TurnsAnExceptionOfTheSourceIntoAStatus) {
  Mining run(repeated({1}, 2));
  run.source.throwInNextAt = 1;
  CarmaAssociationAlgorithm& engine = run.start();
  EXPECT_EQ(engine.RunPhaseIIcomplete(0.5), KorStatus(40001, false));

  CarmaAssociationAlgorithm withoutSource(&run.settings, nullptr);
  EXPECT_EQ(withoutSource.RunPhaseIIcomplete(0.5), KorStatus(40001, false));
}

TEST(RunPhaseIIcomplete, IsRefusedByAnUnusableEngine) {
  VectorTransactions source;
  CarmaAssociationAlgorithm engine(nullptr, &source);
  EXPECT_EQ(engine.RunPhaseIIcomplete(0.5), KorStatus(5, false));
}

TEST(RunPhaseIIcomplete, AllowsNoSetsAtMaximumLengthZero) {
  Mining run({{1}, {1}}, 0);
  CarmaAssociationAlgorithm& engine = run.start();
  ASSERT_TRUE(engine.RunPhaseIIcomplete(0.5).IsOK());
  EXPECT_EQ(storedSets(*Access::dictionary(engine)), (Counts{{{}, 2}}));
}

}  // namespace
