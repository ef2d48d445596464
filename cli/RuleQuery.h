// Which rules are asked for, in items and counts.

#pragma once

#include <optional>
#include <vector>

#include "cli/LengthRange.h"
#include "korassoc/korassoc.h"

namespace korassoc::cli {

// What may stand on one side of a rule. Items are ascending and without repeats.
struct SideFilter {
  std::vector<int> required;                // every one of them does
  std::optional<std::vector<int>> allowed;  // nothing else does; holds the required ones too
  LengthRange length;

  bool accepts(const ItemSet& side) const;
};

// A rule's support is compared by its count, so that what the bounds accept does not hang on rounding.
struct RuleQuery {
  enum class Order : char { kConfidence = 'C', kSupport = 'S', kLift = 'L' };  // as the engine codes them

  int transactions = 0;
  int minCount = 1;
  int maxCount = 0;
  double minConfidence = 0;
  double maxConfidence = 1;
  double minLift = 0;
  SideFilter lhs;  // the antecedent
  SideFilter rhs;  // the consequent
  Order order = Order::kConfidence;
  int top = -1;               // at most so many of them; negative: all
  bool minimal = false;       // only antecedents none of whose subsets also does
  bool nonRedundant = false;  // only the rules of plain creation

  // The rule's count of transactions.
  int countOf(const AssociationRule& rule) const;

  // Whether the rule is within every bound, minimal and nonRedundant left aside.
  bool accepts(const AssociationRule& rule) const;

  // Puts the best first and cuts after top. Ties go by the next of confidence, support, antecedent,
  // consequent, as in the engine.
  void arrange(std::vector<AssociationRule>& rules) const;
};

}  // namespace korassoc::cli
