// Rules from the plain engine's lattice.

#pragma once

#include <vector>

#include "tests/oracle/PlainDictionary.h"
#include "tests/oracle/PlainSettings.h"

namespace oracle {

struct PlainRule {
  Items antecedent;
  Items consequent;
  double support;
  double confidence;
  double lift;
};

// All rules X -> Z \ X of stored sets Z with count >= minSupport * N (cut toward zero) and confidence >=
// minConfidence, in the order of emission: by Z in the order of the table of frequent sets, then by X in the
// order of Z's table of antecedents. pruneRedundant keeps only antecedents none of whose one-item-smaller
// subsets serves Z too, and drops a rule whose antecedent also reaches a frequent set one item larger.
// Numbers the frequent sets in their TIDs. The lattice must be built and hold every subset of its sets;
// throws std::logic_error where one is missing.
std::vector<PlainRule> createRules(PlainDictionary& dictionary, const PlainSettings& settings,
                                   double minSupport, double minConfidence, bool pruneRedundant);

// Higher confidence first, then higher support, then the smaller antecedent, then the smaller consequent.
void sortByConfidence(std::vector<PlainRule>& rules);

}  // namespace oracle
