// A rule "whoever has the antecedent also has the consequent", with its figures.

#pragma once

#include "korassoc/base/Export.h"
#include "korassoc/itemsets/ItemSet.h"

// An AssociationRule is a value: a copy owns its own sets.
//
// With N transactions and count(S) the number of those that contain S:
//   support    = count(antecedent + consequent) / N                     in [0, 1]
//   confidence = count(antecedent + consequent) / count(antecedent)     in [0, 1]
//   lift       = confidence / count(consequent) * N                     1: the two sides are independent
// The rules that the queries make have a consequent of at least one item and no item on both sides; the
// antecedent may be empty. The figures are kept as they are given.
class KORASSOC_EXPORT AssociationRule {
 public:
  // Copies both sets.
  AssociationRule(const ItemSet& antecedent, const ItemSet& consequent, double support, double confidence,
                  double lift);
  // Takes both sets over.
  AssociationRule(ItemSet&& antecedent, ItemSet&& consequent, double support, double confidence,
                  double lift) noexcept;
  AssociationRule(const AssociationRule& other);
  AssociationRule(AssociationRule&& other) noexcept;
  AssociationRule& operator=(const AssociationRule& other);
  AssociationRule& operator=(AssociationRule&& other) noexcept;
  ~AssociationRule();

  const ItemSet& getAntecedent() const { return antecedent_; }
  const ItemSet& getConsequent() const { return consequent_; }
  double getSupport() const { return support_; }
  double getConfidence() const { return confidence_; }
  double getLift() const { return lift_; }

 private:
  ItemSet antecedent_;
  ItemSet consequent_;
  double support_;
  double confidence_;
  double lift_;
};
