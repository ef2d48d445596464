// The exact second pass where it stands on the counts of the first: when it may, and what happens when the
// source does not bring the same transactions again. Whatever happens, a set's count is how often it is in
// the transactions of the pass.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "korassoc/itemsets/ItemSet.h"
#include "korassoc/rules/AssociationRule.h"
#include "tests/oracle/BruteForce.h"
#include "tests/support/EngineAndOracle.h"
#include "tests/support/EngineHost.h"
#include "tests/support/RandomRuns.h"
#include "tests/support/SavedStates.h"
#include "tests/support/StreamCapture.h"

namespace {

using Access = CarmaAssociationAlgorithmTestAccess;

int countOf(const CarmaAssociationAlgorithm& engine, const std::vector<int>& items) {
  const ItemSet set(items.data(), static_cast<int>(items.size()));
  return Access::dictionary(engine)->getCount(&set);
}

bool countsBeforeTIDs(const CarmaAssociationAlgorithm& engine) {
  return Access::core(engine)->preparePhaseIIBeforeTIDs(*Access::dictionary(engine), 2);
}

// Phase I stores {1 2} at the second transaction, counts it in four, and is done with it.
struct PairHost : EngineHost {
  explicit PairHost(const Transactions& transactions = {{1, 2}, {1, 2}, {1}, {2, 1}, {1, 2}, {1, 2}})
      : EngineHost(transactions) {}
  void runPhaseI() { EXPECT_EQ(shortForm(engine->RunPhaseI(source.size())), "OK"); }
};

struct SecondRestartRefused : VectorTransactions {
  using VectorTransactions::VectorTransactions;
  int Restart() override {
    restartResult = restarts == 1 ? 7 : 0;
    return VectorTransactions::Restart();
  }
};

// Six times {1 2}, of which the third does something when it is first asked for its length.
struct NestingSource : MultiPassTransIter {
  struct Reacting : Transaction {
    int GetItem(int position) const override { return position + 1; }
    int GetTransactionID() const override { return 0; }
    int GetLength() const override {
      if (source->next == 3 && source->reacts) std::exchange(source->reacts, nullptr)();
      return 2;
    }
    NestingSource* source = nullptr;
  };

  NestingSource() { transaction.source = this; }
  bool HasNext() override { return next < 6; }
  Transaction* Next() override {
    ++next;
    return &transaction;
  }
  int Rewind() override { return 1; }
  int Restart() override {
    ++restarts;
    next = 0;
    return 0;
  }

  Reacting transaction;
  int next = 0;
  int restarts = 0;
  std::function<void()> reacts;
};

struct NestingRun {
  std::unique_ptr<CarmaSettings> settings = settingsWithSupport(0.5);
  NestingSource source;
  CarmaAssociationAlgorithm engine{settings.get(), &source};
};

}  // namespace

TEST(CountsBeforeTIDs, StandForTheTransactionsFromTheOneThatStoredTheSet) {
  PairHost host;
  host.runPhaseI();
  SetDictionary& dictionary = *Access::dictionary(*host.engine);
  CarmaCore& core = *Access::core(*host.engine);
  ASSERT_TRUE(core.preparePhaseIIBeforeTIDs(dictionary, 2));
  EXPECT_EQ(core.transactionsII(), 0);
  EXPECT_EQ(host.count(1), 6);
  EXPECT_EQ(countOf(*host.engine, {1, 2}), 4) << "of the transactions 2, 4, 5 and 6";
  core.stepPhaseII(dictionary, VectorTransaction({1, 2}));
  EXPECT_EQ(countOf(*host.engine, {1, 2}), 5);
  for (int t = 2; t <= 6; ++t) core.stepPhaseII(dictionary, VectorTransaction({1, 2}));
  EXPECT_EQ(countOf(*host.engine, {1, 2}), 5) << "counted in these already, whatever comes in their place";
  EXPECT_EQ(core.transactionsII(), 6);
  EXPECT_TRUE(core.hasMetOthers());
  EXPECT_TRUE(dictionary.isMarked(1));
  EXPECT_TRUE(dictionary.isMarked(2));
  EXPECT_FALSE(dictionary.isMarked(3));
}

TEST(CountsBeforeTIDs, BecomeExactByOneReading) {
  PairHost host;
  host.runPhaseI();
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
  EXPECT_EQ(countOf(*host.engine, {1, 2}), 5);
  EXPECT_EQ(host.source.restarts, 1);
  const int pair[] = {1, 2};
  const SetCounter* counter = Access::dictionary(*host.engine)->getDescriptor(pair, 2);
  EXPECT_EQ(counter->getTID(), 2) << "stays";
  EXPECT_EQ(counter->getMaxMissed(), 0);
}

TEST(CountsBeforeTIDs, DoNotDependOnTheOrderOfTheItemsInATransaction) {
  PairHost host;
  host.runPhaseI();
  for (std::size_t t = 0; t < 6; ++t) {
    if (t != 2) host.source.at(t) = VectorTransaction({2, 1});
  }
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
  EXPECT_EQ(countOf(*host.engine, {1, 2}), 5);
  EXPECT_EQ(host.source.restarts, 1);
}

// Each source brings something else to the second pass than to the first. The expected counts are those of
// what it brings.
TEST(CountsBeforeTIDs, GiveWayToACountFromNothingWhenTheTransactionsAreOthers) {
  struct Case {
    const char* what;
    std::function<void(VectorTransactions&)> change;
    int expected;
  };
  const auto set = [](std::size_t t, std::vector<int> items) {
    return [t, items = std::move(items)](VectorTransactions& source) {
      source.at(t) = VectorTransaction(items);
    };
  };
  const Case cases[] = {
      {"one more of the set", set(2, {1, 2}), 6},
      {"one less of the set", set(4, {1}), 4},
      {"another item beside it", set(5, {1, 2, 3}), 5},
      {"an item twice", set(5, {1, 2, 2}), 6},
      {"no items", set(3, {}), 4},
      {"another order",
       [](VectorTransactions& source) { std::swap(source.at(0), source.at(2)); },  // the set's TID is 2
       5},
      {"fewer transactions", [](VectorTransactions& source) { source.nullAt = 4; }, 3},
  };
  for (const Case& c : cases) {
    PairHost host;
    host.runPhaseI();
    c.change(host.source);
    EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK") << c.what;
    EXPECT_EQ(countOf(*host.engine, {1, 2}), c.expected) << c.what;
    EXPECT_EQ(host.source.restarts, 2) << c.what;
    EXPECT_TRUE(host.engine->IsLatticeBuilt()) << c.what;
    host.source.restarts = 0;
    EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK") << c.what;
    EXPECT_EQ(countOf(*host.engine, {1, 2}), c.expected) << c.what << ", once more";
    EXPECT_EQ(host.source.restarts, 1) << c.what;
  }
}

TEST(CountsBeforeTIDs, AreNotMissedByTransactionsThatTheSourceHasGained) {
  PairHost host;
  host.runPhaseI();
  host.source.add({1, 2});
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
  EXPECT_EQ(countOf(*host.engine, {1, 2}), 5);
  EXPECT_EQ(host.source.restarts, 1);
}

TEST(CountsBeforeTIDs, GiveWayWithinTheSamePassForItsListener) {
  PairHost host;
  host.runPhaseI();
  host.settings->SetReportFreqPhaseII(3);
  std::vector<int> reportedAt;
  host.source.at(5) = VectorTransaction({1, 2, 3});
  host.listen([&](ProgressReport& report) { reportedAt.push_back(report.GetIntValue("nTransII")); });
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
  EXPECT_EQ(reportedAt, (std::vector<int>{0, 3, 6, 3, 6, 6})) << "after the report that phase I has ended";
}

TEST(CountsBeforeTIDs, EndThePassWhenTheSourceOfOthersCannotRestartAgain) {
  auto settings = settingsWithSupport(0.5);
  SecondRestartRefused source(repeated({1, 2}, 6));
  CarmaAssociationAlgorithm engine(settings.get(), &source);
  engine.RunPhaseI(6);
  source.at(3) = VectorTransaction({1});
  EXPECT_EQ(shortForm(engine.RunPhaseII()), "E2");
  EXPECT_FALSE(engine.IsLatticeBuilt());
  std::vector<AssociationRule> rules;
  EXPECT_EQ(shortForm(engine.CreateNgetRules(0.1, 0.1, rules)), "E40001") << "some counts are of the others";
  EXPECT_EQ(shortForm(engine.RunPhaseII()), "OK");
  EXPECT_EQ(countOf(engine, {1, 2}), 5);
}

TEST(CountsBeforeTIDs, CanBeCancelledWhileTheOthersAreReadAgain) {
  struct Cancelling : VectorTransactions {
    using VectorTransactions::VectorTransactions;
    bool HasNext() override {
      if (restarts == 2 && position() == cancelAt) engine->Cancel();
      return VectorTransactions::HasNext();
    }
    int Restart() override {
      if (restarts == 1 && cancelAt < 0) engine->Cancel();
      return VectorTransactions::Restart();
    }
    CarmaAssociationAlgorithm* engine = nullptr;
    int cancelAt = 0;
  };
  for (const int cancelAt : {-1, 0, 3, 5, 6}) {
    auto settings = settingsWithSupport(0.5);
    Cancelling source(repeated({1, 2}, 6));
    CarmaAssociationAlgorithm engine(settings.get(), &source);
    engine.RunPhaseI(6);
    source.engine = &engine;
    source.cancelAt = cancelAt;
    source.at(3) = VectorTransaction({1});
    EXPECT_EQ(shortForm(engine.RunPhaseII()), cancelAt == 6 ? "OK" : "E1") << cancelAt;
    EXPECT_EQ(engine.NumberOfSets(), cancelAt == 6 ? 4 : -1) << cancelAt;
  }
}

TEST(CountsBeforeTIDs, AreNotReadAgainAfterACancel) {
  PairHost host;
  host.runPhaseI();
  host.settings->SetReportFreqPhaseII(6);
  host.source.at(5) = VectorTransaction({1});
  host.listen([&](ProgressReport& report) {
    if (report.GetIntValue("nTransII") == 6) host.engine->Cancel();
  });
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "E1");
  EXPECT_EQ(host.source.restarts, 1);
}

TEST(CountsBeforeTIDs, AreLeftAloneByAPassThatACallbackIsRefused) {
  for (const bool complete : {false, true}) {
    NestingRun run;
    run.engine.RunPhaseI(6);
    run.source.reacts = [&] {
      EXPECT_EQ(shortForm(complete ? run.engine.RunPhaseIIcomplete(0.5) : run.engine.RunPhaseII()), "E6");
    };
    EXPECT_EQ(shortForm(run.engine.RunPhaseII()), "OK");
    EXPECT_FALSE(run.source.reacts);
    EXPECT_EQ(run.source.restarts, 1);
    EXPECT_EQ(countOf(run.engine, {1, 2}), 6);
  }
}

// --- When it is not certain that phase I has counted every set since it was stored ---

TEST(CountsBeforeTIDs, AreTakenAfterAnyNumberOfCallsAndPrunings) {
  PairHost host(repeated({1, 2, 3}, 25));
  for (const int n : {1, 4, 12, 0, 8}) host.engine->RunPhaseI(n);
  EXPECT_TRUE(countsBeforeTIDs(*host.engine));
}

TEST(CountsBeforeTIDs, AreNotTakenWithRepeatedItems) {
  PairHost host({{1, 2}, {1, 2}, {1, 1, 2}, {1, 2}});
  host.runPhaseI();
  EXPECT_FALSE(countsBeforeTIDs(*host.engine));
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
  EXPECT_EQ(countOf(*host.engine, {1, 2}), 5) << "a repeated item counts for each";
}

TEST(CountsBeforeTIDs, AreNotTakenWhereSetsMayGiveWay) {
  auto settings = settingsWithSupport(0.01);
  settings->GetDictionarySettings().SetMaxInStoreSets(5);
  settings->GetDictionarySettings().SetLeaveInMainStoreCount(1);
  VectorTransactions source(Transactions{{1, 2}, {1, 2}, {3}, {4}, {1, 2}, {1, 2}, {1, 2}});
  CarmaAssociationAlgorithm engine(settings.get(), &source);
  ASSERT_EQ(shortForm(engine.RunPhaseI(7)), "OK");
  EXPECT_FALSE(countsBeforeTIDs(engine));
}

TEST(CountsBeforeTIDs, AreNotTakenOnceSomebodyHasHadADescriptorInHand) {
  PairHost host;
  host.runPhaseI();
  const int pair[] = {1, 2};
  Access::dictionary(*host.engine)->getDescriptor(pair, 2)->count = 77;
  EXPECT_FALSE(countsBeforeTIDs(*host.engine));
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
  EXPECT_EQ(countOf(*host.engine, {1, 2}), 5);
}

TEST(CountsBeforeTIDs, AreNotTakenByASecondPassOrAfterRulesWereMade) {
  PairHost host;
  host.runPhaseI();
  ASSERT_EQ(shortForm(host.engine->RunNullPhaseII(0.0)), "OK");
  EXPECT_EQ(countOf(*host.engine, {1, 2}), 4);
  std::vector<AssociationRule> rules;
  ASSERT_EQ(shortForm(host.engine->CreateNgetRules(0.1, 0.1, rules)), "OK");
  ASSERT_FALSE(rules.empty());
  EXPECT_FALSE(countsBeforeTIDs(*host.engine));
  for (int time = 0; time < 2; ++time) {
    EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
    EXPECT_EQ(countOf(*host.engine, {1, 2}), 5);
    EXPECT_FALSE(countsBeforeTIDs(*host.engine));
  }
  EXPECT_EQ(host.source.restarts, 2);
}

TEST(CountsBeforeTIDs, AreNotTakenByAPassAfterOneThatWasBrokenOff) {
  PairHost host;
  host.runPhaseI();
  host.source.throwInNextAt = 1;  // the set is complete by then
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "E40001");
  host.source.throwInNextAt = -1;
  EXPECT_FALSE(countsBeforeTIDs(*host.engine));
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
  EXPECT_EQ(countOf(*host.engine, {1, 2}), 5);
}

TEST(CountsBeforeTIDs, AreNotTakenInARestoredEngine) {
  for (const Restored::Format format : {Restored::Binary, Restored::Xml}) {
    Running running;
    running.engine->RunPhaseI(11);
    const std::string state =
        format == Restored::Binary ? binaryState(*running.engine) : xmlState(*running.engine);
    Restored restored(state, format);
    EXPECT_FALSE(countsBeforeTIDs(*restored.engine));
  }
}

TEST(CountsBeforeTIDs, AreNotTakenAfterATransactionThatWasNotCountedToItsEnd) {
  struct Case {
    const char* what;
    std::function<void(PairHost&)> fault;
    std::function<void(PairHost&)> mend;
  };
  const Case cases[] = {{"items cannot be read", [](PairHost& host) { host.source.at(3).throwing = true; },
                         [](PairHost& host) { host.source.at(3).throwing = false; }},
                        {"memory is full", [](PairHost& host) { host.engine->SetMaxInStoreSets(3); },
                         [](PairHost& host) { host.engine->SetMaxInStoreSets(1000); }}};
  for (const Case& c : cases) {
    const StreamCapture complaint(std::cout);
    PairHost host;
    c.fault(host);
    EXPECT_NE(shortForm(host.engine->RunPhaseI(6)), "OK") << c.what;
    c.mend(host);
    EXPECT_EQ(shortForm(host.engine->RunPhaseI(6)), "OK") << c.what;
    ASSERT_EQ(Access::core(*host.engine)->transactions(), 6) << c.what;
    EXPECT_FALSE(countsBeforeTIDs(*host.engine)) << c.what;
    EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK") << c.what;
    EXPECT_EQ(countOf(*host.engine, {1, 2}), 5) << c.what;
  }
}

TEST(CountsBeforeTIDs, AreTakenAfterATransactionThatWasRefusedAnother) {
  NestingRun run;
  run.source.reacts = [&] { EXPECT_EQ(shortForm(run.engine.RunPhaseI(1)), "E6"); };
  EXPECT_EQ(shortForm(run.engine.RunPhaseI(6)), "OK");
  EXPECT_FALSE(run.source.reacts);
  EXPECT_TRUE(countsBeforeTIDs(run.engine));
}
