#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <functional>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/engine/Exceptions.h"
#include "korassoc/rules/AssociationRule.h"
#include "tests/support/EngineHost.h"
#include "tests/support/EngineTestAccess.h"
#include "tests/support/Hosts.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/ThrowingOutput.h"
#include "tests/support/VectorTransactions.h"

namespace {

using Access = CarmaAssociationAlgorithmTestAccess;
using KorAssoc::KorStatus;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Calls back when the engine asks for its item.
class CallingTransaction : public Transaction {
 public:
  CallingTransaction(int item, std::function<void()> call) : item_(item), call_(std::move(call)) {}
  int GetItem(int) const override {
    call_();
    return item_;
  }
  int GetTransactionID() const override { return 0; }
  int GetLength() const override { return 1; }

 private:
  int item_;
  std::function<void()> call_;
};

// Ten transactions {1}; the item of the fifth calls back.
class CallingSource : public VectorTransactions {
 public:
  explicit CallingSource(std::function<void()> call)
      : VectorTransactions(repeated({1}, 10)), fifth_(1, std::move(call)) {}
  Transaction* Next() override {
    Transaction* next = VectorTransactions::Next();
    return position() == 5 ? &fifth_ : next;
  }

 private:
  CallingTransaction fifth_;
};

}  // namespace

TEST(RunPhaseI, ChangesNothingWhenAskedForZeroOrLess) {
  EngineHost run(Transactions{{1}, {1}});
  Access::setStatus(*run.engine, error(40001));
  for (const int transactions : {0, -5, -2147483647 - 1}) {
    EXPECT_EQ(shortForm(run.engine->RunPhaseI(transactions)), "OK");
    EXPECT_EQ(shortForm(run.engine->GetStatus()), "E40001");
  }
  EXPECT_EQ(run.source.hasNextCalls, 0);
  EXPECT_EQ(run.engine->NumberOfTransactions(), 0);
  EXPECT_FALSE(Access::isResumable(*run.engine));
}

TEST(RunPhaseI, ReadsAtMostTheTransactionsAskedForAndGoesOnFromThere) {
  EngineHost run(repeated({7}, 5));
  EXPECT_EQ(shortForm(run.engine->RunPhaseI(2)), "OK");
  EXPECT_EQ(run.source.position(), 2);
  EXPECT_EQ(run.engine->NumberOfTransactions(), 2);
  EXPECT_EQ(Access::transactionsSeen(*run.engine), 2);
  EXPECT_EQ(shortForm(run.engine->RunPhaseI(100)), "OK");
  EXPECT_EQ(run.engine->NumberOfTransactions(), 5);
  EXPECT_EQ(Access::transactionsSeen(*run.engine), 5);
  EXPECT_EQ(run.count(7), 5);
}

TEST(RunPhaseI, AsksForTheSupportOfEachTransactionCountedOverAllCalls) {
  EngineHost run(repeated({7}, 5));
  TestSupport& support = run.support([](int transaction) { return 0.125 * transaction; });
  run.engine->RunPhaseI(2);
  run.engine->RunPhaseI(2);
  EXPECT_THAT(support.asked, ElementsAre(1, 2, 3, 4));
  EXPECT_EQ(Access::currentSupport(*run.engine), 0.5);
  EXPECT_EQ(run.engine->AverageSupport(), 0.5);  // every chunk was raised to the last support
}

TEST(RunPhaseI, StopsWithoutAskingForASupportWhenTheNextTransactionIsNull) {
  EngineHost run(repeated({7}, 5));
  run.source.nullAt = 3;
  TestSupport& support = run.support([](int) { return 0.5; });
  EXPECT_EQ(shortForm(run.engine->RunPhaseI(5)), "OK");
  EXPECT_THAT(support.asked, ElementsAre(1, 2, 3));
  EXPECT_EQ(run.engine->NumberOfTransactions(), 3);
  EXPECT_TRUE(Access::isResumable(*run.engine));
}

TEST(RunPhaseI, CountsARepeatedItemOnceForEachPosition) {
  EngineHost run(Transactions{{4}, {4, 4}});
  run.engine->RunPhaseI(2);
  EXPECT_EQ(run.count(4), 3);
}

TEST(RunPhaseI, TakesATransactionOfNegativeLengthAsEmpty) {
  EngineHost run(Transactions{{4}, {4}});
  run.source.at(1).length = -3;
  EXPECT_EQ(shortForm(run.engine->RunPhaseI(2)), "OK");
  EXPECT_EQ(run.engine->NumberOfTransactions(), 2);
  EXPECT_EQ(run.count(4), 1);
}

// 10 transactions at support 0.5: at the 10th, everything below a count of 5 goes. Items 1 and 2 have 6
// and 4.
TEST(RunPhaseI, PrunesAtEveryMultipleOfThePruningFrequency) {
  auto transactions = repeated({1}, 6);
  transactions.insert(transactions.end(), 4, {2});
  EngineHost run(transactions);
  run.engine->RunPhaseI(9);
  EXPECT_EQ(run.count(2), 0) << "3 transactions of 9 are below the 4 of the closing prune (4.5 cut off)";
  EXPECT_EQ(Access::supportCount(*run.engine), 4.0);
  EXPECT_EQ(Access::setsRemoved(*run.engine), 1);
  EXPECT_EQ(Access::peakSets(*run.engine), 0) << "only a pruning point of the loop sets it";
  run.engine->RunPhaseI(1);
  EXPECT_EQ(Access::supportCount(*run.engine), 5.0);
  EXPECT_EQ(Access::peakSets(*run.engine), 3) << "the empty set, 1, and 2 that came back";
  EXPECT_EQ(Access::setsRemoved(*run.engine), 2);
  EXPECT_EQ(run.engine->NumberOfSets(), 2);
  EXPECT_EQ(run.count(1), 6);
}

TEST(RunPhaseI, RoundsAThresholdThatIsAnIntegerUpToNoise) {
  const double support = std::nextafter(0.7, 0.0);
  ASSERT_LT(10 * support, 7.0);
  EngineHost noisy(repeated({1}, 10), support);
  noisy.engine->RunPhaseI(10);
  EXPECT_EQ(Access::supportCount(*noisy.engine), 7.0);
  EngineHost cutOff(repeated({1}, 10), 0.79);
  cutOff.engine->RunPhaseI(10);
  EXPECT_EQ(Access::supportCount(*cutOff.engine), 7.0);
}

TEST(RunPhaseI, PrunesOnceWhenItEndsOnAMultipleOfThePruningFrequency) {
  EngineHost run(repeated({1}, 10));
  run.engine->RunPhaseI(10);
  EXPECT_EQ(Access::supportCount(*run.engine), 5.0);
  // An end off the frequency would prune with an average of 0 here, since nothing is read.
  run.engine->RunPhaseI(1);
  EXPECT_EQ(Access::supportCount(*run.engine), 5.0);
}

TEST(RunPhaseI, PrunesWithACountOfZeroWhenItReadNothing) {
  EngineHost run(repeated({1}, 9));
  run.engine->RunPhaseI(9);
  EXPECT_EQ(Access::supportCount(*run.engine), 4.0);
  EXPECT_EQ(shortForm(run.engine->RunPhaseI(1)), "OK");
  EXPECT_EQ(Access::supportCount(*run.engine), 0.0);
  EXPECT_EQ(run.count(1), 9);
}

TEST(RunPhaseI, PrunesAtTheEndOfEachCallOnlyWhenTheFrequencyIsZero) {
  EngineHost run(repeated({1}, 20));
  run.settings->SetRemoveSmallFreq(0);
  run.settings->SetReportFreqPhaseI(1);
  const TestListener& listener = run.listen(nullptr);
  EXPECT_EQ(shortForm(run.engine->RunPhaseI(20)), "OK");
  EXPECT_EQ(Access::supportCount(*run.engine), 10.0);
  EXPECT_EQ(Access::peakSets(*run.engine), 0);
  EXPECT_EQ(listener.reports, 1);
}

TEST(RunPhaseI, ReportsAtCommonMultiplesOfBothFrequenciesAndAtTheEnd) {
  EngineHost run(repeated({1}, 120));
  run.settings->SetReportFreqPhaseI(25);
  std::vector<int> reportedAt;
  run.listen([&](ProgressReport& report) { reportedAt.push_back(report.GetIntValue("nTrans")); });
  run.engine->RunPhaseI(120);
  EXPECT_THAT(reportedAt, ElementsAre(50, 100, 120));
  reportedAt.clear();
  run.engine->RunPhaseI(1);
  EXPECT_THAT(reportedAt, ElementsAre(120)) << "the end is reported also when nothing was read";
}

TEST(RunPhaseI, ReportsTheEndAloneWhenTheReportFrequencyIsZero) {
  EngineHost run(repeated({1}, 100));
  run.settings->SetReportFreqPhaseI(0);
  const TestListener& listener = run.listen(nullptr);
  run.engine->RunPhaseI(100);
  EXPECT_EQ(listener.reports, 1);
}

TEST(RunPhaseI, RefusesASaveWhileItRuns) {
  EngineHost run(repeated({1}, 10));
  run.settings->SetReportFreqPhaseI(10);
  run.engine->RunPhaseI(1);
  std::string during;
  std::fstream closed;
  run.listen([&](ProgressReport&) { during += shortForm(run.engine->SaveState(closed)) + " "; });
  run.engine->RunPhaseI(9);
  EXPECT_EQ(during, "W4 W4 ");
  EXPECT_EQ(shortForm(run.engine->GetStatus()), "OK");
}

TEST(RunPhaseI, EndsWithCodeThreeWhenMemoryIsFull) {
  EngineHost run(Transactions{{1}, {2}, {3}});
  run.engine->SetMaxInStoreSets(3);  // the empty set, 1 and 2
  EXPECT_EQ(shortForm(run.engine->RunPhaseI(3)), "E3");
  EXPECT_EQ(shortForm(run.engine->GetStatus()), "E3");
  EXPECT_EQ(Access::transactionsSeen(*run.engine), 0) << "only a call that ends well moves it";
  EXPECT_FALSE(Access::isResumable(*run.engine));
  EXPECT_EQ(run.count(1), 1) << "what was counted stays";
  EXPECT_EQ(Access::supportCount(*run.engine), 1.0) << "and is not pruned";
}

TEST(RunPhaseI, NeedsASupportSource) {
  CarmaSettings settings;
  VectorTransactions source(Transactions{{1}});
  CarmaAssociationAlgorithm engine(&settings, &source);
  const StreamCapture output(std::cout);
  EXPECT_EQ(shortForm(engine.RunPhaseI(1)), "W40001");
  EXPECT_EQ(output.text(), "Dictionary Failure\n");
  EXPECT_EQ(shortForm(engine.GetStatus()), "W40001");
  EXPECT_FALSE(Access::isResumable(engine));
}

TEST(RunPhaseI, NeedsAnIterator) {
  auto settings = settingsWithSupport(0.5);
  CarmaAssociationAlgorithm engine(settings.get(), nullptr);
  const StreamCapture output(std::cout);
  EXPECT_EQ(shortForm(engine.RunPhaseI(1)), "W40001");
  EXPECT_EQ(output.text(), "Dictionary Failure\n");
}

TEST(RunPhaseI, CatchesWhatTheCallbacksOfTheHostThrow) {
  struct Case {
    const char* what;
    std::function<void(EngineHost&)> prepare;
  };
  const Case cases[] = {
      {"HasNext", [](EngineHost& run) { run.source.throwInHasNextAt = 4; }},
      {"Next", [](EngineHost& run) { run.source.throwInNextAt = 4; }},
      {"GetItem", [](EngineHost& run) { run.source.at(4).throwing = true; }},
      {"GetSupport",
       [](EngineHost& run) {
         run.support([](int transaction) -> double {
           if (transaction == 5) throw std::runtime_error("GetSupport");
           return 0.5;
         });
       }},
      {"GetSupport with a pointer",
       [](EngineHost& run) { run.support([](int) -> double { throw new IOException(); }); }},
      {"OnProgress at a report point",
       [](EngineHost& run) {
         run.settings->SetReportFreqPhaseI(10);
         run.listen([](ProgressReport&) { throw 5; });
       }},
      {"OnProgress at the end",
       [](EngineHost& run) { run.listen([](ProgressReport&) { throw std::runtime_error("OnProgress"); }); }}};
  for (const Case& c : cases) {
    EngineHost run(repeated({1}, 10));
    c.prepare(run);
    const StreamCapture output(std::cout);
    std::string status;
    EXPECT_NO_THROW(status = shortForm(run.engine->RunPhaseI(10))) << c.what;
    EXPECT_EQ(status, "W40001") << c.what;
    EXPECT_EQ(output.text(), "Dictionary Failure\n") << c.what;
    EXPECT_EQ(shortForm(run.engine->GetStatus()), "W40001") << c.what;
    EXPECT_FALSE(Access::isResumable(*run.engine)) << c.what;
  }
}

TEST(RunPhaseI, AnswersAlsoWhenItsMessageCannotBeWritten) {
  EngineHost run(repeated({1}, 10));
  run.source.throwInNextAt = 4;
  const ThrowingOutput output(std::cout);
  std::string status;
  EXPECT_NO_THROW(status = shortForm(run.engine->RunPhaseI(10)));
  EXPECT_EQ(status, "W40001");
  EXPECT_EQ(shortForm(run.engine->GetStatus()), "W40001");
}

TEST(RunPhaseI, SendsItsLastReportAlsoAfterAFailure) {
  EngineHost run(repeated({1}, 10));
  run.source.throwInNextAt = 4;
  const TestListener& listener = run.listen(nullptr);
  const StreamCapture output(std::cout);
  run.engine->RunPhaseI(10);
  EXPECT_EQ(listener.reports, 1);
}

TEST(RunPhaseI, CanGoOnAfterACallThatFailed) {
  EngineHost run(repeated({1}, 10));
  run.source.throwInNextAt = 4;
  {
    const StreamCapture output(std::cout);
    run.engine->RunPhaseI(10);
  }
  run.source.throwInNextAt = -1;
  EXPECT_EQ(shortForm(run.engine->RunPhaseI(10)), "OK");
  EXPECT_EQ(run.engine->NumberOfTransactions(), 10);
  EXPECT_EQ(Access::transactionsSeen(*run.engine), 10);
}

TEST(Cancel, StopsPhaseIAtItsNextTransaction) {
  EngineHost run(repeated({1}, 100));
  run.settings->SetReportFreqPhaseI(20);
  std::vector<std::string> reports;
  run.listen([&](ProgressReport& report) {
    reports.push_back(std::to_string(report.GetIntValue("nTrans")));
    run.engine->Cancel();
  });
  EXPECT_EQ(shortForm(run.engine->RunPhaseI(100)), "W1");
  EXPECT_EQ(shortForm(run.engine->GetStatus()), "E1") << "the engine's own status is that of the cancel";
  EXPECT_EQ(run.source.position(), 20);
  EXPECT_THAT(reports, ElementsAre("20", "0")) << "the last report finds the core gone";
  EXPECT_EQ(run.engine->NumberOfSets(), -1);
  EXPECT_EQ(run.engine->NumberOfTransactions(), -1);
  EXPECT_EQ(run.engine->LongestSet(), -1);
  EXPECT_EQ(run.engine->CountSetsOfSize(1), -1);
  EXPECT_EQ(run.engine->GetLattice(), nullptr);
  EXPECT_FALSE(run.engine->IsLatticeBuilt());
  EXPECT_EQ(run.engine->AverageSupport(), 0.0);
  const StreamCapture output(std::cout);
  run.engine->DisplayDictInfo();
  EXPECT_EQ(output.text(), "");
}

TEST(Cancel, MayComeFromAnotherThread) {
  struct EndlessSource : VectorTransactions {
    EndlessSource() : VectorTransactions(Transactions{{1}}) {}
    Transaction* Next() override {
      read.store(true);
      Restart();
      return VectorTransactions::Next();
    }
    bool HasNext() override { return true; }
    std::atomic<bool> read = false;
  };
  auto settings = settingsWithSupport(0.5);
  EndlessSource source;
  CarmaAssociationAlgorithm engine(settings.get(), &source);
  std::thread canceller([&] {
    while (!source.read.load()) std::this_thread::yield();
    engine.Cancel();
  });
  EXPECT_EQ(shortForm(engine.RunPhaseI(2147483647)), "W1");
  canceller.join();
}

TEST(Cancel, BeforePhaseICancelsItAtItsFirstTransaction) {
  EngineHost run(repeated({1}, 3));
  run.engine->Cancel();
  EXPECT_EQ(shortForm(run.engine->GetStatus()), "OK") << "a wish changes nothing by itself";
  EXPECT_EQ(run.engine->NumberOfSets(), 1);
  EXPECT_EQ(shortForm(run.engine->RunPhaseI(3)), "W1");
  EXPECT_EQ(run.source.nextCalls, 0);
}

TEST(Cancel, IsNotNoticedWhenNoTransactionIsLeft) {
  EngineHost run(Transactions{});
  run.engine->Cancel();
  EXPECT_EQ(shortForm(run.engine->RunPhaseI(3)), "OK");
  EXPECT_EQ(run.engine->NumberOfSets(), 1);
}

TEST(Cancel, KeepsWhatIsNotGivenUpForTheLastReport) {
  auto transactions = repeated({1}, 6);
  transactions.insert(transactions.end(), 5, {2});
  EngineHost run(transactions);
  run.settings->SetReportFreqPhaseI(10);
  std::vector<int> ints;
  std::vector<double> doubles;
  run.listen([&](ProgressReport& report) {
    ints.clear();
    doubles.clear();
    for (const char* key : {"nTrans", "longAdded", "maxExt", "setTotal", "removed", "memory"}) {
      ints.push_back(report.GetIntValue(key));
    }
    for (const char* key : {"aveExt", "avSigma", "sigma"}) doubles.push_back(report.GetDoubleValue(key));
    run.engine->Cancel();
  });
  EXPECT_EQ(shortForm(run.engine->RunPhaseI(11)), "W1");
  EXPECT_THAT(ints, ElementsAre(0, 0, 0, 0, 1, 3));
  EXPECT_THAT(doubles, ElementsAre(0.0, 0.0, 0.5));
}

TEST(Cancel, LeavesMemoryAtZeroWhenNoPruningPointHasSetIt) {
  EngineHost run(repeated({1}, 3));
  run.engine->Cancel();
  int memory = -1;
  run.listen([&](ProgressReport& report) { memory = report.GetIntValue("memory"); });
  run.engine->RunPhaseI(3);
  EXPECT_EQ(memory, 0);
}

// The listener's call finds the cancel and frees the dictionary; the run that called it must not fall over
// it.
TEST(Cancel, MayBeCarriedOutByAnOperationThatTheListenerCalls) {
  EngineHost run(repeated({1}, 100));
  run.settings->SetReportFreqPhaseI(20);
  std::string inner;
  run.listen([&](ProgressReport&) {
    if (!inner.empty()) return;
    inner = "running";
    run.engine->Cancel();
    inner = shortForm(run.engine->RunPhaseI(1));
  });
  EXPECT_EQ(shortForm(run.engine->RunPhaseI(100)), "W1");
  EXPECT_EQ(inner, "E1");
  EXPECT_EQ(shortForm(run.engine->GetStatus()), "E1");
}

// What would be counted in the middle of a call, or lead the engine on, is refused; the call goes on.
TEST(RunPhaseI, LetsNoCallbackRunAPhase) {
  const std::function<KorStatus(CarmaAssociationAlgorithm&)> phases[] = {
      [](auto& engine) { return engine.RunPhaseI(1); },
      [](auto& engine) { return engine.RunNullPhaseII(0.0); },
      [](auto& engine) { return engine.RunPhaseII(); },
      [](auto& engine) { return engine.RunPhaseIIrandom(); },
      [](auto& engine) { return engine.RunPhaseIIcomplete(0.5); }};
  const auto finished = [](CarmaAssociationAlgorithm& engine) {
    std::ostringstream state;
    EXPECT_EQ(shortForm(engine.SaveStateXML(state)), "OK");
    return state.str();
  };
  EngineHost undisturbed(repeated({1, 2}, 30));
  ASSERT_EQ(shortForm(undisturbed.engine->RunPhaseI(30)), "OK");
  for (const auto& phase : phases) {
    const auto refused = [&phase](CarmaAssociationAlgorithm& engine) {
      EXPECT_EQ(shortForm(phase(engine)), "E6");
      EXPECT_EQ(shortForm(engine.GetStatus()), "E6");
    };
    EngineHost run(repeated({1, 2}, 30));
    run.settings->SetReportFreqPhaseI(undisturbed.settings->GetReportFreqPhaseI());
    const TestListener& listener = run.listen([&](ProgressReport&) { refused(*run.engine); });
    run.support([&](int) { return refused(*run.engine), 0.5; });
    EXPECT_EQ(shortForm(run.engine->RunPhaseI(30)), "OK");
    EXPECT_EQ(shortForm(run.engine->GetStatus()), "OK");
    EXPECT_GT(listener.reports, 0);
    EXPECT_EQ(finished(*run.engine), finished(*undisturbed.engine));

    auto settings = settingsWithSupport(0.5);
    std::unique_ptr<CarmaAssociationAlgorithm> engine;
    CallingSource source([&] { refused(*engine); });
    engine = std::make_unique<CarmaAssociationAlgorithm>(settings.get(), &source);
    EXPECT_EQ(shortForm(engine->RunPhaseI(10)), "OK");
    EXPECT_EQ(engine->NumberOfTransactions(), source.position());
    EXPECT_EQ(Access::dictionary(*engine)->getCount(1), source.position());
  }
}

TEST(EndPhaseI, TellsItsOwnStatusWhateverItsReportWasRefused) {
  EngineHost run(repeated({1}, 10));
  ASSERT_EQ(shortForm(run.engine->RunPhaseI(10)), "OK");
  std::vector<AssociationRule> rules;
  std::string inner;
  run.listen([&](ProgressReport&) {
    inner =
        shortForm(run.engine->CreateNgetRules(0.1, 0.1, rules)) + ' ' + shortForm(run.engine->RunPhaseII());
  });
  EXPECT_EQ(shortForm(run.engine->RunNullPhaseII(0.0)), "OK");
  EXPECT_EQ(inner, "W6 E6");
  EXPECT_TRUE(run.engine->IsLatticeBuilt());
}

// The dictionary is gone when the transaction has been fetched; a pruning point follows.
TEST(Cancel, MayBeCarriedOutByAnOperationThatATransactionCalls) {
  auto settings = settingsWithSupport(0.5);
  settings->SetRemoveSmallFreq(5);
  std::unique_ptr<CarmaAssociationAlgorithm> engine;
  CallingSource source([&] {
    engine->Cancel();
    EXPECT_EQ(shortForm(engine->RunNullPhaseII(0.0)), "E1");
  });
  engine = std::make_unique<CarmaAssociationAlgorithm>(settings.get(), &source);
  EXPECT_EQ(shortForm(engine->RunPhaseI(10)), "W1");
  EXPECT_EQ(shortForm(engine->GetStatus()), "E1");
  EXPECT_EQ(source.position(), 5);
}
