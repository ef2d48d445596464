// The three forms of phase II: what they answer, what they read and report, and how they end. That their
// counts are right is shown against the plain engine elsewhere.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "korassoc/itemsets/ItemSet.h"
#include "tests/support/EngineHost.h"
#include "tests/support/StreamCapture.h"

namespace {

using Access = CarmaAssociationAlgorithmTestAccess;
using ::testing::ElementsAre;

// A run after phase I over all its transactions.
struct AfterPhaseI : EngineHost {
  explicit AfterPhaseI(const Transactions& transactions, double minSupport = 0.5)
      : EngineHost(transactions, minSupport) {
    EXPECT_TRUE(engine->RunPhaseI(source.size()).IsOK());
    source.hasNextCalls = source.nextCalls = 0;
  }
};

struct Form {
  const char* name;
  std::function<KorAssoc::KorStatus(CarmaAssociationAlgorithm&)> run;
};
const Form kExact = {"RunPhaseII", [](CarmaAssociationAlgorithm& engine) { return engine.RunPhaseII(); }};
const Form kRandom = {"RunPhaseIIrandom",
                      [](CarmaAssociationAlgorithm& engine) { return engine.RunPhaseIIrandom(); }};
const Form kNull = {"RunNullPhaseII",
                    [](CarmaAssociationAlgorithm& engine) { return engine.RunNullPhaseII(0.0); }};
const Form kComplete = {"RunPhaseIIcomplete",
                        [](CarmaAssociationAlgorithm& engine) { return engine.RunPhaseIIcomplete(0.5); }};
const Form kPasses[] = {kExact, kRandom};

int countOf(const EngineHost& host, const std::vector<int>& items) {
  const SetCounter* counter =
      Access::dictionary(*host.engine)->getDescriptor(items.data(), static_cast<int>(items.size()));
  return counter == nullptr ? 0 : counter->count;
}

}  // namespace

TEST(RunPhaseII, EndsWithExactCountsAndALattice) {
  for (const Form& form : kPasses) {
    AfterPhaseI host(repeated({1, 2}, 6));
    EXPECT_EQ(countOf(host, {1, 2}), 5) << "phase I misses the transaction that brought both items";
    EXPECT_EQ(shortForm(form.run(*host.engine)), "OK") << form.name;
    EXPECT_EQ(shortForm(host.engine->GetStatus()), "OK") << form.name;
    EXPECT_TRUE(host.engine->IsLatticeBuilt()) << form.name;
    EXPECT_EQ(countOf(host, {1, 2}), 6) << form.name;
    EXPECT_EQ(host.source.restarts, 1) << form.name;
    EXPECT_EQ(host.engine->LongestSet(), 2) << form.name;
    EXPECT_EQ(host.engine->GetLattice(), Access::dictionary(*host.engine)) << form.name;
  }
}

// The second pass finds fewer occurrences than the first here, since the source ends early.
TEST(RunPhaseII, PrunesByTheAverageSupportOfAllTransactionsAfterThePass) {
  for (const Form& form : kPasses) {
    AfterPhaseI enough(repeated({1, 2}, 6));
    enough.source.nullAt = 3;
    EXPECT_EQ(shortForm(form.run(*enough.engine)), "OK") << form.name;
    EXPECT_EQ(countOf(enough, {1, 2}), 3) << form.name << ": half of the 6 of phase I";
    AfterPhaseI few(repeated({1, 2}, 6));
    few.source.nullAt = 2;
    EXPECT_EQ(shortForm(form.run(*few.engine)), "OK") << form.name;
    EXPECT_EQ(countOf(few, {1, 2}), 0) << form.name;
    EXPECT_TRUE(few.engine->IsLatticeBuilt()) << form.name;
  }
}

TEST(RunPhaseII, CanBeRunAgain) {
  AfterPhaseI host(repeated({1, 2}, 6));
  host.engine->RunPhaseII();
  host.source.restarts = 0;
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK") << "the refused end of phase I is ignored";
  EXPECT_EQ(host.source.restarts, 1);
  EXPECT_EQ(countOf(host, {1, 2}), 6);
  EXPECT_EQ(shortForm(host.engine->RunPhaseIIrandom()), "OK");
  EXPECT_EQ(countOf(host, {1, 2}), 6);
}

TEST(RunPhaseII, ReadsNoMoreTransactionsThanPhaseI) {
  for (const Form& form : kPasses) {
    AfterPhaseI host(repeated({1, 2}, 6));
    host.source.add({1, 2});
    form.run(*host.engine);
    EXPECT_EQ(host.source.nextCalls, 6) << form.name;
    EXPECT_EQ(host.source.hasNextCalls, 6) << form.name;
    EXPECT_EQ(countOf(host, {1, 2}), 6) << form.name;
  }
}

TEST(RunPhaseII, EndsThePassWhenTheSourceDoes) {
  for (const Form& form : kPasses) {
    AfterPhaseI host(repeated({1, 2}, 6));
    host.source.nullAt = 4;
    EXPECT_EQ(shortForm(form.run(*host.engine)), "OK") << form.name;
    EXPECT_EQ(countOf(host, {1, 2}), 4) << form.name;
    EXPECT_TRUE(host.engine->IsLatticeBuilt()) << form.name;
  }
}

TEST(RunPhaseII, ReportsAtItsFrequencyAndAtTheEnd) {
  struct Case {
    int frequency;
    std::vector<int> reportedAt;
  };
  for (const Case& c : {Case{1, {1, 2, 3, 4, 5, 6, 6}}, Case{4, {4, 6}}, Case{6, {6, 6}}, Case{0, {6}}}) {
    for (const Form& form : kPasses) {
      AfterPhaseI host(repeated({1, 2}, 6));
      host.settings->SetReportFreqPhaseII(c.frequency);
      host.engine->RunNullPhaseII(0.0);  // closes phase I, whose own report is not looked at here
      std::vector<int> reportedAt;
      host.listen([&](ProgressReport& report) { reportedAt.push_back(report.GetIntValue("nTransII")); });
      EXPECT_EQ(shortForm(form.run(*host.engine)), "OK");
      EXPECT_EQ(reportedAt, c.reportedAt) << form.name << " every " << c.frequency;
    }
  }
}

TEST(RunPhaseII, ReportsTheEndOfPhaseIOnce) {
  AfterPhaseI host(repeated({1}, 6));
  std::vector<double> sigmas;
  host.listen([&](ProgressReport& report) { sigmas.push_back(report.GetDoubleValue("sigma")); });
  host.engine->RunPhaseII();
  EXPECT_THAT(sigmas, ElementsAre(0.5, 0.0)) << "a report of phase I and one of phase II";
}

TEST(RunPhaseII, EndsWithCodeTwoWhenTheSourceCannotRestart) {
  for (const Form& form : kPasses) {
    AfterPhaseI host(repeated({1, 2}, 6));
    host.source.restartResult = 7;
    EXPECT_EQ(shortForm(form.run(*host.engine)), "E2") << form.name;
    EXPECT_EQ(shortForm(host.engine->GetStatus()), "E2") << form.name;
    EXPECT_EQ(host.source.nextCalls, 0) << form.name;
    EXPECT_FALSE(host.engine->IsLatticeBuilt()) << form.name;
  }
}

TEST(RunPhaseII, NeedsNoRestartWithoutLongSets) {
  for (const Form& form : kPasses) {
    AfterPhaseI host(repeated({1}, 6));
    host.source.restartResult = 7;
    int reports = 0;
    host.listen([&](ProgressReport&) { ++reports; });
    EXPECT_EQ(shortForm(form.run(*host.engine)), "OK") << form.name;
    EXPECT_TRUE(host.engine->IsLatticeBuilt()) << form.name;
    EXPECT_EQ(host.source.nextCalls, 0) << form.name;
    EXPECT_EQ(reports, 2) << form.name << ": the end of phase I, and the lattice";
  }
}

TEST(RunPhaseII, BuildsALatticeOfNothingToo) {
  EngineHost host{Transactions{}};
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
  EXPECT_TRUE(host.engine->IsLatticeBuilt());
  EXPECT_EQ(host.engine->LongestSet(), 0);
}

TEST(RunPhaseII, EndsWithCodeThreeWhenMoreIsStoredThanAllowed) {
  for (const Form& form : kPasses) {
    AfterPhaseI exactly(repeated({1, 2}, 6));
    exactly.engine->SetMaxInStoreSets(4);
    EXPECT_EQ(shortForm(form.run(*exactly.engine)), "OK") << form.name << ": {}, {1}, {2}, {1, 2}";
    AfterPhaseI host(repeated({1, 2}, 6));
    host.engine->SetMaxInStoreSets(3);
    host.source.restartResult = 7;
    EXPECT_EQ(shortForm(form.run(*host.engine)), "E3") << form.name << ": comes before the failed restart";
    EXPECT_FALSE(host.engine->IsLatticeBuilt()) << form.name;
  }
}

TEST(RunPhaseII, CountsNothingWhenOnlyOneItemSetsAreAllowedNow) {
  AfterPhaseI host(repeated({1, 2}, 6));
  host.settings->SetMaxLengthSet(1);
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
  EXPECT_FALSE(host.engine->IsLatticeBuilt());
  EXPECT_EQ(host.source.nextCalls, 0);
  host.source.restartResult = 7;
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "E2");
  host.source.restartResult = 0;
  EXPECT_EQ(shortForm(host.engine->RunPhaseIIrandom()), "OK");
  EXPECT_TRUE(host.engine->IsLatticeBuilt()) << "the random form does not look at it";
  EXPECT_EQ(countOf(host, {1, 2}), 6);
}

TEST(RunPhaseII, IsCancelledAtItsNextTransaction) {
  for (const Form& form : kPasses) {
    AfterPhaseI host(repeated({1, 2}, 6));
    host.settings->SetReportFreqPhaseII(2);
    host.engine->RunNullPhaseII(0.0);
    host.listen([&](ProgressReport&) { host.engine->Cancel(); });
    EXPECT_EQ(shortForm(form.run(*host.engine)), "E1") << form.name;
    EXPECT_EQ(shortForm(host.engine->GetStatus()), "E1") << form.name;
    EXPECT_EQ(host.source.nextCalls, 2) << form.name;
    EXPECT_EQ(host.engine->NumberOfSets(), -1) << form.name;
    EXPECT_EQ(host.engine->GetLattice(), nullptr) << form.name;
  }
}

TEST(RunPhaseII, AnswersTheCancelOfItsLastReportAndLeavesTheRestToTheNextOperation) {
  for (const Form& form : kPasses) {
    AfterPhaseI host(repeated({1, 2}, 6));
    host.settings->SetReportFreqPhaseII(0);
    host.engine->RunNullPhaseII(0.0);
    host.listen([&](ProgressReport&) { host.engine->Cancel(); });
    EXPECT_EQ(shortForm(form.run(*host.engine)), "E1") << form.name;
    EXPECT_EQ(shortForm(host.engine->GetStatus()), "E1") << form.name;
    EXPECT_EQ(host.engine->NumberOfSets(), 4) << form.name << ": nothing is given up yet";
    EXPECT_EQ(shortForm(form.run(*host.engine)), "E1") << form.name;
    EXPECT_EQ(host.engine->NumberOfSets(), -1) << form.name;
  }
}

TEST(RunPhaseII, BuildsNothingForAnEngineThatWasToldToStop) {
  AfterPhaseI host(repeated({1}, 6));
  host.engine->Cancel();
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "E1");
  EXPECT_FALSE(host.engine->IsLatticeBuilt());
  EXPECT_EQ(host.engine->NumberOfSets(), 2);
  host.source.restartResult = 7;
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "E2") << "what went wrong by itself is told first";
}

// Whichever callback carries a cancel out, what the pass works with stays until it has ended.
TEST(RunPhaseII, SurvivesACancelThatACallbackCarriesOut) {
  struct CancellingSource : VectorTransactions {
    using VectorTransactions::VectorTransactions;
    int Restart() override {
      if (engine != nullptr && inRestart) cancel();
      return VectorTransactions::Restart();
    }
    Transaction* Next() override {
      if (engine != nullptr && !inRestart && position() == 2) cancel();
      return VectorTransactions::Next();
    }
    void cancel() {
      engine->Cancel();
      EXPECT_EQ(shortForm(engine->RunNullPhaseII(0.0)), "E1");
    }
    CarmaAssociationAlgorithm* engine = nullptr;
    bool inRestart = false;
  };
  for (const bool inRestart : {false, true}) {
    for (const Form& form : {kExact, kRandom, kComplete}) {
      auto settings = settingsWithSupport(0.5);
      CancellingSource source(repeated({1, 2}, 6));
      CarmaAssociationAlgorithm engine(settings.get(), &source);
      engine.RunPhaseI(6);
      source.inRestart = inRestart;
      source.engine = &engine;
      EXPECT_EQ(shortForm(form.run(engine)), "E1") << form.name;
      EXPECT_EQ(shortForm(engine.GetStatus()), "E1") << form.name;
      EXPECT_EQ(engine.NumberOfSets(), -1) << form.name;
    }
  }
}

TEST(RunPhaseII, RefusesAPassThatACallbackRuns) {
  struct NestingSource : VectorTransactions {
    using VectorTransactions::VectorTransactions;
    Transaction* Next() override {
      if (engine != nullptr && position() == 2) {
        EXPECT_EQ(shortForm(form->run(*engine)), "E6");
      }
      return VectorTransactions::Next();
    }
    CarmaAssociationAlgorithm* engine = nullptr;
    const Form* form = nullptr;
  };
  for (const Form& outer : {kExact, kRandom, kComplete}) {
    for (const Form& inner : {kExact, kRandom, kComplete, kNull}) {
      auto settings = settingsWithSupport(0.5);
      NestingSource source(repeated({1, 2}, 6));
      CarmaAssociationAlgorithm engine(settings.get(), &source);
      engine.RunPhaseI(6);
      source.engine = &engine;
      source.form = &inner;
      EXPECT_EQ(shortForm(outer.run(engine)), "OK") << outer.name << " and " << inner.name;
      EXPECT_EQ(shortForm(engine.GetStatus()), "OK") << outer.name << " and " << inner.name;
      EXPECT_EQ(source.restarts, 1);
      const ItemSet pair(ItemSet(1), 2);
      EXPECT_EQ(Access::dictionary(engine)->getCount(&pair), 6) << outer.name << " and " << inner.name;
      EXPECT_TRUE(engine.IsLatticeBuilt());
    }
  }
}

// Half of the counts would be those of the pass.
TEST(RunPhaseII, RefusesToSaveInACallback) {
  for (const Form& form : {kExact, kRandom, kComplete}) {
    AfterPhaseI host(repeated({1, 2}, 6));
    host.settings->SetReportFreqPhaseII(2);
    host.engine->RunNullPhaseII(0.0);
    std::string answers;
    host.listen([&](ProgressReport&) {
      std::fstream file;
      std::ostringstream text;
      answers += shortForm(host.engine->SaveState(file)) + shortForm(host.engine->SaveStateXML(text)) + ' ';
      EXPECT_EQ(text.str(), "");
    });
    EXPECT_EQ(shortForm(form.run(*host.engine)), "OK") << form.name;
    EXPECT_EQ(answers, "W4W4 W4W4 W4W4 W4W4 ") << form.name;
  }
}

TEST(RunPhaseII, SurvivesACancelThatTheLastReportCarriesOut) {
  for (const Form& form : {kExact, kRandom, kComplete}) {
    AfterPhaseI host(repeated({1, 2}, 6));
    host.settings->SetReportFreqPhaseII(6);
    host.engine->RunNullPhaseII(0.0);
    host.listen([&](ProgressReport& report) {
      if (report.GetIntValue("nTransII") != 6) return;
      host.engine->Cancel();
      host.engine->RunNullPhaseII(0.0);
    });
    EXPECT_EQ(shortForm(form.run(*host.engine)), "E1") << form.name;
    EXPECT_EQ(host.engine->NumberOfSets(), -1) << form.name;
  }
}

TEST(RunPhaseII, NeedsAnIterator) {
  for (const Form& form : kPasses) {
    auto settings = settingsWithSupport(0.5);
    CarmaAssociationAlgorithm engine(settings.get(), nullptr);
    EXPECT_EQ(shortForm(form.run(engine)), "E40001") << form.name;
    EXPECT_EQ(shortForm(engine.GetStatus()), "E40001") << form.name;
  }
}

TEST(RunPhaseII, CatchesWhatTheCallbacksOfTheHostThrow) {
  struct Case {
    const char* what;
    std::function<void(AfterPhaseI&)> prepare;
  };
  const Case cases[] = {{"Restart", [](AfterPhaseI& host) { host.source.throwInRestart = true; }},
                        {"HasNext", [](AfterPhaseI& host) { host.source.throwInHasNextAt = 3; }},
                        {"Next", [](AfterPhaseI& host) { host.source.throwInNextAt = 3; }},
                        {"GetItem", [](AfterPhaseI& host) { host.source.at(3).throwing = true; }},
                        {"OnProgress", [](AfterPhaseI& host) {
                           host.listen([](ProgressReport& report) {
                             if (report.GetIntValue("nTransII") == 6) throw std::runtime_error("OnProgress");
                           });
                         }}};
  for (const Form& form : kPasses) {
    for (const Case& c : cases) {
      AfterPhaseI host(repeated({1, 2}, 6));
      c.prepare(host);
      std::string status;
      EXPECT_NO_THROW(status = shortForm(form.run(*host.engine))) << form.name << ' ' << c.what;
      EXPECT_EQ(status, "E40001") << form.name << ' ' << c.what;
      EXPECT_EQ(shortForm(host.engine->GetStatus()), "E40001") << form.name << ' ' << c.what;
    }
  }
}

TEST(RunPhaseII, CanBeRunAgainAfterItWasBrokenOff) {
  for (const Form& form : kPasses) {
    AfterPhaseI host(repeated({1, 2}, 6));
    host.source.throwInNextAt = 3;
    form.run(*host.engine);
    host.source.throwInNextAt = -1;
    EXPECT_EQ(shortForm(form.run(*host.engine)), "OK") << form.name;
    EXPECT_EQ(countOf(host, {1, 2}), 6) << form.name;
  }
}

TEST(EndPhaseI, LeavesTheEngineInPhaseIWhenItsReportThrows) {
  for (const Form& form : {kExact, kRandom, kNull}) {
    AfterPhaseI host(repeated({1, 2}, 6));
    host.listen([](ProgressReport&) { throw std::runtime_error("OnProgress"); });
    const StreamCapture output(std::cout);
    const std::string status = shortForm(form.run(*host.engine));
    EXPECT_EQ(status, form.name == kNull.name ? "E40001" : "W6") << form.name;
    EXPECT_EQ(output.text(), "") << form.name;
    EXPECT_EQ(host.engine->GetLattice(), nullptr) << form.name;
    host.engine->SetProgressListener(nullptr);
    EXPECT_EQ(shortForm(form.run(*host.engine)), "OK") << form.name;
  }
}

TEST(RunNullPhaseII, TakesTheCountsOfPhaseIAndAddsToTheTransactions) {
  struct Case {
    double fraction;
    int transactions;
  };
  // 6 times the fraction, rounded when it is an integer up to noise, else cut off.
  for (const Case& c :
       {Case{0.0, 6}, Case{0.5, 9}, Case{0.4, 8}, Case{0.1, 6}, Case{1.0 / 3, 8}, Case{1e300, 2147483647}}) {
    AfterPhaseI host(repeated({1, 2}, 6));
    EXPECT_EQ(shortForm(host.engine->RunNullPhaseII(c.fraction)), "OK") << c.fraction;
    EXPECT_EQ(host.engine->NumberOfTransactions(), c.transactions) << c.fraction;
    EXPECT_TRUE(host.engine->IsLatticeBuilt()) << c.fraction;
    EXPECT_EQ(countOf(host, {1, 2}), 5) << c.fraction;
    EXPECT_EQ(host.source.restarts, 0) << c.fraction;
  }
}

TEST(RunNullPhaseII, WorksOnlyStraightAfterPhaseI) {
  AfterPhaseI host(repeated({1, 2}, 6));
  EXPECT_EQ(shortForm(host.engine->RunNullPhaseII(0.0)), "OK");
  Access::setStatus(*host.engine, error(77));
  EXPECT_EQ(shortForm(host.engine->RunNullPhaseII(0.5)), "W6");
  EXPECT_EQ(host.engine->NumberOfTransactions(), 6);
  EXPECT_EQ(shortForm(host.engine->GetStatus()), "W6");
}

TEST(RunNullPhaseII, CarriesACancelOut) {
  AfterPhaseI host(repeated({1, 2}, 6));
  host.engine->Cancel();
  EXPECT_EQ(shortForm(host.engine->RunNullPhaseII(0.0)), "E1");
  EXPECT_EQ(shortForm(host.engine->GetStatus()), "E1");
  EXPECT_EQ(host.engine->NumberOfSets(), -1);
  EXPECT_EQ(shortForm(host.engine->RunNullPhaseII(0.0)), "E1");
}

TEST(RunNullPhaseII, CarriesACancelOutInAnUnusableEngineToo) {
  VectorTransactions source;
  CarmaAssociationAlgorithm engine(nullptr, &source);
  EXPECT_EQ(shortForm(engine.RunNullPhaseII(0.0)), "E5");
  engine.Cancel();
  EXPECT_EQ(shortForm(engine.GetStatus()), "E5");
  EXPECT_EQ(shortForm(engine.RunNullPhaseII(0.0)), "E1");
  EXPECT_EQ(shortForm(engine.RunPhaseI(1)), "E1") << "it is a cancelled engine from there on";
}

TEST(DisplayDictInfo, WritesALineForEachLength) {
  AfterPhaseI host(Transactions{{1, 2}, {1, 2}, {1, 2, 3}, {1, 2}});
  const StreamCapture output(std::cout);
  std::cout << std::showbase << std::hex;
  host.engine->DisplayDictInfo();
  std::cout << std::noshowbase << std::dec;
  EXPECT_EQ(output.text(), "sets of size 0 1\nsets of size 1 2\nsets of size 2 1\n");
}
