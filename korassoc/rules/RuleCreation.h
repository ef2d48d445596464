// All rules of a lattice above a support and a confidence.

#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/KorStatus.h"
#include "korassoc/engine/ProgressListener.h"
#include "korassoc/rules/AntecedentSearch.h"
#include "korassoc/rules/AssociationRule.h"
#include "korassoc/rules/RuleList.h"

namespace korassoc::detail {

// Appends the rules X -> Z \ X of every stored set Z that reaches the support, for every antecedent X that
// reaches the confidence, the empty one included; pruneRedundant keeps only minimal antecedents and of these
// only those that do not reach a larger consequent (Bastide, Pasquier, Taouil, Stumme & Lakhal, CL 2000, for
// the idea of such bases). While it works, the descriptors' TIDs become the running numbers of the frequent
// sets, and stay so; not while somebody holds the dictionary.
class RuleCreation {
 public:
  // minSupport, minConfidence: fractions. listener may be null.
  RuleCreation(SetDictionary& dictionary, double minSupport, double minConfidence, ProgressListener* listener,
               bool pruneRedundant);

  // Answers 40002/warning when the lattice is empty, out then untouched; 1/error when it was told to stop,
  // the listener has had the lattice changed or a frequent set has no descriptor, out then getting no rules.
  // Otherwise, and after a stop too, brings all of out into the order of confidence. Exceptions of the
  // listener are let through.
  KorAssoc::KorStatus run(std::vector<AssociationRule>& out);

 private:
  std::vector<int> numberFrequentSets();
  bool countsFall(const std::vector<int>& frequent);
  bool findAntecedents(const std::vector<int>& frequent, AntecedentTables& tables);
  bool findAntecedentsOf(int whole, AntecedentFilter& filter, std::vector<int>& antecedents);
  std::optional<int> largerCount(int whole);
  void emit(const AntecedentTables& tables, RuleList& rules);
  void report(int bounds, int setTotal, const AntecedentTables& tables) const;

  SetDictionary& dictionary_;
  std::shared_ptr<const LatticeGraph> heldGraph_;  // keeps graph_, whatever the listener does
  const LatticeGraph& graph_;
  int transactionCount_;
  int minCount_;
  double minConfidence_;
  ProgressListener* listener_;
  bool pruneRedundant_;
  bool prunesByCount_ = false;  // redundant antecedents are told by their counts alone
  AntecedentSearch search_;
};

}  // namespace korassoc::detail
