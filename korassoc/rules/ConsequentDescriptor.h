// An item that follows from other items, with the figures of the rule that says so.

#pragma once

#include "korassoc/base/Export.h"

// A value. The figures are those of the rule antecedent -> {item}, see AssociationRule; they are kept as they
// are given.
class KORASSOC_EXPORT ConsequentDescriptor {
 public:
  // Mind the order of the figures: support first.
  ConsequentDescriptor(int item, double support, double confidence, double lift)
      : item_(item), confidence_(confidence), support_(support), lift_(lift) {}

  int getItem() const { return item_; }
  double getConfidence() const { return confidence_; }
  double getSupport() const { return support_; }
  double getLift() const { return lift_; }

  void setItem(int item) { item_ = item; }
  void setConfidence(double confidence) { confidence_ = confidence; }
  void setSupport(double support) { support_ = support; }
  void setLift(double lift) { lift_ = lift; }

 private:
  int item_;
  double confidence_;
  double support_;
  double lift_;
};
