// The corners of the second passes: nothing to count, a source that cannot restart, limits, reports.

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <vector>

#include "korassoc/rules/AssociationRule.h"
#include "tests/support/DictionaryComparison.h"
#include "tests/support/EngineHost.h"

namespace {

using Access = CarmaAssociationAlgorithmTestAccess;

// a b in every transaction, c in the first alone.
Transactions pairs(int count) {
  Transactions transactions = repeated({1, 2}, count);
  transactions[0].push_back(3);
  return transactions;
}

TEST(PhaseIIEdge, OneItemSetsNeedNoSecondPass) {
  EngineHost host(repeated({1}, 5));
  host.source.restartResult = 7;
  ASSERT_TRUE(host.engine->RunPhaseI(5).IsOK());
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
  EXPECT_TRUE(host.engine->IsLatticeBuilt());
  EXPECT_EQ(host.count(1), 5);
  EXPECT_EQ(shortForm(host.engine->RunPhaseIIrandom()), "OK");
}

TEST(PhaseIIEdge, EmptyDictionaryNeedsNoSecondPass) {
  EngineHost host(Transactions{});
  host.source.restartResult = 7;
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
  EXPECT_TRUE(host.engine->IsLatticeBuilt());
}

TEST(PhaseIIEdge, SourceThatCannotRestartEndsTheExactPasses) {
  for (const bool random : {false, true}) {
    EngineHost host(pairs(6));
    host.source.restartResult = 7;
    ASSERT_TRUE(host.engine->RunPhaseI(6).IsOK());
    const KorAssoc::KorStatus status = random ? host.engine->RunPhaseIIrandom() : host.engine->RunPhaseII();
    EXPECT_EQ(shortForm(status), "E2");
    EXPECT_EQ(shortForm(host.engine->GetStatus()), "E2");
    EXPECT_FALSE(host.engine->IsLatticeBuilt());
  }
}

// Whether a lattice stood before or not: a part of the counts is new then.
TEST(PhaseIIEdge, PassThatIsBrokenOffLeavesNothingToAsk) {
  for (const bool again : {false, true}) {
    EngineHost host(pairs(6));
    CarmaAssociationAlgorithm& engine = *host.engine;
    ASSERT_TRUE(engine.RunPhaseI(6).IsOK());
    if (again) {
      ASSERT_TRUE(engine.RunPhaseII().IsOK());
    }
    host.source.throwInNextAt = 3;
    EXPECT_EQ(shortForm(again ? engine.RunPhaseII() : engine.RunPhaseIIrandom()), "E40001");
    EXPECT_FALSE(engine.IsLatticeBuilt());
    std::vector<AssociationRule> rules;
    EXPECT_EQ(shortForm(engine.CreateNgetRules(0.1, 0.5, rules)), "E40001");
    std::ostringstream xml;
    EXPECT_EQ(shortForm(engine.ExportLatticeXML(xml)), "E40001");
    EXPECT_EQ(shortForm(engine.SaveStateXML(xml)), "W4");
    EXPECT_EQ(xml.str(), "");
    EXPECT_THROW(engine.GetLattice()->findSupport(ItemSet(1), 1), std::logic_error);

    host.source.throwInNextAt = -1;
    EXPECT_EQ(shortForm(engine.RunPhaseII()), "OK");
    EXPECT_EQ(shortForm(engine.CreateNgetRules(0.9, 0.9, rules)), "OK");
    EXPECT_EQ(rules.size(), 1U);  // nothing > a b: the others say less
    EXPECT_EQ(shortForm(engine.SaveStateXML(xml)), "OK");
  }
}

// A restart that fails, or a limit that holds nothing more, comes before anything is counted.
TEST(PhaseIIEdge, PassThatDoesNotBeginLeavesTheLatticeThatThereIs) {
  EngineHost host(pairs(6));
  ASSERT_TRUE(host.engine->RunPhaseI(6).IsOK());
  ASSERT_TRUE(host.engine->RunPhaseII().IsOK());
  host.source.throwInRestart = true;
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "E40001");
  host.source.throwInRestart = false;
  host.source.restartResult = 7;
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "E2");
  EXPECT_TRUE(host.engine->IsLatticeBuilt());
  std::vector<AssociationRule> rules;
  EXPECT_EQ(shortForm(host.engine->CreateNgetRules(0.9, 0.9, rules)), "OK");
}

TEST(PhaseIIEdge, MaxLengthOneWithPairsInStoreBuildsNoLattice) {
  EngineHost host(pairs(6));
  ASSERT_TRUE(host.engine->RunPhaseI(6).IsOK());
  ASSERT_EQ(host.engine->LongestSet(), 2);
  host.settings->SetMaxLengthSet(1);
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
  EXPECT_FALSE(host.engine->IsLatticeBuilt());
  EXPECT_EQ(shortForm(host.engine->RunPhaseIIrandom()), "OK");
  EXPECT_TRUE(host.engine->IsLatticeBuilt());
  EXPECT_EQ(stateText(*Access::dictionary(*host.engine)), "a 6@1+0, b 6@1+0, ab 6@2+0");
}

TEST(PhaseIIEdge, MoreSetsThanTheSettingsAllowEndThePass) {
  for (const int restartResult : {0, 7}) {
    EngineHost host(pairs(6));
    ASSERT_TRUE(host.engine->RunPhaseI(6).IsOK());
    host.source.restartResult = restartResult;
    host.settings->GetDictionarySettings().SetMaxInStoreSets(3);  // there are four with the empty one
    EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "E3");
    EXPECT_FALSE(host.engine->IsLatticeBuilt());
    host.settings->GetDictionarySettings().SetMaxInStoreSets(4);
    EXPECT_EQ(shortForm(host.engine->RunPhaseII()), restartResult == 0 ? "OK" : "E2");
  }
}

TEST(PhaseIIEdge, ReportsAfterEveryTransactionAndOnceMore) {
  EngineHost host(pairs(4));
  host.settings->SetReportFreqPhaseII(1);
  ASSERT_TRUE(host.engine->RunPhaseI(4).IsOK());
  std::vector<int> counted;
  std::vector<double> sigmas;
  host.listen([&](ProgressReport& report) {
    counted.push_back(report.GetIntValue("nTransII"));
    sigmas.push_back(report.GetDoubleValue("sigma"));
  });
  ASSERT_TRUE(host.engine->RunPhaseII().IsOK());
  // The first comes from the close of phase I, which knows no "nTransII".
  EXPECT_EQ(counted, std::vector<int>({0, 1, 2, 3, 4, 4}));
  EXPECT_EQ(sigmas, std::vector<double>({0.5, 0, 0, 0, 0, 0}));
}

TEST(PhaseIIEdge, ReportFrequencyZeroLeavesTheClosingReport) {
  EngineHost host(pairs(4));
  host.settings->SetReportFreqPhaseII(0);
  ASSERT_TRUE(host.engine->RunPhaseI(4).IsOK());
  TestListener& listener = host.listen([](ProgressReport&) {});
  ASSERT_TRUE(host.engine->RunPhaseII().IsOK());
  EXPECT_EQ(listener.reports, 2);  // of the close of phase I and of the end
}

TEST(PhaseIIEdge, ReadsNoMoreThanPhaseICounted) {
  EngineHost host(pairs(6));
  ASSERT_TRUE(host.engine->RunPhaseI(4).IsOK());
  host.source.add({1, 2});
  host.source.nextCalls = 0;
  ASSERT_TRUE(host.engine->RunPhaseII().IsOK());
  EXPECT_EQ(host.source.nextCalls, 4);
  EXPECT_EQ(stateText(*Access::dictionary(*host.engine)), "a 4@1+0, b 4@1+0, ab 4@2+0");
}

TEST(PhaseIIEdge, StopsWhereTheSourceGivesNothing) {
  EngineHost host(pairs(6));
  ASSERT_TRUE(host.engine->RunPhaseI(6).IsOK());
  host.source.nullAt = 4;
  ASSERT_TRUE(host.engine->RunPhaseII().IsOK());
  EXPECT_TRUE(host.engine->IsLatticeBuilt());
  EXPECT_EQ(stateText(*Access::dictionary(*host.engine)), "a 6@1+0, b 6@1+0, ab 4@2+0");  // threshold 6 * 0.5
}

TEST(PhaseIIEdge, SecondPassAfterASecondPassRunsAgain) {
  EngineHost host(pairs(6));
  ASSERT_TRUE(host.engine->RunPhaseI(6).IsOK());
  ASSERT_TRUE(host.engine->RunPhaseII().IsOK());
  const std::string state = stateText(*Access::dictionary(*host.engine));
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
  EXPECT_EQ(stateText(*Access::dictionary(*host.engine)), state);
  EXPECT_EQ(host.source.restarts, 2);
}

TEST(PhaseIIEdge, NullPassWorksOnlyOnce) {
  EngineHost host(pairs(6));
  ASSERT_TRUE(host.engine->RunPhaseI(6).IsOK());
  EXPECT_EQ(shortForm(host.engine->RunNullPhaseII(0.5)), "OK");
  EXPECT_EQ(host.engine->NumberOfTransactions(), 9);
  EXPECT_EQ(host.source.restarts, 0);
  EXPECT_EQ(shortForm(host.engine->RunNullPhaseII(0.5)), "W6");
  EXPECT_EQ(host.engine->NumberOfTransactions(), 9);
}

TEST(PhaseIIEdge, CancelInTheMiddleGivesUpTheCounts) {
  EngineHost host(pairs(6));
  host.settings->SetReportFreqPhaseII(2);
  ASSERT_TRUE(host.engine->RunPhaseI(6).IsOK());
  host.listen([&](ProgressReport& report) {
    if (report.GetIntValue("nTransII") == 4) host.engine->Cancel();
  });
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "E1");
  EXPECT_EQ(host.source.position(), 4);
  EXPECT_EQ(host.engine->NumberOfSets(), -1);
  EXPECT_EQ(host.engine->GetLattice(), nullptr);
}

}  // namespace
