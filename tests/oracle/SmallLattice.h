// A lattice small enough to work out its rules by hand.

#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/oracle/PlainDictionary.h"
#include "tests/oracle/PlainLattice.h"
#include "tests/oracle/PlainRules.h"

namespace oracle {

// Ten transactions: a 6, b 5, c 4, ab 4, ac 3, bc 2, abc 2 (a = 1, b = 2, c = 3).
// The hash codes, all below the bucket counts of rule creation: empty 0, a 7, b 14, ab 17, c 21, ac 38, bc
// 47, abc 54.
inline const std::vector<std::pair<Items, int>>& smallLatticeSets() {
  static const std::vector<std::pair<Items, int>> sets = {
      {{1}, 6}, {{2}, 5}, {{3}, 4}, {{1, 2}, 4}, {{1, 3}, 3}, {{2, 3}, 2}, {{1, 2, 3}, 2}};
  return sets;
}

inline PlainDictionary smallLattice() {
  PlainDictionary dictionary{PlainSettings{}};
  dictionary.addEmptySet();
  dictionary.find({})->count = 10;
  for (const auto& [set, count] : smallLatticeSets()) dictionary.add(set, Counter{count, 1, 0, {}});
  buildLattice(dictionary);
  return dictionary;
}

inline std::string letters(const Items& items) {
  std::string text;
  for (int item : items) text += static_cast<char>('a' + item - 1);
  return text;
}

using Names = std::vector<std::string>;

// "a>bc" for each rule.
inline Names names(const std::vector<PlainRule>& rules) {
  Names text;
  for (const PlainRule& rule : rules)
    text.push_back(letters(rule.antecedent) + ">" + letters(rule.consequent));
  return text;
}

}  // namespace oracle
