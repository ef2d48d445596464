#include "korassoc/rules/AssociationRule.h"

#include <utility>

AssociationRule::AssociationRule(const ItemSet& antecedent, const ItemSet& consequent, double support,
                                 double confidence, double lift)
    : antecedent_(antecedent),
      consequent_(consequent),
      support_(support),
      confidence_(confidence),
      lift_(lift) {}

AssociationRule::AssociationRule(ItemSet&& antecedent, ItemSet&& consequent, double support,
                                 double confidence, double lift) noexcept
    : antecedent_(std::move(antecedent)),
      consequent_(std::move(consequent)),
      support_(support),
      confidence_(confidence),
      lift_(lift) {}

AssociationRule::AssociationRule(const AssociationRule& other) = default;

AssociationRule::AssociationRule(AssociationRule&& other) noexcept = default;

// Not defaulted: a copy of the first set that succeeds and of the second that fails would leave a mixed rule.
AssociationRule& AssociationRule::operator=(const AssociationRule& other) {
  if (this != &other) *this = AssociationRule(other);
  return *this;
}

AssociationRule& AssociationRule::operator=(AssociationRule&& other) noexcept {
  antecedent_ = std::move(other.antecedent_);
  consequent_ = std::move(other.consequent_);
  support_ = other.support_;
  confidence_ = other.confidence_;
  lift_ = other.lift_;
  return *this;
}

AssociationRule::~AssociationRule() = default;
