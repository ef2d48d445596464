// Holds rules of the library against rules of the plain engine.

#pragma once

#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

#include "korassoc/rules/AssociationRule.h"
#include "tests/oracle/PlainRules.h"
#include "tests/support/DictionaryComparison.h"

inline std::string text(const oracle::PlainRule& rule) {
  std::ostringstream out;
  out.precision(17);
  out << braces(rule.antecedent) << " -> " << braces(rule.consequent) << " support " << rule.support
      << " confidence " << rule.confidence << " lift " << rule.lift;
  return out.str();
}

inline oracle::PlainRule plainRule(const AssociationRule& rule) {
  return {itemsOf(rule.getAntecedent()), itemsOf(rule.getConsequent()), rule.getSupport(),
          rule.getConfidence(), rule.getLift()};
}

inline std::string text(const AssociationRule& rule) { return text(plainRule(rule)); }

inline bool isSame(const oracle::PlainRule& a, const oracle::PlainRule& b) {
  return a.antecedent == b.antecedent && a.consequent == b.consequent && a.support == b.support &&
         a.confidence == b.confidence && a.lift == b.lift;
}

// The first difference in sets, order or figures to the last bit; "" when there is none.
inline std::string firstDifference(const std::vector<oracle::PlainRule>& rules,
                                   const std::vector<oracle::PlainRule>& expected) {
  for (std::size_t i = 0; i < rules.size() && i < expected.size(); ++i) {
    if (!isSame(rules[i], expected[i])) {
      return "rule " + std::to_string(i) + ": " + text(rules[i]) + " instead of " + text(expected[i]);
    }
  }
  if (rules.size() != expected.size()) {
    return std::to_string(rules.size()) + " rules instead of " + std::to_string(expected.size());
  }
  return "";
}

inline std::vector<oracle::PlainRule> plainRules(const std::vector<AssociationRule>& rules) {
  std::vector<oracle::PlainRule> plain;
  for (const AssociationRule& rule : rules) plain.push_back(plainRule(rule));
  return plain;
}

inline std::string firstDifference(const std::vector<AssociationRule>& rules,
                                   const std::vector<oracle::PlainRule>& expected) {
  return firstDifference(plainRules(rules), expected);
}
