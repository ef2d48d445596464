#include "cli/RuleQuery.h"

#include <algorithm>
#include <cmath>

namespace korassoc::cli {
namespace {

bool subset(const std::vector<int>& items, const ItemSet& set) {
  return std::all_of(items.begin(), items.end(), [&set](int item) { return set.hasItem(item); });
}

// Negative when a comes first by the figure, positive when b does.
double by(RuleQuery::Order order, const AssociationRule& a, const AssociationRule& b) {
  switch (order) {
    case RuleQuery::Order::kSupport:
      return b.getSupport() - a.getSupport();
    case RuleQuery::Order::kLift:
      return b.getLift() - a.getLift();
    case RuleQuery::Order::kConfidence:
      break;
  }
  return b.getConfidence() - a.getConfidence();
}

}  // namespace

bool SideFilter::accepts(const ItemSet& side) const {
  if (!length.holds(side.length()) || !subset(required, side)) return false;
  if (!allowed) return true;
  for (int i = 0; i < side.length(); ++i) {
    if (!std::binary_search(allowed->begin(), allowed->end(), side.getItemAt(i))) return false;
  }
  return true;
}

int RuleQuery::countOf(const AssociationRule& rule) const {
  return static_cast<int>(std::lround(rule.getSupport() * transactions));
}

bool RuleQuery::accepts(const AssociationRule& rule) const {
  const int count = countOf(rule);
  return count >= minCount && count <= maxCount && rule.getConfidence() >= minConfidence &&
         rule.getConfidence() <= maxConfidence && rule.getLift() >= minLift &&
         lhs.accepts(rule.getAntecedent()) && rhs.accepts(rule.getConsequent());
}

void RuleQuery::arrange(std::vector<AssociationRule>& rules) const {
  std::sort(rules.begin(), rules.end(), [this](const AssociationRule& a, const AssociationRule& b) {
    for (const Order figure : {order, Order::kConfidence, Order::kSupport}) {
      // After the lift comes the confidence, and then the antecedent at once.
      if (figure == Order::kSupport && order == Order::kLift) break;
      const double difference = by(figure, a, b);
      if (difference != 0) return difference < 0;
    }
    if (a.getAntecedent() < b.getAntecedent()) return true;
    if (b.getAntecedent() < a.getAntecedent()) return false;
    return a.getConsequent() < b.getConsequent();
  });
  if (top >= 0 && rules.size() > static_cast<std::size_t>(top)) {
    rules.erase(rules.begin() + top, rules.end());
  }
}

}  // namespace korassoc::cli
