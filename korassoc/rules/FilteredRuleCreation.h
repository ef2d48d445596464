// The rules of a lattice that pass a detailed filter.

#pragma once

#include <memory>
#include <vector>

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/KorStatus.h"
#include "korassoc/engine/ProgressListener.h"
#include "korassoc/rules/AntecedentSearch.h"
#include "korassoc/rules/AssociationRule.h"
#include "korassoc/rules/RuleList.h"

namespace korassoc::detail {

class Consequent;

// What the rules asked for are like; all bounds are inclusive. Confidences and supports are fractions,
// lengths are numbers of items.
struct RuleFilter {
  double minConfidence;
  double maxConfidence;
  double minSupport;
  double maxSupport;
  double minLift;
  char sortBy;                        // 'C', 'S', 'L'; anything else: in order of emission
  const ItemSet* antecedentRequired;  // each item stands in the antecedent; null: none has to
  const ItemSet* antecedentAllowed;   // no other item does; null: all may
  int minAntecedentLength;
  int maxAntecedentLength;
  const ItemSet* consequentRequired;
  const ItemSet* consequentAllowed;
  int minConsequentLength;
  int maxConsequentLength;
  int maxRules;  // negative: all
  bool minimalAntecedentsOnly;
};

// Goes through the stored itemsets that can give such rules, in the order of ItemSet, and through the
// antecedents of each in the order of a hash table of InitialBoundarySize buckets into which they were put as
// they were found.
class FilteredRuleCreation {
 public:
  // The sets of the filter are lent. listener may be null.
  FilteredRuleCreation(SetDictionary& dictionary, const RuleFilter& filter, ProgressListener* listener);

  // Answers 40002/warning when the lattice is empty, out then untouched; 1/error when it was told to stop or
  // the listener has had the lattice changed, out then getting no rules. Otherwise sorts and cuts all of out.
  // Exceptions of the listener are let through.
  KorAssoc::KorStatus run(std::vector<AssociationRule>& out);

 private:
  std::vector<int> candidates() const;
  bool sorts() const;
  bool findAntecedents(const std::vector<int>& candidates, AntecedentTables& tables);
  bool findAntecedentsOf(int whole, std::vector<int>& antecedents);
  int startOf(int whole, const AntecedentFilter& filter);
  void orderAsTable(std::vector<int>& antecedents, std::size_t begin) const;
  void emit(const AntecedentTables& tables, RuleList& rules);
  bool isWanted(const ItemSet& antecedent) const;
  bool isWanted(const Consequent& consequent) const;
  void report(int bounds, int setTotal, const AntecedentTables& tables) const;

  SetDictionary& dictionary_;
  std::shared_ptr<const LatticeGraph> heldGraph_;  // keeps graph_, whatever the listener does
  const LatticeGraph& graph_;
  RuleFilter filter_;
  ItemSet noItems_;
  int transactionCount_;
  ProgressListener* listener_;
  AntecedentSearch search_;
};

}  // namespace korassoc::detail
