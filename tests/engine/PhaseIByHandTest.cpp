// The first pass of the engine against runs that were worked out by hand.

#include <gtest/gtest.h>

#include <vector>

#include "tests/oracle/PhaseIByHand.h"
#include "tests/support/DictionaryComparison.h"
#include "tests/support/EngineHost.h"

namespace {

// RunPhaseI over the whole run in one call: a call ends with a pruning of its own. The states between are
// those that the support source finds, which is asked before the work on each transaction.
void expectAsByHand(const oracle::HandRun& run) {
  using Access = CarmaAssociationAlgorithmTestAccess;
  EngineHost host(oracle::transactionsOf(run));
  host.settings->SetRemoveSmallFreq(run.removeSmallFreq);
  std::vector<std::string> states;
  host.support([&](int transaction) {
    states.push_back(stateText(*Access::dictionary(*host.engine)));
    return run.transactions[static_cast<std::size_t>(transaction) - 1].support;
  });
  double aveExt = 0;
  int removed = 0;
  int longAdded = 0;
  int maxExt = 0;
  host.listen([&](ProgressReport& report) {
    aveExt = report.GetDoubleValue("aveExt");
    removed = report.GetIntValue("removed");
    longAdded = report.GetIntValue("longAdded");
    maxExt = report.GetIntValue("maxExt");
  });
  const int n = static_cast<int>(run.transactions.size());
  ASSERT_TRUE(host.engine->RunPhaseI(n).IsOK());

  ASSERT_EQ(states.size(), run.transactions.size());
  for (std::size_t t = 1; t < states.size(); ++t) {
    EXPECT_EQ(states[t], run.transactions[t - 1].state) << "after transaction " << t;
  }
  EXPECT_EQ(stateText(*Access::dictionary(*host.engine)), run.finalState);
  EXPECT_EQ(host.engine->NumberOfTransactions(), n);
  EXPECT_EQ(Access::transactionsSeen(*host.engine), n);
  EXPECT_EQ(Access::supportCount(*host.engine), run.supportCount);
  EXPECT_EQ(Access::peakSets(*host.engine), run.peakSets);
  EXPECT_EQ(Access::core(*host.engine)->longestCandidate(), run.longestCandidate);
  EXPECT_DOUBLE_EQ(aveExt, run.aveExt);
  EXPECT_EQ(removed, run.setsRemoved);
  EXPECT_EQ(longAdded, run.longAdded);
  EXPECT_EQ(maxExt, run.maxExt);
}

TEST(PhaseIByHand, ConstantSupport) { expectAsByHand(oracle::constantSupport()); }
TEST(PhaseIByHand, RisingSupport) { expectAsByHand(oracle::risingSupport()); }
TEST(PhaseIByHand, RepeatedItems) { expectAsByHand(oracle::repeatedItems()); }

TEST(PhaseIByHand, StateBeforeTheClosingPruning) {
  // The fourteen transactions followed by one that changes nothing shows the state after the last one.
  for (oracle::HandRun run : {oracle::constantSupport(), oracle::risingSupport(), oracle::repeatedItems()}) {
    EngineHost host(oracle::transactionsOf(run));
    host.settings->SetRemoveSmallFreq(run.removeSmallFreq);
    host.source.add({});
    std::string last;
    host.support([&](int transaction) {
      last = stateText(*CarmaAssociationAlgorithmTestAccess::dictionary(*host.engine));
      const std::size_t at = static_cast<std::size_t>(transaction) - 1;
      return at < run.transactions.size() ? run.transactions[at].support : run.transactions.back().support;
    });
    ASSERT_TRUE(host.engine->RunPhaseI(100).IsOK());
    EXPECT_EQ(last, run.transactions.back().state);
  }
}

TEST(PhaseIByHand, EachCallEndsWithAPruningOfItsOwn) {
  // The first three transactions of the run at constant support, one a call. The first call prunes at 0.5,
  // cut to 0; the second at 1: nothing goes. The third at 1.5, cut to 1.
  const oracle::HandRun run = oracle::constantSupport();
  EngineHost host(oracle::transactionsOf(run));
  host.settings->SetRemoveSmallFreq(6);
  for (std::size_t t = 0; t < 3; ++t) {
    ASSERT_TRUE(host.engine->RunPhaseI(1).IsOK());
    EXPECT_EQ(stateText(*CarmaAssociationAlgorithmTestAccess::dictionary(*host.engine)),
              run.transactions[t].state);
  }
  EXPECT_EQ(CarmaAssociationAlgorithmTestAccess::supportCount(*host.engine), 1.0);
  EXPECT_EQ(CarmaAssociationAlgorithmTestAccess::peakSets(*host.engine), 0);
}

}  // namespace
