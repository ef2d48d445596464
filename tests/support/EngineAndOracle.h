// The library's engine and the plain engine side by side over one random run.

#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "korassoc/engine/CarmaSettings.h"
#include "korassoc/engine/CeilArray.h"
#include "korassoc/engine/MultiPassTransIter.h"
#include "korassoc/engine/ProgressReport.h"
#include "tests/oracle/PlainMiner.h"
#include "tests/support/DictionaryComparison.h"
#include "tests/support/EngineTestAccess.h"
#include "tests/support/Hosts.h"
#include "tests/support/RandomRuns.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/VectorTransactions.h"

// Gives the transactions of the first pass, and from the next restart on those of another.
class PassTransactions : public MultiPassTransIter {
 public:
  explicit PassTransactions(const oracle::Transactions& transactions) { use(transactions); }

  void useAfterRestart(oracle::Transactions transactions) { next_ = std::move(transactions); }

  bool HasNext() override { return position_ < transactions_.size(); }
  Transaction* Next() override { return &transactions_[position_++]; }
  int Rewind() override { return 1; }
  int Restart() override {
    if (!next_.empty()) use(next_);
    position_ = 0;
    return 0;
  }

 private:
  void use(const oracle::Transactions& transactions) {
    transactions_ = std::vector<VectorTransaction>(transactions.begin(), transactions.end());
  }

  std::vector<VectorTransaction> transactions_;
  oracle::Transactions next_;  // empty: none
  std::size_t position_ = 0;
};

// What the engine tells its listener, as the plain engine keeps it.
inline oracle::PlainReport kept(const ProgressReport& report) {
  return {0,
          report.GetIntValue("nTrans"),
          report.GetIntValue("nTransII"),
          report.GetIntValue("setTotal"),
          report.GetIntValue("longAdded"),
          report.GetIntValue("maxExt"),
          report.GetIntValue("removed"),
          report.GetIntValue("memory"),
          report.GetDoubleValue("aveExt"),
          report.GetDoubleValue("avSigma"),
          report.GetDoubleValue("sigma")};
}

inline void applySettings(const oracle::PlainSettings& plain, CarmaSettings& settings) {
  settings.SetMaxLengthSet(plain.maxLengthSet);
  settings.SetMaxTranLength(4);  // shorter than many transactions
  settings.SetMaxNumSigmaChunks(2);
  settings.SetRemoveSmallFreq(plain.removeSmallFreq);
  settings.SetReportFreqPhaseI(plain.reportFreqPhaseI);
  settings.SetReportFreqPhaseII(plain.reportFreqPhaseII);
  DictionarySettings& dictionary = settings.GetDictionarySettings();
  dictionary.SetInitialSetSize(plain.initialSetSize);
  dictionary.SetInitialBoundarySearchSize(plain.initialBoundarySearchSize);
  dictionary.SetInitialHashtableSet23Size(plain.initialHashtableSet23Size);
  dictionary.SetInitialRulesSize(plain.initialRulesSize);
}

// Both engines over one run. Each operation is done by both; difference() tells in what they differ then.
class EngineAndOracle {
 public:
  explicit EngineAndOracle(const RandomRun& run)
      : source(run.transactions),
        plain(run.settings, run.transactions, [run](int t) { return run.support(t); }),
        run_(run) {
    applySettings(run.settings, settings);
    settings.SetSupportSource(new TestSupport([run](int t) { return run.support(t); }));
    settings.SetProgressListener(
        new TestListener([this](ProgressReport& report) { reports_.push_back(kept(report)); }));
    engine = std::make_unique<CarmaAssociationAlgorithm>(&settings, &source);
  }

  void runPhaseI(int n) {
    EXPECT_TRUE(engine->RunPhaseI(n).IsOK());
    plain.runPhaseI(n);
  }

  // The first pass over the whole run in the calls that the run asks for.
  void runPhaseI() {
    for (const int n : run_.calls) runPhaseI(n);
  }

  // The second passes; the lattice building complains on standard output where repeated items left gaps.
  void runPhaseII() {
    const StreamCapture complaints(std::cout);
    EXPECT_TRUE(engine->RunPhaseII().IsOK());
    plain.runPhaseII(run_.transactions);
  }
  void runPhaseIIrandom(const oracle::Transactions& pass) {
    const StreamCapture complaints(std::cout);
    source.useAfterRestart(pass);
    EXPECT_TRUE(engine->RunPhaseIIrandom().IsOK());
    plain.runPhaseIIrandom(pass);
  }
  void runNullPhaseII(double fraction) {
    const StreamCapture complaints(std::cout);
    EXPECT_TRUE(engine->RunNullPhaseII(fraction).IsOK());
    plain.runNullPhaseII(fraction);
  }

  SetDictionary& dictionary() { return *CarmaAssociationAlgorithmTestAccess::dictionary(*engine); }

  // In the sets, the ceilings and the counters that the facade answers; "" when there is none.
  std::string difference() {
    std::string text = firstDifference(dictionary(), plain.dictionary);
    if (!text.empty()) return text;
    const CeilArray& ceilings = *CarmaAssociationAlgorithmTestAccess::ceilings(*engine);
    if (ceilings.average() != plain.ceilings.average()) return "average support";
    if (ceilings.used() != static_cast<int>(plain.ceilings.chunks().size())) return "number of ceilings";
    for (int chunk = 0; chunk < ceilings.used(); ++chunk) {
      const oracle::PlainCeilings::Chunk& expected = plain.ceilings.chunks()[static_cast<std::size_t>(chunk)];
      if (ceilings.count(chunk) != expected.count || ceilings.ceiling(chunk) != expected.ceiling) {
        return "ceiling " + std::to_string(chunk);
      }
    }
    if (engine->AverageSupport() != plain.ceilings.average()) return "AverageSupport";
    if (engine->NumberOfSets() != plain.dictionary.totalSetCount()) return "NumberOfSets";
    if (engine->NumberOfTransactions() != plain.dictionary.emptySetCount()) return "NumberOfTransactions";
    if (engine->LongestSet() != plain.dictionary.highestLevel()) return "LongestSet";
    return reportDifference();
  }

  std::string reportDifference() const {
    if (reports_.size() != plain.reports.size()) {
      return std::to_string(reports_.size()) + " reports instead of " + std::to_string(plain.reports.size());
    }
    for (std::size_t i = 0; i < reports_.size(); ++i) {
      const oracle::PlainReport& report = reports_[i];
      const oracle::PlainReport& expected = plain.reports[i];
      const std::pair<const char*, bool> keys[] = {{"nTrans", report.nTrans == expected.nTrans},
                                                   {"nTransII", report.nTransII == expected.nTransII},
                                                   {"setTotal", report.setTotal == expected.setTotal},
                                                   {"longAdded", report.longAdded == expected.longAdded},
                                                   {"maxExt", report.maxExt == expected.maxExt},
                                                   {"removed", report.removed == expected.removed},
                                                   {"memory", report.memory == expected.memory},
                                                   {"aveExt", report.aveExt == expected.aveExt},
                                                   {"avSigma", report.avSigma == expected.avSigma},
                                                   {"sigma", report.sigma == expected.sigma}};
      for (const auto& [key, same] : keys) {
        if (!same)
          return std::string(expected.phase == 1 ? "phase I" : "phase II") + " report " + std::to_string(i) +
                 ": " + key;
      }
    }
    return "";
  }

  CarmaSettings settings;
  PassTransactions source;
  std::unique_ptr<CarmaAssociationAlgorithm> engine;
  oracle::PlainMiner plain;

 private:
  RandomRun run_;
  std::vector<oracle::PlainReport> reports_;
};
