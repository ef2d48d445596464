#include "tests/oracle/PlainMiner.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "tests/oracle/PlainLattice.h"
#include "tests/oracle/Rounding.h"

namespace oracle {

namespace {

bool isMultiple(int number, int frequency) { return frequency != 0 && number % frequency == 0; }

}  // namespace

PlainMiner::PlainMiner(const PlainSettings& settings, Transactions transactions, Support support)
    : dictionary(settings),
      step(settings.maxLengthSet, dictionary),
      settings_(settings),
      transactions_(std::move(transactions)),
      support_(std::move(support)) {
  dictionary.addEmptySet();
}

void PlainMiner::runPhaseI(int n) {
  if (n <= 0) return;
  const int before = transactionsSeen;
  int last = before;
  double average = 0;
  for (int i = 0; i < n && position_ < transactions_.size(); ++i) {
    last = before + 1 + i;
    currentSupport = support_(last);
    const double previous = ceilings.average();
    ceilings.add(currentSupport);
    average = ceilings.average();
    step.run(transactions_[position_++], previous, average, supportCount);
    if (isMultiple(last, settings_.removeSmallFreq)) {
      peakSets = std::max(peakSets, dictionary.totalSetCount());
      prune(last, average);
      if (isMultiple(last, settings_.reportFreqPhaseI)) report(1, 0);
    }
  }
  transactionsSeen = step.nTrans;
  if (!isMultiple(last, settings_.removeSmallFreq)) prune(last, average);
  report(1, 0);
}

void PlainMiner::report(int phase, int transactionsII) {
  const int sets = dictionary.totalSetCount();
  if (phase == 1) {
    reports.push_back({1, step.nTrans, 0, sets, step.longAdded, step.maxExt, setsRemoved,
                       peakSets == 0 ? sets : peakSets, step.aveExt, ceilings.average(), currentSupport});
  } else {
    reports.push_back({2, step.nTrans, transactionsII, sets, 0, 0, 0, 0, 0, 0, 0});
  }
}

void PlainMiner::prune(double transactions, double averageSupport) {
  supportCount = roundedDown(transactions * averageSupport);
  setsRemoved += dictionary.removeSmallSets(supportCount);
}

void PlainMiner::endPhaseI() {
  if (!inPhaseI_) return;
  setsRemoved += dictionary.removeSmallSets(transactionsSeen * ceilings.average());
  report(1, 0);
  inPhaseI_ = false;
}

void PlainMiner::runPhaseII(const Transactions& pass) {
  endPhaseI();
  transactionsSeen = step.nTrans;
  if (dictionary.highestLevel() > 1 && settings_.maxLengthSet > 1) {
    count(pass, 2);
    pruneAndBuild(transactionsSeen * ceilings.average());
    report(2, transactionsRead_);
  } else if (dictionary.highestLevel() <= 1) {
    missingSubsets = buildLattice(dictionary);
    report(2, transactionsRead_);
  }
}

void PlainMiner::runPhaseIIrandom(const Transactions& pass) {
  endPhaseI();
  transactionsSeen = step.nTrans;
  if (dictionary.highestLevel() > 1) {
    count(pass, 1);
    pruneAndBuild(transactionsSeen * ceilings.average());
    report(2, transactionsRead_);
  } else {
    missingSubsets = buildLattice(dictionary);
    report(2, transactionsRead_);
  }
}

void PlainMiner::runNullPhaseII(double fraction) {
  if (!inPhaseI_) return;
  endPhaseI();
  const long long total = static_cast<long long>(transactionsSeen) + roundedDown(transactionsSeen * fraction);
  dictionary.find({})->count = static_cast<int>(std::min<long long>(total, std::numeric_limits<int>::max()));
  pruneAndBuild(transactionsSeen * currentSupport);
}

// Every stored set of at least so many items gets the number of its occurrences in the pass.
void PlainMiner::count(const Transactions& pass, int shortest) {
  transactionsRead_ = std::min(static_cast<int>(pass.size()), transactionsSeen);
  for (int c = 1; c <= transactionsRead_; ++c) {
    if (isMultiple(c, settings_.reportFreqPhaseII)) report(2, c);
  }
  Transactions sorted(pass.begin(), pass.begin() + transactionsRead_);
  for (Items& transaction : sorted) std::sort(transaction.begin(), transaction.end());
  for (int size = shortest; size <= dictionary.maxLevel(); ++size) {
    for (PlainTable::Entry* entry : dictionary.level(size).entries()) {
      long long total = 0;
      for (const Items& transaction : sorted) total += occurrences(entry->key, transaction);
      entry->counter.count = static_cast<int>(total);
      entry->counter.maxMissed = 0;
    }
  }
}

void PlainMiner::pruneAndBuild(double minCount) {
  dictionary.removeSmallSets(minCount);
  missingSubsets = buildLattice(dictionary);
}

}  // namespace oracle
