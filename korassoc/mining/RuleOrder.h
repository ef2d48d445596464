// Which rule comes first: the one order of rules.

#pragma once

#include <cstdint>
#include <span>

#include "korassoc/base/Export.h"
#include "korassoc/mining/Item.h"
#include "korassoc/mining/Measure.h"

namespace korassoc {

// A total order of different rules, by a measure:
//
//   by           then by       then by
//   confidence   support       the smaller antecedent, the smaller consequent
//   any other    confidence    the same
//
// Figures: the higher first; one that is not defined comes behind every number. Itemsets: fewer items first,
// then item by item. Figures are compared as the doubles that Measure gives, so 1 of 3 and 2 of 6 are equal.
class KORASSOC_EXPORT RuleOrder {
 public:
  explicit RuleOrder(Measure by)
      : first_(by), second_(by == Measure::kConfidence ? Measure::kSupport : Measure::kConfidence) {}

  Measure first() const { return first_; }
  Measure second() const { return second_; }

  // By the figures alone: negative when a rule with the counts a comes before one with b, positive when
  // behind it, 0 when the itemsets decide.
  int compare(const RuleCounts& a, const RuleCounts& b) const;

  // The figures of a rule as two numbers, of which the smaller first key, then the smaller second one comes
  // first: compare() without a figure computed twice, for those who sort many.
  struct Keys {
    std::uint64_t first;
    std::uint64_t second;

    friend auto operator<=>(const Keys&, const Keys&) = default;
  };
  Keys keys(const RuleCounts& counts) const { return {keyOf(first_.of(counts)), keyOf(second_.of(counts))}; }

 private:
  static std::uint64_t keyOf(double figure);

  Measure first_;
  Measure second_;
};

// Negative when a comes before b in the order of itemsets, positive when behind it, 0 for equal ones: fewer
// items first, then item by item. Items ascend.
KORASSOC_EXPORT int compareItemsets(std::span<const Item> a, std::span<const Item> b);

}  // namespace korassoc
