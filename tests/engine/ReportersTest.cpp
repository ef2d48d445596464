// What the three progress reports answer, and when a listener hears of it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korassoc/engine/CreateRulesReporter.h"
#include "tests/support/EngineHost.h"

namespace {

using ::testing::ElementsAre;

const std::vector<std::string> kIntKeys = {"nTrans",   "nTransII", "longAdded", "maxExt",
                                           "setTotal", "removed",  "memory",    "bounds"};
const std::vector<std::string> kDoubleKeys = {"aveExt", "avSigma", "sigma"};
const std::vector<std::string> kUnknownKeys = {"",      "ntrans",    "nTrans ", "NTRANS",
                                               "nTran", "setTotal2", "Memory"};

std::vector<int> ints(const ProgressReport& report) {
  std::vector<int> values;
  for (const std::string& key : kIntKeys) values.push_back(report.GetIntValue(key));
  return values;
}

std::vector<double> doubles(const ProgressReport& report) {
  std::vector<double> values;
  for (const std::string& key : kDoubleKeys) values.push_back(report.GetDoubleValue(key));
  return values;
}

void expectNothingUnknown(const ProgressReport& report) {
  for (const std::string& key : kUnknownKeys) {
    EXPECT_EQ(report.GetIntValue(key), 0) << key;
    EXPECT_EQ(report.GetDoubleValue(key), 0.0) << key;
  }
  for (const std::string& key : kIntKeys) EXPECT_EQ(report.GetDoubleValue(key), 0.0) << key;
  for (const std::string& key : kDoubleKeys) EXPECT_EQ(report.GetIntValue(key), 0) << key;
}

}  // namespace

TEST(CreateRulesReporter, AnswersItsTwoNumbers) {
  const CreateRulesReporter report(3, 5);
  EXPECT_THAT(ints(report), ElementsAre(0, 0, 0, 0, 5, 0, 0, 3));
  EXPECT_THAT(doubles(report), ElementsAre(0.0, 0.0, 0.0));
  expectNothingUnknown(report);
}

// Three transactions {1}: the first adds the set, the other two find it and put it on the work list.
TEST(PhaseIReporter, AnswersFromTheEngineBeforeAnyPruningPoint) {
  EngineHost host(repeated({1}, 3), 0.25);
  std::vector<int> answered;
  std::vector<double> real;
  host.listen([&](ProgressReport& report) {
    answered = ints(report);
    real = doubles(report);
    expectNothingUnknown(report);
  });
  host.engine->RunPhaseI(3);
  // Two sets: the empty one and {1}. "memory" is the same number while no pruning point has set it.
  EXPECT_THAT(answered, ElementsAre(3, 0, 1, 1, 2, 0, 2, 0));
  ASSERT_EQ(real.size(), 3U);
  EXPECT_DOUBLE_EQ(real[0], 2.0 / 3);  // (0 + 1 + 1) / 3
  EXPECT_EQ(real[1], 0.25);
  EXPECT_EQ(real[2], 0.25);
}

TEST(PhaseIReporter, AnswersThePeakOnceAPruningPointHasSetIt) {
  auto transactions = repeated({1}, 8);
  transactions.insert(transactions.end(), {{2}, {3}});
  EngineHost host(transactions);
  std::vector<int> answered;
  host.listen([&](ProgressReport& report) { answered = ints(report); });
  host.engine->RunPhaseI(10);
  // The empty set, {1}, {2}, {3} at the pruning point; {2} and {3} go.
  EXPECT_THAT(answered, ElementsAre(10, 0, 1, 1, 2, 2, 4, 0));
}

TEST(PhaseIReporter, TellsTheSupportOfTheLastTransactionAndTheAverage) {
  EngineHost host(repeated({1}, 4));
  host.support([](int transaction) { return transaction == 1 ? 0.5 : 0.25; });
  std::vector<double> real;
  host.listen([&](ProgressReport& report) { real = doubles(report); });
  host.engine->RunPhaseI(4);
  EXPECT_DOUBLE_EQ(real[1], 1.25 / 4);
  EXPECT_EQ(real[2], 0.25);
}

TEST(PhaseIIReporter, AnswersFromBothPhases) {
  EngineHost host(repeated({1, 2}, 5));
  host.settings->SetReportFreqPhaseII(2);
  host.engine->RunPhaseI(5);
  std::vector<std::vector<int>> answered;
  std::vector<double> real;
  host.listen([&](ProgressReport& report) {
    answered.push_back(ints(report));
    expectNothingUnknown(report);
    real = doubles(report);
  });
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
  EXPECT_THAT(real, ElementsAre(0.0, 0.0, 0.0)) << "phase II has no real values";
  // The first is the report of phase I's end; the sets are {}, {1}, {2}, {1, 2}.
  ASSERT_EQ(answered.size(), 4U);
  EXPECT_THAT(answered[1], ElementsAre(5, 2, 0, 0, 4, 0, 0, 0));
  EXPECT_THAT(answered[2], ElementsAre(5, 4, 0, 0, 4, 0, 0, 0));
  EXPECT_THAT(answered[3], ElementsAre(5, 5, 0, 0, 4, 0, 0, 0));
}

TEST(ProgressListener, IsNotMissedWhenThereIsNone) {
  EngineHost host(repeated({1, 2}, 20));
  host.settings->SetReportFreqPhaseI(10);
  host.settings->SetReportFreqPhaseII(1);
  EXPECT_EQ(shortForm(host.engine->RunPhaseI(20)), "OK");
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
}

TEST(ProgressListener, GetsALiveReportThatFollowsTheEngine) {
  EngineHost host(repeated({1}, 30));
  host.settings->SetReportFreqPhaseI(10);
  std::vector<int> seen;
  host.listen([&](ProgressReport& report) { seen.push_back(report.GetIntValue("nTrans")); });
  host.engine->RunPhaseI(30);
  EXPECT_THAT(seen, ElementsAre(10, 20, 30, 30));
}
