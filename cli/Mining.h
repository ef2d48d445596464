// One run of the engine over baskets in memory, from the first pass to the questions.

#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "cli/MiningPlan.h"
#include "cli/RuleBounds.h"
#include "cli/RuleQuery.h"
#include "cli/SupportOption.h"
#include "cli/input/Baskets.h"
#include "cli/input/TwoPassBaskets.h"
#include "cli/process/Signals.h"
#include "korassoc/korassoc.h"

namespace korassoc::cli {

// What a run found on its way.
struct MiningFigures {
  int transactions = 0;
  int leastCount = 0;            // transactions that an itemset needs; what the support comes to
  int transactionsInPhaseI = 0;  // that the first pass saw
  int setsInPhaseI = 0;          // itemsets of one or more items in store after the first pass
  int setsInLattice = 0;         // and at the end
  int longestSet = 0;            // items of the longest itemset in the lattice
  int setsGivenUp = 0;           // itemsets that were dropped with their counts to make room for others
  int setsSpilled = 0;           // those that went to the disk instead
  double secondsPhaseI = 0;
  double secondsPhaseII = 0;
};

// Mining is the one place that knows in which order the engine is called. Baskets must outlive it.
// Errors: run() and the questions throw CliError: kLimit when the plan's limit was too low for a result,
// kRunFailed when the engine ends with any other status but OK.
// What the engine writes to standard output is sent to standard error.
class Mining {
 public:
  Mining(const Baskets& baskets, const SupportOption& support, const MiningPlan& plan);

  // Finds the itemsets as the plan has it. To be called once, before the questions.
  void run();

  const MiningFigures& figures() const { return figures_; }

  // "exact and complete", or what the figures are instead.
  std::string describe() const;

  // The threshold and the itemsets found, a line each, on standard error.
  void report() const;

  // The itemsets found, for what is not asked here.
  SemiLattice& lattice() const { return *engine_->GetLattice(); }

  // In plain words, what the plan's limit has taken away from the result; empty when nothing.
  std::string limitReached() const;

  // The rules asked for, best first.
  std::vector<AssociationRule> rules(const RuleQuery& query);

  // What a run of one pass knows of a rule that it gave.
  RuleBounds bounds(const AssociationRule& rule) const;

  // Writes the rules of the query's least support and confidence, with or without the redundant ones, as a
  // PMML document. False, with nothing written, when no item is frequent.
  bool exportRules(const RuleQuery& query, std::ostream& out);

  // Writes the itemsets found as a document.
  void exportLattice(std::ostream& out);

  // Single items that follow from some of the given ones (ascending), the most confident first; each with the
  // figures of its best rule whose antecedent lies within them, and a rule that reaches the support.
  std::vector<ConsequentDescriptor> consequents(const std::vector<int>& items);

 private:
  MiningPlan plan_;
  MiningFigures figures_;
  int room_;  // for itemsets in memory, the empty one included
  TwoPassBaskets source_;
  CarmaSettings settings_;
  std::unique_ptr<RemovedBySignal>
      spillFile_;  // null when nothing is spilled; the engine makes and removes it
  std::unique_ptr<CarmaAssociationAlgorithm> engine_;  // works with the three above
  double extensions_ = 0;                              // the first pass's work when it was last looked at

  void limitMemory();
  void runPhaseI();
  [[noreturn]] void throwFull() const;
  void runSecondPass();
  KorAssoc::KorStatus countCompletely();
  // Called before each basket of the first pass.
  void beforeBasket(int number);
  void boundWork(int basketsDone);
};

}  // namespace korassoc::cli
