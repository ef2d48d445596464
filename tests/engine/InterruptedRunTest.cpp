// A phase I that is cut anywhere near a pruning, saved, and ended by another process.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>

#include "tests/engine/InterruptedRun.h"
#include "tests/support/EngineHost.h"
#include "tests/support/Shell.h"
#include "tests/support/TemporaryFile.h"

namespace {

using interrupted_run::kPruningFrequency;
using interrupted_run::kTransactions;

struct Run : EngineHost {
  Run() : EngineHost(interrupted_run::transactions()) {
    settings->SetRemoveSmallFreq(kPruningFrequency);
    engine = std::make_unique<CarmaAssociationAlgorithm>(settings.get(), &source);
    support(interrupted_run::support);
  }
};

// The rules of a run in one process, whose phase I pauses behind so many transactions; 0: not at all.
std::string rulesOfARunThatPausesAt(int transaction, double minSupport) {
  Run run;
  EXPECT_TRUE(run.engine->RunPhaseI(transaction).IsOK());
  EXPECT_TRUE(run.engine->RunPhaseI(kTransactions).IsOK());
  EXPECT_EQ(run.engine->NumberOfTransactions(), kTransactions);
  return interrupted_run::finalRules(*run.engine, minSupport);
}

enum class Format { Binary, Xml };

// The same, but saved there, and ended by another process.
std::string rulesOfARunCutAt(int transaction, Format format, double minSupport) {
  const TemporaryFile state;
  {
    Run run;
    EXPECT_TRUE(run.engine->RunPhaseI(transaction).IsOK());
    if (format == Format::Binary) {
      std::fstream stream = state.writer();
      EXPECT_TRUE(run.engine->SaveState(stream).IsOK());
    } else {
      std::ofstream stream(state.name(), std::ios::binary);
      EXPECT_TRUE(run.engine->SaveStateXML(stream).IsOK());
    }
  }
  const TemporaryFile rules;
  const std::string command = std::string("\"") + KORASSOC_END_INTERRUPTED_RUN + "\" " +
                              (format == Format::Binary ? "binary" : "xml") + " \"" + state.name() + "\" " +
                              std::to_string(transaction) + " " + std::to_string(minSupport) + " \"" +
                              rules.name() + "\"";
  EXPECT_EQ(runInShell(command), 0) << command;
  return rules.contents();
}

void expectTheSameRules(Format format) {
  constexpr double kAll = 0.0;
  const std::string all = rulesOfARunThatPausesAt(0, kAll);
  const std::string frequent = rulesOfARunThatPausesAt(0, interrupted_run::kFrequent);
  ASSERT_GE(std::count(frequent.begin(), frequent.end(), '\n'), 10) << frequent;
  ASSERT_GT(all.size(), frequent.size());
  for (int boundary = kPruningFrequency; boundary < kTransactions; boundary += kPruningFrequency) {
    EXPECT_EQ(rulesOfARunCutAt(boundary, format, kAll), all) << "cut at " << boundary;
    for (const int cut : {boundary - 1, boundary + 1}) {
      EXPECT_EQ(rulesOfARunCutAt(cut, format, interrupted_run::kFrequent), frequent) << "cut at " << cut;
      EXPECT_EQ(rulesOfARunCutAt(cut, format, kAll), rulesOfARunThatPausesAt(cut, kAll)) << "cut at " << cut;
    }
  }
}

}  // namespace

TEST(InterruptedRun, EndsWithTheRulesOfAnUncutOneFromABinaryState) { expectTheSameRules(Format::Binary); }

TEST(InterruptedRun, EndsWithTheRulesOfAnUncutOneFromAnXMLState) { expectTheSameRules(Format::Xml); }
