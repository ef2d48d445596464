// The plain engine: mines a data set held in memory, literally and slowly. Tests hold the library against it.

#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "tests/oracle/PlainCeilings.h"
#include "tests/oracle/PlainDictionary.h"
#include "tests/oracle/PlainRules.h"
#include "tests/oracle/PlainSettings.h"
#include "tests/oracle/PlainStep.h"

namespace oracle {

// Transactions in the order of the pass; the items of each in any order.
using Transactions = std::vector<Items>;
// The support asked for at a transaction; transactions are numbered from 1.
using Support = std::function<double(int)>;

// What a listener hears of the first or second pass.
struct PlainReport {
  int phase;
  int nTrans;
  int nTransII;  // 0 in the first pass
  int setTotal;
  // The first pass only, otherwise 0:
  int longAdded;
  int maxExt;
  int removed;
  int memory;
  double aveExt;
  double avSigma;
  double sigma;
};

class PlainMiner {
 public:
  PlainMiner(const PlainSettings& settings, Transactions transactions, Support support);
  PlainMiner(const PlainMiner&) = delete;
  PlainMiner& operator=(const PlainMiner&) = delete;

  // Reads at most n further transactions; prunes at each multiple of the pruning frequency and at the end.
  void runPhaseI(int n);
  // Closes the first pass with a pruning. The second passes do it themselves when it has not been done.
  void endPhaseI();

  // The second passes read transactions from the start, at most as many as the first pass counted, count the
  // stored sets of two or more items (random: of one or more) anew, prune and build the lattice.
  void runPhaseII(const Transactions& pass);
  void runPhaseII() { runPhaseII(transactions_); }
  void runPhaseIIrandom(const Transactions& pass);
  // No second pass: the transaction count grows by the fraction.
  void runNullPhaseII(double fraction);

  // In the order of emission; see createRules in PlainRules.h.
  std::vector<PlainRule> rules(double minSupport, double minConfidence, bool pruneRedundant = true) {
    return createRules(dictionary, settings_, minSupport, minConfidence, pruneRedundant);
  }

  PlainDictionary dictionary;
  PlainCeilings ceilings;
  PlainStep step;
  int transactionsSeen = 0;   // by the end of the last call of runPhaseI
  double supportCount = 1.0;  // the threshold of the last pruning
  double currentSupport = 0;  // of the last transaction
  int setsRemoved = 0;        // by all prunings of the first pass
  int peakSets = 0;           // largest store at a pruning point
  int missingSubsets = 0;     // found by the last lattice building: the store was not closed
  std::vector<PlainReport> reports;

 private:
  void report(int phase, int transactionsII);
  void prune(double transactions, double averageSupport);
  void count(const Transactions& pass, int shortest);
  void pruneAndBuild(double minCount);

  PlainSettings settings_;
  Transactions transactions_;
  Support support_;
  std::size_t position_ = 0;
  int transactionsRead_ = 0;  // by the last second pass
  bool inPhaseI_ = true;
};

}  // namespace oracle
