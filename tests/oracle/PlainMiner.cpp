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
    }
  }
  transactionsSeen = step.nTrans;
  if (!isMultiple(last, settings_.removeSmallFreq)) prune(last, average);
}

void PlainMiner::prune(double transactions, double averageSupport) {
  supportCount = roundedDown(transactions * averageSupport);
  setsRemoved += dictionary.removeSmallSets(supportCount);
}

void PlainMiner::endPhaseI() {
  if (!inPhaseI_) return;
  setsRemoved += dictionary.removeSmallSets(transactionsSeen * ceilings.average());
  inPhaseI_ = false;
}

void PlainMiner::runPhaseII(const Transactions& pass) {
  endPhaseI();
  transactionsSeen = step.nTrans;
  if (dictionary.highestLevel() > 1 && settings_.maxLengthSet > 1) {
    count(pass, 2);
    pruneAndBuild(transactionsSeen * ceilings.average());
  } else if (dictionary.highestLevel() <= 1) {
    missingSubsets = buildLattice(dictionary);
  }
}

void PlainMiner::runPhaseIIrandom(const Transactions& pass) {
  endPhaseI();
  transactionsSeen = step.nTrans;
  if (dictionary.highestLevel() > 1) {
    count(pass, 1);
    pruneAndBuild(transactionsSeen * ceilings.average());
  } else {
    missingSubsets = buildLattice(dictionary);
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
  const std::size_t read = std::min(pass.size(), static_cast<std::size_t>(transactionsSeen));
  Transactions sorted(pass.begin(), pass.begin() + static_cast<std::ptrdiff_t>(read));
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
