// One run of the engine over baskets in memory, from the first pass to the questions.

#pragma once

#include <iosfwd>
#include <memory>
#include <vector>

#include "cli/RuleQuery.h"
#include "cli/SupportOption.h"
#include "cli/input/BasketIterator.h"
#include "cli/input/Baskets.h"
#include "korassoc/korassoc.h"

namespace korassoc::cli {

// What a run found on its way.
struct MiningFigures {
  int transactions = 0;
  int leastCount = 0;     // transactions that an itemset needs; what the support comes to
  int setsInPhaseI = 0;   // itemsets of one or more items in store after the first pass
  int setsInLattice = 0;  // and after the second
  int longestSet = 0;     // items of the longest itemset in the lattice
  double secondsPhaseI = 0;
  double secondsPhaseII = 0;
};

// Mining is the one place that knows in which order the engine is called. Baskets must outlive it.
// Errors: run() and the questions throw CliError (kRunFailed) when the engine ends with any status but OK.
// What the engine writes to standard output is sent to standard error.
class Mining {
 public:
  Mining(const Baskets& baskets, const SupportOption& support);

  // Both passes. To be called once, before the questions.
  void run();

  const MiningFigures& figures() const { return figures_; }

  // The threshold and the itemsets found, a line each, on standard error.
  void report() const;

  // The rules asked for, best first.
  std::vector<AssociationRule> rules(const RuleQuery& query);

  // Writes the rules of the query's least support and confidence, with or without the redundant ones, as a
  // PMML document. False, with nothing written, when no item is frequent.
  bool exportRules(const RuleQuery& query, std::ostream& out);

  // Writes the itemsets found as a document.
  void exportLattice(std::ostream& out);

  // Single items that follow from some of the given ones (ascending), the most confident first; each with the
  // figures of its best rule whose antecedent lies within them, and a rule that reaches the support.
  std::vector<ConsequentDescriptor> consequents(const std::vector<int>& items);

 private:
  MiningFigures figures_;
  BasketIterator iterator_;
  CarmaSettings settings_;
  std::unique_ptr<CarmaAssociationAlgorithm> engine_;  // works with the two above
};

}  // namespace korassoc::cli
