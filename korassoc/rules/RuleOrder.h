// Which rule and which consequent comes first. Every sorting of results is one of these.
//
//   order        first by       then by        then by
//   confidence   confidence     support        the smaller antecedent, the smaller consequent
//   support      support        confidence     the same
//   lift         lift           confidence     the same
//   consequents  confidence                    the smaller item
//
// Figures: the higher first; one that is not a number comes behind every number. Itemsets: fewer items first,
// then item by item. Each relation is a strict weak order over whatever a host may have left in a vector; two
// rules that neither precede the other agree in all that the order looks at.

#pragma once

#include <cmath>
#include <vector>

#include "korassoc/rules/AssociationRule.h"
#include "korassoc/rules/ConsequentDescriptor.h"

namespace korassoc::detail {

// Whether the first comes before the second.
bool confidenceBefore(const AssociationRule& a, const AssociationRule& b);
bool supportBefore(const AssociationRule& a, const AssociationRule& b);
bool liftBefore(const AssociationRule& a, const AssociationRule& b);
bool consequentBefore(const ConsequentDescriptor& a, const ConsequentDescriptor& b);

// -1 when the higher-first order of two figures puts a before b, 1 when it puts b before a, else 0.
inline int compareFigures(double a, double b) {
  if (a > b) return -1;
  if (a < b) return 1;
  if (a == b) return 0;
  return static_cast<int>(std::isnan(a)) - static_cast<int>(std::isnan(b));
}

// Sorts the whole vector: by confidence for 'C', by support for 'S', by lift for 'L'; leaves it as it is for
// any other character.
void sortRules(std::vector<AssociationRule>& rules, char sortBy);

// Sorts the whole vector: higher confidence first, then the smaller item.
void sortConsequents(std::vector<ConsequentDescriptor>& consequents);

// Cuts results to the first max; a negative max cuts nothing.
template <typename Result>
void cutTo(std::vector<Result>& results, int max) {
  if (max < 0 || results.size() <= static_cast<std::size_t>(max)) return;
  results.erase(results.begin() + max, results.end());
}

}  // namespace korassoc::detail
