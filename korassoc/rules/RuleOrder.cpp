#include "korassoc/rules/RuleOrder.h"

#include <algorithm>

namespace korassoc::detail {

namespace {

bool setsBefore(const AssociationRule& a, const AssociationRule& b) {
  if (a.getAntecedent() < b.getAntecedent()) return true;
  if (b.getAntecedent() < a.getAntecedent()) return false;
  return a.getConsequent() < b.getConsequent();
}

bool before(double firstA, double firstB, double secondA, double secondB, const AssociationRule& a,
            const AssociationRule& b) {
  if (const int order = compareFigures(firstA, firstB); order != 0) return order < 0;
  if (const int order = compareFigures(secondA, secondB); order != 0) return order < 0;
  return setsBefore(a, b);
}

}  // namespace

bool confidenceBefore(const AssociationRule& a, const AssociationRule& b) {
  return before(a.getConfidence(), b.getConfidence(), a.getSupport(), b.getSupport(), a, b);
}

bool supportBefore(const AssociationRule& a, const AssociationRule& b) {
  return before(a.getSupport(), b.getSupport(), a.getConfidence(), b.getConfidence(), a, b);
}

bool liftBefore(const AssociationRule& a, const AssociationRule& b) {
  return before(a.getLift(), b.getLift(), a.getConfidence(), b.getConfidence(), a, b);
}

bool consequentBefore(const ConsequentDescriptor& a, const ConsequentDescriptor& b) {
  if (const int order = compareFigures(a.getConfidence(), b.getConfidence()); order != 0) return order < 0;
  return a.getItem() < b.getItem();
}

void sortRules(std::vector<AssociationRule>& rules, char sortBy) {
  switch (sortBy) {
    case 'C':
      std::sort(rules.begin(), rules.end(), confidenceBefore);
      break;
    case 'S':
      std::sort(rules.begin(), rules.end(), supportBefore);
      break;
    case 'L':
      std::sort(rules.begin(), rules.end(), liftBefore);
      break;
    default:
      break;
  }
}

void sortConsequents(std::vector<ConsequentDescriptor>& consequents) {
  std::sort(consequents.begin(), consequents.end(), consequentBefore);
}

}  // namespace korassoc::detail
